"""Pixels of objects without the buffer protocol."""

from types import SimpleNamespace

import numpy
import pytest
from conftest import pixels_of

import tvmeta


def tensor(array):
    """Return an object with __array__ alone."""
    return SimpleNamespace(array=array, __array__=lambda: array)


def image(array, **changes):
    """Return an object with __array_interface__ alone, with changes such as a copy of the data."""
    described = {key: array.__array_interface__[key] for key in ("shape", "typestr", "data", "version")}
    return SimpleNamespace(array=array, __array_interface__={**described, **changes})


@pytest.mark.parametrize("dtype", ["u1", "u2", "f4"])
def test_accepted(tmp_path, dtype):
    array = numpy.random.default_rng(4).integers(0, 255, (5, 7, 3)).astype(dtype)
    path = tmp_path / "result.tif"
    for pixels in (tensor(array[:, ::-1]), tensor(array), image(array), image(array, data=array.tobytes())):
        tvmeta.save_tiff(path, pixels)
        expected = pixels.array
        assert (pixels_of(path, dtype, expected.shape) == expected).all()


PIXELS = numpy.zeros((2, 3, 4), "u1")
REFUSED = {
    "nothing": None,
    "dates": tensor(numpy.array(["2024"], "M8[Y]")),
    "no array": tensor([1]),
    "too few bytes": image(PIXELS, data=b"short"),
    "other byte order": image(PIXELS.view("u2"), typestr=">u2"),
    "other numbers": image(PIXELS.view("i4")),
    "strided": image(PIXELS, strides=(24, 4, 1)),
}


@pytest.mark.parametrize("pixels", REFUSED.values(), ids=REFUSED.keys())
def test_refused(pixels):
    with pytest.raises(TypeError, match="pixels: "):
        tvmeta.hdr_statistics(pixels)
