"""Reads folders of an archive and writes their parts of the index, on the workers.

A folder of up to `size` photographs is one part. A larger one is divided by hashes of its names:
tasks read its parts into drafts, and one more task finds the bracketed sets of the whole folder
and replaces the parts. What did not change is taken from the parts that exist, however they divide.
"""

from __future__ import annotations

import os
import stat
from contextlib import suppress
from hashlib import blake2b
from typing import Iterable, NamedTuple, Optional

from ._archive_brackets import find_sets, store_sets
from ._archive_listing import Job, Unseen, check_index, check_sight, list_folder, mount_points
from ._archive_store import Part, State, Store, bits_of, key_of, state_of
from ._archive_table import READER, SCHEMA, Row, file_row, is_outdated, kept_row, name_bytes, read_row
from .errors import Error, FileError, FormatError

Known = dict[bytes, tuple[Row, int]]  # rows of earlier runs with the version of their reader


class Entry(NamedTuple):
    """A file of a listing: path relative to the root, bytes, time of change, or why these are unknown."""

    name: bytes
    size: int = 0
    mtime: int = 0
    refusal: Optional[str] = None
    is_gone: bool = False  # a link to a file of the archive that is not there


class Counts(NamedTuple):
    """What a task or a run found."""

    files: int = 0
    photographs: int = 0
    read: int = 0
    failures: int = 0
    stale: int = 0

    def plus(self, other: Counts) -> Counts:
        """Return the sum."""
        return Counts(*(a + b for a, b in zip(self, other)))


class Done(NamedTuple):
    """What became of some folders."""

    counts: Counts
    unseen: list[tuple[bytes, str]]  # folders, with the reason
    divided: list[tuple[bytes, int]]  # folders too large for one task, with the number of bits


def counts_of(rows: list[Row], read: int = 0) -> Counts:
    """Count rows."""
    return Counts(
        len(rows),
        sum(row["container"] is not None for row in rows),
        read,
        sum(row["failure"] is not None for row in rows),
        sum(row["stale"] is not None for row in rows),
    )


def _leads_nowhere(root: bytes, path: bytes, error: OSError) -> bool:
    """Tell a link within the archive to a file that is gone from one to a disk that is not mounted."""
    is_broken_link = isinstance(error, FileNotFoundError) and os.path.islink(path)
    return is_broken_link and os.path.realpath(path).startswith(os.path.realpath(root) + b"/")


def _entries(root: bytes, names: Iterable[bytes]) -> list[Entry]:
    entries = []
    for name in names:
        path = os.path.join(root, name)
        try:
            found = os.stat(path)
        except OSError as error:
            entries.append(Entry(name, refusal=error.strerror, is_gone=_leads_nowhere(root, path, error)))
            continue
        if stat.S_ISREG(found.st_mode):  # opening a FIFO would wait for ever
            entries.append(Entry(name, found.st_size, found.st_mtime_ns))
    return entries


def _known(store: Store, key: str, bits: str = "") -> Known:
    """Return the rows of a folder whose names' hashes may start with these bits; drafts replace parts."""
    known: Known = {}
    for part in store.parts_of(key):
        if part.kind != "names" and (part.bits.startswith(bits) or bits.startswith(part.bits)):
            state = store.state(part)
            with suppress(Error):  # damaged: its files are read again
                known.update((name_bytes(row), (row, state.reader if state else 0)) for row in store.rows(part))
    return known


class _Update:
    """Brings the rows of some files up to date."""

    def __init__(self, job: Job, names: Iterable[bytes]) -> None:
        self.job = job
        self.entries = _entries(job.root, names)
        self.listing = blake2b(repr(self.entries).encode(), digest_size=16).hexdigest()
        self.reads = 0

    def is_needed(self, state: Optional[State]) -> bool:
        """Return whether rows in this state differ from the files, or must be tried again."""
        if state is None:
            return bool(self.entries)
        is_same = (state.schema, state.reader, state.listing) == (SCHEMA, READER, self.listing)
        return not is_same or state.again > 0 or (self.job.retry and state.failures > 0)

    def unchanged(self, state: Optional[State]) -> Counts:
        return Counts(len(self.entries), state.photographs, 0, state.failures) if state else Counts()

    def rows(self, known: Known) -> list[Row]:
        return [self._row(entry, *known.get(entry.name, (None, 0))) for entry in self.entries]

    def _row(self, entry: Entry, old: Optional[Row], reader: int) -> Row:
        is_refused = entry.refusal is not None
        if old and not is_refused and (old["size"], old["mtime"]) == (entry.size, entry.mtime):
            is_passing = old["failure"] is not None and (self.job.retry or entry.mtime == 0)
            if not is_passing and not is_outdated(old, reader):
                return kept_row(old)
        refusal = entry.refusal
        if not is_refused:
            self.reads += 1
            try:
                return read_row(os.path.join(self.job.root, entry.name), *entry[:3])
            except FormatError as error:
                return file_row(*entry[:3], failure=error.reason)
            except FileError as error:
                refusal = error.reason
        if old and old["container"] is not None and not entry.is_gone and not self.job.prune:
            outdated = {"mtime": 0} if is_outdated(old, reader) else {}  # read again when the system allows it
            return {**kept_row(old), "stale": refusal, **outdated}
        return file_row(entry.name, failure=refusal)


