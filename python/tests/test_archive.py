"""The index of an archive, built by two worker processes."""

import json
import os
import signal
import threading
import time
from collections import Counter

import pytest
from conftest import bracket_photo, exiftool

distributed = pytest.importorskip("distributed")
from tvmeta import _archive_partition as partition  # noqa: E402
from tvmeta import archive  # noqa: E402

SIZE = 6  # files of a partition


@pytest.fixture(scope="module")
def client():
    cluster = distributed.LocalCluster(
        n_workers=2, threads_per_worker=1, host="127.0.0.1", dashboard_address=None, memory_limit=None
    )
    with cluster, distributed.Client(cluster) as client:
        yield client


def write(path, data):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(data)


@pytest.fixture(scope="module")
def tree(tmp_path_factory):
    """Return 5 cameras of 12 sets of 3 photographs, and a folder that is larger than partitions."""
    root = tmp_path_factory.mktemp("archive")
    for i in range(180):
        camera, shot = i // 36, i % 36
        data = bracket_photo(10 * (shot // 3) + shot % 3, (500, 125, 31)[shot % 3], b"TV-10%d" % camera)
        write(root / f"camera {camera}" / f"week {shot // 6}" / f"{shot:02d}.jpg", data)
    for i in range(60):
        write(root / "large" / f"{i:02d}.jpg", bracket_photo(0, 125, year=b"2023"))
    write(root / "notes.txt", b"no photograph")
    return root


@pytest.fixture(scope="module")
def whole(client, tree, tmp_path_factory):
    """Return the files of an index that was built in one run."""
    out = tmp_path_factory.mktemp("whole")
    assert archive.index(tree, out, client, SIZE) == (241, 240, 241, 0)
    return out


def snapshot(out):
    return {str(path.relative_to(out)): path.read_bytes() for path in out.rglob("*") if path.is_file()}


def records(out):
    return [
        record for key in archive._keys(os.fsencode(out)) for record in partition.read_records(os.fsencode(out), key)
    ]


def test_records_and_summary(whole, tree, capsys):
    found = {record["file"]: record for record in records(whole)}
    assert len(found) == len(records(whole)) == 240
    for tags in json.loads(exiftool("-r", "-j", "-n", "-Model", "-ExposureTime", tree / "camera 3")):
        record = found[os.path.relpath(tags["SourceFile"], tree)]
        assert (record["model"], record["exposureTime"]) == (
            tags["Model"],
            pytest.approx(tags["ExposureTime"], rel=1e-6),
        )
    cameras = {"TV-100": 96, **{f"TV-10{i}": 36 for i in range(1, 5)}}
    expected = {"cameras": cameras, "lenses": {"TV 16-50mm f/2.8-4": 240}, "years": {"2024": 180, "2023": 60}}
    summary = archive.summary(whole)
    assert {**summary, **expected, "brackets": {"3": 60}} == summary and summary["photographs"] == 240
    assert archive.main(["summary", str(whole)]) == 0
    assert "          60  3 shots\n" in capsys.readouterr().out


def test_partitions_are_few_and_cover_the_tree(whole, tree):
    sizes = Counter(
        len(list(partition.read_records(os.fsencode(whole), key))) for key in archive._keys(os.fsencode(whole))
    )
    assert 15 <= sum(sizes.values()) <= 80 and max(sizes) <= 4 * SIZE


def test_unchanged_partitions_are_not_read(client, whole, tree):
    before = snapshot(whole)
    assert archive.index(tree, whole, client, SIZE) == (241, 240, 0, 0)
    assert snapshot(whole) == before


def test_a_stopped_run_is_resumed(client, whole, tree, tmp_path, monkeypatch):
    most, finish = 0, archive._Run.finish

    def stop(run, result, bar):
        nonlocal most
        most = max(most, len(run.running))
        finish(run, result, bar)
        if run.totals.files > 80:
            raise KeyboardInterrupt

    monkeypatch.setattr(archive._Run, "finish", stop)
    with pytest.raises(KeyboardInterrupt):
        archive.index(tree, tmp_path, client, SIZE)
    assert most < 6 and not (tmp_path / "index.json").exists()
    monkeypatch.undo()
    next((tmp_path / "parts").rglob("*.json")).unlink()
    write(tmp_path / "parts" / "00" / ".tvmeta-of-a-killed-worker", b"")
    assert 80 < archive.index(tree, tmp_path, client, SIZE).read < 180
    assert snapshot(tmp_path) == snapshot(whole)


def test_a_killed_worker_loses_and_doubles_nothing(client, whole, tree, tmp_path):
    processes = client.run(os.getpid)
    run = threading.Thread(target=archive.index, args=(tree, tmp_path, client, SIZE))
    run.start()
    while len(list(tmp_path.rglob("*.gz"))) < 4:
        time.sleep(0.001)
    os.kill(next(iter(processes.values())), signal.SIGKILL)
    assert len(list(tmp_path.rglob("*.gz"))) < len(list(whole.rglob("*.gz"))) and run.is_alive()
    run.join(60)
    assert snapshot(tmp_path) == snapshot(whole)
    assert processes != client.run(os.getpid)


def test_only_changed_files_are_read(client, tree, tmp_path):
    root, out, fresh = tmp_path / "root", tmp_path / "out", tmp_path / "fresh"
    for path in tree.rglob("*.jpg"):
        write(root / path.relative_to(tree), path.read_bytes())
    archive.index(root, out, client, SIZE)
    write(root / "large" / "07.jpg", bracket_photo(7, 60))
    write(root / "large" / "new.jpg", bracket_photo(8, 60))
    (root / "camera 2" / "week 3" / "20.jpg").unlink()
    (root / "camera 4" / "week 1").rename(root / "moved")
    assert archive.index(root, out, client, SIZE).read < 50
    archive.index(root, fresh, client, SIZE)
    assert snapshot(out) == snapshot(fresh)


def test_failures(client, tmp_path, capsys):
    root, out = tmp_path / "root", tmp_path / "out"
    whole = bracket_photo(0, 125)
    write(root / "good.jpg", whole)
    write(root / "no suffix", whole)
    write(root / "cut.jpg", whole[:3000])
    write(root / "empty.JPG", b"")
    write(root / "text.tiff", b"hello")
    write(root / "text.txt", b"hello")
    write(root / "flaky.jpg", b"x" * len(whole))
    write(root / "hostile.tif", b"II*\0\x08\0\0\0" + b"\xff" * 300)
    write(root / "broken.psd", b"8BPS\0\1" + bytes(60))
    with open(os.path.join(os.fsencode(root), b"caf\xe9.jpg"), "wb") as file:
        file.write(b"\xff\xd8\xff")
    os.mkfifo(root / "fifo.jpg")
    (root / "loop").symlink_to(root)
    (root / "itself.jpg").symlink_to("itself.jpg")
    (root / "nowhere.jpg").symlink_to("none.jpg")
    (root / "fifo link.jpg").symlink_to("fifo.jpg")
    deep, top = "d" * 250, os.getcwd()
    os.chdir(root)
    for _ in range(17):  # a path that no call accepts
        os.mkdir(deep)
        os.chdir(deep)
    os.chdir(top)
    write(out / "parts" / "stale" / "0123.json", b"{}")
    arguments = ["index", str(root), str(out), "--scheduler", client.scheduler.address]
    assert archive.main(arguments) == 1
    assert "13 files, 4 photographs, 10 read, 9 failures" in capsys.readouterr().err
    shown = {record["file"]: record["reason"] for record in archive.failures(out)}
    folders = [name for name in shown if name.startswith("ddd")]
    assert [shown.pop(name) for name in folders] == ["File name too long"]
    assert shown == {
        "cut.jpg": "the chain of JPEG segments is broken after the EXIF data",
        "empty.JPG": "not a JPEG, TIFF or PSD file: empty",
        "flaky.jpg": "not a JPEG, TIFF or PSD file: starts with 78 78 78 78",
        "text.tiff": "not a JPEG, TIFF or PSD file: starts with 68 65 6c 6c",
        "broken.psd": "not an RGB picture, or the EXIF resource is not a TIFF structure",
        "caf\ufffd.jpg": "the chain of JPEG segments is broken",
        "itself.jpg": "Too many levels of symbolic links",
        "nowhere.jpg": "No such file or directory",
    }
    assert sorted(record["file"] for record in records(out)) == ["cut.jpg", "good.jpg", "hostile.tif", "no suffix"]
    before = (root / "flaky.jpg").stat()
    write(root / "flaky.jpg", whole)
    os.utime(root / "flaky.jpg", ns=(0, before.st_mtime_ns))
    archive.main(arguments)
    assert len(records(out)) == 4
    archive.main(arguments + ["--retry"])
    assert len(records(out)) == 5
    with archive._locked(os.fsencode(out)), pytest.raises(SystemExit, match="another run"):
        archive.index(root, out, client)
    with pytest.raises(FileNotFoundError):
        archive.index(tmp_path / "not mounted", out, client)
    assert len(records(out)) == 5


def test_a_partition_that_is_not_whole_has_no_state(tmp_path, monkeypatch):
    arguments = os.fsencode(tmp_path), os.fsencode(tmp_path / "out"), "ab"
    partition.index_partition(*arguments, b"gone.jpg", False)
    write = partition.files.write
    monkeypatch.setattr(partition.files, "write", lambda path, data: 1 / 0 if b".gz" in path else write(path, data))
    with pytest.raises(ZeroDivisionError):
        partition.index_partition(*arguments, b"other.jpg", False)
    assert partition.read_state(*arguments[1:]) is None


def test_a_file_that_vanishes_is_a_failure(tmp_path):
    result = partition.index_partition(os.fsencode(tmp_path), os.fsencode(tmp_path / "out"), "ab", b"gone.jpg", False)
    assert result == (1, 0, 0, 1)
