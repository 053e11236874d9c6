"""Python values of the fields of a record."""

from __future__ import annotations

import math
import struct
from datetime import datetime, timedelta, timezone
from fractions import Fraction
from functools import lru_cache
from typing import Optional, Sequence


def text(field: bytes) -> Optional[str]:
    """Decode a text: UTF-8, else Latin-1 as older cameras write it."""
    if not field:
        return None
    try:
        return field.decode()
    except UnicodeDecodeError:
        return field.decode("latin-1")


def date_time(field: bytes) -> Optional[datetime]:
    """Parse "YYYY:MM:DD HH:MM:SS"; None if it is no date, as of a clock that was never set."""
    try:
        parts = [int(field[i:j]) for i, j in ((0, 4), (5, 7), (8, 10), (11, 13), (14, 16), (17, 19))]
        return datetime(*parts)  # type: ignore[arg-type]
    except ValueError:
        return None


def _simplest(a: int, b: int, c: int, d: int) -> tuple[int, int]:
    """Return the fraction of smallest denominator from a/b to c/d, by their continued fractions."""
    whole, rest = divmod(a, b)
    if rest == 0:
        return whole, 1
    if whole < c // d:
        return whole + 1, 1
    n, m = _simplest(d, c - whole * d, b, rest)
    return whole * n + m, n


@lru_cache(maxsize=4096)  # photographs share few exposures, and this costs more than the rest of a photograph
def fraction(value: float) -> Optional[Fraction]:
    """Return the simplest fraction that rounds to this single-precision float; None for 0, inf and NaN."""
    if value == 0 or not math.isfinite(value):
        return None
    if abs(value) >= 2**23:  # an integer
        return Fraction(value)
    (bits,) = struct.unpack("<I", struct.pack("<f", abs(value)))
    exponent, mantissa = max(bits >> 23, 1), bits & 0x7FFFFF
    halves = 2 * (mantissa | (0x800000 if bits >> 23 else 0))
    unit = 2 ** (151 - exponent)
    # From half a step below to half a step above. The ends never are the simplest: the value has a smaller
    # denominator. Below a power of two, steps are half as long, but fractions there are less simple than above.
    result = Fraction(*_simplest(halves - 1, unit, halves + 1, unit))
    return result if value > 0 else -result


def sexagesimal(words: Sequence[int]) -> Optional[float]:
    """Sum up degrees (hours), minutes and seconds; None if the first has no denominator."""
    a, b, c, d, e, f = words
    if b == 0:
        return None
    return a / b + (c / d / 60 if d else 0) + (e / f / 3600 if f else 0)


def degrees(words: Sequence[int], reference: bytes) -> Optional[float]:
    """Return decimal degrees, negative in the south and west."""
    angle = sexagesimal(words) if reference else None
    return -angle if angle is not None and reference in (b"S", b"W") else angle


def altitude(words: Sequence[int], reference: int) -> Optional[float]:
    """Return metres above sea level."""
    if words[1] == 0:
        return None
    metres = words[0] / words[1]
    return -metres if reference == 1 else metres


def gps_time(date: bytes, words: Sequence[int]) -> Optional[datetime]:
    """Return the time of the position in UTC; None unless both date and time are valid."""
    day = date_time(date + b" 00:00:00")
    hours = sexagesimal(words)
    if day is None or hours is None or hours > 25:
        return None
    return day.replace(tzinfo=timezone.utc) + timedelta(microseconds=round(hours * 3_600_000_000))
