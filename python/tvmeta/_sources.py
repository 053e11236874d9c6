"""Where photographs are read from: files by path, content in memory, and binary file objects."""

from __future__ import annotations

import io
import os
from contextlib import contextmanager
from ctypes import byref, get_errno, memmove, set_errno
from errno import EISDIR
from typing import BinaryIO, Iterator, Optional, Union

from ._buffers import address_of
from ._library import library
from ._records import Source, SourceRead
from .errors import AnyPath, FileError, FolderError, file_error

PathLike = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
# Content is bytes, so a path of bytes has to be os.fsdecode(path).
Readable = Union[str, "os.PathLike[str]", "os.PathLike[bytes]", bytes, bytearray, memoryview, BinaryIO]


def library_path(path: PathLike) -> tuple[AnyPath, bytes]:
    """Return a path as given, for messages, and as the bytes that the library opens."""
    name = os.fspath(path)
    encoded = os.fsencode(name)
    if b"\0" in encoded:
        raise ValueError("embedded null byte in a path")
    return name, encoded


def path_of(photograph: Readable) -> Optional[AnyPath]:
    """Return the path of a photograph; None for content and file objects."""
    return os.fspath(photograph) if isinstance(photograph, (str, os.PathLike)) else None


def _failure(name: AnyPath, number: int) -> FileError:
    """Return why the library cannot open a file, which it opens only if that is a regular one."""
    if number:
        return file_error(name, OSError(number, os.strerror(number)))
    if os.path.isdir(name):
        return FolderError(name, os.strerror(EISDIR), errno=EISDIR)
    return FileError(name, "not a regular file")


@contextmanager
def _opened_path(photograph: PathLike) -> Iterator[Source]:
    name, encoded = library_path(photograph)
    source = Source()
    set_errno(0)
    if library.tvmeta_open(encoded, byref(source)) < 0:
        raise _failure(name, get_errno())
    try:
        yield source
    finally:
        library.tvmeta_close(byref(source))


@contextmanager
def _opened_memory(photograph: Union[bytes, bytearray, memoryview]) -> Iterator[Source]:
    source = Source()
    content = memoryview(photograph).cast("B")
    with address_of(content) as address:
        library.tvmeta_memory(address, content.nbytes, byref(source))
        yield source


@contextmanager
def _opened_file(file: BinaryIO) -> Iterator[Source]:
    """Read a file object, which is then where it was. What it raises is raised when the library returns."""
    if not file.seekable():
        raise io.UnsupportedOperation("the file object cannot seek; give its content: read(file.read())")
    failures: list[BaseException] = []

    def read(_: object, position: int, buffer: int, count: int) -> int:
        done = 0
        try:
            file.seek(position)
            while done < count and (data := memoryview(file.read(count - done)).cast("B")[: count - done]):
                memmove(buffer + done, bytes(data), len(data))
                done += len(data)
        except BaseException as error:
            failures.append(error)
            return -1
        return done

    former = file.tell()
    try:
        yield Source(size=file.seek(0, os.SEEK_END), read=SourceRead(read))
    finally:
        if failures:
            raise failures[0]
        file.seek(former)


@contextmanager
def opened(photograph: Readable) -> Iterator[Source]:
    """Give a source of the library that is valid in the block."""
    if isinstance(photograph, (str, os.PathLike)):
        opening = _opened_path(photograph)
    elif isinstance(photograph, (bytes, bytearray, memoryview)):
        opening = _opened_memory(photograph)
    elif hasattr(photograph, "read") and not isinstance(photograph, io.TextIOBase):
        opening = _opened_file(photograph)
    else:
        raise TypeError(f"a path, bytes or a binary file object is required, not a {type(photograph).__name__}")
    with opening as source:
        yield source
