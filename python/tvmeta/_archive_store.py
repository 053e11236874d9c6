"""The files of an index, written so that any process may be killed at any time.

    index.json                     manifest: root, schema, versions, generation, totals of the last complete run
    failures.jsonl                 folders that could not be listed, with the reason
    lock, commit                   empty; locked by the client, and while the manifest or a part is replaced
    parts/KK/KEY[-BITS].jsonl.gz   rows of a folder, or of a part of a large folder
    parts/KK/KEY-BITS.draft        rows of such a part whose bracketed sets are not found yet
    parts/KK/KEY-BITS.names        names of a large folder, for its tasks

KEY is a hash of the folder's path. BITS are the first bits of the hash of a name, which decide in
which part the file is. The state of a part is the original file name in its gzip header, so rows
and state are replaced at once, and every program that reads gzip ignores it.
"""

from __future__ import annotations

import fcntl
import gzip
import io
import json
import os
import re
from contextlib import contextmanager, suppress
from hashlib import blake2b
from typing import Any, Iterable, Iterator, NamedTuple, Optional

from . import _files as files
from ._archive_table import COLUMNS, READER, SCHEMA, Row, line_of
from .errors import Error

_COMPRESSION = 4
_TITLE = "tvmeta archive index"
_HEADER_BYTES = 512
_GZIP_NAME = 8  # flag: the header contains the original file name, and nothing else that is optional
_PART = re.compile(rb"([0-9a-f]{16})(?:-([01]+))?\.(jsonl\.gz|draft|names)")
_TEMPORARY = re.compile(rb"\.tvmeta-[0-9a-f]{16}")
_OWN = (b"index.json", b"failures.jsonl", b"lock", b"commit", b"parts")


class Part(NamedTuple):
    """A file below `parts/`."""

    key: str
    bits: str
    kind: str = "jsonl.gz"


class State(NamedTuple):
    """What is known of a part without its rows."""

    schema: int
    reader: int
    listing: str  # hash of names, sizes and times of change
    photographs: int
    failures: int
    again: int  # rows that every run tries again

    def text(self) -> str:
        """Return the state as a file name."""
        return ".".join(map(str, self)) + ".jsonl"


def parsed_state(text: str) -> Optional[State]:
    """Return the state that text() gave."""
    found = re.fullmatch(r"(\d+)\.(\d+)\.([0-9a-f]+)\.(\d+)\.(\d+)\.(\d+)\.jsonl", text)
    if not found:
        return None
    schema, reader, listing, *counts = found.groups()
    return State(int(schema), int(reader), listing, *map(int, counts))


class Superseded(Exception):
    """Another run works on this index, so this task must not write."""


def hash_of(name: bytes) -> bytes:
    """Return the hash that names parts."""
    return blake2b(name, digest_size=8).digest()


def bits_of(name: bytes, count: int) -> str:
    """Return the first bits of a name's hash."""
    return format(int.from_bytes(hash_of(name), "big"), "064b")[:count]


def key_of(folder: bytes) -> str:
    """Return the key of a folder's parts."""
    return hash_of(folder).hex()


@contextmanager
def _locked(path: bytes, kind: int) -> Iterator[None]:
    with open(path, "ab") as lock:
        fcntl.flock(lock, kind)
        yield


