# What every target of this project is compiled with. A target takes it by velor_compile_options(TARGET). The options
# of compilers stand here and nowhere else; tools/check-portability looks for others.

if(MSVC)
    set(velor_usual_warnings /W4)
    set(velor_strict_warnings /W4 /utf-8)
    set(velor_separate_roundings /fp:precise)
    set(velor_parse_only /Zs)
else()
    set(velor_usual_warnings -Wall -Wextra)
    set(velor_strict_warnings -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    # A processor with fused multiply-add tempts the compiler to join a * b + c into one operation, which rounds once
    # where the formula rounds twice.
    set(velor_separate_roundings -ffp-contract=off)
    set(velor_parse_only -fsyntax-only)
endif()

# The options for the newest processors of the kind that is built for; empty where none are known.
set(velor_newest_processor)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64" AND NOT MSVC)
    set(velor_newest_processor -O2 -march=x86-64-v3)
endif()

# What a debugger wants to see, whatever the kind of build.
set(velor_debuggable)
if(NOT MSVC)
    set(velor_debuggable -g -O0)
endif()

function(velor_compile_options target)
    target_compile_options(${target} PRIVATE ${velor_strict_warnings})
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        # When it optimises, this version takes a sum of strings for a copy onto itself.
        target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        # A guess, which changes with what the optimiser does to the headers of others.
        target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
    endif()
    if(MINGW)
        # What ships must not name the machine that built it.
        target_compile_options(${target} PRIVATE -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
    endif()
    set_target_properties(${target} PROPERTIES COMPILE_WARNING_AS_ERROR ${VELOR_WARNINGS_AS_ERRORS})
    if(VELOR_SANITIZE)
        target_compile_options(${target} PRIVATE
            -fsanitize=${VELOR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${VELOR_SANITIZE})
    endif()
    target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII)
endfunction()

# Links the library `target`, which must miss no symbol, and exports what the file `exports` lists. On Windows each symbol
# is marked in the source.
function(velor_link_options target exports)
    if(NOT VELOR_SANITIZE AND NOT MSVC)
        target_link_options(${target} PRIVATE LINKER:--no-undefined)
    endif()
    if(NOT WIN32)
        target_link_options(${target} PRIVATE LINKER:--version-script=${exports})
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${exports})
    endif()
endfunction()
