"""HDR statistics, checked by numpy."""

import numpy
import pytest

import tvmeta


def test_luminance_of_shared_exponents():
    pixels = numpy.random.default_rng(3).integers(0, 255, (9, 31, 4), "u1")
    pixels[..., 3] = pixels[..., 3] % 20 + 120
    pixels[4, 7, 3] = 0  # no pixel
    red, green, blue, exponent = (pixels[..., i].astype("i8") for i in range(4))
    light = ((54 * red + 183 * green + 19 * blue) >> 8) * 2.0 ** (exponent - 128)
    light = light[exponent > 0]
    found = tvmeta.hdr_statistics(pixels)
    assert found.minimum == pytest.approx(light[light > 0].min()) and found.maximum == light.max()
    assert found.mean == pytest.approx(light.mean(), rel=1e-6)
    assert tvmeta.hdr_statistics(pixels[:, ::-1]) == pytest.approx(found)
    assert tvmeta.hdr_statistics(numpy.zeros((3, 2, 4), "u1")) == (0, 0, 0)
    for refused in (pixels[..., :3], numpy.zeros((2**31, 0, 4), "u1")):
        with pytest.raises(ValueError, match="height, width, 4"):
            tvmeta.hdr_statistics(refused)
