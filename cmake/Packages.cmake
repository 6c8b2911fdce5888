# SPDX-License-Identifier: MIT
# The vcpkg port, and Debian packages, made by `cpack --config build/package/CPackConfig.cmake`: one for each component of
# the install rules that this configuration builds. scripts/package.sh does all of it; docs/packages.md describes the packages.
foreach(file vcpkg.json portfile.cmake)
    configure_file(${PROJECT_SOURCE_DIR}/packaging/vcpkg/${file}.in ${PROJECT_BINARY_DIR}/vcpkg/datainterface/${file} @ONLY)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME datainterface)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # Each package has its own.
set(CPACK_PACKAGE_VENDOR "The DataInterface developers")
set(CPACK_PACKAGE_CONTACT "The DataInterface developers <${DATAINTERFACE_BUG_REPORT_ADDRESS}>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE datainterface)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# dpkg-shlibdeps finds the libraries of other components in the build tree; the packages that they are in are named below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/fennimark
    ${PROJECT_BINARY_DIR}/host)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(own_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(library "libdatainterface${PROJECT_VERSION_MAJOR} ${own_version}")
set(both_libraries "libmeridorcore${PROJECT_VERSION_MAJOR} ${own_version}, ${library}")

# debian_package(COMPONENT NAME SECTION "SYNOPSIS" "TEXT" [FIELD VALUE]...): a package of the component. The fields are those
# of CPACK_DEBIAN_<COMPONENT>_PACKAGE_..., such as DEPENDS, which is added to what dpkg-shlibdeps finds.
macro(debian_package component name section synopsis text)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    string(TOUPPER ${component} key)
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${key}_DESCRIPTION "${synopsis}\n${text}")
    set(fields ${ARGN})
    while(fields)
        list(POP_FRONT fields field value)
        set(CPACK_DEBIAN_${key}_PACKAGE_${field} "${value}")
    endwhile()
endmacro()

set(CPACK_COMPONENTS_ALL)
set(about "Geographies whose shapes and existence change, values over times and
realizations that need not fit in memory, and the project file that stores
all of it.")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)
set(CPACK_DEBIAN_CORE_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)
debian_package(Library libdatainterface${PROJECT_VERSION_MAJOR} libs "data layer for statistics in space and time"
    "${about}
.
This package contains the shared libraries DataInterface and Fennimark, its
geometry library.")
debian_package(LibraryDevelopment libdatainterface-dev libdevel "data layer for statistics in space and time (development)"
    "${about}
.
This package contains the headers of DataInterface and Fennimark and the
files by which CMake and pkg-config find them."
    DEPENDS "${library}, qtbase5-dev (>= 5.15)")
if(TARGET MeridorCore)
    debian_package(Core libmeridorcore${PROJECT_VERSION_MAJOR} libs "import, analysis and pictures of maps with values over time"
        "${about}
.
This package contains the shared library MeridorCore, which meridor and other
programs are built on: import of maps, tables and grids, statistics, weights,
geostatistics, pictures and reports."
        DEPENDS "${library}")
    debian_package(CoreDevelopment libmeridorcore-dev libdevel "import, analysis and pictures of maps (development)"
        "${about}
.
This package contains the headers of MeridorCore and its CMake target, which
belongs to the CMake package DataInterface."
        DEPENDS "libmeridorcore${PROJECT_VERSION_MAJOR} ${own_version}, libdatainterface-dev ${own_version}")
    debian_package(Program meridor science "maps with values over time: import, analyse, draw, export"
        "${about}
.
This package contains the command line program meridor, its manual pages,
completion for bash and sample data."
        DEPENDS "${both_libraries}" RECOMMENDS "fonts-dejavu-core"
        SUGGESTS "datainterface-doc")
endif()
if(TARGET meridor-desk)
    debian_package(Desk meridor-desk science "maps with values over time: linked maps, tables and graphs"
        "${about}
.
This package contains meridor-desk, which shows projects in windows. Its
samples are those of the package meridor."
        DEPENDS "meridor ${own_version}, ${both_libraries}" RECOMMENDS "fonts-dejavu-core" SUGGESTS "datainterface-doc")
endif()
if(BUILD_PYTHON)
    # The extension is of one version of Python.
    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    math(EXPR next "${Python3_VERSION_MINOR} + 1")
    set(python "python3 (>= 3.${Python3_VERSION_MINOR}~), python3 (<< 3.${next})")
    string(JOIN ", " converted python3-distributed python3-geopandas python3-libpysal python3-pandas python3-scipy python3-tqdm
        python3-xarray)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/python/postinst
        ${PROJECT_SOURCE_DIR}/packaging/debian/python/prerm)
    debian_package(Python python3-datainterface python "data layer for statistics in space and time (Python)"
        "${about}
.
This package contains the Python package datainterface. Values cross as NumPy
arrays; pandas, GeoPandas, xarray, SciPy and Dask are used where they are
installed."
        DEPENDS "${both_libraries}, ${python}, python3-numpy"
        SUGGESTS "${converted}")
endif()
if(TARGET reference)
    if(TARGET reference-python)
        set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_DEPENDS "libjs-sphinxdoc (>= 5.2)")
    endif()
    debian_package(Documentation datainterface-doc doc "data layer for statistics in space and time (documentation)"
        "${about}
.
This package contains the references of the C++ and Python interfaces and the
pages about file format, methods and use."
        ARCHITECTURE all SHLIBDEPS OFF)
endif()

# What Debian wants besides: in the packages before they are made, and in their control files.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/debian/finish.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/debian/repack.cmake)
set(CPACK_DATAINTERFACE_SOURCE ${PROJECT_SOURCE_DIR})
include(CPack)
