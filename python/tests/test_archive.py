"""The index of an archive: most tests run its tasks in this process, some on two worker processes."""

import errno
import json
import os
import shutil
import signal
import sqlite3
import stat
import subprocess
import sys
import threading
import time
from contextlib import nullcontext, suppress
from pathlib import Path
from types import SimpleNamespace

import pytest
from conftest import bracket_photo, exiftool

distributed = pytest.importorskip("distributed")
import tvmeta  # noqa: E402
from tvmeta import _archive_listing as listing  # noqa: E402
from tvmeta import _archive_part as part  # noqa: E402
from tvmeta import _archive_progress as progress  # noqa: E402
from tvmeta import _archive_run as run  # noqa: E402
from tvmeta import _archive_store as store  # noqa: E402
from tvmeta import _archive_table as table  # noqa: E402
from tvmeta import archive  # noqa: E402
from tvmeta._archive_local import local_cluster  # noqa: E402

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
        if isinstance(future.error, listing.Blind):
            future.error.args = (future.error.args[0], worker)
        return future


@pytest.fixture(autouse=True)
def no_waiting(request, monkeypatch):
    """Let tasks of this process end at once, and the disk write when it likes."""
    if "client" not in request.fixturenames:
        wait_for_nothing(monkeypatch)


def wait_for_nothing(monkeypatch):
    monkeypatch.setattr(os, "fsync", lambda descriptor: None)
    monkeypatch.setattr(run, "wait", lambda futures, **options: None)


@pytest.fixture(scope="module")
def client():
    with local_cluster(2) as address, distributed.Client(address) as client:
        client.wait_for_workers(2)
        yield client


def write(path, data):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(data)


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


@pytest.fixture(scope="module")
def tree(tmp_path_factory):
    return make_tree(tmp_path_factory.mktemp("archive"))


@pytest.fixture(scope="module")
def whole(tree, tmp_path_factory):
    """Return an index that was built in one run."""
    out = tmp_path_factory.mktemp("whole")
    with pytest.MonkeyPatch.context() as monkeypatch:
        wait_for_nothing(monkeypatch)
        assert index(tree, out) == (ALL, [])
    return out


def snapshot(out):
    return {str(path.relative_to(out)): path.read_bytes() for path in (out / "parts").rglob("*") if path.is_file()}


def index(root, out, size=SIZE, **options):
    return archive.index(root, out, Inline(), size, **options)


def stale_rows(out):
    return {row["file"]: row["stale"] for row in archive.rows(out) if row["stale"]}


def test_rows_and_summary(whole, tree, capsys):
    found = {row["file"]: row for row in archive.rows(whole)}
    assert len(found) == len(list(archive.rows(whole))) == 240
    for tags in json.loads(exiftool("-r", "-j", "-n", "-Model", "-ExposureTime", tree / "camera 3")):
        row = found[os.path.relpath(tags["SourceFile"], tree)]
        assert (row["model"], row["exposureTime"]) == (tags["Model"], pytest.approx(tags["ExposureTime"], rel=1e-6))
    row = found["camera 3/week 1/10.jpg"]
    expected = {"bracketSet": "camera 3/week 1/09.jpg", "bracketPosition": 2, "bracketOffset": 0, "ev100": 11.96578}
    assert (row["bracketEvidence"], row["make"], row["width"]) == ("exposures repeat", "Tonalvista", 648)
    assert (row["keywords"], row["xmpOffset"]) == (["sun", "shadows"], 3175)
    assert {name: row[name] for name in expected} == {**expected, "ev100": pytest.approx(11.96578, abs=1e-5)}
    assert set(row) == {column["name"] for column in json.loads((whole / "index.json").read_text())["columns"]}
    cameras = {"Tonalvista TV-100": 96, **{f"Tonalvista TV-10{i}": 36 for i in range(1, 5)}}
    expected = {"cameras": cameras, "lenses": {"TV 16-50mm f/2.8-4": 240}, "years": {"2024": 180, "2023": 60}}
    summary = archive.summary(whole)
    assert {**summary, **expected, "brackets": {"3": 80}} == summary and summary["photographs"] == 240
    assert archive.main(["summary", str(whole)]) == 0
    assert "          80  3 shots\n" in capsys.readouterr().out


