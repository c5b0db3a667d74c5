"""Not run: nobody had Conan at hand. tests/packages/check_recipes.py compares the options with those of CMakeLists.txt.
From a clone: conan create packaging/conan"""
import os

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy

# The options of the recipe, what each needs, and what CMake calls them.
PARTS = {
    "c": ("VORLUND_BUILD_C", []),
    "tools": ("VORLUND_BUILD_TOOLS", ["cli11/2.3.2", "eigen/3.4.0", "stb/cci.20230920"]),
    "plugins": ("VORLUND_BUILD_PLUGINS", []),
    "xcb": ("VORLUND_WITH_XCB", ["xorg/system"]),
    "sndfile": ("VORLUND_WITH_SNDFILE", ["libsndfile/1.2.2"]),
    "image": ("VORLUND_WITH_IMAGE", ["libpng/1.6.40", "libjpeg-turbo/3.0.1"]),
    "measure": ("VORLUND_WITH_MEASURE", ["libebur128/1.2.6"]),
    "resample": ("VORLUND_WITH_RESAMPLE", ["soxr/0.1.3"]),
    "visual": ("VORLUND_WITH_VISUAL", ["eigen/3.4.0", "stb/cci.20230920"]),
    "audio": ("VORLUND_WITH_AUDIO", ["sdl/2.28.5"]),
}


class VorlundRecipe(ConanFile):
    name = "vorlund"
    version = "0.1.0"
    license = "MIT"
    description = "Core library of a multimedia application framework"
    package_type = "shared-library"
    settings = "os", "arch", "compiler", "build_type"
    options = {part: [True, False] for part in PARTS}
    default_options = {part: False for part in PARTS}

    def validate(self):
        if self.settings.compiler not in ("gcc", "clang"):
            raise ConanInvalidConfiguration("the interface is for GCC and Clang")

    def export_sources(self):
        root = os.path.join(self.recipe_folder, "..", "..")
        for pattern in ("CMakeLists.txt", "LICENSE", "*.md", "cmake/*", "include/*", "src/*", "tools/*", "plugins/*", "docs/*",
                        "bindings/*", "examples/*", "packaging/hello/*"):
            copy(self, pattern, root, self.export_sources_folder)

    def requirements(self):
        for name in sorted({name for part, (_, names) in PARTS.items() if self.options.get_safe(part) for name in names}):
            self.requires(name)

    def layout(self):
        cmake_layout(self)

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        for part, (option, _) in PARTS.items():
            toolchain.cache_variables[option] = bool(self.options.get_safe(part))
        for option in ("VORLUND_BUILD_TESTS", "VORLUND_BUILD_EXAMPLES", "VORLUND_BUILD_FUZZ", "VORLUND_BUILD_BENCH"):
            toolchain.cache_variables[option] = False
        toolchain.cache_variables["VORLUND_INSTALL"] = True
        toolchain.cache_variables["VORLUND_REQUIRE_ALL"] = True
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "Vorlund")
        self.cpp_info.set_property("cmake_target_name", "Vorlund::vorlund")
        self.cpp_info.libs = ["vorlund"]
