"""Index of the photographs of a whole archive, read on a Dask cluster.

    python3 -m tvmeta.archive index ROOT OUT [--scheduler ADDRESS]
    python3 -m tvmeta.archive summary OUT
    python3 -m tvmeta.archive failures OUT
    python3 -m tvmeta.archive export OUT --sqlite FILE

OUT receives `parts/`, with a gzip file of JSON lines for each folder, `failures.jsonl` with the
folders that could not be listed, and the manifest `index.json`. A later run reads changed files
alone, by size and time. ROOT and OUT must have the same path on every worker. Without a
scheduler, workers run on this machine. Only `index` needs Dask.
"""

from __future__ import annotations

import argparse
import json
import logging
import os
import signal
import sys
from collections import Counter
from contextlib import ExitStack, contextmanager
from typing import Any, Iterator, Optional

from ._archive_export import export_sqlite
from ._archive_local import local_cluster
from ._archive_store import Store
from ._archive_table import DTYPES, Row, line_of
from .errors import Error

__all__ = ["DTYPES", "export", "failures", "index", "main", "meta", "rows", "summary"]

PARTITION_SIZE = 4000
TIMEOUT = 60.0


def _store(out: Any) -> Store:
    return Store(os.path.abspath(os.fsencode(out)))


def index(
    root: Any,
    out: Any,
    client: Any,
    size: int = PARTITION_SIZE,
    *,
    retry: bool = False,
    prune: bool = False,
    moved: bool = False,
    timeout: float = TIMEOUT,
) -> tuple[Any, list[Row]]:
    """Bring the index of `root` in the folder `out` up to date, on the cluster of a Dask client.

    `size` is the number of files of a part. `retry` reads failures again, `prune` removes what
    cannot be seen, `moved` accepts the index of another root, `timeout` is the number of seconds
    to wait for workers. Returns counts (files, photographs, read, failures, stale) and the folders
    that could not be listed, each with its reason. Raises Error; what is written by then is valid.
    """
    from ._archive_run import index_archive

    if size < 1:
        raise ValueError("the size of a part is at least 1")
    top, store = os.path.abspath(os.fsencode(root)), _store(out)
    if (top + b"/").startswith(store.out + b"/"):
        raise Error(os.fsdecode(top), f"is in the index {os.fsdecode(store.out)}; left unchanged")
    if os.path.exists(os.path.join(top, b"index.json")) and os.path.exists(os.path.join(top, b"parts")):
        raise Error(os.fsdecode(top), "is an index, not an archive; name ROOT first, then OUT")
    return index_archive(top, store.out, client, size, retry, prune, moved, timeout)


def rows(out: Any) -> Iterator[Row]:
    """Give the rows of an index."""
    store = _store(out)
    store.manifest()
    for part in store.all_parts():
        if part.kind == "jsonl.gz":
            yield from store.rows(part)


def failures(out: Any) -> Iterator[Row]:
    """Give what failed: folders, files and stale rows, each with its reason."""
    store = _store(out)
    store.manifest()
    if os.path.exists(store.path(b"failures.jsonl")):
        with open(store.path(b"failures.jsonl"), "rb") as file:
            yield from map(json.loads, file)
    for row in rows(out):
        reason = row["failure"] or row["stale"]
        if reason:
            name = {key: row[key] for key in ("file", "fileBytes") if row[key]}
            yield {**name, "reason": reason if row["failure"] else f"stale: {reason}"}


def summary(out: Any) -> dict[str, Any]:
    """Count photographs by camera, lens and year, and bracketed sets by number of shots."""
    counts: dict[str, Counter[str]] = {title: Counter() for title in ("cameras", "lenses", "years")}
    totals = Counter(photographs=0, failures=0, stale=0)
    sets: Counter[str] = Counter()
    for row in rows(out):
        totals.update(photographs=row["container"] is not None, failures=row["failure"] is not None)
        totals.update(stale=row["stale"] is not None)
        camera = " ".join(filter(None, (row["make"], row["model"])))
        for title, value in (("cameras", camera), ("lenses", row["lens"]), ("years", row["dateTimeOriginal"])):
            if value:
                counts[title][value[:4] if title == "years" else value] += 1
        if row["bracketSet"]:
            sets[row["bracketSet"]] = max(sets[row["bracketSet"]], row["bracketPosition"])
    shots = Counter(map(str, sets.values()))
    return {**totals, **{title: dict(found.most_common()) for title, found in (*counts.items(), ("brackets", shots))}}


def export(out: Any, sqlite: Any) -> tuple[int, int]:
    """Bring an SQLite database up to date with an index; return its rows and those written."""
    return export_sqlite(_store(out), os.fspath(sqlite))


def meta() -> Any:
    """Return an empty data frame with the columns of an exported database, for dask.dataframe.read_sql_table()."""
    import pandas

    columns = {name: pandas.Series(dtype=kind) for name, kind in {"part": "Int64", **DTYPES}.items()}
    return pandas.DataFrame(columns, index=pandas.Index([], name="id", dtype="int64"))