def test_the_names_of_columns_are_those_of_the_tool():
    scene = Path(__file__).parents[2] / "examples" / "scene.jpg"
    command = [os.environ["TVMETA_TOOL"], "info", "--json", scene]
    shown = json.loads(subprocess.run(command, capture_output=True, check=True).stdout)
    names = [column.name for column in table.COLUMNS]
    assert set(shown) <= set(names) and len(names) == len(set(names))
    row = table.read_row(os.fsencode(scene), b"x", 1, 2)
    same = {name for name in shown if row[name] is not None} - {"file"}
    assert len(same) >= 16 and {name: row[name] for name in same} == {name: shown[name] for name in same}
    kinds = {"text": str, "integer": int, "real": float, "texts": list}
    assert all(row[name] is None or type(row[name]) is kinds[kind] for name, kind, _ in table.COLUMNS)


def test_pandas_dask_and_sqlite_open_the_table(whole, tmp_path):
    pandas, dask = pytest.importorskip("pandas"), pytest.importorskip("dask.dataframe")
    parts = f"{whole}/parts/*/*.jsonl.gz"
    frame = dask.read_json(parts, lines=True, dtype=archive.DTYPES)
    assert frame.groupby("model").size().compute().to_dict()["TV-100"] == 96
    one = pandas.read_json(sorted(whole.rglob("*.gz"))[0], lines=True, dtype=archive.DTYPES)
    assert {name: str(kind) for name, kind in one.dtypes.items()} == archive.DTYPES
    assert (
        one.mtime[0]
        == os.stat(
            os.path.join(json.loads((whole / "index.json").read_text())["root"]["file"], one.file[0])
        ).st_mtime_ns
    )
    database = tmp_path / "archive.sqlite"
    assert archive.export(whole, database) == (240, 240)
    found = pandas.read_sql("SELECT model, count(*) AS n FROM photographs GROUP BY model", sqlite3.connect(database))
    assert dict(zip(found.model, found.n))["TV-104"] == 36
    if pytest.importorskip("sqlalchemy"):
        frame = dask.read_sql_table("photographs", f"sqlite:///{database}", index_col="id", meta=archive.meta())
        assert len(frame) == 240 and frame.isoSpeed.max().compute() == 200


def test_export_follows_the_index(tree, tmp_path, capsys):
    root, out, database = make_tree(tmp_path / "root"), tmp_path / "out", tmp_path / "archive.sqlite"
    index(root, out)
    assert archive.export(out, database) == (240, 240) and archive.export(out, database) == (240, 0)
    (root / "camera 2" / "week 3" / "20.jpg").unlink()
    (root / "camera 4").rename(tmp_path / "gone")
    index(root, out)
    assert archive.export(out, database) == (203, 5)
    rows = sqlite3.connect(database).execute("SELECT file, typeof(isoSpeed), bracketOffset FROM photographs")
    assert {row[0]: row[1:] for row in rows} == {
        row["file"]: ("integer", row["bracketOffset"]) for row in archive.rows(out)
    }
    connection = sqlite3.connect(database)
    indexes = connection.execute("SELECT sql FROM sqlite_master WHERE type = 'index' AND sql IS NOT NULL").fetchall()
    columns = {sql.partition("photographs (")[2] for (sql,) in indexes}
    assert columns == {"part)", "file)", "dateTimeOriginal)", "make, model)", "lens)", "bracketSet)"}
    assert connection.execute("SELECT keywords FROM photographs").fetchone() == ('["sun", "shadows"]',)
    connection.execute("PRAGMA user_version = 99")
    with pytest.raises(tvmeta.Error, match="another version of tvmeta; name a new file"):
        archive.export(out, database)
    other = tmp_path / "other.sqlite"
    sqlite3.connect(other).execute("CREATE TABLE mine (a)")
    assert archive.main(["export", str(out), "--sqlite", str(other)]) == 1
    assert capsys.readouterr().err == f"tvmeta: {other}: is a database, but no export of an index; left unchanged\n"


def test_unchanged_files_are_not_read(client, whole, tree):
    before = snapshot(whole)
    assert archive.index(tree, whole, client, SIZE)[0] == (240, 240, 0, 0, 0)
    assert snapshot(whole) == before


