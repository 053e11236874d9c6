"""Index of the photographs of a whole archive, read on a Dask cluster.

    python3 -m tvmeta.archive index ROOT OUT [--scheduler ADDRESS]
    python3 -m tvmeta.archive summary OUT
    python3 -m tvmeta.archive failures OUT

OUT receives `parts/`, with a gzip file of JSON lines per partition and its failures, `failures.jsonl`
with the folders and partitions that failed, and `index.json` when a run is complete. A later run
skips partitions whose files did not change, and reads changed files alone, by size and time. ROOT
and OUT must have the same path on every worker. Without a scheduler, workers run on this machine.
"""

from __future__ import annotations

import argparse
import fcntl
import json
import os
import sys
from collections import Counter
from contextlib import contextmanager
from typing import Any, Iterator, NamedTuple, Optional

from distributed import Client, LocalCluster, as_completed
from tqdm import tqdm

from . import _files as files
from ._archive_listing import Partition, partitions
from ._archive_partition import Record, Result, index_partition, line_of, name_fields, part_path, read_state

PARTITION_SIZE = 4000
_TASKS_PER_THREAD = 3  # one runs, the others bridge the way to the scheduler and back
_SUFFIXES = (".failures.jsonl", ".jsonl.gz", ".json")


class Totals(NamedTuple):
    """What a run did."""

    files: int = 0
    photographs: int = 0
    read: int = 0
    failures: int = 0

    def plus(self, result: Result) -> Totals:
        """Add the result of a partition."""
        return Totals(*(a + b for a, b in zip(self, result)))


@contextmanager
def _locked(out: bytes) -> Iterator[None]:
    """Keep a second run away from the same index."""
    os.makedirs(os.path.join(out, b"parts"), exist_ok=True)
    with open(os.path.join(out, b"lock"), "wb") as lock:
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except OSError as error:
            raise SystemExit(f"tvmeta: {os.fsdecode(out)}: another run writes this index") from error
        yield


def _remove_stale(out: bytes, keys: set[str]) -> None:
    """Remove partitions that the archive no longer has, and temporary files of killed workers."""
    for folder, _, names in os.walk(os.path.join(out, b"parts")):
        for name in names:
            if name.split(b".")[0].decode("ascii", "replace") not in keys:
                os.unlink(os.path.join(folder, name))


class _Run:
    """One run of the index: partitions on their way through the cluster."""

    def __init__(self, root: bytes, out: bytes, client: Any, retry: bool) -> None:
        self.root, self.out, self.client, self.retry = root, out, client, retry
        self.failures: list[Record] = []
        self.keys: set[str] = set()
        self.totals = Totals()
        self.running: dict[Any, str] = {}
        self.completed = as_completed()

    def report(self, name: bytes, error: OSError) -> None:
        self.failures.append({**name_fields(name), "reason": error.strerror})

    def submit(self, partition: Partition) -> None:
        self.keys.add(partition.key)
        names = b"\0".join(partition.names)
        future = self.client.submit(index_partition, self.root, self.out, partition.key, names, self.retry, pure=False)
        self.running[future] = partition.key
        self.completed.add(future)

    def collect(self) -> Result:
        future = next(self.completed)
        key = self.running.pop(future)
        error = future.exception()
        if error is not None:
            self.failures.append({"partition": key, "reason": str(error) or type(error).__name__})
            return Result(0, 0, 0, 0)
        return Result(*future.result())

    def window(self) -> int:
        """Return how many partitions may be on their way, so that neither end keeps many."""
        return max(_TASKS_PER_THREAD * int(sum(self.client.nthreads().values())), 1)

    def finish(self, result: Result, bar: Any) -> None:
        self.totals = self.totals.plus(result)
        bar.update(result.files)
        bar.set_postfix(failures=self.totals.failures + len(self.failures), refresh=False)

    def execute(self, size: int, bar: Any) -> None:
        listed = 0
        for partition in partitions(self.root, os.stat(self.out), size, self.report):
            while len(self.running) >= self.window():
                self.finish(self.collect(), bar)
            self.submit(partition)
            listed += len(partition.names)
        bar.total = listed
        while self.running:
            self.finish(self.collect(), bar)
        self.totals = self.totals._replace(failures=self.totals.failures + len(self.failures))


