# The examples in the documents are compiled and run like tests, so that none of them rots.

# Makes a program and a test of each ```cpp block of PAGE, a Markdown file. A block is a whole program that writes
# into its current folder alone.
function(velor_add_doc_examples page)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${page})
    get_filename_component(name ${page} NAME_WE)
    file(READ ${page} text)
    # A bracket or a semicolon would be taken for a part of a CMake list.
    string(REPLACE "[" "<:bracket:>" text "${text}")
    string(REPLACE "]" "<:end-bracket:>" text "${text}")
    string(REPLACE ";" "<:semicolon:>" text "${text}")
    string(REGEX MATCHALL "```cpp\n[^`]*```" blocks "${text}")
    set(number 0)
    foreach(block IN LISTS blocks)
        math(EXPR number "${number} + 1")
        string(REGEX REPLACE "^```cpp\n([^`]*)```$" "\\1" block "${block}")
        string(REPLACE "<:bracket:>" "[" block "${block}")
        string(REPLACE "<:end-bracket:>" "]" block "${block}")
        string(REPLACE "<:semicolon:>" ";" block "${block}")
        set(program doc_${name}_${number})
        set(source ${CMAKE_CURRENT_BINARY_DIR}/${program}.cpp)
        file(GENERATE OUTPUT ${source} CONTENT "${block}")
        add_executable(${program} ${source})
        target_link_libraries(${program} PRIVATE Velor2::Base)
        # As a reader would build it, without the stricter rules that this project has for its own code.
        target_compile_options(${program} PRIVATE ${velor_usual_warnings})
        add_test(NAME ${program} COMMAND ${CMAKE_COMMAND}
            -D "PROGRAM=${CMAKE_CROSSCOMPILING_EMULATOR};$<TARGET_FILE:${program}>"
            -D FOLDER=${CMAKE_CURRENT_BINARY_DIR}/${program}.run -P ${PROJECT_SOURCE_DIR}/cmake/RunInEmptyFolder.cmake)
        set_tests_properties(${program} PROPERTIES TIMEOUT 60 ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8")
    endforeach()
endfunction()
