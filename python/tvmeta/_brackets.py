"""Bracketed sets of photographs, found by the tool."""

from __future__ import annotations

import json
import os
import subprocess
from datetime import datetime
from typing import Iterable, NamedTuple, Optional, Union

from ._sources import PathLike, library_path
from .errors import Error
from .photo import Photo


class BracketSet(NamedTuple):
    """Photographs of one scene at several exposures, in order of capture."""

    files: list[bytes]
    ev: list[float]  # at ISO 100
    offsets: list[float]  # stops from the middle exposure, positive for brighter ones
    range: float  # stops from the darkest to the brightest
    taken: Optional[datetime]
    camera: Optional[str]
    focal_length: Optional[float]  # millimetres


def _output(options: list[str], paths: list[bytes]) -> bytes:
    tool = os.environ.get("TVMETA_TOOL", "tvmeta")
    try:
        done = subprocess.run([tool, "brackets", *options, "--", *paths], capture_output=True)
    except OSError as error:
        reason = "install the package tvmeta, or set TVMETA_TOOL to the path of the tool"
        raise Error(tool, f"{error.strerror}; {reason}") from error
    if done.returncode != 0:
        raise Error(None, done.stderr.decode("utf-8", "replace").strip())
    return done.stdout


def _file_lists(options: list[str], paths: list[bytes]) -> list[list[bytes]]:
    """Return the files of each set as bytes."""
    names = _output([*options, "--files0"], paths)[:-1]
    return [files.split(b"\0") for files in names.split(b"\0\0")]


def brackets(
    photos: Iterable[Union[Photo, PathLike]], *, gap: float = 2, count: Optional[int] = None
) -> list[BracketSet]:
    """Find the bracketed sets among photographs, given as Photo or path.

    `gap` is the longest pause within a set in seconds; `count` fixes the number of shots of a set.
    The rules are those of the command `tvmeta brackets`, which does the work, so that there is one
    implementation: the tool must be on PATH, or TVMETA_TOOL must name it. It reads the files again.
    """
    paths = [library_path((photo.path or "") if isinstance(photo, Photo) else photo)[1] for photo in photos]
    if not paths:
        return []
    options = [f"--gap={gap}"] + ([f"--count={count}"] if count is not None else [])
    records = [json.loads(line) for line in _output([*options, "--json"], paths).splitlines()]
    names = [[os.fsencode(name) for name in record["files"]] for record in records]
    if any("\ufffd" in name for record in records for name in record["files"]):  # a name that is not UTF-8
        names = _file_lists(options, paths)
    return [
        BracketSet(
            files,
            record["ev"],
            record["offsets"],
            record["range"],
            datetime.strptime(record["taken"], "%Y:%m:%d %H:%M:%S"),
            record.get("camera"),
            record.get("focalLength"),
        )
        for files, record in zip(names, records)
    ]
