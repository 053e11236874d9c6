"""Bracketed sets of photographs."""

from __future__ import annotations

import math
import os
from ctypes import Array, byref, sizeof
from datetime import datetime
from typing import Iterable, NamedTuple, Optional, Sequence, Union

from . import _records as records
from ._fields import shortest
from ._library import library
from ._sources import PathLike, library_path, opened
from .errors import FileError
from .photo import Photo, capture_time, damage_text, read_record

_FOCAL_LENGTH = 15  # bit of the masks


class BracketSet(NamedTuple):
    """Photographs of one scene at several exposures, in order of capture."""

    files: list[bytes]  # of a raw file with a JPEG file, the raw file
    ev: list[Optional[float]]  # at ISO 100; None if an exposure is incomplete
    offsets: list[float]  # stops from the middle exposure, positive for brighter ones
    range: float  # stops from the darkest to the brightest
    taken: Optional[datetime]
    camera: Optional[str]
    focal_length: Optional[float]  # millimetres
    expected: int  # photographs of the complete set; 0 if that is unknown
    evidence: str  # why this is a set, such as "exposure mode 2, bias varies"
    all_files: list[bytes]  # also the JPEG files of raw files


class BracketFailure(NamedTuple):
    """A photograph that cannot be read, or of which a part could be read."""

    file: bytes
    reason: str


class Brackets(list[BracketSet]):
    """The sets in order of capture, and the photographs that are missing or damaged."""

    failures: Sequence[BracketFailure] = ()


class Shots:
    """The library's records of photographs, and the texts that they point at."""

    def __init__(self) -> None:
        """Start without photographs."""
        self.paths: list[bytes] = []
        self.cameras: list[bytes] = []
        self._texts: dict[bytes, bytes] = {}
        self._names: list[bytes] = []
        self._records = bytearray()

    def _shared(self, text: bytes) -> bytes:
        return self._texts.setdefault(text, text)

    def add(self, path: bytes, photo: records.Photo) -> None:
        """Add a photograph."""
        folder, name = os.path.split(os.path.normpath(path))
        shot = records.Shot(recordSize=sizeof(records.Shot))
        library.tvmeta_shot(byref(photo), self._shared(folder), name, byref(shot))
        self.paths.append(path)
        self.cameras.append(self._shared(photo.model))
        self._names.append(name)
        self._records += bytes(shot)

    def array(self) -> Array[records.Shot]:
        """Return the records, without a copy."""
        return (records.Shot * len(self.paths)).from_buffer(self._records)

    def find(
        self, gap: Optional[float] = None, count: Optional[int] = None
    ) -> tuple[Array[records.BracketMember], list[records.BracketSet]]:
        """Return the place of each photograph, and the sets."""
        size = len(self.paths)
        members, sets = (records.BracketMember * size)(), (records.BracketSet * max(size, 1))()
        sets[0].recordSize = sizeof(records.BracketSet)
        options = records.BracketOptions(sizeof(records.BracketOptions), count or 0, -1 if gap is None else gap)
        found = library.tvmeta_find_brackets(self.array(), size, byref(options), members, sets)
        if found < 0:
            raise MemoryError(library.tvmeta_status_text(found).decode())
        return members, sets[:found]


def _exposure_value(shot: records.Shot) -> Optional[float]:
    if min(shot.exposureTime, shot.fNumber, shot.isoSpeed) <= 0:
        return None
    return round(math.log2(shot.fNumber**2 / shot.exposureTime) - math.log2(shot.isoSpeed / 100), 2) + 0.0


def _sets(shots: Shots, gap: Optional[float], count: Optional[int]) -> list[BracketSet]:
    members, sets = shots.find(gap, count)
    every, found = shots.array(), []
    files: list[list[int]] = [[] for _ in sets]
    for index, member in enumerate(members):
        if member.set >= 0:
            files[member.set].append(index)
    for group, unordered in zip(sets, files):
        ordered = sorted(unordered, key=lambda i: (members[i].place, members[i].leader != i, shots.paths[i]))
        indices = [index for index in ordered if members[index].leader == index]
        offsets = [round(members[index].offset, 2) + 0.0 for index in indices]
        first = every[indices[0]]
        found.append(
            BracketSet(
                files=[shots.paths[index] for index in indices],
                ev=[_exposure_value(every[index]) for index in indices],
                offsets=offsets,
                range=round(max(offsets) - min(offsets), 2),
                taken=capture_time(first),
                camera=shots.cameras[indices[0]].decode("utf-8", "replace") or None,
                focal_length=shortest(first.focalLength) if first.present >> _FOCAL_LENGTH & 1 else None,
                expected=group.expectedShots,
                evidence=library.tvmeta_evidence_text(group.evidence).decode(),
                all_files=[shots.paths[index] for index in ordered],
            )
        )
    return found


def _add(shots: Shots, given: Union[Photo, PathLike]) -> Optional[BracketFailure]:
    """Add a photograph; return what is wrong with it."""
    if isinstance(given, Photo):
        if given.path is None:
            raise ValueError("a Photo that was read from a path is required")
        path, record = os.fsencode(given.path), given.record
    else:
        path = library_path(given)[1]
        try:
            with opened(os.fsdecode(path)) as source:
                record = read_record(os.fsdecode(path), source)
        except FileError as error:
            return BracketFailure(path, error.reason)
    shots.add(path, record)
    damage = damage_text(record.brokenAt)
    return None if damage is None else BracketFailure(path, damage)


def brackets(
    photos: Iterable[Union[Photo, PathLike]], *, gap: Optional[float] = None, count: Optional[int] = None
) -> Brackets:
    """Find the bracketed sets among photographs, given as Photo or path, in any order.

    `gap` is the longest pause within a set in seconds, from the end of an exposure to the next;
    without it, it is learnt from the photographs. `count` fixes the number of photographs of a set.
    The rules are those of tvmeta_find_brackets() in tvmeta_photo.h.

    The result is a list of the sets. Photographs that are missing or damaged are in its `failures`,
    with the reason; other sets do not depend on them. A photograph takes some 800 bytes of memory.
    """
    if isinstance(photos, (str, bytes, os.PathLike)):
        raise TypeError("photos: a list of photographs is required, not one path")
    if gap is not None and not gap >= 0:
        raise ValueError(f"gap: seconds from 0 are required, not {gap}")
    if count is not None and count < 2:
        raise ValueError(f"count: 2 or more is required, not {count}")
    shots = Shots()
    failures = [failure for photo in photos if (failure := _add(shots, photo))]
    found = Brackets(_sets(shots, gap, count))
    found.failures = failures
    return found
