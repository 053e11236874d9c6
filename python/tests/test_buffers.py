"""Pixels of objects without the buffer protocol."""

import numpy
import pytest
from conftest import pixels_of

import tvmeta


class Tensor:
    """An object with __array__ alone, like a tensor."""

    def __init__(self, array):
        """Keep the array."""
        self.array = array

    def __array__(self):
        """Return the array."""
        return self.array


class Image:
    """An object with __array_interface__ alone, like an image."""

    def __init__(self, array, **changes):
        """Describe an array, with changes such as a copy of the data."""
        described = {key: array.__array_interface__[key] for key in ("shape", "typestr", "data", "version")}
        self.array, self.__array_interface__ = array, {**described, **changes}


@pytest.mark.parametrize("dtype", ["u1", "u2", "f4"])
def test_accepted(tmp_path, dtype):
    array = numpy.random.default_rng(4).integers(0, 255, (5, 7, 3)).astype(dtype)
    path = tmp_path / "result.tif"
    for pixels in (Tensor(array[:, ::-1]), Tensor(array), Image(array), Image(array, data=array.tobytes())):
        tvmeta.save_tiff(path, pixels)
        expected = pixels.array
        assert (pixels_of(path, dtype, expected.shape) == expected).all()


PIXELS = numpy.zeros((2, 3, 4), "u1")
REFUSED = {
    "nothing": None,
    "list": [[[1, 2, 3, 4]]],
    "dates": Tensor(numpy.array(["2024"], "M8[Y]")),
    "no array": Tensor([1]),
    "too few bytes": Image(PIXELS, data=b"short"),
    "other byte order": Image(PIXELS.view("u2"), typestr=">u2"),
    "other numbers": Image(PIXELS.view("i4")),
    "strided": Image(PIXELS, strides=(24, 4, 1)),
}


@pytest.mark.parametrize("pixels", REFUSED.values(), ids=REFUSED.keys())
def test_refused(pixels):
    with pytest.raises(TypeError, match="pixels: "):
        tvmeta.hdr_statistics(pixels)
