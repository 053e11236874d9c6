"""A small archive, and a client of Dask whose tasks run in this process."""

import os
from types import SimpleNamespace

import pytest
from conftest import bracket_photo, write

pytest.importorskip("distributed")
from tvmeta import _archive_run as run  # noqa: E402
from tvmeta import archive  # noqa: E402
from tvmeta._archive_listing import Blind  # noqa: E402

SIZE = 6  # files of a part
ALL = (240, 240, 240, 0, 0)


class Future:
    """A call that has ended."""

    def __init__(self, function, *arguments):
        self.status, self.error = "finished", None
        try:
            self.value = function(*arguments)
        except Exception as error:
            self.status, self.error = "error", error

    def result(self):
        return self.value

    def exception(self):
        return self.error


class Inline:
    """A client whose workers are this process. `elsewhere` are workers that see another root."""

    status = "running"
    scheduler = SimpleNamespace(address="inline")

    def __init__(self, workers=("good",), elsewhere=None):
        self.workers, self.elsewhere = workers, elsewhere or {}
        self.calls = []

    def nthreads(self):
        return {worker: 1 for worker in self.workers}

    def submit(self, function, job, *arguments, pure, workers):
        worker = (workers or self.workers)[0]
        job = job._replace(root=self.elsewhere.get(worker, job.root))
        self.calls.append((worker, function))
        future = Future(function, job, *arguments)
        if isinstance(future.error, Blind):
            future.error.args = (future.error.args[0], worker)
        return future


def make_tree(root):
    """Write 5 cameras of 12 sets of 3 photographs, and a folder that is larger than parts."""
    for i in range(180):
        camera, shot = i // 36, i % 36
        data = bracket_photo(10 * (shot // 3) + shot % 3, (500, 125, 31)[shot % 3], b"TV-10%d" % camera)
        write(root / f"camera {camera}" / f"week {shot // 6}" / f"{shot:02d}.jpg", data)
    for i in range(60):
        write(
            root / "large" / f"{i:02d}.jpg", bracket_photo(10 * (i // 3) + i % 3, (500, 125, 31)[i % 3], year=b"2023")
        )
    write(root / "notes.txt", b"no photograph")
    return root


def snapshot(out):
    return {str(path.relative_to(out)): path.read_bytes() for path in (out / "parts").rglob("*") if path.is_file()}


def index(root, out, size=SIZE, client=None, **options):
    """Run the index without a pause for the disk, or for tasks of this process, which have ended."""
    with pytest.MonkeyPatch.context() as monkeypatch:
        monkeypatch.setattr(os, "fsync", lambda descriptor: None)
        monkeypatch.setattr(run, "wait", lambda futures, **options: None)
        return archive.index(root, out, client or Inline(), size, **options)
