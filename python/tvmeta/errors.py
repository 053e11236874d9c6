"""Exceptions of the package: Error, FileError and FormatError.

Each has `path` (None for data in memory), `reason`, and `code`: the result of the library's
function, or 0 if the failure was found before or without a call. A FileError is an OSError, with
its `filename`, `errno` and `strerror`, and also a FileNotFoundError, PermissionError or
IsADirectoryError where that is the cause. Lack of memory is a MemoryError.
"""

from __future__ import annotations

import os
from typing import Optional, Union

AnyPath = Union[str, bytes]


class Error(Exception):
    """Base class of all failures that the package reports."""

    def __init__(self, path: Optional[AnyPath], reason: str, code: int = 0, errno: Optional[int] = None) -> None:
        """Keep what failed, why, the result of the library and the error number of the system."""
        super().__init__(errno, reason, path)
        self.path = path
        self.reason = reason
        self.code = code

    def __str__(self) -> str:
        """Return `PATH: reason`."""
        return self.reason if self.path is None else f"{os.fsdecode(self.path)}: {self.reason}"

    def __reduce__(self) -> tuple[type[Error], tuple[Optional[AnyPath], str, int, Optional[int]]]:
        """Let exceptions travel between processes."""
        return type(self), (self.path, self.reason, self.code, self.args[0])


class FileError(Error, OSError):
    """A file cannot be read or written."""


class FormatError(FileError):
    """The content of a file or of data in memory is damaged, or is not of the expected kind."""


# Internal kinds. Users catch the classes above, or those of Python.


class NotFoundError(FileError, FileNotFoundError):
    """The file or its folder does not exist."""


class AccessError(FileError, PermissionError):
    """The file may not be read or written."""


class FolderError(FileError, IsADirectoryError):
    """The path is that of a folder."""


def file_error(path: AnyPath, error: OSError, code: int = 0) -> FileError:
    """Return the package's exception for one of the operating system."""
    kinds = {FileNotFoundError: NotFoundError, PermissionError: AccessError, IsADirectoryError: FolderError}
    kind = kinds.get(type(error), FileError)
    return kind(path, error.strerror or str(error), code, error.errno)