class Store(NamedTuple):
    """The folder of an index, for the run with this generation."""

    out: bytes
    generation: int = 0

    def path(self, *names: bytes) -> bytes:
        """Return a path in the folder."""
        return os.path.join(self.out, *names)

    def part_path(self, part: Part) -> bytes:
        """Return the path of a part."""
        name = f"{part.key}-{part.bits}.{part.kind}" if part.bits else f"{part.key}.{part.kind}"
        return self.path(b"parts", part.key[:2].encode(), name.encode())

    def manifest(self) -> dict[str, Any]:
        """Return the manifest; raises Error if the folder is not an index."""
        shown = os.fsdecode(self.out)
        try:
            with open(self.path(b"index.json"), "rb") as file:
                found = json.loads(file.read())
        except (FileNotFoundError, NotADirectoryError, ValueError) as error:
            raise Error(shown, "is not an index") from error
        except OSError as error:
            raise Error(shown, f"the index cannot be read: {error.strerror}") from error
        if not isinstance(found, dict) or found.get("title") != _TITLE:
            raise Error(shown, "is not an index of this version; name a new folder")
        if found["schema"] > SCHEMA or found["reader"] > READER:
            raise Error(shown, "the index was made by a later version of tvmeta")
        return found

    @contextmanager
    def locked_for_run(self) -> Iterator[None]:
        """Recognise or make the folder, and keep a second run away."""
        os.makedirs(self.out, exist_ok=True)
        names = set(os.listdir(self.out))
        if b"index.json" in names:
            self.manifest()
        elif any(name not in _OWN[:4] and not _TEMPORARY.fullmatch(name) for name in names):
            raise Error(os.fsdecode(self.out), "is not an index and not empty; left unchanged")
        with open(self.path(b"lock"), "ab") as lock:
            try:
                fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
            except BlockingIOError as error:
                raise Error(os.fsdecode(self.out), "another run writes this index") from error
            yield

    def write_manifest(self, fields: Row) -> None:
        """Replace the manifest. Once a new generation is in it, earlier tasks can replace nothing."""
        columns = [{"name": column.name, "type": column.type} for column in COLUMNS]
        fixed = {"title": _TITLE, "schema": SCHEMA, "reader": READER, "generation": self.generation}
        with _locked(self.path(b"commit"), fcntl.LOCK_EX):
            files.write(self.path(b"index.json"), line_of({**fixed, **fields, "columns": columns}))

    def write_failures(self, rows: Iterable[Row]) -> None:
        """Replace the list of folders that could not be listed."""
        files.write(self.path(b"failures.jsonl"), b"".join(map(line_of, rows)))

    @contextmanager
    def commit(self) -> Iterator[None]:
        """Change parts in this block; raises Superseded if a later run has begun."""
        if not os.path.exists(self.path(b"commit")):  # never make a folder of that name on another machine
            raise Superseded("the index is not visible")
        with _locked(self.path(b"commit"), fcntl.LOCK_SH):
            if self.manifest()["generation"] != self.generation:
                raise Superseded("a later run writes this index")
            yield

    def write(self, part: Part, data: bytes) -> None:
        """Replace a file below `parts/` so that it survives a power failure."""
        path = self.part_path(part)
        folder = os.path.dirname(path)
        if not os.path.isdir(folder):
            os.makedirs(folder, exist_ok=True)
            files.synchronise_folder(self.path(b"parts"))
        files.write(path, data)

    def remove(self, parts: Iterable[Part]) -> None:
        """Remove parts that exist."""
        for part in parts:
            with suppress(FileNotFoundError):
                os.unlink(self.part_path(part))

    def write_rows(self, part: Part, rows: list[Row], state: State) -> None:
        """Replace a part or draft; a part without rows is removed."""
        if not rows and part.kind == "jsonl.gz":
            self.remove([part])
            return
        buffer = io.BytesIO()
        with gzip.GzipFile(state.text(), "wb", _COMPRESSION, buffer, mtime=0) as file:
            file.write(b"".join(map(line_of, rows)))
        self.write(part, buffer.getvalue())

    def state(self, part: Part) -> Optional[State]:
        """Return the state of a part; None if there is none."""
        try:
            with open(self.part_path(part), "rb") as file:
                head = file.read(_HEADER_BYTES)
        except FileNotFoundError:
            return None
        if len(head) < 10 or head[3] != _GZIP_NAME:
            return None
        return parsed_state(head[10:].split(b"\0")[0].decode("latin-1"))

    def rows(self, part: Part) -> Iterator[Row]:
        """Give the rows of a part; raises Error if it is damaged."""
        path = self.part_path(part)
        try:
            with gzip.open(path, "rt", encoding="utf-8", newline="\n") as file:
                yield from map(json.loads, file)
        except FileNotFoundError:
            return  # replaced by other parts of its folder meanwhile
        except (OSError, EOFError, ValueError) as error:
            raise Error(os.fsdecode(path), "damaged; remove it, and index again") from error

    def parts_of(self, key: str) -> list[Part]:
        """Return the parts and drafts of a folder, parts first."""
        with suppress(FileNotFoundError):
            found = map(part_of, os.listdir(self.path(b"parts", key[:2].encode())))
            return sorted(
                (part for part in found if part and part.key == key), key=lambda part: part.kind != "jsonl.gz"
            )
        return []

    def all_parts(self) -> Iterator[Part]:
        """Give all files of ours below `parts/`, sorted."""
        for folder, folders, names in os.walk(self.path(b"parts")):
            folders.sort()
            yield from (
                part
                for part in map(part_of, sorted(names))
                if part and os.path.basename(folder).decode() == part.key[:2]
            )

    def remove_temporary(self) -> None:
        """Remove temporary files of killed processes."""
        for folder, _, names in os.walk(self.path(b"parts")):
            for name in filter(_TEMPORARY.fullmatch, names):
                os.unlink(os.path.join(folder, name))
        for name in filter(_TEMPORARY.fullmatch, os.listdir(self.out)):
            os.unlink(self.path(name))


def part_of(name: bytes) -> Optional[Part]:
    """Return the part with this file name; None for files that are not ours."""
    found = _PART.fullmatch(name)
    return Part(*((group or b"").decode() for group in found.groups())) if found else None


def state_of(rows: list[Row], listing: str) -> State:
    """Return the state of these rows."""
    return State(
        SCHEMA,
        READER,
        listing,
        sum(row["container"] is not None for row in rows),
        sum(row["failure"] is not None for row in rows),
        sum(row["stale"] is not None or (row["failure"] is not None and row["mtime"] == 0) for row in rows),
    )
