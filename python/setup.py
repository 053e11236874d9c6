"""Builds a wheel that contains the library: CMake compiles it from the tree around this folder."""

import re
import shutil
import subprocess
import sys
import sysconfig
from pathlib import Path

from setuptools import setup
from setuptools.command.build_py import build_py
from wheel.bdist_wheel import bdist_wheel

SOURCE = Path(__file__).resolve().parent.parent
LIBRARY = "libtvmeta.1.dylib" if sys.platform == "darwin" else "libtvmeta.so.1"


def version() -> str:
    """Return the version of the project."""
    match = re.search(r"project\(tvmeta VERSION ([\d.]+)", (SOURCE / "CMakeLists.txt").read_text())
    assert match
    return match[1]


class BuildWithLibrary(build_py):
    """Adds the library to the modules; an editable installation uses TVMETA_LIBRARY instead."""

    def run(self) -> None:
        """Copy the modules, then build the library next to them."""
        shutil.rmtree(Path(self.build_lib) / "tvmeta", ignore_errors=True)  # modules of an earlier build
        super().run()
        if self.editable_mode:
            return
        build = Path(self.get_finalized_command("build").build_temp).resolve()
        options = ["TOOL", "TESTS", "BENCH"]
        subprocess.run(
            ["cmake", "-S", SOURCE, "-B", build, "-DCMAKE_BUILD_TYPE=Release", "-DTVMETA_INSTALL=OFF"]
            + [f"-DTVMETA_BUILD_{option}=OFF" for option in options],
            check=True,
        )
        subprocess.run(["cmake", "--build", build, "--parallel", "2"], check=True)
        self.copy_file(str(build / LIBRARY), str(Path(self.build_lib) / "tvmeta" / LIBRARY))


class PlatformWheel(bdist_wheel):
    """Tags the wheel for any Python 3 of this platform, since only the library is compiled."""

    def finalize_options(self) -> None:
        """Install into the folder for platform-dependent packages."""
        super().finalize_options()
        self.root_is_pure = False

    def get_tag(self) -> "tuple[str, str, str]":
        """Return the tags of the wheel."""
        return "py3", "none", re.sub(r"[-.]", "_", sysconfig.get_platform())


setup(version=version(), cmdclass={"build_py": BuildWithLibrary, "bdist_wheel": PlatformWheel})
