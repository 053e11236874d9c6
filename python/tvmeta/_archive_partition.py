"""Reads one partition of an archive and writes its part of the index. Runs on the workers.

A partition with the key K has three files in the folder `parts/` and the first two digits of K:
K.jsonl.gz with one line per photograph, K.failures.jsonl with one line per file that could not be
read, and K.json with the state of the listing and counts. The state is removed first and written
last, so a partition is complete when it is there.
"""

from __future__ import annotations

import base64
import gzip
import json
import os
import stat
from collections import Counter
from hashlib import blake2b
from itertools import groupby
from typing import Any, Iterable, NamedTuple, Optional

from . import _files as files
from ._brackets import brackets
from .errors import Error, FileError, UnknownFormatError
from .photo import Photo, read

_SUFFIXES = (b".jpg", b".jpeg", b".tif", b".tiff", b".psd")  # names that promise a photograph
_COMPRESSION = 4
_MAX_ARGUMENT_BYTES = 1_000_000  # of the tool's command line

Record = dict[str, Any]


class Entry(NamedTuple):
    """A file of the listing: path relative to the root, bytes and time of change in nanoseconds."""

    name: bytes
    size: int
    mtime: int


class Result(NamedTuple):
    """What became of the files of a partition."""

    files: int
    photographs: int
    read: int
    failures: int


def part_path(out: bytes, key: str, suffix: str) -> bytes:
    """Return the path of one of a partition's files."""
    return os.path.join(out, b"parts", key[:2].encode(), (key + suffix).encode())


def name_fields(name: bytes) -> Record:
    """Return a path as text, and as base64 too if it is not UTF-8."""
    shown = name.decode("utf-8", "replace")
    if shown.encode() == name:
        return {"file": shown}
    return {"file": shown, "fileBytes": base64.b64encode(name).decode()}


def name_bytes(record: Record) -> bytes:
    """Return the path that name_fields() stored."""
    if "fileBytes" in record:
        return base64.b64decode(record["fileBytes"])
    return str(record["file"]).encode()


def line_of(record: Record) -> bytes:
    """Return a record as a line of JSON."""
    return json.dumps(record, ensure_ascii=False, separators=(",", ":")).encode() + b"\n"


def _photo_fields(photo: Photo) -> Record:
    def number(value: Any) -> Optional[float]:
        return None if value is None else float(value)

    fields = {
        "container": photo.file_type.name,
        "model": photo.model,
        "lens": photo.lens,
        "dateTimeOriginal": photo.record.dateTimeOriginal.decode("latin-1") or None,
        "exposureTime": number(photo.exposure_time),
        "fNumber": number(photo.f_number),
        "isoSpeed": photo.iso_speed,
        "focalLength": number(photo.focal_length),
        "focalLength35mm": photo.focal_length_35mm,
        "orientation": photo.orientation,
        "gpsLatitude": photo.latitude,
        "gpsLongitude": photo.longitude,
        "gpsAltitude": photo.altitude,
        "gpsTime": photo.gps_time.isoformat() if photo.gps_time else None,
        "damage": photo.damage,
    }
    return {name: value for name, value in fields.items() if value is not None}


