"""Builds the libraries with CMake and puts them into the package, where the Python code finds them.

TOV_SCHEMA_LIBRARY_DIR names a folder that has them already; then nothing is built.
"""
import os
import pathlib
import shutil
import subprocess

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py
from wheel.bdist_wheel import bdist_wheel

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
LIBRARIES = ("libtov_schema.so.0", "libtov_schema_tools.so.0", "sqlite/libtov_sqlite.so.0")


def build_libraries(folder):
    """Builds the libraries and gives the folder that they are in. Each finds the others beside itself."""
    options = {"CMAKE_BUILD_TYPE": "Release", "BUILD_SHARED_LIBS": "ON", "TOV_SCHEMA_BUILD_TOOLS": "ON",
               "TOV_SCHEMA_BUILD_COMMAND": "OFF", "TOV_SCHEMA_BUILD_EXTENSION": "ON", "TOV_SCHEMA_BUILD_TESTS": "OFF",
               "CMAKE_BUILD_RPATH_USE_ORIGIN": "ON", "CMAKE_BUILD_RPATH": "$ORIGIN"}
    subprocess.run(["cmake", "-S", ROOT, "-B", folder, *(f"-D{name}={value}" for name, value in options.items())],
                   check=True)
    subprocess.run(["cmake", "--build", folder, "--parallel", str(os.cpu_count())], check=True)
    return pathlib.Path(folder) / "src"


class BuildWithLibraries(build_py):
    def run(self):
        super().run()
        given = os.environ.get("TOV_SCHEMA_LIBRARY_DIR")
        made = pathlib.Path(given) if given else build_libraries(os.path.join(os.path.abspath("build"), "native"))
        target = pathlib.Path(self.build_lib) / "tov_schema" / "lib"
        target.mkdir(parents=True, exist_ok=True)
        for name in LIBRARIES:
            shutil.copy(made / name, target / pathlib.Path(name).name)


class NativeDistribution(Distribution):
    def has_ext_modules(self):
        return True


class AnyPython(bdist_wheel):
    """The libraries depend on the platform, and on no version of Python."""

    def get_tag(self):
        return "py3", "none", super().get_tag()[2]


setup(cmdclass={"build_py": BuildWithLibraries, "bdist_wheel": AnyPython}, distclass=NativeDistribution)