def test_the_size_of_parts_can_change(whole, tree, tmp_path):
    out = tmp_path / "out"
    for size, large in ((SIZE, 15), (20, 4), (1000, 1), (59, 2), (SIZE, 15)):
        assert index(tree, out, size)[0].read == (0 if out.joinpath("old").exists() else 240)
        assert len(list(out.rglob("*.gz"))) == 30 + large
        (out / "old").touch()
        assert {row["file"]: row["bracketSet"] for row in archive.rows(out)} == {
            row["file"]: row["bracketSet"] for row in archive.rows(whole)
        }
    assert snapshot(out) == snapshot(whole)


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


@pytest.mark.parametrize("case", ["empty root", "missing root", "unreadable", "mount", "lost mount", "one file"])
def test_what_cannot_be_seen_is_not_gone(case, tmp_path, monkeypatch):
    root, out, away = make_tree(tmp_path / "root"), tmp_path / "out", tmp_path / "away"
    points = {os.fsencode(root / "camera 1")}
    monkeypatch.setattr(listing, "mount_points", lambda: frozenset(points))
    monkeypatch.setattr(run, "mount_points", lambda: frozenset(points))
    monkeypatch.setattr(part, "mount_points", lambda: frozenset(points))
    index(root, out)
    before, scandir, status = snapshot(out), os.scandir, os.stat

    def refuse(call, name):
        def refused(path, *arguments, **options):
            if isinstance(path, bytes) and path.endswith(name):
                raise PermissionError(errno.EACCES, "Permission denied")
            return call(path, *arguments, **options)

        return refused

    if case.endswith("root"):
        root.rename(away)
        if case == "empty root":
            root.mkdir()
        count, reason = 240, {"empty root": "the folder is empty", "missing root": "No such file or directory"}[case]
    elif case == "unreadable":
        monkeypatch.setattr(listing.os, "scandir", refuse(scandir, b"/camera 1"))
        count, reason = 36, "Permission denied"
    elif case == "one file":
        monkeypatch.setattr(part.os, "stat", refuse(status, b"/large/07.jpg"))
        count, reason = 1, "Permission denied"
    else:
        points.clear()
        (root / "camera 1").rename(away)
        if case == "mount":
            (root / "camera 1").mkdir()
        count, reason = 36, "was a mount point and is " + ("none now" if case == "mount" else "gone")
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
        counts = index(root, shutil.copytree(out, tmp_path / "pruned"), prune=True)[0]
        assert (counts.photographs, counts.stale, counts.failures) == (240 - count, 0, case == "one file")
    monkeypatch.setattr(os, "scandir", scandir)
    monkeypatch.setattr(os, "stat", status)
    if away.exists():
        if root.exists() and case == "empty root":
            root.rmdir()
        if case == "mount":
            (root / "camera 1").rmdir()
        away.rename(root if case.endswith("root") else root / "camera 1")
    points.add(os.fsencode(root / "camera 1"))
    assert index(root, out) == ((240, 240, 0, 0, 0), [])
    assert snapshot(out) == before


def test_prune_removes_what_cannot_be_seen(tmp_path, monkeypatch):
    root, out = make_tree(tmp_path / "root"), tmp_path / "out"
    points = {os.fsencode(root / "camera 1")}
    for module in (listing, run, part):
        monkeypatch.setattr(module, "mount_points", lambda: frozenset(points))
    index(root, out)
    points.clear()
    (root / "camera 1").rename(tmp_path / "away")
    assert index(root, out)[0].stale == 36
    assert index(root, out, prune=True) == ((204, 204, 0, 0, 0), [])
    assert len(list(archive.rows(out))) == 204


def test_workers_that_see_something_else(whole, tree, tmp_path, capsys):
    empty = os.fsencode(tmp_path / "empty")
    os.mkdir(empty)
    client = Inline(("bad", "good"), {"bad": empty})
    assert archive.index(tree, tmp_path / "out", client, SIZE)[0] == ALL
    assert snapshot(tmp_path / "out") == snapshot(whole)
    assert [worker for worker, _ in client.calls].count("bad") == 1 and "worker bad: " in capsys.readouterr().err
    before = snapshot(whole)
    with pytest.raises(tvmeta.Error, match="no worker sees this folder"):
        archive.index(tree, whole, Inline(("bad",), {"bad": empty}), SIZE)
    assert snapshot(whole) == before
    with pytest.raises(tvmeta.Error, match="no workers; run the same command again"):
        archive.index(tree, whole, Inline(()), SIZE, timeout=0)


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


