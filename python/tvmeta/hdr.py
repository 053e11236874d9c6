"""Luminance of HDR pictures."""

from __future__ import annotations

from typing import Any, NamedTuple

from ._buffers import view_of
from ._library import library
from ctypes import c_float
from .errors import Error


class HdrStatistics(NamedTuple):
    """Luminance of the pixels above zero; all 0 if there is none."""

    minimum: float
    maximum: float
    mean: float


_NO_MINIMUM = 99999997952.0  # the library's minimum without a positive value


def hdr_statistics(pixels: Any) -> HdrStatistics:
    """Measure the smallest positive, largest and mean luminance of shared-exponent pixels.

    `pixels` has the shape (height, width, 4) and 8-bit samples: red, green and blue mantissas and
    the exponent, as in a Radiance picture. The samples are copied once, into planes.
    """
    view = view_of(pixels)
    shape = view.shape or ()
    if view.format != "B" or len(shape) != 3 or shape[2] != 4 or max(shape) >= 2**31:
        raise ValueError(f"pixels: uint8 of shape (height, width, 4) is required, not {view.format} {shape}")
    height, width, _ = shape
    samples, row = view.tobytes(), 4 * width
    planes = b"".join(
        samples[start + channel : start + row : 4]
        for start in range(0, height * row, row or 1)
        for channel in (2, 1, 0, 3)
    )
    results = (c_float * 3)()
    code = library.hdrMinMax(width, height, planes, results)
    if code < 0:
        raise Error(None, "not enough memory", code)
    minimum, maximum, mean = results
    return HdrStatistics(0.0 if minimum == _NO_MINIMUM else minimum, maximum, mean)
