"""Builds the library and the extension module by CMake. What an sdist lacks of the library's sources, because
they lie beside this folder, is put into `library/` of it."""

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext
from setuptools.command.sdist import sdist

HERE = Path(__file__).resolve().parent
LIBRARY = HERE / "library" if (HERE / "library").is_dir() else HERE.parent
SOURCES = ("CMakeLists.txt", "LICENSE", "README.md", "core", "camera", "image", "include", "cmake")
OWN = ("CMakeLists.txt", "src", "tools", "vek", "tests")


class Build(build_ext):
    def build_extension(self, extension):
        build = Path(self.build_temp).resolve()
        prefix = Path(self.get_ext_fullpath(extension.name)).resolve().parents[1]
        subprocess.run(["cmake", "-S", LIBRARY, "-B", build, "-DCMAKE_BUILD_TYPE=Release", "-DVEK_BUILD_PYTHON=ON",
                        "-DVEK_PYTHON_STATIC=ON", f"-DVEK_PYTHON_DIRECTORY={HERE}", f"-DPython3_EXECUTABLE={sys.executable}",
                        f"-DCMAKE_INSTALL_PREFIX={prefix}", *os.environ.get("CMAKE_ARGS", "").split()], check=True)
        subprocess.run(["cmake", "--build", build, "--target", "vek_python_package",
                        "--parallel", str(os.cpu_count())], check=True)
        subprocess.run(["cmake", "--install", build, "--component", "Python"], check=True)


class Source(sdist):
    def make_release_tree(self, base_dir, files):
        super().make_release_tree(base_dir, files)
        for names, source, target in ((OWN, HERE, Path(base_dir)), (SOURCES, LIBRARY, Path(base_dir) / "library")):
            for name in names:
                if (source / name).is_dir():
                    shutil.copytree(source / name, target / name, dirs_exist_ok=True,
                                    ignore=shutil.ignore_patterns("__pycache__"))
                else:
                    target.mkdir(exist_ok=True)
                    shutil.copy2(source / name, target / name)


version = re.search(r'VEK_VERSION_STRING "(.*?)"', (LIBRARY / "include/vek/vek.h").read_text())[1]
setup(version=version, packages=["vek"], package_data={"vek": ["py.typed"]},
      ext_modules=[Extension("vek._vek", [])], cmdclass={"build_ext": Build, "sdist": Source})
