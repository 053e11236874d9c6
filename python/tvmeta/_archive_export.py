"""Writes the table of an index into an SQLite database, and brings it up to date later."""

from __future__ import annotations

import json
import os
import sqlite3
from operator import itemgetter
from typing import Any, Iterator

from ._archive_store import Part, Store
from ._archive_table import COLUMNS, EMPTY_ROW, SCHEMA
from .errors import Error

_APPLICATION = 0x74766D61  # "tvma", in the header of the database
_TYPES = {"text": "TEXT", "integer": "INTEGER", "real": "REAL", "texts": "TEXT"}  # texts: a JSON array
_INDEXES = ("file", "dateTimeOriginal", "make, model", "lens", "bracketSet")
_CACHE_KIB = 65536

_NAMES = tuple(column.name for column in COLUMNS)
_values_of = itemgetter(*_NAMES)
_LISTS = tuple(column.name for column in COLUMNS if column.type == "texts")


def _create(database: sqlite3.Connection) -> None:
    columns = ", ".join(f'"{column.name}" {_TYPES[column.type]}' for column in COLUMNS)
    database.execute(
        f"CREATE TABLE photographs (id INTEGER PRIMARY KEY, part INTEGER NOT NULL REFERENCES parts, {columns})"
    )
    database.execute("CREATE TABLE parts (part INTEGER PRIMARY KEY, path TEXT NOT NULL UNIQUE, version TEXT NOT NULL)")
    database.execute("CREATE INDEX photographs_part ON photographs (part)")
    database.execute(f"PRAGMA application_id = {_APPLICATION}")
    database.execute(f"PRAGMA user_version = {SCHEMA}")


def _prepare(database: sqlite3.Connection, path: str) -> None:
    """Make the tables in an empty database; refuse one that is not an export."""

    def value(query: str) -> Any:
        return database.execute(query).fetchone()[0]

    if value("PRAGMA application_id") == _APPLICATION:
        if value("PRAGMA user_version") == SCHEMA:
            return
        raise Error(path, "was exported by another version of tvmeta; name a new file")
    if value("SELECT count(*) FROM sqlite_master"):
        raise Error(path, "is a database, but no export of an index; left unchanged")
    _create(database)


def _version(path: bytes) -> str:
    """Return what differs after a part is replaced."""
    found = os.stat(path)
    return f"{found.st_ino}.{found.st_size}.{found.st_mtime_ns}"


def _rows(store: Store, part: Part, number: int) -> Iterator[tuple[Any, ...]]:
    for row in store.rows(part):
        if len(row) < len(_NAMES):  # of an earlier schema
            row = {**EMPTY_ROW, **row}
        for name in _LISTS:
            row[name] = row[name] and json.dumps(row[name], ensure_ascii=False)
        yield (number, *_values_of(row))


def _insert(database: sqlite3.Connection, store: Store, part: Part, path: str, version: str) -> int:
    number = database.execute("INSERT INTO parts (path, version) VALUES (?, ?)", (path, version)).lastrowid
    assert number is not None
    names = ", ".join(f'"{name}"' for name in _NAMES)
    places = ", ".join("?" * (len(_NAMES) + 1))
    insert = f"INSERT INTO photographs (part, {names}) VALUES ({places})"
    return max(database.executemany(insert, _rows(store, part, number)).rowcount, 0)


def _update(database: sqlite3.Connection, store: Store) -> tuple[int, int]:
    old = dict(database.execute("SELECT path, version FROM parts"))
    parts = {}
    for part in store.all_parts():
        if part.kind == "jsonl.gz":
            path = store.part_path(part)
            parts[os.path.relpath(os.fsdecode(path), os.fsdecode(store.out))] = part, _version(path)
    changed = [path for path, (_, version) in parts.items() if old.get(path) != version]
    if 2 * len(changed) > len(parts):  # then making indexes anew is faster than keeping them sorted
        for number in range(len(_INDEXES)):
            database.execute(f"DROP INDEX IF EXISTS photographs_{number}")
    for path in [*(path for path in old if path not in parts), *(path for path in changed if path in old)]:
        database.execute("DELETE FROM photographs WHERE part = (SELECT part FROM parts WHERE path = ?)", (path,))
        database.execute("DELETE FROM parts WHERE path = ?", (path,))
    written = sum(_insert(database, store, parts[path][0], path, parts[path][1]) for path in changed)
    for number, names in enumerate(_INDEXES):
        database.execute(f"CREATE INDEX IF NOT EXISTS photographs_{number} ON photographs ({names})")
    (total,) = database.execute("SELECT count(*) FROM photographs").fetchone()
    return total, written


def export_sqlite(store: Store, path: str) -> tuple[int, int]:
    """Make the database equal to the index in one transaction; return its rows and those written."""
    store.manifest()
    try:
        database = sqlite3.connect(path, isolation_level=None)
        try:
            database.execute(f"PRAGMA cache_size = -{_CACHE_KIB}")
            database.execute("BEGIN IMMEDIATE")
            _prepare(database, path)
            result = _update(database, store)
            database.execute("COMMIT")
            return result
        finally:
            database.close()
    except sqlite3.Error as error:
        raise Error(path, f"{error}; the database is unchanged") from error
