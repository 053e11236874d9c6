"""A Dask scheduler and workers on this machine, in a process group of their own.

So Ctrl+C reaches the client alone, which ends them all at once. If the client is killed, its pipe
closes and they end, too. A worker that dies is started again.
"""

from __future__ import annotations

import asyncio
import os
import signal
import subprocess
import sys
from contextlib import contextmanager, suppress
from typing import Iterator

from .errors import Error

_WORKER = ("-m", "distributed.cli.dask_worker", "--nthreads=1", "--no-nanny", "--no-dashboard", "--memory-limit=0")


@contextmanager
def local_cluster(workers: int) -> Iterator[str]:
    """Give the address of a scheduler with this number of workers, which end with the block."""
    host = subprocess.Popen(
        [sys.executable, "-m", "tvmeta._archive_local", str(workers)],
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        stderr=subprocess.DEVNULL,
        start_new_session=True,
        env={**os.environ, "PYTHONPATH": os.pathsep.join(filter(None, sys.path))},
    )
    try:
        assert host.stdout
        address = host.stdout.readline().decode().strip()
        if not address:
            raise Error(None, "the workers of this machine did not start")
        yield address
    finally:
        with suppress(ProcessLookupError):
            os.killpg(host.pid, signal.SIGKILL)
        host.wait()


async def _keep_worker(address: str) -> None:
    while True:
        process = await asyncio.create_subprocess_exec(sys.executable, *_WORKER, address, stdout=subprocess.DEVNULL)
        await process.wait()


async def _serve(workers: int) -> None:
    from distributed import Scheduler

    async with Scheduler(host="127.0.0.1", port=0, dashboard=False) as scheduler:
        print(scheduler.address, flush=True)
        tasks = [asyncio.ensure_future(_keep_worker(scheduler.address)) for _ in range(workers)]
        await asyncio.get_running_loop().run_in_executor(None, sys.stdin.read)  # until the client ends
        del tasks
        os.killpg(0, signal.SIGKILL)


if __name__ == "__main__":
    asyncio.run(_serve(int(sys.argv[1])))
