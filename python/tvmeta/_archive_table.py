"""The table of an archive: its columns and types, and how a photograph becomes a row.

Lines, the schema in the manifest and the columns of a database all follow COLUMNS.
"""

from __future__ import annotations

import base64
import json
import os
from typing import Any, Callable, NamedTuple, Optional

from ._fields import FIELDS, Value, name_fields
from .photo import Photo, read

SCHEMA = 1  # incremented when the columns change; parts are then written again
READER = 1  # incremented when photographs are read better; IMPROVED then names what
# Reader version: the containers that it reads better. Photographs of these and failures are read again.
IMPROVED: dict[int, frozenset[str]] = {}

# Names that promise a photograph. Only these files are opened.
SUFFIXES = tuple(
    f".{suffix}".encode()
    for suffix in (
        "jpg jpeg jpe tif tiff dng cr2 nef nrw arw sr2 srf pef srw orf rw2 raf cr3 psd psb heic heif hif avif jxl png "
        "webp x3f crw mrw iiq 3fr"
    ).split()
)

Row = dict[str, Any]


class Column(NamedTuple):
    """A column: its name, its type ("text", "integer", "real" or "texts"), and its value in a photograph."""

    name: str
    type: str
    value: Optional[Callable[[Photo], Value]] = None  # None: set by the index


COLUMNS = (
    Column("file", "text"),  # path relative to the top folder
    Column("fileBytes", "text"),  # in base64, if the name is not printable UTF-8
    Column("size", "integer"),  # bytes; 0 if the system refused the file
    Column("mtime", "integer"),  # nanoseconds since 1970; 0 if the system refused the file
    Column("failure", "text"),  # why the file, or a part of it, cannot be read
    Column("stale", "text"),  # why the row is that of an earlier run
    Column("bracketSet", "text"),  # `file` of the set's first photograph
    Column("bracketPosition", "integer"),  # in the set, from 1
    Column("bracketOffset", "real"),  # stops from the middle exposure, positive for brighter ones
    Column("bracketEvidence", "text"),
    *(Column(*field) for field in FIELDS),
)
EMPTY_ROW: Row = {column.name: None for column in COLUMNS}
_READ = [(column.name, column.value) for column in COLUMNS if column.value]

# The types of the columns for pandas.read_json() and dask.dataframe.read_json().
DTYPES = {
    column.name: {"text": "string", "integer": "Int64", "real": "float64", "texts": "object"}[column.type]
    for column in COLUMNS
}


def is_photograph_name(name: bytes) -> bool:
    """Return whether a name promises a photograph."""
    return name.lower().endswith(SUFFIXES)


def name_bytes(row: Row) -> bytes:
    """Return the path that name_fields() stored."""
    if row.get("fileBytes"):
        return base64.b64decode(row["fileBytes"])
    return str(row["file"]).encode()


def file_row(name: bytes, size: int = 0, mtime: int = 0, failure: Optional[str] = None) -> Row:
    """Return the row of a file with nothing of a photograph."""
    return {**EMPTY_ROW, **name_fields(name), "size": size, "mtime": mtime, "failure": failure}


def read_row(path: bytes, name: bytes, size: int, mtime: int) -> Row:
    """Read a photograph into a row; raises FileError."""
    photo = read(os.fsdecode(path))
    row = file_row(name, size, mtime, photo.damage)
    row.update((column, value(photo)) for column, value in _READ)
    return row


def kept_row(row: Row) -> Row:
    """Return a row of an earlier run with today's columns, without what depends on other files."""
    row = {column: row.get(column) for column in EMPTY_ROW}
    row.update(stale=None, bracketSet=None, bracketPosition=None, bracketOffset=None, bracketEvidence=None)
    return row


def is_outdated(row: Row, reader: int) -> bool:
    """Return whether the present reader reads better what the reader of that version made this row of."""
    improved = (containers for version, containers in IMPROVED.items() if version > reader)
    return any(row["failure"] or row["container"] in containers for containers in improved)


def line_of(row: Row) -> bytes:
    """Return a row as a line of JSON."""
    return json.dumps(row, ensure_ascii=False, separators=(",", ":")).encode() + b"\n"