def index(root: Any, out: Any, client: Any, size: int = PARTITION_SIZE, retry: bool = False) -> Totals:
    """Bring the index of `root` in the folder `out` up to date, on the cluster of a Dask client."""
    root, out = (os.path.abspath(os.fsencode(path)) for path in (root, out))
    os.listdir(root)  # a root that is not mounted must not empty the index
    with _locked(out), tqdm(unit=" files", disable=None, smoothing=0.05) as bar:
        run = _Run(root, out, client, retry)
        run.execute(size, bar)
        files.write(os.path.join(out, b"failures.jsonl"), b"".join(map(line_of, run.failures)))
        if not any("partition" in failure for failure in run.failures):
            _remove_stale(out, run.keys)
        state = {"root": name_fields(root), "partitions": len(run.keys), **run.totals._asdict()}
        del state["read"]
        files.write(os.path.join(out, b"index.json"), line_of(state))
    return run.totals


def _keys(out: bytes) -> list[str]:
    found = []
    for _, _, names in os.walk(os.path.join(out, b"parts")):
        found += [name[: -len(".json")].decode() for name in names if name.endswith(b".json")]
    return sorted(found)


def failures(out: Any) -> Iterator[Record]:
    """Give the failures of an index: files, folders and partitions, each with its reason."""
    folder = os.fsencode(out)
    paths = [os.path.join(folder, b"failures.jsonl")]
    for path in paths + [part_path(folder, key, ".failures.jsonl") for key in _keys(folder)]:
        with open(path, "rb") as file:
            yield from map(json.loads, file)


def summary(out: Any) -> dict[str, Any]:
    """Count photographs by camera, lens, year, and bracketed sets by number of shots."""
    folder = os.fsencode(out)
    titles = ("cameras", "lenses", "years", "brackets")
    counts: dict[str, Counter[str]] = {title: Counter() for title in titles}
    totals: Counter[str] = Counter()
    for key in _keys(folder):
        state = read_state(folder, key) or {}
        totals.update({"partitions": 1, "photographs": state["photographs"], "failures": state["failures"]})
        for title in titles:
            counts[title].update(state[title] or {})
    return {**totals, **{title: dict(counter.most_common()) for title, counter in counts.items()}}


def _print_summary(out: str) -> None:
    found = summary(out)
    print(f"{found.get('photographs', 0)} photographs, {found.get('failures', 0)} failures")
    for title, unit in (("cameras", ""), ("lenses", ""), ("years", ""), ("brackets", " shots")):
        print(f"\n{title.capitalize()}")
        for name, count in found[title].items():
            print(f"{count:12}  {name}{unit}")


def _client(arguments: argparse.Namespace) -> Any:
    if arguments.scheduler:
        return Client(arguments.scheduler)
    workers = arguments.workers or os.cpu_count()
    cluster = LocalCluster(
        n_workers=workers, threads_per_worker=1, host="127.0.0.1", dashboard_address=None, memory_limit="1GiB"
    )
    return Client(cluster)


def _arguments(argv: Optional[list[str]]) -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="python3 -m tvmeta.archive", description="Index a photograph archive.")
    commands = parser.add_subparsers(dest="command", required=True)
    build = commands.add_parser("index", help="build an index, or bring it up to date")
    build.add_argument("root", metavar="ROOT", help="top folder of the archive")
    build.add_argument("out", metavar="OUT", help="folder of the index")
    build.add_argument("--scheduler", metavar="ADDRESS", help="Dask scheduler; default: workers on this machine")
    build.add_argument("--workers", type=int, metavar="N", help="without a scheduler: workers, default one per core")
    build.add_argument("--partition", type=int, default=PARTITION_SIZE, metavar="N", help="files per partition")
    build.add_argument("--retry", action="store_true", help="read again what failed, even if it did not change")
    for name, text in (("summary", "count cameras, lenses, years and brackets"), ("failures", "list what failed")):
        commands.add_parser(name, help=text).add_argument("out", metavar="OUT", help="folder of the index")
    return parser.parse_args(argv)


def main(argv: Optional[list[str]] = None) -> int:
    """Run the command line; return 0, or 1 if a file could not be read."""
    arguments = _arguments(argv)
    if arguments.command == "summary":
        _print_summary(arguments.out)
        return 0
    if arguments.command == "failures":
        for record in failures(arguments.out):
            sys.stdout.buffer.write(line_of(record))
        return 0
    with _client(arguments) as client:
        totals = index(arguments.root, arguments.out, client, arguments.partition, arguments.retry)
    print(", ".join(f"{count} {name}" for name, count in totals._asdict().items()), file=sys.stderr)
    return 1 if totals.failures else 0


if __name__ == "__main__":
    raise SystemExit(main())
