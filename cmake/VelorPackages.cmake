# What `cpack` makes: Debian packages to run with, to build with and to debug with. Their dependencies are computed.

# Sets `result` to the names of the Debian packages that own `files`, each with "(>= minimum)". A file that no package
# owns, such as that of a Qt built by hand, adds nothing.
function(velor_debian_owners result minimum files)
    find_program(VELOR_DPKG dpkg)
    mark_as_advanced(VELOR_DPKG)
    set(owners)
    foreach(file IN LISTS files)
        if(NOT VELOR_DPKG)
            break()
        endif()
        execute_process(COMMAND ${VELOR_DPKG} --search ${file} OUTPUT_VARIABLE answer ERROR_QUIET)
        if(answer MATCHES "^([^:]+):")
            list(APPEND owners "${CMAKE_MATCH_1} (>= ${minimum})")
        endif()
    endforeach()
    list(REMOVE_DUPLICATES owners)
    set(${result} "${owners}" PARENT_SCOPE)
endfunction()

set(VELOR_PACKAGE_CONTACT "Velor2.Base maintainers <maintainers@localhost>" CACHE STRING "Maintainer named in the packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "${VELOR_PACKAGE_CONTACT}")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_COMPONENTS_ALL Runtime Development)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "The shared library, which programs that were built with it need to run.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "The headers, the files for CMake and pkg-config, and the printers for gdb.")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)

# A run-time package is named by the library and its soname, so that two of them can stand side by side.
set(run_time libvelor2.base${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${run_time})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# A third package, with the debug information that is taken out of the library: gdb needs it for classes with virtual
# functions.
set(CPACK_DEBIAN_RUNTIME_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# Whoever builds with the library needs what its package files ask for.
set(qt_files)
foreach(component IN LISTS velor_qt_components)
    list(APPEND qt_files ${Qt6${component}_DIR}/Qt6${component}Config.cmake)
endforeach()
velor_debian_owners(qt_packages ${velor_qt_version} "${qt_files}")
list(JOIN qt_packages ", " qt_packages)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvelor2.base-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${run_time} (= ${PROJECT_VERSION}), ${qt_packages}")

include(CPack)
