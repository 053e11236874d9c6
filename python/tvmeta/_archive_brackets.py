"""Finds the bracketed sets of a folder and stores them in its rows."""

from __future__ import annotations

from ctypes import sizeof
from datetime import datetime, timedelta
from fractions import Fraction
from functools import lru_cache
from typing import Iterable, Optional

from . import _records as records
from ._archive_table import Row, name_bytes
from ._brackets import Shots
from ._library import library
from .photo import VALUES

_NONE = (None, None, None, None)
_COLUMNS = ("bracketSet", "bracketPosition", "bracketOffset", "bracketEvidence")
_EPOCH = datetime(1970, 1, 1)
_MAX_DENOMINATOR = 10**9  # so that 0.008 is 1/125 again

# What grouping needs: columns by the names of the values in the record's masks.
_TEXTS = {"make": "make", "model": "model", "serial_number": "serialNumber"}
_INTEGERS = {"orientation": "orientation", "iso_speed": "isoSpeed", "exposure_mode": "exposureMode"}
_FRACTIONS = {
    "exposure_time": "exposureTime",
    "f_number": "fNumber",
    "exposure_bias": "exposureBias",
    "focal_length": "focalLength",
}

Values = tuple[Optional[str], Optional[int], Optional[float], Optional[str]]


@lru_cache(maxsize=None)
def _formats() -> dict[str, int]:
    return {library.tvmeta_format_name(number).decode(): number for number in range(1, 14)}


@lru_cache(maxsize=4096)  # photographs share few exposures
def _rational(value: float) -> records.Rational:
    ratio = Fraction(value).limit_denominator(_MAX_DENOMINATOR)
    return records.Rational(ratio.numerator, ratio.denominator)


def _numbers(row: Row) -> dict[str, tuple[str, object]]:
    """Return the members that are numbers, and their values."""
    found: dict[str, tuple[str, object]] = {}
    for name, column in _INTEGERS.items():
        found[name] = column, row[column]
    for name, column in _FRACTIONS.items():
        if row[column] is not None:
            found[name] = column, _rational(row[column])
    if row["dateTimeOriginal"] is not None:
        taken = datetime.strptime(row["dateTimeOriginal"], "%Y:%m:%d %H:%M:%S")
        found["taken"] = "captureTime", (taken - _EPOCH) // timedelta(seconds=1)
    if row["subSecond"] is not None:
        found["sub_second"] = "captureNanoseconds", int(row["subSecond"].ljust(9, "0"))
    if row["utcOffset"] is not None:
        hours, minutes = row["utcOffset"][1:].split(":")
        east = int(hours) * 60 + int(minutes)
        found["utc_offset"] = "utcOffset", -east if row["utcOffset"].startswith("-") else east
    return found


def _record(row: Row) -> records.Photo:
    """Return what the library reads of the photograph of a row, as far as grouping needs it."""
    record = records.Photo(recordSize=sizeof(records.Photo), format=_formats().get(row["container"], 0), brokenAt=-1)
    record.width, record.height = row["width"] or 0, row["height"] or 0
    members = {name: (column, row[column] and row[column].encode()) for name, column in _TEXTS.items()}
    for name, (member, value) in {**members, **_numbers(row)}.items():
        if value is not None:
            setattr(record, member, value)
            record.present |= 1 << VALUES.index(name)
    return record


def find_sets(rows: Iterable[Row]) -> dict[bytes, Values]:
    """Return the values of the bracket columns for each photograph of a folder that is in a set."""
    shots, titles = Shots(), []
    for row in rows:
        if row["container"] is not None:
            shots.add(name_bytes(row), _record(row))
            titles.append(row["fileBytes"] or row["file"])
    members, sets = shots.find()
    firsts = {m.set: titles[i] for i, m in enumerate(members) if m.set >= 0 and m.place == 0 and m.leader == i}
    evidence = [library.tvmeta_evidence_text(found.evidence).decode() for found in sets]
    return {
        path: (firsts[member.set], member.place + 1, member.offset, evidence[member.set])
        for path, member in zip(shots.paths, members)
        if member.set >= 0
    }


def store_sets(rows: Iterable[Row], sets: dict[bytes, Values]) -> bool:
    """Set the bracket columns of rows; return whether any changed."""
    changed = False
    for row in rows:
        for column, value in zip(_COLUMNS, sets.get(name_bytes(row), _NONE)):
            changed = changed or row[column] != value
            row[column] = value
    return changed