class _Part:
    """The part of the index that is being written."""

    def __init__(self, root: bytes) -> None:
        self.root = root
        self.records: list[Record] = []
        self.failures: list[Record] = []
        self.reads = 0

    def fail(self, name: bytes, error: OSError) -> None:
        reason = error.reason if isinstance(error, Error) else error.strerror
        self.failures.append({**name_fields(name), "reason": reason})

    def add(self, record: Record) -> None:
        self.records.append(record)
        if "damage" in record:  # in both lists: the metadata are there, the picture may be lost
            name = {key: record[key] for key in ("file", "fileBytes") if key in record}
            self.failures.append({**name, "reason": record["damage"]})

    def list_files(self, names: Iterable[bytes]) -> list[Entry]:
        entries = []
        for name in names:
            try:
                found = os.stat(os.path.join(self.root, name))
            except OSError as error:
                self.fail(name, error)
                continue
            if stat.S_ISREG(found.st_mode):  # opening a FIFO would wait for ever
                entries.append(Entry(name, found.st_size, found.st_mtime_ns))
        return entries

    def read(self, entry: Entry) -> None:
        self.reads += 1
        try:
            photo = read(os.path.join(self.root, entry.name))
        except UnknownFormatError as error:
            if entry.name.lower().endswith(_SUFFIXES):
                self.fail(entry.name, error)
            return
        except FileError as error:
            self.fail(entry.name, error)
            return
        found = {**name_fields(entry.name), "size": entry.size, "mtime": entry.mtime}
        self.add({**found, **_photo_fields(photo)})

    def count_brackets(self) -> Optional[dict[int, int]]:
        """Count bracketed sets by their number of shots; None without the tool."""
        counts: Counter[int] = Counter()
        paths: list[bytes] = []
        try:
            timed = (record for record in self.records if {"dateTimeOriginal", "exposureTime"} <= record.keys())
            for _, folder in groupby(map(name_bytes, timed), lambda name: os.path.dirname(name)):
                members = [os.path.join(self.root, name) for name in folder]
                if sum(map(len, paths + members)) > _MAX_ARGUMENT_BYTES:
                    counts.update(len(found.files) for found in brackets(paths))
                    paths = []
                paths += members
            counts.update(len(found.files) for found in brackets(paths))
        except Error:
            return None
        return dict(sorted(counts.items()))

    def write(self, out: bytes, key: str, listing: str) -> None:
        state_path = part_path(out, key, ".json")
        os.makedirs(os.path.dirname(state_path), exist_ok=True)
        if os.path.exists(state_path):
            os.unlink(state_path)
        text = b"".join(map(line_of, self.records))
        files.write(part_path(out, key, ".failures.jsonl"), b"".join(map(line_of, self.failures)))
        files.write(part_path(out, key, ".jsonl.gz"), gzip.compress(text, _COMPRESSION, mtime=0))
        state: Record = {"listing": listing, "photographs": len(self.records), "failures": len(self.failures)}
        for title, field, size in (
            ("cameras", "model", None),
            ("lenses", "lens", None),
            ("years", "dateTimeOriginal", 4),
        ):
            counts = Counter(record[field][:size] for record in self.records if field in record)
            state[title] = dict(sorted(counts.items()))
        state["brackets"] = self.count_brackets()
        files.write(state_path, line_of(state))


def read_state(out: bytes, key: str) -> Optional[Record]:
    """Return the state of a complete partition."""
    try:
        with open(part_path(out, key, ".json"), "rb") as file:
            state: Record = json.loads(file.read())
            return state
    except (FileNotFoundError, ValueError):
        return None


def read_records(out: bytes, key: str) -> Iterable[Record]:
    """Give the records of a complete partition."""
    with gzip.open(part_path(out, key, ".jsonl.gz"), "rb") as file:
        for line in file:
            yield json.loads(line)


def _known_records(out: bytes, key: str) -> dict[Entry, Record]:
    try:
        return {Entry(name_bytes(r), r["size"], r["mtime"]): r for r in read_records(out, key)}
    except (OSError, ValueError, KeyError, EOFError):  # nothing to reuse
        return {}


def index_partition(root: bytes, out: bytes, key: str, names: bytes, retry: bool) -> Result:
    """Bring one partition of the index up to date; `names` are separated by zero bytes.

    Nothing is read if the files are those of the state, by name, size and time of change. Else only
    the files that changed are read. The result does not depend on what was there before.
    """
    part = _Part(root)
    paths = names.split(b"\0")
    entries = part.list_files(paths)
    listing = blake2b(repr((entries, part.failures)).encode(), digest_size=16).hexdigest()
    state = read_state(out, key)
    if state and state["listing"] == listing and not (retry and state["failures"]):
        return Result(len(paths), state["photographs"], 0, state["failures"])
    known = _known_records(out, key)
    for entry in entries:
        if entry in known:
            part.add(known[entry])
        else:
            part.read(entry)
    part.write(out, key, listing)
    return Result(len(paths), len(part.records), part.reads, len(part.failures))
