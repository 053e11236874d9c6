"""Finds libtvmeta, checks its version and declares its functions."""

from __future__ import annotations

import os
import sys
from ctypes import CDLL, POINTER, c_char_p, c_float, c_int32, c_void_p, sizeof
from pathlib import Path
from typing import Sequence

from . import _records as records

NAME = "libtvmeta.1.dylib" if sys.platform == "darwin" else "libtvmeta.so.1"
VERSION = (1, 1)  # major: equal; minor: at least

_RECORD = POINTER(records.ExifInfo)
_METADATA = POINTER(records.MetadataBuf)
_GPS = POINTER(records.GpsBuf)
_FLOATS = POINTER(c_float)

# Pointers to bytes are c_void_p where the text may contain zero bytes.
_SIGNATURES: dict[str, tuple[type, Sequence[object]]] = {
    "tvmeta_file_type": (c_int32, [c_char_p]),
    "tvmeta_method_name": (c_char_p, [c_int32]),
    "tvmeta_parameter": (c_int32, [c_int32, c_int32, POINTER(records.Parameter)]),
    "tvmeta_setting_text": (c_int32, [c_int32, c_int32, _FLOATS, c_char_p]),
    "tvmeta_setting_value": (c_int32, [c_int32, c_int32, c_char_p, _FLOATS]),
    "getExifData": (c_int32, [c_char_p, c_int32, _RECORD]),
    "get_settings_from_xmp": (c_int32, [c_int32, c_int32, c_char_p, c_void_p, _FLOATS]),
    "embed_xmp": (c_int32, [c_int32, c_int32, _FLOATS, c_int32, c_char_p, c_void_p]),
    "insert_xmp": (c_int32, [c_int32, c_int32, _FLOATS, c_int32, c_int32, c_void_p]),
    "metadataBufFromExifInfo": (c_int32, [_RECORD, _METADATA, _GPS]),
    "buf2tif": (
        c_int32,
        [c_void_p, POINTER(records.TifImageInfo), c_int32, c_char_p, _METADATA, _GPS]
        + [c_int32, c_char_p, c_int32, _FLOATS, c_int32, c_char_p, c_char_p],
    ),
    "hdrMinMax": (c_int32, [c_int32, c_int32, c_void_p, _FLOATS]),
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


assert sizeof(records.ExifInfo) == 516 and sizeof(records.MetadataBuf) == 224 and sizeof(records.GpsBuf) == 96

library = _load()

MAX_BYTES = 2**31 - 1024  # lengths are signed 32-bit numbers; the rest is for a terminator and settings


def length_of(data: bytes) -> int:
    """Return the length of data for the library, whose lengths ctypes would wrap."""
    if len(data) > MAX_BYTES:
        raise ValueError(f"{len(data)} bytes are more than the {MAX_BYTES} that the library accepts")
    return len(data)
