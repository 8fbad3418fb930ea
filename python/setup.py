"""A wheel of the package: pip wheel --no-build-isolation --no-deps python

CMake builds the extension modules in a folder of its own, or MORVALE_BUILD names one where they are built (./dev python),
and lays the package down.
"""
import os
import pathlib
import re
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = pathlib.Path(__file__).resolve().parents[1]


class BuildWithCMake(build_ext):
    def run(self):
        build = os.environ.get("MORVALE_BUILD")
        if not build:
            build = os.path.abspath(self.build_temp)
            subprocess.run(["cmake", "-S", ROOT, "-B", build, "-DMORVALE_PYTHON=ON", "-DMORVALE_TOOLS=OFF",
                            "-DBUILD_TESTING=OFF", f"-DPython_EXECUTABLE={sys.executable}"], check=True)
            subprocess.run(["cmake", "--build", build, "--target", "morvale_python", "-j2"], check=True)
        subprocess.run(["cmake", "--install", build, "--component", "python", "--prefix", self.build_lib], check=True)


setup(version=re.search(r"project\(morvale_capture VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text())[1],
      ext_modules=[Extension("morvale.kernels", []), Extension("morvale._recording", [])],
      cmdclass={"build_ext": BuildWithCMake})
