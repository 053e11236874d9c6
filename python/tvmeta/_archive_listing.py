"""Lists the files of an archive, folder by folder, in partitions that later runs find again."""

from __future__ import annotations

import os
from contextlib import suppress
from hashlib import blake2b
from typing import Callable, Iterator, NamedTuple

_MAX_SIZES = 4  # files of a partition at most, in multiples of the size asked for
_HASH_BYTES = 8

Report = Callable[[bytes, OSError], None]


class Partition(NamedTuple):
    """Files that one task reads: sorted paths relative to the root."""

    key: str
    names: list[bytes]


def _hash(name: bytes) -> bytes:
    return blake2b(name, digest_size=_HASH_BYTES).digest()


def _starts_partition(name: bytes, files: int, size: int) -> bool:
    """Decide by the name alone, so that a new file moves no other boundary; true once in `size` files."""
    return int.from_bytes(_hash(name), "big") * size < files << (8 * _HASH_BYTES)


def _scan(path: bytes, excluded: os.stat_result) -> tuple[list[bytes], list[bytes]]:
    """Return the sorted names of files and of folders; links to folders are left out, so loops end."""
    files, folders = [], []
    with os.scandir(path) as entries:
        for entry in entries:
            if entry.is_dir(follow_symlinks=False):
                is_excluded = entry.inode() == excluded.st_ino and os.path.samestat(
                    entry.stat(follow_symlinks=False), excluded
                )
                if not is_excluded:
                    folders.append(entry.name)
            elif entry.is_file(follow_symlinks=False) or _is_file_link(entry):
                files.append(entry.name)
    return sorted(files), sorted(folders)


def _is_file_link(entry: os.DirEntry[bytes]) -> bool:
    """Tell links to files, and broken ones which reading will report, from links to folders."""
    if not entry.is_symlink():
        return False
    with suppress(OSError):
        return not entry.is_dir()
    return True


def _folders(root: bytes, excluded: os.stat_result, report: Report) -> Iterator[tuple[bytes, list[bytes]]]:
    """Give each folder and its files in a fixed order. Only one folder's names are in memory."""
    stack = [b""]
    while stack:
        folder = stack.pop()
        try:
            files, folders = _scan(os.path.join(root, folder), excluded)
        except OSError as error:
            report(folder or b".", error)
            continue
        stack += [os.path.join(folder, name) for name in reversed(folders)]
        yield folder, [os.path.join(folder, name) for name in files]


def partitions(root: bytes, excluded: os.stat_result, size: int, report: Report) -> Iterator[Partition]:
    """Give partitions of about `size` files.

    A partition starts at a folder, or inside a folder of more than `size` files. Where is decided by
    hashes of names, so a file that comes or goes changes the partition around it and no other.
    Folders that cannot be read are reported and passed over.
    """
    names: list[bytes] = []
    start = b""  # the folder or file that names the partition
    for folder, files in _folders(root, excluded, report):
        starts = _starts_partition(folder, len(files), size)
        if names and (starts or len(names) + len(files) > _MAX_SIZES * size):
            yield Partition(_hash(start).hex(), names)
            names = []
        for position, name in enumerate(files):
            is_full = len(names) >= _MAX_SIZES * size
            if names and len(files) > size and (is_full or _starts_partition(name, 1, size)):
                yield Partition(_hash(start).hex(), names)
                names = []
            if not names:
                start = name if position else folder
            names.append(name)
    if names:
        yield Partition(_hash(start).hex(), names)