def _update_folder(job: Job, folder: bytes, names: list[bytes]) -> Counts:
    update = _Update(job, names)
    part = Part(key_of(folder), "")
    state = job.store.state(part)
    if not update.is_needed(state):
        return update.unchanged(state)
    rows = update.rows(_known(job.store, part.key))
    store_sets(rows, find_sets(rows))
    with job.store.commit():
        job.store.write_rows(part, rows, state_of(rows, update.listing))
        job.store.remove(other for other in job.store.parts_of(part.key) if other != part)
    return counts_of(rows, update.reads)


def _divide(job: Job, folder: bytes, names: list[bytes]) -> int:
    """Store the names of a large folder for the tasks that read its parts; return the number of bits."""
    count = (-(-len(names) // job.size) - 1).bit_length()
    parts: dict[str, list[bytes]] = {bits: [] for bits in all_bits(count)}
    for name in names:
        parts[bits_of(name, count)].append(name)
    with job.store.commit():
        for bits, found in parts.items():
            job.store.write(Part(key_of(folder), bits, "names"), b"\0".join(found))
    return count


def all_bits(count: int) -> list[str]:
    """Return the bits of all parts of a folder."""
    return [format(i, f"0{count}b") for i in range(1 << count)]


def read_folders(job: Job, folders: list[bytes]) -> Done:
    """Bring the parts of folders up to date; a task of the workers."""
    check_sight(job)
    points = mount_points()
    done = Done(Counts(), [], [])
    for folder in folders:
        try:
            names, _ = list_folder(job, folder, points)
        except Unseen as error:
            done.unseen.append((folder, str(error)))
            continue
        if len(names) > job.size:
            done.divided.append((folder, _divide(job, folder, names)))
        else:
            done = done._replace(counts=done.counts.plus(_update_folder(job, folder, names)))
    return done


def read_part(job: Job, folder: bytes, bits: str) -> Counts:
    """Bring the draft of a part of a large folder up to date; a task of the workers."""
    check_sight(job)
    store, part = job.store, Part(key_of(folder), bits)
    with open(store.part_path(part._replace(kind="names")), "rb") as file:
        text = file.read()
    update = _Update(job, text.split(b"\0") if text else [])
    draft = part._replace(kind="draft")
    state = store.state(draft) or store.state(part)
    if not update.is_needed(state):
        return update.unchanged(state)
    rows = update.rows(_known(store, part.key, bits))
    with store.commit():
        store.write_rows(draft, rows, state_of(rows, update.listing))
    return counts_of(rows, update.reads)


def finish_folder(job: Job, folder: bytes, count: int) -> None:
    """Find the sets of a large folder and replace its parts by drafts; a task of the workers.

    Drafts are removed last, so a task that is killed is repeated by the next run.
    """
    check_sight(job)
    store, key = job.store, key_of(folder)
    parts = [Part(key, bits) for bits in all_bits(count)]
    existing = store.parts_of(key)
    others = [part for part in existing if part not in parts]
    if any(part.kind != "names" for part in others):
        drafts = {part: part._replace(kind="draft") for part in parts if part._replace(kind="draft") in others}
        sets = find_sets(row for part in parts for row in store.rows(drafts.get(part, part)))
        for part in parts:
            source = drafts.get(part, part)
            state, rows = store.state(source), list(store.rows(source))
            if (store_sets(rows, sets) or part in drafts) and state:
                with store.commit():
                    store.write_rows(part, rows, state_of(rows, state.listing))
    with store.commit():
        store.remove(others)


def mark_stale(job: Job, parts: list[Part], reason: str) -> Counts:
    """Mark the rows of parts whose folder cannot be seen; a task of the workers."""
    check_index(job)
    counts = Counts()
    for part in parts:
        state, rows = job.store.state(part), list(job.store.rows(part))
        marked = [row if row["stale"] else {**row, "stale": reason} for row in rows]
        if marked != rows and state:
            found = state_of(marked, state.listing)._replace(schema=state.schema, reader=state.reader)
            with job.store.commit():
                job.store.write_rows(part, marked, found)
        counts = counts.plus(counts_of(marked)._replace(files=0))
    return counts
