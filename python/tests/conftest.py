"""Fixtures and witnesses of the tests."""

import atexit
import json
import os
import struct
import subprocess
from functools import lru_cache
from pathlib import Path

import pytest

EXAMPLES = Path(__file__).resolve().parents[2] / "examples"
SCENE = EXAMPLES / "scene.jpg"


@lru_cache(maxsize=None)
def exiftool_process():
    """Start exiftool once: that takes longer than most tests."""
    pipes = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE, "stderr": subprocess.DEVNULL}
    process = subprocess.Popen(["exiftool", "-stay_open", "True", "-@", "-"], **pipes)
    atexit.register(process.communicate, b"-stay_open\nFalse\n")
    return process


def exiftool(*arguments):
    """Return the output of exiftool, a program that shares no code with the library."""
    process, end = exiftool_process(), b"{ready}\n"
    process.stdin.write("".join(f"{argument}\n" for argument in (*arguments, "-execute")).encode())
    process.stdin.flush()
    output = b""
    while not output.endswith(end):
        read = process.stdout.read1()
        assert read, "exiftool ended"
        output += read
    return output[: -len(end)]


def tags_of(path):
    """Return the tags of a file as numbers and texts."""
    return json.loads(exiftool("-n", "-j", path))[0]


def pixels_of(path, dtype, shape):
    """Return the pixels of an uncompressed TIFF file of one strip."""
    import numpy

    tags = tags_of(path)
    start, size = int(tags["StripOffsets"]), int(tags["StripByteCounts"])
    data = Path(path).read_bytes()[start : start + size]
    return numpy.frombuffer(data, dtype).reshape(shape)


@pytest.fixture
def make_photo(tmp_path):
    """Return a function that writes a JPEG with the given tags, and no others."""

    def make(*tags, name="photo.jpg"):
        path = tmp_path / name
        exiftool("-all=", *tags, "-o", path, SCENE)
        return path

    return make


def write(path, data):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(data)


def bracket_photo(second, denominator, model=b"TV-100", year=b"2024"):
    """Return a photograph of the example's camera, taken at that second with 1/denominator s."""
    data = SCENE.read_bytes().replace(b"TV-100\0", model + b"\0")
    data = data.replace(b"2024:06:21 20:41:07", year + b":06:21 20:%02d:%02d" % divmod(second, 60))
    return data.replace(struct.pack(">II", 1, 125), struct.pack(">II", 1, denominator))


@pytest.fixture(scope="module")
def tree(tmp_path_factory):
    """Return an archive."""
    from archives import make_tree

    return make_tree(tmp_path_factory.mktemp("archive"))


@pytest.fixture(scope="module")
def whole(tree, tmp_path_factory):
    """Return an index that was built in one run."""
    from archives import ALL, index

    out = tmp_path_factory.mktemp("whole")
    assert index(tree, out) == (ALL, [])
    return out
