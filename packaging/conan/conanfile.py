# SPDX-License-Identifier: MIT
"""Conan 2 recipe of DataInterface: `conan create packaging/conan --build=missing`.

With -o "datainterface/*:host=True" it also builds MeridorCore and meridor. Conan has no package of D3, so that needs the file:
-c user.datainterface:d3=/path/to/d3.min.js (version 5).
"""
import os
import re

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load, rmdir
from conan.tools.gnu import PkgConfigDeps

required_conan_version = ">=2.8"


class DataInterfaceConan(ConanFile):
    name = "datainterface"
    description = "The data layer for statistical analysis in space and time"
    license = "MIT"
    topics = ("statistics", "gis", "spatial", "time-series")
    package_type = "shared-library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"host": [True, False]}
    default_options = {
        "host": False,
        "qt/*:shared": True,
        "qt/*:widgets": True,
        "openblas/*:build_lapack": True,
    }

    @property
    def _root(self):
        """The folder of the project: two above the recipe."""
        return os.path.join(self.recipe_folder, os.pardir, os.pardir)

    def set_version(self):
        lists = load(self, os.path.join(self._root, "CMakeLists.txt"))
        self.version = re.search(r"project\(DataInterface VERSION ([0-9.]+)", lists).group(1)

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "LICENSE", "CHANGELOG.md", "cmake/*", "docs/*", "fennimark/*", "host/*", "include/*",
                        "packaging/*", "samples/*", "src/*"):
            copy(self, pattern, self._root, self.export_sources_folder)

    def configure(self):
        if self.options.host:
            self.options["qt"].qtsvg = True

    def requirements(self):
        # The public headers of the library include those of Qt alone.
        self.requires("qt/[>=5.15 <6]", transitive_headers=True, transitive_libs=True)
        self.requires("geos/[>=3.11 <4]")
        self.requires("shapelib/[>=1.5 <2]")
        self.requires("libdeflate/[>=1.14 <2]")
        self.requires("isa-l/[>=2.30 <3]")
        self.requires("openblas/[>=0.3.20 <1]")
        if self.options.host:
            self.requires("gdal/[>=3.6 <4]")
            self.requires("geographiclib/[>=2.0 <3]")
            self.requires("cli11/[>=2.1 <3]")
            self.requires("qwt/[>=6.1 <7]")
            self.requires("eigen/[>=3.4 <4]")

    def validate(self):
        check_min_cppstd(self, 17)
        if self.settings.os != "Linux":
            raise ConanInvalidConfiguration("DataInterface is built and tested on Linux")
        if self.options.host and not self.conf.get("user.datainterface:d3"):
            raise ConanInvalidConfiguration("the host needs D3: -c user.datainterface:d3=/path/to/d3.min.js")

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["BUILD_TESTING"] = False
        toolchain.cache_variables["BUILD_HOST"] = bool(self.options.host)
        if self.options.host:
            toolchain.cache_variables["MERIDOR_D3"] = self.conf.get("user.datainterface:d3")
        toolchain.generate()
        CMakeDeps(self).generate()
        # The project asks pkg-config for these by the names of their own files.
        modules = PkgConfigDeps(self)
        modules.set_property("isa-l", "pkg_config_name", "libisal")
        modules.set_property("geographiclib", "pkg_config_name", "geographiclib")
        modules.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", self.source_folder, os.path.join(self.package_folder, "licenses"))
        # CMakeDeps and PkgConfigDeps of the consumer write these.
        rmdir(self, os.path.join(self.package_folder, "lib", "cmake"))
        rmdir(self, os.path.join(self.package_folder, "lib", "pkgconfig"))

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "DataInterface")
        fennimark = self.cpp_info.components["fennimark"]
        fennimark.libs = ["Fennimark"]
        fennimark.set_property("cmake_target_name", "DataInterface::Fennimark")
        fennimark.set_property("pkg_config_name", "fennimark")
        fennimark.requires = ["qt::qtCore", "qt::qtGui", "geos::geos"]
        library = self.cpp_info.components["datainterface"]
        library.libs = ["DataInterface"]
        library.set_property("cmake_target_name", "DataInterface::DataInterface")
        library.set_property("pkg_config_name", "datainterface")
        library.requires = ["fennimark", "qt::qtWidgets", "shapelib::shapelib", "libdeflate::libdeflate", "isa-l::isa-l",
                            "openblas::openblas"]
        if self.options.host:
            core = self.cpp_info.components["meridorcore"]
            core.libs = ["MeridorCore"]
            core.includedirs = [os.path.join("include", "meridor")]
            core.set_property("cmake_target_name", "DataInterface::MeridorCore")
            core.requires = ["datainterface", "gdal::gdal", "geographiclib::geographiclib", "cli11::cli11", "qwt::qwt",
                             "eigen::eigen", "qt::qtSvg"]