def test_an_index_in_its_archive_is_not_indexed(tmp_path):
    write(tmp_path / "a.jpg", bracket_photo(0, 125))
    out = tmp_path / "index"
    assert index(tmp_path, out)[0].files == 1
    write(out / "parts" / "b.jpg", bracket_photo(1, 125))
    assert index(tmp_path, out) == ((1, 1, 0, 0, 0), [])


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
    write(root / "text.tiff", b"hello")
    write(root / "flaky.jpg", b"x" * len(photo))
    write(root / "hostile.tif", b"II*\0\x08\0\0\0" + b"\xff" * 300)
    with open(os.path.join(os.fsencode(root), b"caf\xe9.jpg"), "wb") as file:
        file.write(b"\xff\xd8\xff")
    os.mkfifo(root / "fifo.jpg")
    (root / "loop.jpg").symlink_to(root)
    (root / "loop").symlink_to(root)
    (root / "itself.jpg").symlink_to("itself.jpg")
    (root / "nowhere.jpg").symlink_to("none.jpg")
    arguments = ["index", str(root), str(out), "--scheduler", client.scheduler.address]
    assert archive.main(arguments) == 0
    assert "9 files, 4 photographs, 7 read, 8 failures, 0 stale" in capsys.readouterr().err
    shown = {row["file"]: row["reason"] for row in archive.failures(out)}
    starts = {name: reason.split(": ")[0] for name, reason in shown.items()}
    assert starts == {
        "cut.jpg": "damaged at byte 20; the rest was read",
        "empty.JPG": "not a photograph",
        "flaky.jpg": "not a photograph",
        "text.tiff": "not a photograph",
        "caf\ufffd.jpg": "damaged at byte 2; the rest was read",
        "hostile.tif": "damaged at byte 298; the rest was read",
        "itself.jpg": "Too many levels of symbolic links",
        "nowhere.jpg": "No such file or directory",
    }
    names = {table.name_bytes(row): row["fileBytes"] for row in archive.rows(out)}
    assert names[b"caf\xe9.jpg"] == "Y2Fm6S5qcGc=" and names[b"good.jpg"] is None
    before = (root / "flaky.jpg").stat()
    write(root / "flaky.jpg", photo)
    os.utime(root / "flaky.jpg", ns=(0, before.st_mtime_ns))
    for options, photographs in (([], 4), (["--retry"], 5)):
        archive.main(arguments + options)
        assert archive.summary(out)["photographs"] == photographs


def test_what_is_not_an_index_is_left_alone(tree, whole, tmp_path, monkeypatch, capsys):
    photos, empty, other = tmp_path / "photos", tmp_path / "empty", tmp_path / "other"
    write(photos / "parts" / "ab" / "1.jpg", b"dear")
    write(other / "a.jpg", b"")
    empty.mkdir()
    later, foreign, manifest = tmp_path / "later", tmp_path / "foreign", json.loads((whole / "index.json").read_bytes())
    write(later / "index.json", json.dumps({**manifest, "schema": table.SCHEMA + 1}).encode())
    write(foreign / "index.json", json.dumps({**manifest, "title": "index"}).encode())
    for label, arguments, message in (
        ("OUT has photographs", ["index", tree, photos], "is not an index and not empty; left unchanged"),
        ("swapped", ["index", whole, photos], "is an index, not an archive; name ROOT first, then OUT"),
        ("swapped, new index", ["index", empty, tree], "is not an index and not empty; left unchanged"),
        ("the same", ["index", photos, photos], "is in the index"),
        ("another root", ["index", other, whole], "--moved if that is now"),
        ("no root", ["index", tmp_path / "none", empty], "no such folder; no index is made"),
        ("summary", ["summary", photos], "is not an index"),
        ("failures", ["failures", tmp_path / "none"], "is not an index"),
        ("export", ["export", photos, "--sqlite", tmp_path / "x.db"], "is not an index"),
        ("later version", ["summary", later], "was made by a later version"),
        ("other manifest", ["summary", foreign], "is not an index of this version; name a new folder"),
        ("no scheduler", ["index", tree, empty, "--scheduler", "tcp://127.0.0.1:9", "--timeout", "1"], "no Dask sched"),
    ):
        if label != "no scheduler":
            monkeypatch.setattr(archive, "_client", lambda arguments: nullcontext(Inline()))
        else:
            monkeypatch.undo()
        assert archive.main([str(argument) for argument in arguments]) == 1, label
        error = capsys.readouterr().err
        assert error.startswith("tvmeta: ") and message in error and error.count("\n") == 1, label
    assert (photos / "parts" / "ab" / "1.jpg").read_bytes() == b"dear" and not list(empty.iterdir())
    with store.Store(os.fsencode(whole)).locked_for_run(), pytest.raises(tvmeta.Error, match="another run"):
        index(tree, whole)
    write(whole / "parts" / "00" / "photo.jpg", b"not ours")
    write(whole / "parts" / "00" / ("ff" * 8 + ".jsonl.gz"), b"ours, but in another place")
    index(tree, whole)
    assert (whole / "parts" / "00" / "photo.jpg").exists() and (
        whole / "parts" / "00" / ("ff" * 8 + ".jsonl.gz")
    ).exists()