def _print_summary(out: str) -> None:
    found = summary(out)
    print(f"{found['photographs']} photographs, {found['failures']} failures, {found['stale']} stale")
    for title, unit in (("cameras", ""), ("lenses", ""), ("years", ""), ("brackets", " shots")):
        print(f"\n{title.capitalize()}")
        for name, count in found[title].items():
            print(f"{count:12}  {name}{unit}")


@contextmanager
def _client(arguments: argparse.Namespace) -> Iterator[Any]:
    """Give a client of the scheduler, or of workers on this machine, which end with the block."""
    logging.disable(logging.CRITICAL)  # the messages of this module say what is wrong
    try:
        from distributed import Client
    except ImportError as error:
        raise Error(None, f"index needs Dask ({error}): install python3-distributed") from error
    with ExitStack() as stack:
        address = arguments.scheduler or stack.enter_context(local_cluster(arguments.workers or os.cpu_count() or 1))
        try:
            client = Client(address, timeout=arguments.timeout)
        except (OSError, ValueError) as error:
            raise Error(address, f"no Dask scheduler answers: {error}") from error
        try:
            yield client
        finally:
            for number in (signal.SIGINT, signal.SIGTERM):
                signal.signal(number, signal.SIG_IGN)  # closing takes less than a second
            client.close(timeout=1)


def _run_index(arguments: argparse.Namespace) -> int:
    with _client(arguments) as client:
        counts, unseen = index(
            arguments.root,
            arguments.out,
            client,
            arguments.partition,
            retry=arguments.retry,
            prune=arguments.prune,
            moved=arguments.moved,
            timeout=arguments.timeout,
        )
    print(", ".join(f"{count} {name}" for name, count in counts._asdict().items()), file=sys.stderr)
    for folder in unseen[:10]:
        print(f"tvmeta: {folder['file']}: {folder['reason']}; its records are kept", file=sys.stderr)
    if len(unseen) > 10:
        print(f"tvmeta: {len(unseen) - 10} more folders: python3 -m tvmeta.archive failures OUT", file=sys.stderr)
    return 1 if unseen else 0


def _number(text: str) -> int:
    value = int(text)
    if value < 1:
        raise argparse.ArgumentTypeError(f"{text} is not a number above 0")
    return value


def _arguments(argv: Optional[list[str]]) -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="python3 -m tvmeta.archive", description="Index a photograph archive.")
    commands = parser.add_subparsers(dest="command", required=True)
    build = commands.add_parser("index", help="build an index, or bring it up to date")
    build.add_argument("root", metavar="ROOT", help="top folder of the archive")
    build.add_argument("out", metavar="OUT", help="folder of the index: new, empty, or an index")
    build.add_argument("--scheduler", metavar="ADDRESS", help="Dask scheduler; default: workers on this machine")
    build.add_argument(
        "--workers", type=_number, metavar="N", help="without a scheduler: workers, default one per core"
    )
    build.add_argument("--partition", type=_number, default=PARTITION_SIZE, metavar="N", help="files per part at most")
    build.add_argument("--retry", action="store_true", help="read again what failed, even if it did not change")
    build.add_argument("--prune", action="store_true", help="remove records of files and folders that cannot be seen")
    build.add_argument("--moved", action="store_true", help="OUT is the index of the same archive with another path")
    build.add_argument("--timeout", type=float, default=TIMEOUT, metavar="S", help="seconds to wait for workers")
    for name, text in (
        ("summary", "count cameras, lenses, years and brackets"),
        ("failures", "list what failed"),
        ("export", "write the table into a database, or bring that up to date"),
    ):
        command = commands.add_parser(name, help=text)
        command.add_argument("out", metavar="OUT", help="folder of the index")
        if name == "export":
            command.add_argument("--sqlite", metavar="FILE", required=True, help="SQLite database")
    return parser.parse_args(argv)


def _run(arguments: argparse.Namespace) -> int:
    if arguments.command == "index":
        return _run_index(arguments)
    if arguments.command == "summary":
        _print_summary(arguments.out)
    elif arguments.command == "failures":
        for record in failures(arguments.out):
            sys.stdout.buffer.write(line_of(record))
    else:
        total, written = export(arguments.out, arguments.sqlite)
        print(f"{total} rows, {written} written", file=sys.stderr)
    sys.stdout.flush()
    return 0


def _interrupt(number: int, frame: Any) -> None:
    raise KeyboardInterrupt


def main(argv: Optional[list[str]] = None) -> int:
    """Run the command line; return 0, or 1 if the run failed or a folder could not be listed."""
    arguments = _arguments(argv)
    sys.stdout = sys.stdout or open(os.devnull, "w", encoding="utf-8")  # closed by the caller
    try:
        return _run(arguments)
    except KeyboardInterrupt:
        print("tvmeta: interrupted; run the same command again to continue", file=sys.stderr)
        return 130
    except BrokenPipeError:
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())  # for the flush at exit
        return 1
    except Error as error:
        print(f"tvmeta: {error}", file=sys.stderr)
    except OSError as error:
        print(f"tvmeta: {os.fsdecode(error.filename or b'index')}: {error.strerror or error}", file=sys.stderr)
    return 1


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, _interrupt)
    raise SystemExit(main())
