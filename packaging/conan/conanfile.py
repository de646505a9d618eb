"""The library as a Conan package, from the tree that this recipe lies in."""
import os

from conan import ConanFile
from conan.tools.cmake import CMake, CMakeToolchain, cmake_layout
from conan.tools.files import copy, rm

required_conan_version = ">=2.0"


class VekConan(ConanFile):
    name = "vek"
    version = "0.2.0"
    description = "Image-processing primitives for the camera path"
    license = "Apache-2.0"
    topics = ("image-processing", "camera", "raw", "simd")
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False], "highway": [True, False]}
    default_options = {"shared": True, "highway": True}
    # What the library is built from.
    parts = ("CMakeLists.txt", "LICENSE", "core/*", "camera/*", "image/*", "include/*", "cmake/*")

    def export_sources(self):
        tree = os.path.join(self.recipe_folder, "..", "..")
        for part in self.parts:
            copy(self, part, tree, self.export_sources_folder)

    def requirements(self):
        if self.options.highway:
            self.requires("highway/[>=1.0.3]", visible=False)

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["VEK_USE_HIGHWAY"] = bool(self.options.highway)
        if self.options.highway:
            # Headers alone, which are looked for among the compiler's own.
            headers = self.dependencies["highway"].cpp_info.includedirs[0]
            toolchain.cache_variables["CMAKE_REQUIRED_INCLUDES"] = headers
            toolchain.cache_variables["CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES"] = headers
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", self.source_folder, os.path.join(self.package_folder, "licenses"))
        # One kind of library; Conan writes files for CMake and pkg-config itself.
        library = os.path.join(self.package_folder, "lib")
        for pattern in ("libvek.a" if self.options.shared else "libvek.so*", "*.cmake", "*.pc"):
            rm(self, pattern, library, recursive=True)

    def package_info(self):
        self.cpp_info.libs = ["vek"]
        target = "vek::vek" if self.options.shared else "vek::static"
        self.cpp_info.set_property("cmake_file_name", "vek")
        self.cpp_info.set_property("cmake_target_name", target)
        self.cpp_info.set_property("pkg_config_name", "vek")
