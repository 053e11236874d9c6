"""A source distribution and the wheel built from it, installed in an environment of its own without network."""

import os
import re
import subprocess
import sys
import tarfile
import zipfile
from pathlib import Path

import pytest
from conftest import SCENE

pytest.importorskip("build")
pytest.importorskip("wheel")
PACKAGE = Path(__file__).resolve().parents[1]
CLEAN = {name: os.environ[name] for name in os.environ if not name.startswith(("TVMETA_", "PYTHON"))}
# Compiling the library takes a minute, twice. This compiler launcher takes the object of the build under test, for an
# sdist after a look for the headers. The sdist has the same sources: see below.
LAUNCHER = """#!/bin/sh -e
for word; do
    [ "$previous" != -o ] || object=$word
    previous=$word
done
if [ -e "$TEST_OBJECTS/$object" ]; then
    [ "$TEST_OBJECTS" = "${TEST_TREE-}" ] || "$@" -E
    touch "$object.d"
    exec cp "$TEST_OBJECTS/$object" "$object"
fi
exec "$@"
"""


def run(*command, **variables):
    return subprocess.run(command, env={**CLEAN, **variables}, cwd="/", capture_output=True, text=True)


@pytest.fixture(scope="module")
def objects(tmp_path_factory):
    """Return the environment for builds that take the objects next to the library under test."""
    folder = Path(os.environ["TVMETA_LIBRARY"]).parent
    if not (folder / "CMakeFiles" / "tvmeta.dir").is_dir():
        return {}
    launcher = tmp_path_factory.mktemp("launcher") / "launcher"
    launcher.write_text(LAUNCHER)
    launcher.chmod(0o755)
    return {"CMAKE_CXX_COMPILER_LAUNCHER": str(launcher), "TEST_OBJECTS": str(folder)}


@pytest.fixture(scope="module")
def dist(tmp_path_factory, objects):
    """Return the folder of an sdist and of a wheel that was built from the sdist alone."""
    folder = tmp_path_factory.mktemp("dist")
    done = run(sys.executable, "-m", "build", "--no-isolation", "--outdir", folder, PACKAGE, **objects)
    assert done.returncode == 0, done.stdout + done.stderr
    return folder


def test_sdist_contains_the_library(dist):
    (archive,) = dist.glob("*.tar.gz")
    with tarfile.open(archive) as file:
        names = {name.partition("/")[2] for name in file.getnames()}
        native = {name for name in names if name.startswith("native/") and Path(name).suffix}
        for name in native:
            data = file.extractfile(f"{archive.name[:-7]}/{name}").read()
            assert data == (PACKAGE.parent / name[len("native/") :]).read_bytes(), name
    assert {"setup.py", "tvmeta/py.typed", "native/CMakeLists.txt", "native/include/tvmeta.h"} <= names
    assert len(native) > 100 and not any("tests" in name or "__pycache__" in name for name in names)


def test_wheel_fits_its_tag(dist, tmp_path):
    (wheel,) = dist.glob("*.whl")
    tag = re.search(r"-py3-none-manylinux_2_(\d+)_(\w+)\.whl", wheel.name)
    with zipfile.ZipFile(wheel) as file:
        names = file.namelist()
        library = file.extract("tvmeta/libtvmeta.so.1", tmp_path)
        info = file.read(next(name for name in names if name.endswith("WHEEL"))).decode()
    assert "Root-Is-Purelib: false" in info and not any(".data/" in name for name in names)
    symbols = subprocess.run(["objdump", "-T", library], capture_output=True, text=True, check=True).stdout
    assert max(int(minor) for minor in re.findall(r"\(GLIBC_2\.(\d+)", symbols)) == int(tag[1])
    assert "GLIBCXX" not in symbols and tag[2] == os.uname().machine
    exported = set(re.findall(r" g +DF \.text\s+\S+\s+(?:Base +)?(\S+)", symbols))
    assert "getExifData" in exported and not any(name.startswith("_Z") for name in exported)


def test_wheel_in_an_environment_of_its_own(dist, tmp_path):
    (wheel,) = dist.glob("*.whl")
    run(sys.executable, "-m", "venv", "--without-pip", tmp_path)
    python = tmp_path / "bin" / "python3"
    done = run(sys.executable, "-m", "pip", "--python", python, "install", "--no-index", wheel)
    assert done.returncode == 0, done.stdout + done.stderr
    program = f"import tvmeta, tvmeta._library as l; print(tvmeta.read({str(SCENE)!r}).model, l.library._name)"
    model, library = run(python, "-c", program).stdout.split()
    assert model == "TV-100" and Path(library).parent.name == "tvmeta" and str(tmp_path) in library
    named = os.environ["TVMETA_LIBRARY"]
    assert named in run(python, "-c", program, TVMETA_LIBRARY=named).stdout
    for other in ("/none/libtvmeta.so.1", "libm.so.6"):
        error = run(python, "-c", program, TVMETA_LIBRARY=other).stderr
        assert "ImportError: cannot load libtvmeta.so.1 version 1." in error
    error = run(python, "-m", "tvmeta.archive", "index", tmp_path, tmp_path / "out").stderr
    assert error.startswith("tvmeta: index needs Dask") and error.count("\n") == 1


def test_pip_installs_the_tree_without_network(objects, tmp_path):
    """The command of the manual."""
    run(sys.executable, "-m", "venv", "--system-site-packages", tmp_path)
    python = tmp_path / "bin" / "python3"
    options = ("--no-build-isolation", "--no-index")
    tree = objects.get("TEST_OBJECTS", "")
    done = run(python, "-m", "pip", "install", *options, PACKAGE, **objects, TEST_TREE=tree)
    assert done.returncode == 0, done.stdout + done.stderr
    assert run(python, "-c", "import tvmeta; print(tvmeta.__file__)").stdout.startswith(str(tmp_path))
