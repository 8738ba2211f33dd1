# What every target of this project is compiled with. A target takes it by velor_compile_options(TARGET).

function(velor_compile_options target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
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
