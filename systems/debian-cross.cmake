# Cross build for another Debian processor, which the variable VELOR_ARCH of the environment names as Debian does, with
# Debian's cross-compiler and packages. Programs of that processor run under qemu. See systems/debian.

function(ask_dpkg result variable)
    execute_process(COMMAND dpkg-architecture -a $ENV{VELOR_ARCH} -q${variable}
        OUTPUT_VARIABLE answer OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    set(${result} ${answer} PARENT_SCOPE)
endfunction()
ask_dpkg(triplet DEB_HOST_GNU_TYPE)
ask_dpkg(processor DEB_HOST_GNU_CPU)

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${processor})
set(CMAKE_CXX_COMPILER ${triplet}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${triplet})
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${processor})

# Qt's code generators run here, on the machine that builds. Debian has their packages for CMake beside those of the
# processor that is built for.
set(QT_HOST_PATH /usr CACHE PATH "Where Qt's tools for the building machine are installed")
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/${triplet}/cmake CACHE PATH "Where their packages are")
