"""The index of an archive: its table, what is made of it, and the command line."""

import json
import os
import sqlite3
import subprocess
import sys
from contextlib import nullcontext

import pytest
from archives import ALL, SIZE, Inline, index, make_tree, snapshot
from conftest import SCENE, bracket_photo, exiftool, write

import tvmeta
from tvmeta import _archive_part as part
from tvmeta import _archive_progress as progress
from tvmeta import _archive_store as store
from tvmeta import _archive_table as table
from tvmeta import archive


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
    command = [os.environ["TVMETA_TOOL"], "info", "--json", SCENE]
    shown = json.loads(subprocess.run(command, capture_output=True, check=True).stdout)
    names = [column.name for column in table.COLUMNS]
    assert set(shown) <= set(names) and len(names) == len(set(names))
    row = table.read_row(os.fsencode(SCENE), b"x", 1, 2)
    same = {name for name in shown if row[name] is not None} - {"file"}
    assert len(same) >= 16 and {name: row[name] for name in same} == {name: shown[name] for name in same}
    kinds = {"text": str, "integer": int, "real": float, "texts": list}
    assert all(row[name] is None or type(row[name]) is kinds[kind] for name, kind, _ in table.COLUMNS)


def test_pandas_dask_and_sqlite_open_the_table(whole, tree, tmp_path):
    pandas, dask = pytest.importorskip("pandas"), pytest.importorskip("dask.dataframe")
    parts = f"{whole}/parts/*/*.jsonl.gz"
    frame = dask.read_json(parts, lines=True, dtype=archive.DTYPES)
    assert frame.groupby("model").size().compute().to_dict()["TV-100"] == 96
    one = pandas.read_json(sorted(whole.rglob("*.gz"))[0], lines=True, dtype=archive.DTYPES)
    assert {name: str(kind) for name, kind in one.dtypes.items()} == archive.DTYPES
    assert one.mtime[0] == (tree / one.file[0]).stat().st_mtime_ns
    database = tmp_path / "archive.sqlite"
    assert archive.export(whole, database) == (240, 240)
    found = pandas.read_sql("SELECT model, count(*) AS n FROM photographs GROUP BY model", sqlite3.connect(database))
    assert dict(zip(found.model, found.n))["TV-104"] == 36
    if pytest.importorskip("sqlalchemy"):
        frame = dask.read_sql_table("photographs", f"sqlite:///{database}", index_col="id", meta=archive.meta())
        assert len(frame) == 240 and frame.isoSpeed.max().compute() == 200


def test_export_follows_the_index(tmp_path, capsys):
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
    indexes = connection.execute("SELECT sql FROM sqlite_master WHERE type = 'index' AND sql IS NOT NULL")
    assert len(indexes.fetchall()) == 6
    assert connection.execute("SELECT keywords FROM photographs").fetchone() == ('["sun", "shadows"]',)
    connection.execute("PRAGMA user_version = 99")
    with pytest.raises(tvmeta.Error, match="another version of tvmeta; name a new file"):
        archive.export(out, database)
    other = tmp_path / "other.sqlite"
    sqlite3.connect(other).execute("CREATE TABLE mine (a)")
    assert archive.main(["export", str(out), "--sqlite", str(other)]) == 1
    assert capsys.readouterr().err == f"tvmeta: {other}: is a database, but no export of an index; left unchanged\n"


def test_the_size_of_parts_can_change(whole, tree, tmp_path):
    out = tmp_path / "out"
    for size, large in ((SIZE, 15), (20, 4), (1000, 1), (59, 2), (SIZE, 15)):
        assert index(tree, out, size)[0].read == (0 if out.joinpath("old").exists() else 240)
        assert len(list(out.rglob("*.gz"))) == 30 + large
        (out / "old").touch()
        sets = [{row["file"]: row["bracketSet"] for row in archive.rows(path)} for path in (out, whole)]
        assert sets[0] == sets[1]
    assert snapshot(out) == snapshot(whole)


def test_an_index_in_its_archive_is_not_indexed(tmp_path):
    write(tmp_path / "a.jpg", bracket_photo(0, 125))
    out = tmp_path / "index"
    assert index(tmp_path, out)[0].files == 1
    write(out / "parts" / "b.jpg", bracket_photo(1, 125))
    assert index(tmp_path, out) == ((1, 1, 0, 0, 0), [])


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
    kept = [whole / "parts" / "00" / name for name in ("not ours.jpg", "ff" * 8 + ".jsonl.gz")]  # in another place
    for path in kept:
        write(path, b"kept")
    index(tree, whole)
    assert all(path.exists() for path in kept)


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


def test_a_pipe_may_close(whole):
    command, pipe = [sys.executable, "-m", "tvmeta.archive", "summary", whole], subprocess.PIPE
    process = subprocess.Popen(command, stdout=pipe, stderr=pipe)
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
