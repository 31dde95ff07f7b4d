"""Packs orvane.pyfigura into one wheel: the project's own build (`make layout`: generator, CMake,
dotnet publish) lays out build/python/orvane, and that tree, less the link to the build machine's
libcoreclr.so, becomes the package. The installed package finds the .NET runtime at import.

    pip install --no-build-isolation .        pip wheel --no-build-isolation .
"""
import os
import shutil
import subprocess
import sys

from setuptools import setup
from setuptools.command.build_ext import build_ext
from setuptools.dist import Distribution

HERE = os.path.dirname(os.path.abspath(__file__))
LAID_OUT = os.path.join(HERE, "build", "python", "orvane")


class BuildWithMake(build_ext):
    """Runs the make build (incremental: an already built tree costs seconds), then copies the package."""

    def run(self):
        self.build_lib = self.get_finalized_command("build").build_platlib
        # The interpreter the venv was made from: its headers and extension suffix are the venv's.
        python = getattr(sys, "_base_executable", None) or sys.executable
        subprocess.check_call(["make", "-C", HERE, "layout", f"PY={python}"])
        target = os.path.join(self.build_lib, "orvane")
        shutil.rmtree(target, ignore_errors=True)
        # Links lead into this machine's runtime or build tree; the installed package resolves its own.
        shutil.copytree(LAID_OUT, target, ignore=lambda d, names: [n for n in names
                                                                   if os.path.islink(os.path.join(d, n))])


class BinaryDistribution(Distribution):
    """Extension modules and native libraries inside: a platform wheel, installed to platlib."""

    def has_ext_modules(self):
        return True


setup(
    packages=[],
    cmdclass={"build_ext": BuildWithMake},
    distclass=BinaryDistribution,
    options={"build": {"build_base": os.path.join("build", "wheel")}},
    zip_safe=False,
)
