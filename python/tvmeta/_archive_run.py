"""One run of the index: the client gives folders to the workers of a Dask cluster."""

from __future__ import annotations

import asyncio
import os
import time
from collections import deque
from concurrent.futures import CancelledError
from typing import Any, Callable, NamedTuple, Optional

from distributed import wait

from ._archive_listing import Blind, Job, Listed, is_mounted, landmarks_of, list_folders, mount_points
from ._archive_part import Counts, Done, all_bits, finish_folder, mark_stale, read_folders, read_part
from ._archive_progress import Progress
from ._archive_store import Part, Store, Superseded, hash_of, key_of
from ._archive_table import READER, SCHEMA, Row, name_bytes
from ._fields import name_fields
from .errors import Error

_TASKS_PER_THREAD = 3  # one runs, the others bridge the way to the scheduler and back
_BATCH_FOLDERS = 64
_BATCH_FILES = 1000
_TICK_SECONDS = 1.0
_PATIENCE_SECONDS = 5.0  # workers of this machine start in this time


class Task(NamedTuple):
    """A call on a worker, for folders or parts."""

    function: Callable[..., Any]
    arguments: tuple[Any, ...]
    folders: list[bytes] = []


class Work:
    """What is to do, and what is known of the folders of the archive."""

    def __init__(self) -> None:
        """Begin with nothing known."""
        self.tasks: deque[Task] = deque()
        self.to_list: deque[bytes] = deque()
        self.to_read: deque[tuple[bytes, int]] = deque()
        self.unseen: dict[bytes, str] = {}
        self.failed: set[bytes] = set()  # of the unseen, folders that may be seen but cost workers their lives
        self.listed: set[bytes] = set()  # hashes of folders
        self.read: dict[bytes, int] = {}  # hashes of folders whose parts are up to date, with the number of bits
        self.parts_left: dict[bytes, int] = {}  # of divided folders
        self.mounts: set[bytes] = set()
        self.files = 0  # listed

    def next(self, share: int) -> Optional[Task]:
        """Return the next task; listing first, so that the total is known soon."""
        if self.to_list:
            folders = [self.to_list.popleft() for _ in range(min(len(self.to_list), max(share, 1)))]
            return Task(list_folders, (folders,), folders)
        if self.tasks:
            return self.tasks.popleft()
        folders, files = [], 0
        while self.to_read and len(folders) < _BATCH_FOLDERS and files < _BATCH_FILES:
            folder, count = self.to_read.popleft()
            folders.append(folder)
            files += count
        return Task(read_folders, (folders,), folders) if folders else None

    def add_listed(self, found: Listed) -> None:
        """Queue the folders that a task found."""
        self.unseen.update(found.unseen)
        self.to_list.extend(found.rest)
        self.mounts.update(found.mounts)
        for folder, count in found.folders:
            self.listed.add(hash_of(folder))
            self.files += count
            if count:
                self.to_read.append((folder, count))

    def add_read(self, folders: list[bytes], done: Done) -> None:
        """Note which folders are up to date, and queue the parts of the large ones."""
        self.unseen.update(done.unseen)
        self.read.update((hash_of(folder), 0) for folder in folders if folder not in self.unseen)
        for folder, count in done.divided:
            self.read[hash_of(folder)] = count
            self.parts_left[folder] = 1 << count
            self.tasks.extend(Task(read_part, (folder, bits), [folder]) for bits in all_bits(count))

    def add_part(self, folder: bytes) -> None:
        """Count a part of a large folder, and queue its last task after the last part."""
        self.parts_left[folder] -= 1
        if not self.parts_left[folder] and folder not in self.unseen:
            count = self.read[hash_of(folder)]
            self.tasks.append(Task(finish_folder, (folder, count), [folder]))

    def fail(self, task: Task, reason: str) -> None:
        """Repeat a task that failed with fewer folders, to find which one it is; then give that up."""
        if len(task.folders) > 1:
            self.tasks.extend(Task(task.function, ([folder],), [folder]) for folder in task.folders)
            return
        for folder in task.folders:
            self.unseen[folder] = reason
            self.failed.add(folder)
            self.read.pop(hash_of(folder), None)

    def is_empty(self) -> bool:
        """Return whether nothing is to do."""
        return not (self.tasks or self.to_list or self.to_read)

    def reason_unseen(self, folder: bytes, prune: bool = False) -> Optional[str]:
        """Return why a folder or one above it could not be seen; None if it is gone, or to be pruned."""
        while folder not in (self.failed if prune else self.unseen):
            if not folder:
                return None
            folder = os.path.dirname(folder)
        return self.unseen[folder]


