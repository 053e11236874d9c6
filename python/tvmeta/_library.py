"""Finds libtvmeta, checks its version and declares its functions."""

from __future__ import annotations

import os
import sys
from ctypes import CDLL, POINTER, c_char_p, c_float, c_int32, c_int64, c_void_p, sizeof
from pathlib import Path
from typing import Optional, Sequence

from . import _records as records

NAME = "libtvmeta.1.dylib" if sys.platform == "darwin" else "libtvmeta.so.1"
VERSION = (1, 2)  # major: equal; minor: at least

_SOURCE = POINTER(records.Source)
_PHOTO = POINTER(records.Photo)
_FLOATS = POINTER(c_float)

# Pointers to bytes are c_void_p where the text may contain zero bytes.
_SIGNATURES: dict[str, tuple[Optional[type], Sequence[object]]] = {
    "tvmeta_method_name": (c_char_p, [c_int32]),
    "tvmeta_parameter": (c_int32, [c_int32, c_int32, POINTER(records.Parameter)]),
    "tvmeta_setting_text": (c_int32, [c_int32, c_int32, _FLOATS, c_char_p]),
    "tvmeta_setting_value": (c_int32, [c_int32, c_int32, c_char_p, _FLOATS]),
    "get_settings_from_xmp": (c_int32, [c_int32, c_int32, c_char_p, c_void_p, _FLOATS]),
    "embed_xmp": (c_int32, [c_int32, c_int32, _FLOATS, c_int32, c_char_p, c_void_p]),
    "insert_xmp": (c_int32, [c_int32, c_int32, _FLOATS, c_int32, c_int32, c_void_p]),
    "hdrMinMax": (c_int32, [c_int32, c_int32, c_void_p, _FLOATS]),
    "tvmeta_status_text": (c_char_p, [c_int32]),
    "tvmeta_format_name": (c_char_p, [c_int32]),
    "tvmeta_open": (c_int32, [c_char_p, _SOURCE]),
    "tvmeta_memory": (c_int32, [c_void_p, c_int64, _SOURCE]),
    "tvmeta_close": (None, [_SOURCE]),
    "tvmeta_read_photo": (c_int32, [_SOURCE, _PHOTO]),
    "tvmeta_read_block": (c_int64, [_SOURCE, _PHOTO, c_int32, c_void_p, c_int64]),
    "tvmeta_read_text": (c_int64, [_SOURCE, _PHOTO, c_int32, c_int32, c_char_p, c_int64]),
    "tvmeta_list_tags": (c_int64, [_SOURCE, _PHOTO, POINTER(records.Tag), c_int64]),
    "tvmeta_shot": (c_int32, [_PHOTO, c_char_p, c_char_p, POINTER(records.Shot)]),
    "tvmeta_evidence_text": (c_char_p, [c_int32]),
    "tvmeta_find_brackets": (
        c_int64,
        [POINTER(records.Shot), c_int64, POINTER(records.BracketOptions)]
        + [POINTER(records.BracketMember), POINTER(records.BracketSet)],
    ),
    "tvmeta_save_tiff": (c_int32, [POINTER(records.Result), POINTER(records.Loss), c_int32]),
}


def _location() -> str:
    """Return the library's path: named by the user, else in the wheel, else the system's."""
    named = os.environ.get("TVMETA_LIBRARY")
    if named:
        return named
    bundled = Path(__file__).with_name(NAME)
    return str(bundled) if bundled.exists() else NAME


def _load() -> CDLL:
    location = _location()
    try:
        library = CDLL(location, use_errno=True)
        library.tvmeta_version.restype = c_char_p
        version: str = library.tvmeta_version().decode()
    except (OSError, AttributeError) as error:
        raise ImportError(
            f"cannot load {NAME} version {VERSION[0]}.{VERSION[1]} or later: {error}; "
            "install the package libtvmeta1, or set TVMETA_LIBRARY to the path of the library"
        ) from error
    major, minor = (int(part) for part in version.split(".")[:2])
    if major != VERSION[0] or minor < VERSION[1]:
        raise ImportError(f"{location} is version {version}; tvmeta requires {VERSION[0]}.{VERSION[1]}")
    for name, (result, arguments) in _SIGNATURES.items():
        function = getattr(library, name)
        function.restype = result
        function.argtypes = arguments
    return library


_SIZES = {records.Photo: 672, records.Tag: 32, records.Result: 152, records.Shot: 104, records.BracketSet: 40}
assert all(sizeof(record) == size for record, size in _SIZES.items())

library = _load()

MAX_BYTES = 2**31 - 1024  # lengths are signed 32-bit numbers; the rest is for a terminator and settings


def length_of(data: bytes) -> int:
    """Return the length of data for the library, whose lengths ctypes would wrap."""
    if len(data) > MAX_BYTES:
        raise ValueError(f"{len(data)} bytes are more than the {MAX_BYTES} that the library accepts")
    return len(data)
