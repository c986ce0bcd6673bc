"""Recipe for Conan 2: conan create packaging/conan. It builds the checkout that it lies in. Not run by Conan yet;
docs/platforms.md tells what was tried."""
import os
import re

from conan import ConanFile
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load
from conan.tools.gnu import PkgConfigDeps


class VeltorUtils(ConanFile):
    name = "veltor-utils"
    description = "General utility library of a desktop geographic information system"
    license = "MIT"
    settings = "os", "compiler", "build_type", "arch"
    options = {"shared": [True, False]}
    default_options = {"shared": True, "qt/*:shared": True, "qt/*:qttools": True}  # of which lrelease is

    @property
    def _checkout(self):
        return os.path.normpath(os.path.join(self.recipe_folder, "..", ".."))

    def set_version(self):
        text = load(self, os.path.join(self._checkout, "include", "veltor", "Version.h"))
        numbers = re.findall(r"define VELTOR_UTILS_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)", text)
        self.version = ".".join(numbers)

    def export_sources(self):
        for folder in ("cmake", "docs", "include", "packaging", "src", "tools", "translations"):
            copy(self, folder + "/*", self._checkout, self.export_sources_folder)
        for file in ("CMakeLists.txt", "LICENSE", "CHANGELOG.md"):
            copy(self, file, self._checkout, self.export_sources_folder)

    def requirements(self):
        self.requires("qt/[>=5.15 <6]", transitive_headers=True, transitive_libs=True)
        self.requires("proj/[>=9]")
        self.requires("rapidjson/[>=1.1]")
        if self.settings.os == "Linux":
            self.requires("elfutils/[>=0.188]")

    def build_requirements(self):
        if self.settings.os == "Linux":
            self.tool_requires("pkgconf/[>=2]")  # which finds libdw

    def layout(self):
        cmake_layout(self)

    def generate(self):
        CMakeDeps(self).generate()
        if self.settings.os == "Linux":
            PkgConfigDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables.update({"BUILD_TESTING": False, "VELTOR_PYTHON": False,
                                          "BUILD_SHARED_LIBS": bool(self.options.shared)})
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", self.source_folder, os.path.join(self.package_folder, "licenses"))

    def package_info(self):
        self.cpp_info.libs = ["veltor-utils"]
        if not self.options.shared:
            self.cpp_info.defines = ["VELTOR_UTILS_STATIC_DEFINE"]
            self.cpp_info.system_libs = ["pthread", "dl"] if self.settings.os == "Linux" else ["dbghelp"]
        self.cpp_info.set_property("cmake_file_name", "veltor-utils")
        self.cpp_info.set_property("cmake_target_name", "veltor::utils")