class Run:
    """Gives the tasks of a run to workers until there are none."""

    def __init__(self, job: Job, client: Any, timeout: float, progress: Progress) -> None:
        """Begin with an empty list of work."""
        self.job, self.client, self.timeout, self.progress = job, client, timeout, progress
        self.address = client.scheduler.address
        self.work = Work()
        self.counts = Counts()
        self.running: dict[Any, Task] = {}
        self.limits: dict[Any, list[str]] = {}  # workers that a future is limited to
        self.blind: set[str] = set()
        self.threads: dict[str, int] = {}
        self.checked = 0.0
        self.idle_since: Optional[float] = None
        self.is_idle_shown = False

    def _submit(self, task: Task) -> None:
        seeing = [worker for worker in self.threads if worker not in self.blind]
        limit = seeing if self.blind else None
        future = self.client.submit(task.function, self.job, *task.arguments, pure=False, workers=limit)
        self.running[future] = task
        if limit:
            self.limits[future] = limit

    def _collect(self, future: Any) -> None:
        task = self.running.pop(future)
        self.limits.pop(future, None)
        if future.status == "finished":
            self._accept(task, future.result())
            return
        error = future.exception() if future.status == "error" else None
        if error is None:  # lost with the scheduler
            self.work.tasks.append(task)
        elif isinstance(error, Blind):
            self._exclude(str(error.args[1]), str(error.args[0]))
            self.work.tasks.append(task)
        elif isinstance(error, Superseded):
            raise Error(os.fsdecode(self.job.store.out), str(error)) from error
        elif isinstance(error, OSError):  # photographs' errors are in the rows, so it is the index
            raise error
        else:
            self.work.fail(task, f"task failed: {type(error).__name__} {error}")

    def _exclude(self, worker: str, reason: str) -> None:
        if worker not in self.blind:
            self.blind.add(worker)
            self.progress.message(f"worker {worker}: {reason}; not used")

    def _accept(self, task: Task, result: Any) -> None:
        if task.function is list_folders:
            self.work.add_listed(result)
        elif task.function is read_folders:
            self.work.add_read(task.folders, result)
            self.counts = self.counts.plus(result.counts)
        elif result is not None:
            self.counts = self.counts.plus(result)
            if task.function is read_part:
                self.work.add_part(task.folders[0])

    def _check_workers(self) -> None:
        """Notice lost workers and a lost scheduler; raises Error after the timeout."""
        if time.monotonic() - self.checked < _TICK_SECONDS:
            return
        self.checked = time.monotonic()
        is_connected = False
        try:
            if self.client.status == "running":
                self.threads = dict(self.client.nthreads())
                is_connected = True
        except (OSError, asyncio.TimeoutError):
            pass
        seeing = set(self.threads) - self.blind
        if is_connected and seeing:
            self.idle_since, self.is_idle_shown = None, False
            for future in [future for future, limit in self.limits.items() if not seeing.intersection(limit)]:
                self.work.tasks.append(self.running.pop(future))
                del self.limits[future]
                future.cancel()
            return
        lack = "no answer from the scheduler" if not is_connected else "no workers"
        if is_connected and self.threads:
            raise Error(os.fsdecode(self.job.root), "no worker sees this folder and the index; the index is unchanged")
        if self.idle_since is None:
            self.idle_since = self.checked
        elif not self.is_idle_shown and self.checked - self.idle_since > _PATIENCE_SECONDS:
            self.is_idle_shown = True
            self.progress.message(f"{self.address}: {lack}; waiting for up to {self.timeout:g} s")
        if self.checked - self.idle_since > self.timeout or self.client.status == "closed":
            raise Error(self.address, f"{lack}; run the same command again to continue")

    def drain(self) -> None:
        """Work until nothing is left to do."""
        while True:
            self._check_workers()
            threads = sum(count for worker, count in self.threads.items() if worker not in self.blind)
            while self.idle_since is None and len(self.running) < _TASKS_PER_THREAD * threads:
                task = self.work.next(min(len(self.work.to_list) // threads, _BATCH_FOLDERS))
                if task is None:
                    break
                self._submit(task)
            if not self.running and self.work.is_empty():
                return
            try:
                wait(list(self.running), timeout=_TICK_SECONDS, return_when="FIRST_COMPLETED")
            except (asyncio.TimeoutError, TimeoutError, CancelledError, asyncio.CancelledError, ValueError):
                pass  # what has an end is seen below
            if not self.running:
                time.sleep(_TICK_SECONDS)
            for future in [future for future in self.running if future.status != "pending"]:
                self._collect(future)
            is_listing = bool(self.work.to_list) or any(t.function is list_folders for t in self.running.values())
            self.progress.show(self.counts.files, None if is_listing else self.work.files, self.counts.failures)

    def sweep(self) -> None:
        """Remove parts of folders that are gone, and mark those of folders that could not be seen."""
        store, work = self.job.store, self.work
        kept = {key_of(folder) for folder in work.unseen}
        marked: dict[str, list[Part]] = {}
        for part in store.all_parts():
            count = work.read.get(bytes.fromhex(part.key))
            if part.kind == "jsonl.gz" and count == len(part.bits):
                continue
            reason = None
            if part.kind == "jsonl.gz" and count is None:
                first = next(store.rows(part))
                reason = work.reason_unseen(os.path.dirname(name_bytes(first)), self.job.prune)
            if reason:
                marked.setdefault(reason, []).append(part)
            elif part.kind == "jsonl.gz" or part.key not in kept:
                store.remove([part])
        for reason, parts in marked.items():
            step = _BATCH_FOLDERS
            batches = [parts[i : i + step] for i in range(0, len(parts), step)]
            work.tasks.extend(Task(mark_stale, (batch, reason)) for batch in batches)
        self.drain()


def root_state(root: bytes, out: bytes, mounts: frozenset[bytes]) -> tuple[tuple[bytes, ...], Optional[str]]:
    """Return landmarks of the root, or why it cannot be seen."""
    try:
        names = landmarks_of(root, out)
    except OSError as error:
        return (), error.strerror
    if not names:
        return (), "the folder is empty"
    if b"" in mounts and not is_mounted(root, b"", mount_points()):
        return names, "was a mount point and is none now"
    return names, None


def _previous(store: Store, root: bytes, moved: bool) -> Row:
    """Return the manifest of an earlier run; raises Error if it was that of another archive."""
    if not os.path.exists(store.path(b"index.json")):
        return {}
    found = store.manifest()
    if name_bytes(found["root"]) != root and not moved:
        shown = os.fsdecode(name_bytes(found["root"]))
        raise Error(os.fsdecode(store.out), f"is the index of {shown}; --moved if that is now {os.fsdecode(root)}")
    return found


def index_archive(
    root: bytes, out: bytes, client: Any, size: int, retry: bool, prune: bool, moved: bool, timeout: float
) -> tuple[Counts, list[Row]]:
    """Bring an index up to date; return the counts and the folders that could not be listed."""
    progress, store = Progress(), Store(out)
    if not os.path.isdir(root) and not os.path.exists(store.path(b"index.json")):
        raise Error(os.fsdecode(root), "no such folder; no index is made")
    with store.locked_for_run():
        previous = _previous(store, root, moved)
        mounts = frozenset(name_bytes(mount) for mount in previous.get("mounts", []))
        names, reason = root_state(root, out, frozenset() if prune else mounts)
        has_parts = next(store.all_parts(), None) is not None
        if reason and has_parts and prune:
            raise Error(os.fsdecode(root), f"{reason}; the index is unchanged")
        store = store._replace(generation=previous.get("generation", 0) + 1)
        fields: Row = {"root": name_fields(root), "mounts": previous.get("mounts", []), "complete": False}
        store.write_manifest(fields)
        job = Job(root, store, names, size, (SCHEMA, READER), retry, prune, frozenset() if prune else mounts)
        run = Run(job, client, timeout, progress)
        if reason and (has_parts or not os.path.isdir(root)):
            run.work.unseen[b""] = reason
        else:
            run.work.to_list.append(b"")
            run.drain()
        for mount in job.mounts - run.work.mounts:
            if hash_of(mount) not in run.work.listed and not run.work.reason_unseen(mount):
                run.work.unseen[mount] = "was a mount point and is gone"
        run.sweep()
        progress.clear()
        store.remove_temporary()
        failures = [{**name_fields(folder or b"."), "reason": why} for folder, why in sorted(run.work.unseen.items())]
        store.write_failures(failures)
        kept = {mount for mount in job.mounts if run.work.reason_unseen(mount)}
        fields["mounts"] = [name_fields(mount) for mount in sorted(run.work.mounts | kept)]
        totals = {name: count for name, count in run.counts._asdict().items() if name != "read"}
        store.write_manifest({**fields, "complete": True, **totals})
        return run.counts, failures
