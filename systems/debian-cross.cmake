# Cross build for another Debian processor, which the variable VELOR_ARCH of the environment names as Debian does, with
# Debian's cross-compiler and packages. Programs of that processor run under qemu. See systems/debian.

set(CMAKE_SYSTEM_NAME Linux)
if("$ENV{VELOR_ARCH}" STREQUAL arm64)
    set(CMAKE_SYSTEM_PROCESSOR aarch64)
elseif("$ENV{VELOR_ARCH}" STREQUAL s390x)
    set(CMAKE_SYSTEM_PROCESSOR s390x)
else()
    message(FATAL_ERROR "VELOR_ARCH is '$ENV{VELOR_ARCH}', and must be arm64 or s390x")
endif()
set(CMAKE_LIBRARY_ARCHITECTURE ${CMAKE_SYSTEM_PROCESSOR}-linux-gnu)
set(CMAKE_CXX_COMPILER ${CMAKE_LIBRARY_ARCHITECTURE}-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${CMAKE_SYSTEM_PROCESSOR})

# Qt's code generators run here, on the machine that builds. Debian has their packages for CMake beside those of the
# processor that is built for.
set(QT_HOST_PATH /usr CACHE PATH "Where Qt's tools for the building machine are installed")
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/cmake CACHE PATH "Where their packages are")
