"""Output files that replace an old one only when they are complete."""

from __future__ import annotations

import os
import secrets
import stat
import sys
from contextlib import contextmanager, suppress
from errno import EACCES, EISDIR
from typing import Iterator, Optional

from .errors import AnyPath, Error, FileError, FolderError, file_error


_EFFECTIVE = os.access in os.supports_effective_ids


def _target(path: AnyPath) -> tuple[bytes, Optional[os.stat_result]]:
    """Return the file to replace, that of a symbolic link and not the link; and its state if it exists."""
    target = os.path.realpath(os.fsencode(path))
    try:
        former = os.stat(target)
    except FileNotFoundError:
        return target, None
    if stat.S_ISDIR(former.st_mode):
        raise FolderError(path, "is a folder; not written", errno=EISDIR)
    if not stat.S_ISREG(former.st_mode):
        raise FileError(path, "not a regular file; not written")
    if not os.access(target, os.W_OK, effective_ids=_EFFECTIVE):
        raise PermissionError(EACCES, "may not be changed; not written")
    return target, former


def _keep_attributes(target: bytes, former: os.stat_result, descriptor: int) -> None:
    """Give a new file owner, access control list, extended attributes and mode of the old one.

    If the group cannot be kept, the new file has another group, which must not get the rights of
    the old one.
    """
    permissions = former.st_mode & 0o777
    try:
        os.fchown(descriptor, former.st_uid, former.st_gid)
    except OSError:
        try:
            os.fchown(descriptor, -1, former.st_gid)
        except OSError:
            permissions &= ~stat.S_IRWXG
    if sys.platform == "linux":  # where the access control list is an attribute
        with suppress(OSError):
            for name in os.listxattr(target):
                with suppress(OSError):
                    os.setxattr(descriptor, name, os.getxattr(target, name))
    os.fchmod(descriptor, permissions)


def synchronise_folder(folder: bytes) -> None:
    """Make a renaming survive a power cut, where the file system can do this."""
    with suppress(OSError):
        descriptor = os.open(folder or b".", os.O_RDONLY | os.O_DIRECTORY | os.O_CLOEXEC)
        try:
            os.fsync(descriptor)
        finally:
            os.close(descriptor)


@contextmanager
def replaced(path: AnyPath) -> Iterator[tuple[int, bytes]]:
    """Give descriptor and path of a temporary file that becomes `path` when the block ends.

    The file is synchronised before it is renamed. It keeps the attributes of an old file. If the
    block or the rename fails, it is removed and an old file remains as it was.
    """
    temporary = None
    try:
        target, former = _target(path)
        name = os.path.join(os.path.dirname(target), b".tvmeta-" + secrets.token_hex(8).encode())
        descriptor = os.open(name, os.O_RDWR | os.O_CREAT | os.O_EXCL | os.O_CLOEXEC, 0o600 if former else 0o666)
        temporary = name
        try:
            yield descriptor, name
            if former:
                _keep_attributes(target, former, descriptor)
            os.fsync(descriptor)
        finally:
            os.close(descriptor)
        os.replace(name, target)
        temporary = None
        synchronise_folder(os.path.dirname(target))
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
