"""A photograph's values as the writers need them.

The library's own conversion keeps hundredths, and its writers leave out a coordinate or time whose
first number is 0. Exact fractions are used here instead, and such a coordinate is written as
fractional degrees or hours.
"""

from __future__ import annotations

from ctypes import byref
from fractions import Fraction
from typing import Any, Optional, Sequence

from ._library import library
from ._records import GpsBuf, MetadataBuf
from ._values import fraction
from .photo import Photo

_MAX = 2**31 - 1


def rational(value: Fraction) -> tuple[int, int]:
    """Return numerator and denominator, each from 1 to 2^31 - 1, of the nearest such fraction."""
    if value >= _MAX:
        return _MAX, 1
    if value.denominator > _MAX or value.numerator > _MAX:
        value = value.limit_denominator(int(_MAX // max(value, Fraction(1))))
    return (value.numerator, value.denominator) if value else (1, _MAX)


def _set_rational(target: Any, value: float) -> None:
    exact = fraction(value)
    if exact is not None and exact > 0:
        target[:] = rational(exact)


def _set_angle(target: Any, words: Sequence[int]) -> None:
    """Move minutes and seconds into the first number if that is 0."""
    whole, *rest = zip(words[::2], words[1::2])
    if whole[0] == 0 and whole[1] != 0:
        minutes, seconds = (Fraction(n, d) if d else Fraction(0) for n, d in rest)
        target[:] = (*rational(minutes / 60 + seconds / 3600), 0, 1, 0, 1)


def writer_records(photo: Optional[Photo]) -> tuple[MetadataBuf, GpsBuf]:
    """Return the records of a photograph for buf2tif(); empty ones without a photograph."""
    metadata, gps = MetadataBuf(), GpsBuf()
    if photo is None:
        return metadata, gps
    info = photo.record
    library.metadataBufFromExifInfo(byref(info), byref(metadata), byref(gps))
    for name in ("exposureTime", "fNumber", "focalLength"):
        _set_rational(getattr(metadata, name), getattr(info, name))
    if photo.lens:
        metadata.lens = photo.lens.encode()[:64]
    _set_angle(gps.latitude, info.gpsLatitude)
    _set_angle(gps.longitude, info.gpsLongitude)
    _set_angle(gps.timeStamp, info.gpsTimeStamp)
    return metadata, gps
