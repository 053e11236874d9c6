"""A wheel from the tree, in an environment of its own and without network."""

import os
import subprocess
import sys
from pathlib import Path

import pytest
from conftest import SCENE

pytest.importorskip("wheel")


def test_wheel_contains_the_library(tmp_path):
    package = Path(__file__).resolve().parents[1]
    subprocess.run([sys.executable, "-m", "venv", "--system-site-packages", tmp_path], check=True)
    python = tmp_path / "bin" / "python3"
    clean = {name: os.environ[name] for name in os.environ if not name.startswith(("TVMETA_", "PYTHON"))}
    command = [python, "-m", "pip", "install", "--no-build-isolation", "--no-index", "--no-deps", package]
    done = subprocess.run(command, env=clean, capture_output=True, text=True)
    assert done.returncode == 0, done.stdout + done.stderr
    program = f"import tvmeta, tvmeta._library as l; print(tvmeta.read({str(SCENE)!r}).model, l.library._name)"

    def run(**variables):
        command, environment = [python, "-c", program], {**clean, **variables}
        return subprocess.run(command, env=environment, cwd=tmp_path, capture_output=True, text=True)

    model, library = run().stdout.split()
    assert model == "TV-100" and Path(library).parent.name == "tvmeta" and str(tmp_path) in library
    (tag,) = [line for path in tmp_path.rglob("WHEEL") for line in path.read_text().splitlines() if "linux" in line]
    assert tag.startswith("Tag: py3-none-linux_")
    assert os.environ["TVMETA_LIBRARY"] in run(TVMETA_LIBRARY=os.environ["TVMETA_LIBRARY"]).stdout
    for other in ("/none/libtvmeta.so.1", "libm.so.6"):
        assert "ImportError: cannot load libtvmeta.so.1 version 1.1" in run(TVMETA_LIBRARY=other).stderr
