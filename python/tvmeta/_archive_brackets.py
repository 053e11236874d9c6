"""Finds the bracketed sets of a folder and stores them in its rows."""

from __future__ import annotations

import os
from typing import Iterable, Iterator, NamedTuple, Optional

from ._archive_table import Row, name_bytes
from ._brackets import brackets
from .errors import Error

_MAX_ARGUMENT_BYTES = 1_000_000  # of the tool's command line
_NONE = (None, None, None, None)
_COLUMNS = ("bracketSet", "bracketPosition", "bracketOffset", "bracketEvidence")

Values = tuple[Optional[str], Optional[int], Optional[float], Optional[str]]


class Shot(NamedTuple):
    """What grouping needs of a row."""

    name: bytes
    title: str


def shot_of(row: Row) -> Optional[Shot]:
    """Return the shot of a row; None if it cannot be in a set."""
    if row["dateTimeOriginal"] is None or row["exposureTime"] is None:
        return None
    return Shot(name_bytes(row), row["fileBytes"] or row["file"])


def _chunks(paths: Iterable[bytes]) -> Iterator[list[bytes]]:
    chunk: list[bytes] = []
    size = 0
    for path in paths:
        if size + len(path) > _MAX_ARGUMENT_BYTES:
            yield chunk
            chunk, size = [], 0
        chunk.append(path)
        size += len(path) + 1
    yield chunk


def find_sets(root: bytes, shots: Iterable[Shot]) -> dict[bytes, Values]:
    """Return the values of the bracket columns for each photograph of a folder that is in a set."""
    titles = {os.path.join(root, shot.name): shot for shot in shots}
    found: dict[bytes, Values] = {}
    try:
        for paths in _chunks(titles):
            for group in brackets(paths):
                title = titles[group.files[0]].title
                for position, (path, offset) in enumerate(zip(group.files, group.offsets), 1):
                    found[titles[path].name] = (title, position, offset, None)
    except Error:  # there is no tool
        return {}
    return found


def store_sets(rows: Iterable[Row], sets: dict[bytes, Values]) -> bool:
    """Set the bracket columns of rows; return whether any changed."""
    changed = False
    for row in rows:
        for column, value in zip(_COLUMNS, sets.get(name_bytes(row), _NONE)):
            changed = changed or row[column] != value
            row[column] = value
    return changed
