"""Builds a wheel that contains the library, which CMake compiles, and an sdist that contains its sources."""

import re
import shutil
import subprocess
import sys
import sysconfig
from pathlib import Path
from typing import List, Tuple

from setuptools import Distribution, setup
from setuptools.command.build_py import build_py
from setuptools.command.sdist import sdist
from wheel.bdist_wheel import bdist_wheel

HERE = Path(__file__).resolve().parent
NATIVE = HERE / "native"  # the library's sources in an sdist
SOURCE = NATIVE if NATIVE.exists() else HERE.parent
SOURCES = ("CMakeLists.txt", "cmake", "include", "src", "python/CMakeLists.txt")
LIBRARY = "libtvmeta.1.dylib" if sys.platform == "darwin" else "libtvmeta.so.1"
SYSTEM_LIBRARIES = {"libc.so.6", "libm.so.6", "ld-linux-x86-64.so.2", "ld-linux-aarch64.so.1"}  # of manylinux
# The C++ library is linked in, hidden, so that any other version may be in the same process.
LINUX_FLAGS = "-static-libstdc++ -static-libgcc -Wl,--exclude-libs,ALL -Wl,--gc-sections -s"


def version() -> str:
    """Return the version of the project."""
    match = re.search(r"project\(tvmeta VERSION ([\d.]+)", (SOURCE / "CMakeLists.txt").read_text())
    assert match
    return match[1]


def manylinux_tag(library: Path, machine: str) -> str:
    """Return the platform of a library for Linux: the oldest C library that has what it uses."""
    dump = subprocess.run(["objdump", "-p", library], check=True, capture_output=True, text=True).stdout
    needed = set(re.findall(r"NEEDED +(\S+)", dump))
    if not needed <= SYSTEM_LIBRARIES:
        raise SystemExit(f"{library} needs {', '.join(sorted(needed - SYSTEM_LIBRARIES))}, which not every Linux has")
    versions = [tuple(map(int, found.split("."))) for found in re.findall(r"GLIBC_([\d.]+)", dump)]
    major, minor = max(versions)[:2]
    return f"manylinux_{major}_{minor}_{machine}"


class BuildWithLibrary(build_py):
    """Adds the library to the modules; an editable installation uses TVMETA_LIBRARY instead."""

    def run(self) -> None:
        """Copy the modules, then build the library next to them."""
        shutil.rmtree(Path(self.build_lib) / "tvmeta", ignore_errors=True)  # modules of an earlier build
        super().run()
        if self.editable_mode:
            return
        build = Path(self.get_finalized_command("build").build_temp).resolve()
        options = ["-DCMAKE_BUILD_TYPE=Release", "-DTVMETA_INSTALL=OFF"]
        options += [f"-DTVMETA_BUILD_{part}=OFF" for part in ("TOOL", "TESTS", "BENCH")]
        if sys.platform == "linux":
            options.append(f"-DCMAKE_SHARED_LINKER_FLAGS={LINUX_FLAGS}")
        subprocess.run(["cmake", "-S", SOURCE, "-B", build, *options], check=True)
        subprocess.run(["cmake", "--build", build, "--parallel", "2"], check=True)
        self.copy_file(str(build / LIBRARY), str(Path(self.build_lib) / "tvmeta" / LIBRARY))


class PlatformDistribution(Distribution):
    """Belongs into the folder for platform-dependent packages."""

    def has_ext_modules(self) -> bool:
        """Return whether there is compiled code."""
        return True


class PlatformWheel(bdist_wheel):
    """Tags the wheel for any Python 3 of this platform, since only the library is compiled."""

    def get_tag(self) -> Tuple[str, str, str]:
        """Return the tags of the wheel."""
        platform = re.sub(r"[-.]", "_", sysconfig.get_platform())
        library = Path(self.get_finalized_command("build").build_lib) / "tvmeta" / LIBRARY
        if sys.platform == "linux" and library.exists():  # not when pip asks for metadata alone
            platform = manylinux_tag(library, platform.partition("_")[2])
        return "py3", "none", platform


class SourceWithLibrary(sdist):
    """Adds the sources of the library to those of the package."""

    def make_release_tree(self, base_dir: str, files: List[str]) -> None:
        """Copy the package, then the library."""
        super().make_release_tree(base_dir, files)
        for name in SOURCES:
            target = Path(base_dir) / "native" / name
            target.parent.mkdir(parents=True, exist_ok=True)
            if (SOURCE / name).is_dir():
                shutil.copytree(SOURCE / name, target, dirs_exist_ok=True)
            else:
                shutil.copy2(SOURCE / name, target)


setup(
    version=version(),
    distclass=PlatformDistribution,
    cmdclass={"build_py": BuildWithLibrary, "bdist_wheel": PlatformWheel, "sdist": SourceWithLibrary},
)
