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
    # The neighbouring floats are half as far below a power of two.
    below = 1 if mantissa == 0 and exponent > 1 else 2
    quarters = 4 * (mantissa | (0x800000 if bits >> 23 else 0))
    unit = 2 ** (152 - exponent)
    # The ends of the interval never are the simplest: the value itself has a smaller denominator.
    result = Fraction(*_simplest(quarters - below, unit, quarters + 2, unit))
    return result if value > 0 else -result


def sexagesimal(words: Sequence[int]) -> Optional[Fraction]:
    """Sum up degrees (hours), minutes and seconds; None if the first has no denominator."""
    if words[1] == 0:
        return None
    parts = [Fraction(words[i], words[i + 1] or 1) if words[i + 1] else Fraction(0) for i in (0, 2, 4)]
    return parts[0] + parts[1] / 60 + parts[2] / 3600


def degrees(words: Sequence[int], reference: bytes) -> Optional[float]:
    """Return decimal degrees, negative in the south and west."""
    angle = sexagesimal(words) if reference else None
    if angle is None:
        return None
    return float(-angle if reference in (b"S", b"W") else angle)


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
