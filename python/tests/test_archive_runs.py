"""Runs of the index that meet changes, failures and kills; some run on two worker processes."""

import errno
import json
import os
import shutil
import signal
import stat
import subprocess
import sys
import threading
import time
from contextlib import suppress
from pathlib import Path

import pytest
from archives import ALL, SIZE, Inline, index, make_tree, snapshot
from conftest import bracket_photo, write
from distributed import Client

import tvmeta
from tvmeta import _archive_listing as listing
from tvmeta import _archive_part as part
from tvmeta import _archive_run as run
from tvmeta import _archive_store as store
from tvmeta import _archive_table as table
from tvmeta import archive
from tvmeta._archive_local import local_cluster


@pytest.fixture(scope="module")
def client():
    with local_cluster(2) as address, Client(address) as client:
        client.wait_for_workers(2)
        yield client


def stale_rows(out):
    return {row["file"]: row["stale"] for row in archive.rows(out) if row["stale"]}


def living(group):
    """Return the processes of a group."""
    found = []
    for path in Path("/proc").glob("[0-9]*/stat"):
        with suppress(OSError):
            state, _, number = path.read_text().rpartition(") ")[2].split()[:3]
            found += [path.parent.name] if number == str(group) and state != "Z" else []
    return found


def test_a_killed_client_and_its_workers(client, whole, tree, tmp_path):
    command = [sys.executable, "-m", "tvmeta.archive", "index", tree, tmp_path, "--partition", str(SIZE)]
    for number, status, place in (
        (signal.SIGKILL, -signal.SIGKILL, ["--workers", "1"]),
        (signal.SIGINT, 130, ["--workers", "1"]),
        (signal.SIGTERM, 130, ["--scheduler", client.scheduler.address]),
    ):
        before = set(tmp_path.rglob("*.gz"))
        process = subprocess.Popen(command + place, stderr=subprocess.PIPE, start_new_session=True)
        while process.poll() is None and len(set(tmp_path.rglob("*.gz")) - before) < 4:
            time.sleep(0.005)
        workers = Path(f"/proc/{process.pid}/task/{process.pid}/children").read_text().split()[:1]
        assert len(workers) == ("--workers" in place)
        os.killpg(process.pid, number)
        error = process.communicate()[1].decode()
        assert process.returncode == status and (status < 0 or "tvmeta: interrupted" in error and "Trace" not in error)
        assert not json.loads((tmp_path / "index.json").read_text())["complete"]
        end = time.monotonic() + 30
        while any(map(living, workers)):
            assert time.monotonic() < end, "workers outlive the client"
            time.sleep(0.02)
    write(tmp_path / "parts" / "00" / ".tvmeta-0123456789abcdef", b"of a killed worker")
    assert 0 < index(tree, tmp_path)[0].read < 240
    assert snapshot(tmp_path) == snapshot(whole)


def test_a_killed_worker_loses_and_doubles_nothing(client, whole, tree, tmp_path):
    processes = client.run(os.getpid)
    thread = threading.Thread(target=archive.index, args=(tree, tmp_path, client, SIZE))
    thread.start()
    while len(list(tmp_path.rglob("*.gz"))) < 4:
        time.sleep(0.005)
    os.kill(next(iter(processes.values())), signal.SIGKILL)
    thread.join(60)
    client.wait_for_workers(2, timeout=60)  # it is started again
    assert snapshot(tmp_path) == snapshot(whole)


def test_every_stop_in_a_large_folder_is_resumed(whole, tree, tmp_path, monkeypatch):
    """Fail the n-th change of the index, for each n, as a full disk or a kill does."""
    real, left = store.files.write, [0]

    def fail(path, data):
        left[0] -= 1
        if left[0] == 0:
            raise tvmeta.FileError(path, "No space left on device", errno=errno.ENOSPC)
        real(path, data)

    monkeypatch.setattr(store.files, "write", fail)
    for stop in range(2, 47, 3):
        out, left[0] = tmp_path / str(stop), stop
        with pytest.raises(tvmeta.Error, match="No space left"):
            index(tree / "large", out)
        left[0] = 0
        assert index(tree / "large", out)[0].photographs == 60
        assert snapshot(out) == snapshot(tmp_path / "2")


