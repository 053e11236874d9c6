"""Output files that replace an old one only when they are complete."""

from __future__ import annotations

import os
import secrets
import stat
from contextlib import contextmanager, suppress
from errno import EISDIR
from typing import Iterator

from .errors import AnyPath, Error, FileError, FolderError, file_error


def _target(path: AnyPath) -> bytes:
    """Return the file to replace: that of a symbolic link, not the link."""
    target = os.path.realpath(os.fsencode(path))
    with suppress(FileNotFoundError):
        mode = os.stat(target).st_mode
        if stat.S_ISDIR(mode):
            raise FolderError(path, "is a folder; not written", errno=EISDIR)
        if not stat.S_ISREG(mode):
            raise FileError(path, "not a regular file; not written")
    return target


@contextmanager
def replaced(path: AnyPath) -> Iterator[tuple[int, bytes]]:
    """Give descriptor and path of a temporary file that becomes `path` when the block ends.

    The file is synchronised before it is renamed. If the block or the rename fails, it is removed
    and an old file remains as it was.
    """
    temporary = None
    try:
        target = _target(path)
        name = os.path.join(os.path.dirname(target), b".tvmeta-" + secrets.token_hex(8).encode())
        descriptor = os.open(name, os.O_RDWR | os.O_CREAT | os.O_EXCL | os.O_CLOEXEC, 0o666)
        temporary = name
        try:
            yield descriptor, name
            os.fsync(descriptor)
        finally:
            os.close(descriptor)
        os.replace(name, target)
        temporary = None
    except Error:
        raise
    except OSError as error:
        raise file_error(path, error) from error
    finally:
        if temporary:
            os.unlink(temporary)


def write(path: AnyPath, data: bytes) -> None:
    """Write a whole file, or leave the old one as it was."""
    with replaced(path) as (descriptor, _):
        with open(descriptor, "wb", closefd=False) as file:
            file.write(data)
