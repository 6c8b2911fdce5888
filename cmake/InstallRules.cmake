# SPDX-License-Identifier: MIT
# What is installed, and two ways for a foreign project to find it: a config package and pkg-config files. Each rule names
# its component, which is a package in cmake/Packages.cmake; host/ and docs/reference/ install their parts themselves.
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/DataInterface)

# install_shared_libraries(EXPORT_SET COMPONENT library...): the libraries go to COMPONENT; the links that a linker follows,
# and the targets as the file EXPORT_SET.cmake, to COMPONENTDevelopment. The build tree offers the same targets.
function(install_shared_libraries export_set component)
    install(TARGETS ${ARGN} EXPORT ${export_set}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component} NAMELINK_COMPONENT ${component}Development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${component}Development
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component})
    install(EXPORT ${export_set} NAMESPACE DataInterface:: DESTINATION ${package_dir} COMPONENT ${component}Development)
    export(EXPORT ${export_set} NAMESPACE DataInterface:: FILE ${PROJECT_BINARY_DIR}/${export_set}.cmake)
endfunction()

install_shared_libraries(DataInterfaceTargets Library DataInterface Fennimark)
install(DIRECTORY include/datainterface fennimark/include/fennimark DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT LibraryDevelopment)
# The libraries find each other beside themselves, wherever the prefix is moved to.
set_target_properties(DataInterface PROPERTIES INSTALL_RPATH "$ORIGIN")
if(TARGET MeridorCore)
    install_shared_libraries(MeridorCoreTargets Core MeridorCore)
endif()

configure_package_config_file(cmake/DataInterfaceConfig.cmake.in
    ${PROJECT_BINARY_DIR}/package/DataInterfaceConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/DataInterfaceConfigVersion.cmake
    VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/package/DataInterfaceConfig.cmake
    ${PROJECT_BINARY_DIR}/package/DataInterfaceConfigVersion.cmake DESTINATION ${package_dir} COMPONENT LibraryDevelopment)

# The build tree offers the same package: find_package(DataInterface) with DataInterface_DIR set to the build directory.
configure_file(${PROJECT_BINARY_DIR}/package/DataInterfaceConfigVersion.cmake
    ${PROJECT_BINARY_DIR}/DataInterfaceConfigVersion.cmake COPYONLY)
configure_package_config_file(cmake/DataInterfaceConfig.cmake.in ${PROJECT_BINARY_DIR}/DataInterfaceConfig.cmake
    INSTALL_DESTINATION ${PROJECT_BINARY_DIR} INSTALL_PREFIX ${PROJECT_BINARY_DIR})

# From the pkg-config directory up to the prefix, so that an install tree can be moved.
file(RELATIVE_PATH PC_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
get_target_property(FENNIMARK_VERSION Fennimark VERSION)
foreach(name datainterface fennimark)
    configure_file(cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT LibraryDevelopment)
endforeach()

install(FILES LICENSE CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/datainterface COMPONENT Library)

if(TARGET meridor-desk)
    # What desktops show and open the program by.
    set(desktop ${PROJECT_SOURCE_DIR}/packaging/desktop)
    string(TIMESTAMP RELEASE_DATE "%Y-%m-%d" UTC)
    configure_file(${desktop}/meridor-desk.metainfo.xml.in ${PROJECT_BINARY_DIR}/package/meridor-desk.metainfo.xml @ONLY)
    install(FILES ${desktop}/meridor-desk.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT Desk)
    install(FILES ${desktop}/meridor-desk.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT Desk)
    install(FILES ${desktop}/meridor-desk.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT Desk)
    install(FILES ${desktop}/meridor-vorn.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages COMPONENT Desk)
    install(FILES ${PROJECT_BINARY_DIR}/package/meridor-desk.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo
        COMPONENT Desk)
endif()

# Removes what the last installation out of this build tree put into place. A project that contains this one may have a
# target of this name.
if(NOT TARGET uninstall)
    add_custom_target(uninstall COMMAND ${CMAKE_COMMAND} -DMANIFEST=${PROJECT_BINARY_DIR}/install_manifest.txt
        -P ${PROJECT_SOURCE_DIR}/cmake/Uninstall.cmake VERBATIM)
endif()