def test_only_changed_files_are_read(tmp_path):
    root, out, fresh = make_tree(tmp_path / "root"), tmp_path / "out", tmp_path / "fresh"
    index(root, out)
    write(root / "large" / "07.jpg", bracket_photo(7, 60))
    write(root / "large" / "new\n.jpg", bracket_photo(8, 60))
    times = (root / "large" / "08.jpg").stat()
    write(root / "large" / "08.jpg", b"damaged")
    os.utime(root / "large" / "08.jpg", ns=(0, times.st_mtime_ns))  # another size alone
    (root / "camera 2" / "week 3" / "20.jpg").unlink()
    (root / "camera 4" / "week 1").rename(root / "moved")
    (root / "camera 1" / "week 1").rename(tmp_path / "gone")
    assert index(root, out)[0] == (234, 233, 9, 1, 0)
    index(root, fresh)
    assert snapshot(out) == snapshot(fresh)


def refuse(call, name):
    """Return a function of the system that may not see this file."""

    def refused(path, *arguments, **options):
        if isinstance(path, bytes) and path.endswith(name):
            raise PermissionError(errno.EACCES, "Permission denied")
        return call(path, *arguments, **options)

    return refused


UNSEEN = [
    ("empty root", 240, "the folder is empty"),
    ("missing root", 240, "No such file or directory"),
    ("unreadable", 36, "Permission denied"),
    ("one file", 1, "Permission denied"),
    ("mount", 36, "was a mount point and is none now"),
    ("lost mount", 36, "was a mount point and is gone"),
]


@pytest.mark.parametrize("case, count, reason", UNSEEN, ids=[case[0] for case in UNSEEN])
def test_what_cannot_be_seen_is_not_gone(case, count, reason, tmp_path, monkeypatch):
    root, out, away = make_tree(tmp_path / "root"), tmp_path / "out", tmp_path / "away"
    place = root if case.endswith("root") else root / "camera 1"
    points = {os.fsencode(root / "camera 1")}
    for module in (listing, run, part):
        monkeypatch.setattr(module, "mount_points", lambda: frozenset(points))
    index(root, out)
    before, scandir, status = snapshot(out), os.scandir, os.stat
    if case == "unreadable":
        monkeypatch.setattr(os, "scandir", refuse(scandir, b"/camera 1"))
    elif case == "one file":
        monkeypatch.setattr(os, "stat", refuse(status, b"/large/07.jpg"))
    else:
        place.rename(away)
        if case in ("empty root", "mount"):
            place.mkdir()
        points.clear()
    for _ in range(2):
        counts, unseen = index(root, out)
        assert (counts.photographs, counts.stale, counts.read) == (240, count, 0)
        assert [folder["reason"] for folder in unseen] == ([] if case == "one file" else [reason])
    assert len(stale_rows(out)) == count and set(stale_rows(out).values()) == {reason}
    assert sum("stale: " + reason == failure["reason"] for failure in archive.failures(out)) == count
    if case.endswith("root"):
        with pytest.raises(tvmeta.Error, match="the index is unchanged"):
            index(root, out, prune=True)
    else:
        counts, unseen = index(root, shutil.copytree(out, tmp_path / "pruned"), prune=True)
        assert (counts.photographs, counts.stale, counts.failures) == (240 - count, 0, case == "one file")
        assert len(unseen) == (case == "unreadable")
    monkeypatch.setattr(os, "scandir", scandir)
    monkeypatch.setattr(os, "stat", status)
    if away.exists():
        if place.exists():
            place.rmdir()
        away.rename(place)
    points.add(os.fsencode(root / "camera 1"))
    assert index(root, out) == ((240, 240, 0, 0, 0), [])
    assert snapshot(out) == before


def test_workers_that_see_something_else(whole, tree, tmp_path, capsys):
    empty = os.fsencode(tmp_path / "empty")
    os.mkdir(empty)
    client = Inline(("bad", "good"), {"bad": empty})
    assert index(tree, tmp_path / "out", client=client)[0] == ALL
    assert snapshot(tmp_path / "out") == snapshot(whole)
    assert [worker for worker, _ in client.calls].count("bad") == 1 and "worker bad: " in capsys.readouterr().err
    before = snapshot(whole)
    with pytest.raises(tvmeta.Error, match="no worker sees this folder"):
        index(tree, whole, client=Inline(("bad",), {"bad": empty}))
    assert snapshot(whole) == before
    with pytest.raises(tvmeta.Error, match="no workers; run the same command again"):
        index(tree, whole, client=Inline(()), timeout=0)


def test_a_folder_that_kills_workers_costs_no_other(whole, tree, tmp_path, monkeypatch):
    index(tree, tmp_path)
    real = part._update_folder

    def fail(job, folder, names):
        if folder == b"camera 1/week 1":
            raise MemoryError("too large")
        return real(job, folder, names)

    monkeypatch.setattr(part, "_update_folder", fail)
    failure = {"file": "camera 1/week 1", "reason": "task failed: MemoryError too large"}
    counts, unseen = index(tree, tmp_path)
    assert unseen == [failure] == [row for row in archive.failures(tmp_path) if row["file"] == failure["file"]]
    assert (counts.photographs, counts.stale) == (240, 6) and set(stale_rows(tmp_path).values()) == {failure["reason"]}
    monkeypatch.setattr(part, "_update_folder", real)
    assert index(tree, tmp_path) == ((240, 240, 0, 0, 0), []) and snapshot(tmp_path) == snapshot(whole)


