"""Measures reading and indexing beside exiftool, and prints the figures of docs/performance.md.

python3 python/bench.py FOLDER [--files N] [--repeat N]

FOLDER is on the disk to measure; a tree of photographs is made there. Of several runs, the fastest
counts.
"""

from __future__ import annotations

import argparse
import os
import shutil
import subprocess
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import Any, Callable

from distributed import Client, LocalCluster

import tvmeta
from tvmeta import archive

SCENE = Path(__file__).resolve().parent.parent / "examples" / "scene.jpg"
PER_FOLDER = 400


def make_tree(root: Path, count: int) -> list[Path]:
    """Write photographs with different times, as different files."""
    data = SCENE.read_bytes()
    paths = [root / f"{i // PER_FOLDER:04d}" / f"{i:06d}.jpg" for i in range(count)]
    for i, path in enumerate(paths):
        path.parent.mkdir(parents=True, exist_ok=True)
        taken = b"2024:06:21 %02d:%02d:%02d" % (i // 3600 % 24, i // 60 % 60, i % 60)
        path.write_bytes(data.replace(b"2024:06:21 20:41:07", taken))
    return paths


def drop_cache(paths: list[Path]) -> None:
    """Make the next reads come from the disk."""
    os.sync()
    for path in paths:
        descriptor = os.open(path, os.O_RDONLY)
        os.posix_fadvise(descriptor, 0, 0, os.POSIX_FADV_DONTNEED)
        os.close(descriptor)


def read_all(paths: list[Path], threads: int) -> None:
    """Read photographs with plain threads."""
    with ThreadPoolExecutor(threads) as pool:
        for _ in pool.map(tvmeta.read, paths, chunksize=100):
            pass


def processor_time() -> float:
    """Return the processor time of this process and of its children that ended."""
    return time.process_time() + sum(os.times()[2:4])


def measure(
    job: str,
    count: int,
    repeat: int,
    task: Callable[[], Any],
    prepare: Callable[[], Any] = lambda: None,
    used: Callable[[], float] = processor_time,
) -> None:
    """Print a row of the table: the shortest time, and the least processor time of a file."""
    times, processor = [], []
    for _ in range(repeat):
        prepare()
        start, before = time.perf_counter(), used()
        task()
        times.append(time.perf_counter() - start)
        processor.append(used() - before)
    print(f"| {job:48} | {count / min(times):9,.0f} /s | {min(processor) / count * 1e6:8,.1f} us |", flush=True)


def measure_archive(root: Path, out: Path, count: int, repeat: int, workers: int) -> None:
    """Index the tree on a cluster of its own."""
    cluster = LocalCluster(n_workers=workers, threads_per_worker=1, host="127.0.0.1", dashboard_address=None)
    with cluster, Client(cluster) as client:

        def used() -> float:
            return float(sum(client.run(processor_time).values()))

        def run() -> None:
            archive.index(root, out, client)

        def clear() -> None:
            shutil.rmtree(out, ignore_errors=True)

        measure(f"archive, workers: {workers}", count, repeat, run, clear, used)
        measure("  nothing changed", count, repeat, run, used=used)


def main() -> None:
    """Measure everything."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("folder", type=Path)
    parser.add_argument("--files", type=int, default=20000)
    parser.add_argument("--repeat", type=int, default=3)
    arguments = parser.parse_args()
    root, out = arguments.folder / "photographs", arguments.folder / "index"
    paths, repeat = make_tree(root, arguments.files), arguments.repeat
    for threads in (1, 2, 8):
        measure(f"read, threads: {threads}", len(paths), repeat, lambda: read_all(paths, threads))
    for threads in (1, 2, 8):
        cold = (lambda: read_all(paths, threads), lambda: drop_cache(paths))
        measure(f"read from the disk, threads: {threads}", len(paths), repeat, *cold)
    for workers in (1, 2):
        measure_archive(root, out, len(paths), repeat, workers)
    some = sorted(root.iterdir())[: max(1, len(paths) // PER_FOLDER // 10)]
    command = ["exiftool", "-r", "-json", *some]
    measure("exiftool -r -json", len(some) * PER_FOLDER, 1, lambda: subprocess.run(command, capture_output=True))
    shutil.rmtree(root)
    shutil.rmtree(out)


if __name__ == "__main__":
    main()
