# SPDX-License-Identifier: MIT
# Finds Qwt built for Qt 5, which has no CMake package of its own. Defines Qwt::Qwt, Qwt_FOUND and Qwt_VERSION.
find_path(Qwt_INCLUDE_DIR qwt_global.h PATH_SUFFIXES qwt qwt-qt5 qwt6)
find_library(Qwt_LIBRARY NAMES qwt-qt5 qwt6-qt5 qwt)
if(Qwt_INCLUDE_DIR)
    file(STRINGS ${Qwt_INCLUDE_DIR}/qwt_global.h Qwt_VERSION REGEX "define QWT_VERSION_STR")
    string(REGEX REPLACE ".*\"([0-9.]+)\".*" "\\1" Qwt_VERSION "${Qwt_VERSION}")
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Qwt REQUIRED_VARS Qwt_LIBRARY Qwt_INCLUDE_DIR VERSION_VAR Qwt_VERSION)
mark_as_advanced(Qwt_INCLUDE_DIR Qwt_LIBRARY)
if(Qwt_FOUND AND NOT TARGET Qwt::Qwt)
    add_library(Qwt::Qwt UNKNOWN IMPORTED)
    set_target_properties(Qwt::Qwt PROPERTIES
        IMPORTED_LOCATION ${Qwt_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${Qwt_INCLUDE_DIR})
endif()