def test_a_late_task_replaces_nothing(tree, tmp_path):
    index(tree, tmp_path)
    before = snapshot(tmp_path)
    late = listing.Job(os.fsencode(tree), store.Store(os.fsencode(tmp_path), 0), (), SIZE, (1, 1), retry=True)
    key = next(part for part in late.store.all_parts())
    with pytest.raises(store.Superseded):
        part.mark_stale(late, [key], "late")
    with pytest.raises(listing.Blind, match="another version of tvmeta"):
        part.read_folders(late._replace(versions=(table.SCHEMA, table.READER + 1)), [b"large"])
    assert snapshot(tmp_path) == before


def test_a_part_is_synchronised_before_and_after_its_rename(tree, tmp_path, monkeypatch):
    index(tree / "camera 1" / "week 1", tmp_path)
    events, fsync, replace = [], os.fsync, os.replace

    def synchronise(descriptor):
        events.append("folder" if stat.S_ISDIR(os.fstat(descriptor).st_mode) else "file")
        fsync(descriptor)

    monkeypatch.setattr(os, "fsync", synchronise)
    monkeypatch.setattr(os, "replace", lambda a, b: (events.append("rename"), replace(a, b)))
    store.Store(os.fsencode(tmp_path), 1).write(store.Part("ab" * 8, ""), b"")
    assert events == ["folder", "file", "rename", "folder"]


def test_a_better_reader_reads_what_it_reads_better(tree, tmp_path, monkeypatch):
    root, out, reader = make_tree(tmp_path / "root"), tmp_path / "out", table.READER
    write(root / "large" / "bad.tif", b"")
    index(root, out)
    for module in (table, store, part, listing, run):
        monkeypatch.setattr(module, "READER", reader + 2)
    monkeypatch.setattr(table, "IMPROVED", {reader + 1: frozenset(["TIFF"])})
    assert index(root, out)[0] == (241, 240, 1, 1, 0) and index(root, out)[0].read == 0
    for module in (table, store, part, listing, run):
        monkeypatch.setattr(module, "READER", reader + 3)
    table.IMPROVED[reader + 3] = frozenset(["JPEG"])
    assert index(root, out)[0].read == 241


def test_failures(client, tmp_path, capsys):
    root, out = tmp_path / "root", tmp_path / "out"
    photo = bracket_photo(0, 125)
    write(root / "good.jpg", photo)
    write(root / "no suffix", photo)
    write(root / "cut.jpg", photo[:3000])
    write(root / "empty.JPG", b"")
    write(root / "flaky.jpg", b"x" * len(photo))
    write(os.path.join(os.fsencode(root), b"caf\xe9.jpg"), b"\xff\xd8\xff")
    os.mkfifo(root / "fifo.jpg")
    (root / "loop.jpg").symlink_to(root)
    (root / "loop").symlink_to(root)
    (root / "itself.jpg").symlink_to("itself.jpg")
    (root / "nowhere.jpg").symlink_to("none.jpg")
    arguments = ["index", str(root), str(out), "--scheduler", client.scheduler.address]
    assert archive.main(arguments) == 0
    assert "7 files, 3 photographs, 5 read, 6 failures, 0 stale" in capsys.readouterr().err
    shown = {row["file"]: row["reason"] for row in archive.failures(out)}
    starts = {name: reason.split(": ")[0] for name, reason in shown.items()}
    assert starts == {
        "cut.jpg": "damaged at byte 20; the rest was read",
        "empty.JPG": "not a photograph",
        "flaky.jpg": "not a photograph",
        "caf\ufffd.jpg": "damaged at byte 2; the rest was read",
        "itself.jpg": "Too many levels of symbolic links",
        "nowhere.jpg": "No such file or directory",
    }
    names = {table.name_bytes(row): row["fileBytes"] for row in archive.rows(out)}
    assert names[b"caf\xe9.jpg"] == "Y2Fm6S5qcGc=" and names[b"good.jpg"] is None
    before = (root / "flaky.jpg").stat()
    write(root / "flaky.jpg", photo)
    os.utime(root / "flaky.jpg", ns=(0, before.st_mtime_ns))
    for options, photographs in (([], 3), (["--retry"], 4)):
        archive.main(arguments + options)
        assert archive.summary(out)["photographs"] == photographs
