"""Writing result pictures as TIFF files."""

from __future__ import annotations

import os
import sys
import warnings
from ctypes import byref, get_errno, set_errno
from typing import Any, Optional

from . import _files as files
from ._buffers import address_of, rows_of, view_of
from ._library import length_of, library
from ._records import TifImageInfo
from ._writer_records import writer_records
from .errors import AnyPath, Error, FileError
from .photo import PathLike, Photo, library_path
from .settings import Settings

_BITS_CODES = {"B": 8, "H": 16, "f": 32, "e": 3216}  # by format character of the struct module
_NATIVE_ORDER = "@=" + ("<" if sys.byteorder == "little" else ">")
_MAX_RESOLUTION = 4294967  # thousandths of it are stored in 32 bits
_TOO_LARGE = -6
_REASONS = {
    -1: "cannot be opened, or not enough memory",
    -2: "the header cannot be written",
    -3: "the pixels cannot be written",
    -4: "not enough memory",
    _TOO_LARGE: "the file would be larger than 2 GiB",
    -12: "the directory cannot be written",
}


def _bits_code(view: memoryview) -> int:
    order, kind = (view.format[0], view.format[1:]) if len(view.format) > 1 else ("@", view.format)
    if order not in _NATIVE_ORDER:
        raise TypeError("pixels: samples in the byte order of this machine are required")
    if kind not in _BITS_CODES:
        raise TypeError(f"pixels: uint8, uint16, float16 or float32 is required, not format {view.format!r}")
    return _BITS_CODES[kind]


def _image_info(view: memoryview, icc: bytes, resolution: int, orientation: int) -> TifImageInfo:
    shape = view.shape or ()
    if len(shape) not in (2, 3) or min(shape) < 1 or max(shape) >= 2**31 or (shape[2:] or (1,))[0] > 4:
        raise ValueError(f"pixels: shape (height, width) or (height, width, 1 to 4) is required, not {shape}")
    if not 1 <= resolution <= _MAX_RESOLUTION:
        raise ValueError(f"resolution: 1 to {_MAX_RESOLUTION} is required, not {resolution}")
    if not 1 <= orientation <= 8:
        raise ValueError(f"orientation: 1 to 8 is required, not {orientation}")
    if icc and icc[16:20] != b"RGB ":
        raise ValueError("icc: not an ICC profile for RGB")
    return TifImageInfo(
        width=shape[1],
        height=shape[0],
        channels=shape[2] if len(shape) == 3 else 1,
        bitsCode=_bits_code(view),
        resolution=resolution,
        iccLength=length_of(icc),
        orientation=orientation,
    )


def _failure(path: AnyPath, code: int) -> Error:
    cause = os.strerror(get_errno()) if get_errno() and code in (-2, -3, -12) else ""
    reason = _REASONS.get(code, "failed") + (f": {cause}" if cause else "")
    if code in (-4, _TOO_LARGE):
        return Error(path, f"{reason}; not written", code)
    return FileError(path, f"{reason}; not written", code, get_errno() or None)


def save_tiff(
    path: PathLike,
    pixels: Any,
    *,
    photo: Optional[Photo] = None,
    icc: Optional[bytes] = None,
    iptc: Optional[bytes] = None,
    xmp: Optional[bytes] = None,
    settings: Optional[Settings] = None,
    resolution: int = 300,
    orientation: int = 1,
) -> None:
    """Save pixels as an uncompressed TIFF file with metadata.

    `pixels` is an object with the buffer protocol and the shape (height, width) or (height, width,
    channels), such as a numpy array: uint8, uint16, float16 or float32 in native byte order. Three
    or four channels are written as RGB, one or two as grey; a warning is given for the channel that
    is left out. Rows are written from the object's own memory if the samples of each row are
    adjacent, with any distance between rows, also a negative one; otherwise they are copied once.

    `photo` gives camera, exposure, date, lens and position; `iptc`, `xmp` and an RGB profile `icc`
    are stored as they are. `settings` and `xmp` exclude each other: give `settings.insert(xmp)`.

    The file is written to a temporary file in the same folder and renamed. If that fails, an old
    file remains as it was.
    """
    if settings is not None and xmp:
        raise ValueError("settings and xmp: only one of them can be stored; use settings.insert(xmp)")
    name, _ = library_path(path)
    profile, block, packet = bytes(icc or b""), bytes(iptc or b""), bytes(xmp or b"")
    view = view_of(pixels)
    info = _image_info(view, profile, resolution, orientation)
    if info.channels in (2, 4):
        warnings.warn(f"{os.fsdecode(name)}: the last of {info.channels} channels is not written", stacklevel=2)
    size = info.height * info.width * (3 if info.channels > 2 else 1) * view.itemsize
    if size >= 2**31:  # before a copy is made
        raise _failure(name, _TOO_LARGE)
    rows, pitch = rows_of(view)
    metadata, gps = writer_records(photo)
    method, slots = (settings.method, settings.slots()) if settings is not None else (0, None)
    packet_size = length_of(packet) + 1 if packet else 0
    with files.replaced(name) as (_, temporary), address_of(rows) as address:
        set_errno(0)
        code = library.buf2tif(
            *(address, byref(info), pitch, profile, byref(metadata), byref(gps)),
            *(length_of(block), block, method, slots, packet_size, packet, temporary),
        )
        if code < 0:
            raise _failure(name, code)
