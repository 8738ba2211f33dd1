# What `cmake --install` puts into a prefix, in two components: Runtime is what a program needs that was built with the
# library, Development what building one needs. The prefix can be moved as a whole.

include(CMakePackageConfigHelpers)

install(TARGETS Velor2.Base EXPORT Velor2.BaseTargets
    RUNTIME COMPONENT Runtime
    LIBRARY COMPONENT Runtime NAMELINK_COMPONENT Development
    ARCHIVE COMPONENT Development
    PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Velor.Base COMPONENT Development)

# For CMake: find_package(Velor2.Base).
set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Velor2.Base)
list(JOIN velor_qt_components " " velor_qt_components_text)
configure_package_config_file(cmake/Velor2.BaseConfig.cmake.in ${PROJECT_BINARY_DIR}/Velor2.BaseConfig.cmake
    INSTALL_DESTINATION ${config_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/Velor2.BaseConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(EXPORT Velor2.BaseTargets NAMESPACE Velor2:: DESTINATION ${config_dir} COMPONENT Development)
install(FILES
    ${PROJECT_BINARY_DIR}/Velor2.BaseConfig.cmake
    ${PROJECT_BINARY_DIR}/Velor2.BaseConfigVersion.cmake
    DESTINATION ${config_dir} COMPONENT Development)

# For pkg-config: paths follow from where the file itself lies, but for those that were asked for as absolute ones.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(pkgconfig_prefix ${CMAKE_INSTALL_PREFIX})
else()
    file(RELATIVE_PATH pkgconfig_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
    string(PREPEND pkgconfig_prefix "\${pcfiledir}/")
endif()
cmake_path(APPEND pkgconfig_libdir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND pkgconfig_includedir "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
list(TRANSFORM velor_qt_components REPLACE "(.+)" "Qt6\\1 >= ${velor_qt_version}" OUTPUT_VARIABLE pkgconfig_requires)
list(JOIN pkgconfig_requires ", " pkgconfig_requires)
configure_file(cmake/Velor2.Base.pc.in ${PROJECT_BINARY_DIR}/Velor2.Base.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/Velor2.Base.pc DESTINATION ${pkgconfig_dir} COMPONENT Development)

# For gdb, which looks for this name when it loads the library from the prefix that is chosen when installing.
cmake_path(APPEND auto_load_dir "\${CMAKE_INSTALL_PREFIX}" ${CMAKE_INSTALL_LIBDIR})
install(FILES tools/gdb/velor_printers.py
    DESTINATION ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${auto_load_dir}
    RENAME $<TARGET_FILE_NAME:Velor2.Base>-gdb.py COMPONENT Development)
