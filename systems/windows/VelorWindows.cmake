# What a build for Windows needs beside the code.

# Makes the library TARGET of what the system has and the compiler does not link by itself.
function(velor_windows_system target)
    add_library(${target} INTERFACE)
    target_link_libraries(${target} INTERFACE dwmapi wer)
    if(MINGW)
        set(streams ${CMAKE_CURRENT_BINARY_DIR}/libvelor-streams.a)
        set(definition ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/msvcrt.def)
        add_custom_command(OUTPUT ${streams} DEPENDS ${definition}
            COMMAND ${CMAKE_DLLTOOL} --input-def ${definition} --output-lib ${streams})
        add_custom_target(${target}Streams DEPENDS ${streams})
        add_dependencies(${target} ${target}Streams)
        target_link_libraries(${target} INTERFACE ${streams})
    endif()
endfunction()

# Sets for the DLL TARGET the name that it has on Windows, and a version that the system shows.
function(velor_windows_dll target)
    enable_language(RC)
    set(resource ${CMAKE_CURRENT_BINARY_DIR}/version.rc)
    configure_file(${CMAKE_CURRENT_FUNCTION_LIST_DIR}/version.rc.in ${resource} @ONLY)
    target_sources(${target} PRIVATE ${resource})
    set_target_properties(${target} PROPERTIES PREFIX "")
endfunction()
