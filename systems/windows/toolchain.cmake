# Cross build for 64-bit Windows with Debian's g++-mingw-w64-x86-64-posix. VELOR_WINDOWS_ROOT, a variable of
# the cache or of the environment, is the folder into which systems/windows/dependencies installed.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

if(NOT VELOR_WINDOWS_ROOT)
    set(VELOR_WINDOWS_ROOT "$ENV{VELOR_WINDOWS_ROOT}" CACHE PATH "Where the dependencies for Windows are installed")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VELOR_WINDOWS_ROOT)
set(CMAKE_FIND_ROOT_PATH "${VELOR_WINDOWS_ROOT}" /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Qt's code generators run here, on the machine that builds.
set(QT_HOST_PATH /usr CACHE PATH "Where Qt for the building machine is installed")
execute_process(COMMAND dpkg-architecture -qDEB_HOST_MULTIARCH
    OUTPUT_VARIABLE host_triplet OUTPUT_STRIP_TRAILING_WHITESPACE)
set(QT_HOST_PATH_CMAKE_DIR "/usr/lib/${host_triplet}/cmake" CACHE PATH "Where the packages of that Qt are")

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/under-wine")