def test_options_reach_the_run(monkeypatch, capsys):
    calls, unseen = [], [{"file": f"folder {i}", "reason": "why"} for i in range(12)]

    def record(*arguments, **options):
        calls.append((arguments, options))
        return part.Counts(*ALL), unseen

    monkeypatch.setattr(archive, "index", record)
    monkeypatch.setattr(archive, "_client", lambda arguments: nullcontext("client"))
    options = ["--partition", "7", "--retry", "--prune", "--moved", "--timeout", "9.5"]
    assert archive.main(["index", "root", "out", *options]) == 1
    error = capsys.readouterr().err
    assert error.count("; its records are kept") == 10 and "tvmeta: 2 more folders" in error
    unseen.clear()
    assert archive.main(["index", "root", "out"]) == 0
    names, values = ("retry", "prune", "moved", "timeout"), ((True, True, True, 9.5), (False, False, False, 60))
    sizes = (7, archive.PARTITION_SIZE)
    assert calls == [(("root", "out", "client", n), dict(zip(names, v))) for n, v in zip(sizes, values)]
    monkeypatch.undo()
    monkeypatch.setattr(archive, "local_cluster", lambda workers: calls.append(workers) or nullcontext("nonsense"))
    assert archive.main(["index", "root", "out", "--workers", "5"]) == 1 and calls[2] == 5
    assert "tvmeta: nonsense: no Dask scheduler answers" in capsys.readouterr().err
    for wrong in (["--partition", "0"], ["--workers", "-1"], ["--workers", "two"]):
        with pytest.raises(SystemExit):
            archive.main(["index", "root", "out", *wrong])
    with pytest.raises(ValueError, match="at least 1"):
        archive.index("root", "out", Inline(), 0)


def test_only_index_needs_dask_and_a_pipe_may_close(whole, tree, tmp_path, monkeypatch, capsys):
    monkeypatch.setitem(sys.modules, "distributed", None)
    assert archive.main(["index", str(tree), str(tmp_path)]) == 1
    assert "index needs Dask" in capsys.readouterr().err
    assert archive.main(["summary", str(whole)]) == 0
    process = subprocess.Popen(
        [sys.executable, "-m", "tvmeta.archive", "summary", whole], stdout=subprocess.PIPE, stderr=subprocess.PIPE
    )
    process.stdout.close()
    assert (process.stderr.read(), process.wait()) == (b"", 1)


def test_progress(capsys, monkeypatch):
    shown = progress.Progress()
    now = shown.start
    monkeypatch.setattr(progress.time, "monotonic", lambda: now + 31)
    assert shown.text(31, None, 0) == "31 files, 1 files/s, listing"
    shown.show(3100, 1003100, 2)
    shown.show(3101, 1003100, 2)
    assert capsys.readouterr().err == "3,100 of 1,003,100 files, 100 files/s, 2:46:40 left, 2 failures\n"
