# SPDX-License-Identifier: MIT
# Libraries, headers, and two ways for a foreign project to find them: a config package and pkg-config files.
include(CMakePackageConfigHelpers)

install(TARGETS DataInterface Fennimark EXPORT DataInterfaceTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/datainterface fennimark/include/fennimark DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# The libraries find each other beside themselves, wherever the prefix is moved to.
set_target_properties(DataInterface PROPERTIES INSTALL_RPATH "$ORIGIN")

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/DataInterface)
install(EXPORT DataInterfaceTargets NAMESPACE DataInterface:: DESTINATION ${package_dir})
configure_package_config_file(cmake/DataInterfaceConfig.cmake.in
    ${PROJECT_BINARY_DIR}/package/DataInterfaceConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/DataInterfaceConfigVersion.cmake
    VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/package/DataInterfaceConfig.cmake
    ${PROJECT_BINARY_DIR}/package/DataInterfaceConfigVersion.cmake DESTINATION ${package_dir})

# The build tree offers the same package: find_package(DataInterface) with DataInterface_DIR set to the build directory.
export(EXPORT DataInterfaceTargets NAMESPACE DataInterface:: FILE ${PROJECT_BINARY_DIR}/DataInterfaceTargets.cmake)
configure_file(${PROJECT_BINARY_DIR}/package/DataInterfaceConfigVersion.cmake
    ${PROJECT_BINARY_DIR}/DataInterfaceConfigVersion.cmake COPYONLY)
configure_package_config_file(cmake/DataInterfaceConfig.cmake.in ${PROJECT_BINARY_DIR}/DataInterfaceConfig.cmake
    INSTALL_DESTINATION ${PROJECT_BINARY_DIR} INSTALL_PREFIX ${PROJECT_BINARY_DIR})

# From the pkg-config directory up to the prefix, so that an install tree can be moved.
file(RELATIVE_PATH PC_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
foreach(name datainterface fennimark)
    configure_file(cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
