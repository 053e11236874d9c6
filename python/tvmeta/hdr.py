"""Luminance of HDR pictures."""

from __future__ import annotations

from ctypes import c_float
from typing import NamedTuple

from ._buffers import Pixels, view_of
from ._library import library


class HdrStatistics(NamedTuple):
    """Luminance of a picture, as `hdr_statistics()` counts it; all 0 if no pixel has light."""

    minimum: float  # the smallest above 0
    maximum: float
    mean: float


def hdr_statistics(pixels: Pixels) -> HdrStatistics:
    """Measure the luminance of shared-exponent pixels.

    `pixels` has the shape (height, width, 4) and 8-bit samples: red, green and blue mantissas and
    the exponent, as in a Radiance picture. Any object with the buffer protocol, `__array__` or
    `__array_interface__` is accepted; its samples are copied into planes.

    The luminance of a pixel is L * 2^(exponent - 128), where L is the integer part of
    (54 red + 183 green + 19 blue) / 256, by the weights of ITU-R BT.709. That is 256 times the value
    in the scale of Radiance, where mantissas are fractions; a picture's EXPOSURE is not applied. A
    luminance beyond single precision is infinite.

    - `minimum` is the smallest luminance above 0, or 99999997952 if that is larger.
    - `maximum` is the largest luminance.
    - `mean` is the sum of all luminances, in double precision, over the number of pixels whose
      exponent is not 0. Those are counted even if L is 0; pixels with exponent 0 are not.
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
    library.hdrMinMax(width, height, planes, results)  # fails for null pointers alone
    minimum, maximum, mean = results
    return HdrStatistics(minimum if maximum > 0 else 0.0, maximum, mean)
