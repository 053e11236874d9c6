"""Lists folders of an archive on the workers, and knows what a worker does not see."""

from __future__ import annotations

import os
import re
import time
from contextlib import suppress
from typing import Iterator, NamedTuple

from ._archive_store import Store
from ._archive_table import READER, SCHEMA, is_photograph_name
from .errors import Error

_TASK_SECONDS = 0.3  # long enough to be worth a task, short enough to share the work
_LANDMARKS = 8


class Job(NamedTuple):
    """What all tasks of a run know."""

    root: bytes
    store: Store
    landmarks: tuple[bytes, ...]  # names that the client found in the root
    size: int  # files of a part
    versions: tuple[int, int]  # of the client: SCHEMA and READER
    retry: bool = False
    prune: bool = False
    mounts: frozenset[bytes] = frozenset()  # folders that were mount points in the last run


class Unseen(Exception):
    """A folder cannot be seen, so nothing is known of its files."""


class Blind(Exception):
    """This worker sees another file system than the client: the reason, and the worker's address."""

    def __init__(self, reason: str, worker: str = "") -> None:
        """Name the worker that runs the task."""
        super().__init__(reason, worker or _this_worker())


def _this_worker() -> str:
    from distributed import get_worker

    try:
        return str(get_worker().address)
    except ValueError:
        return "of this process"


class Listed(NamedTuple):
    """What was found in some folders."""

    folders: list[tuple[bytes, int]]  # with their number of photographs' names
    unseen: list[tuple[bytes, str]]  # with the reason
    rest: list[bytes]  # not listed yet
    mounts: list[bytes]


def landmarks_of(root: bytes, out: bytes) -> tuple[bytes, ...]:
    """Return some names of the root, by which workers recognise it."""
    names = (name for name in sorted(os.listdir(root)) if os.path.join(root, name) != out)
    return tuple(name for name, _ in zip(names, range(_LANDMARKS)))


def check_index(job: Job) -> None:
    """Raise Blind unless this worker sees the client's index, and has its version."""
    if job.versions != (SCHEMA, READER):
        raise Blind("another version of tvmeta is installed there")
    try:
        generation = job.store.manifest()["generation"]
    except Error as error:
        raise Blind(str(error)) from error
    if generation < job.store.generation:
        raise Blind(f"{os.fsdecode(job.store.out)} is not the index that the client sees")


def check_sight(job: Job) -> None:
    """Raise Blind unless this worker sees the client's root and index, and has its version."""
    check_index(job)
    if not os.path.isdir(job.root) or (
        job.landmarks and not any(os.path.lexists(os.path.join(job.root, name)) for name in job.landmarks)
    ):
        raise Blind(f"{os.fsdecode(job.root)} is not the folder that the client sees")


def mount_points() -> frozenset[bytes]:
    """Return the mount points of this machine; empty where the system does not list them."""
    with suppress(OSError), open("/proc/self/mountinfo", "rb") as file:
        paths = (line.split(b" ")[4] for line in file)
        return frozenset(re.sub(rb"\\([0-7]{3})", lambda code: bytes([int(code[1], 8)]), path) for path in paths)
    return frozenset()


def is_mounted(root: bytes, folder: bytes, points: frozenset[bytes]) -> bool:
    """Return whether a folder of the archive is one of the mount points."""
    return os.path.normpath(os.path.join(os.path.realpath(root), folder)) in points


def _scan(job: Job, folder: bytes) -> tuple[list[bytes], list[bytes]]:
    names, folders = [], []
    own = os.stat(job.store.out)
    with os.scandir(os.path.join(job.root, folder)) as entries:
        for entry in entries:
            if entry.is_dir(follow_symlinks=False):  # links to folders are not followed, so that loops end
                is_own = entry.inode() == own.st_ino and os.path.samestat(entry.stat(follow_symlinks=False), own)
                if not is_own:
                    folders.append(os.path.join(folder, entry.name))
            elif is_photograph_name(entry.name):
                names.append(os.path.join(folder, entry.name))
    return sorted(names), sorted(folders)


def list_folder(job: Job, folder: bytes, points: frozenset[bytes]) -> tuple[list[bytes], list[bytes]]:
    """Return the names of photographs and of folders in a folder; raises Unseen."""
    try:
        found = _scan(job, folder)
    except OSError as error:
        raise Unseen(error.strerror) from error
    if folder in job.mounts and not is_mounted(job.root, folder, points):
        raise Unseen("was a mount point and is none now")
    if not folder:
        check_sight(job)  # again: what was mounted may be gone since
    return found


def _walk(job: Job, folders: list[bytes], listed: Listed) -> Iterator[None]:
    points = mount_points()
    while folders:
        folder = folders.pop()
        try:
            names, inner = list_folder(job, folder, points)
        except Unseen as error:
            listed.unseen.append((folder, str(error)))
        else:
            listed.folders.append((folder, len(names)))
            folders += reversed(inner)
            if is_mounted(job.root, folder, points):
                listed.mounts.append(folder)
        yield


def list_folders(job: Job, folders: list[bytes]) -> Listed:
    """List folders and what is in them, for a short time; a task of the workers."""
    check_sight(job)
    listed = Listed([], [], list(reversed(folders)), [])
    end = time.monotonic() + _TASK_SECONDS
    for _ in _walk(job, listed.rest, listed):
        if time.monotonic() > end:
            break
    return listed
