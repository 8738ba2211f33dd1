# What every target of this project is compiled with. A target takes it by velor_compile_options(TARGET).

function(velor_compile_options target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        # When it optimises, this version takes a sum of strings for a copy onto itself.
        target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        # A guess, which changes with what the optimiser does to the headers of others.
        target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
    endif()
    if(WIN32)
        # What ships must not name the machine that built it.
        target_compile_options(${target} PRIVATE -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
    endif()
    if(VELOR_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    if(VELOR_SANITIZE)
        target_compile_options(${target} PRIVATE
            -fsanitize=${VELOR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${VELOR_SANITIZE})
    endif()
    target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII)
endfunction()
