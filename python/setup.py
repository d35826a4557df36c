"""A wheel holds the shared libraries where ZOX_VOLUME_BUNDLE names the folder that they lie in; it then
serves this processor family only. Without, it holds Python alone and finds the system's libraries."""

import os
import shutil
from pathlib import Path

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py
from wheel.bdist_wheel import bdist_wheel

BUNDLE = os.environ.get("ZOX_VOLUME_BUNDLE")


class BuildWithLibraries(build_py):
    def run(self):
        super().run()
        if BUNDLE:
            folder = Path(self.build_lib, "zox_volume", "lib")
            folder.mkdir(parents=True, exist_ok=True)
            for name in ("libzox_volume.so", "libzox_render.so"):
                shutil.copyfile(Path(BUNDLE, name), folder / name)


class DistributionWithLibraries(Distribution):
    def has_ext_modules(self):
        return bool(BUNDLE)


class Wheel(bdist_wheel):
    def get_tag(self):
        # Any Python 3 will do: nothing is compiled against it.
        return ("py3", "none", super().get_tag()[2])


setup(distclass=DistributionWithLibraries, cmdclass={"build_py": BuildWithLibraries, "bdist_wheel": Wheel})
