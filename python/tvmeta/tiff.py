"""Writing result pictures as TIFF files."""

from __future__ import annotations

import os
import sys
import warnings
from contextlib import nullcontext
from ctypes import byref, c_char_p, get_errno, pointer, set_errno, sizeof
from datetime import datetime
from typing import NamedTuple, Optional, Sequence, Union

from . import _files as files
from . import _records as records
from ._buffers import Pixels, address_of, rows_of, view_of
from ._library import library
from ._sources import PathLike, Readable, library_path, opened, path_of
from .enums import Block, Directory, LossReason
from .errors import FileError
from .photo import Photo, failure
from .settings import Settings

_BITS_CODES = {"B": 8, "H": 16, "f": 32, "e": 3216}  # by format character of the struct module
_NATIVE_ORDER = "@=" + ("<" if sys.byteorder == "little" else ">")
_MAX_RESOLUTION = (2**31 - 1) // 1000  # thousandths of it are stored
_MAX_KEYWORD = 0x7FFF  # bytes of an IPTC dataset
_WRITE_FAILED = -9
_USUAL_LOSSES = 256


class Loss(NamedTuple):
    """Something that the photograph has, that is true of the result, and that the result has not."""

    directory: Union[Directory, Block]  # of the photograph
    tag: int  # 0 for a whole block
    reason: LossReason


def _bits_code(view: memoryview) -> int:
    order, kind = (view.format[0], view.format[1:]) if len(view.format) > 1 else ("@", view.format)
    if order not in _NATIVE_ORDER:
        raise TypeError("pixels: samples in the byte order of this machine are required")
    if kind not in _BITS_CODES:
        raise TypeError(f"pixels: uint8, uint16, float16 or float32 is required, not format {view.format!r}")
    return _BITS_CODES[kind]


def _check_text(name: str, text: str) -> bytes:
    encoded = text.encode()
    if not encoded or b"\0" in encoded:
        raise ValueError(f"{name}: a text without null bytes is required, not {text!r}")
    return encoded


def _keyword(text: str) -> bytes:
    encoded = _check_text("keywords", text)
    if len(encoded) > _MAX_KEYWORD:
        raise ValueError(f"keywords: {len(encoded)} bytes are more than the {_MAX_KEYWORD} of a keyword")
    return encoded


def _picture(view: memoryview, icc: bytes) -> dict[str, int]:
    """Return size and samples of the pixels as members of the record."""
    shape = view.shape or ()
    if len(shape) not in (2, 3) or min(shape) < 1 or max(shape) >= 2**31 or (shape[2:] or (1,))[0] > 4:
        raise ValueError(f"pixels: shape (height, width) or (height, width, 1 to 4) is required, not {shape}")
    channels = shape[2] if len(shape) == 3 else 1
    space = "RGB" if channels > 2 else "GRAY"
    if icc and icc[16:20] != f"{space:4}".encode():
        raise ValueError(f"icc: not an ICC profile for {space}")
    return {"width": shape[1], "height": shape[0], "channels": channels, "bitsCode": _bits_code(view)}


def _blocks(**blocks: Optional[bytes]) -> dict[str, object]:
    """Return the members of the record for blocks. Without a block, the library writes the photograph's."""
    members: dict[str, object] = {}
    for name, block in blocks.items():
        if block is not None:
            data = memoryview(block).tobytes()  # bytes() would make zeros of a number
            members.update({name: data, name + "Size": len(data)})
    return members


def _write(result: records.Result) -> tuple[int, Sequence[records.Loss]]:
    """Return the library's result, and the losses, of which it stores as many as there is room for."""
    room = _USUAL_LOSSES
    while True:
        losses = (records.Loss * room)()
        set_errno(0)
        code = library.tvmeta_save_tiff(byref(result), losses, room)
        if code <= room:
            return code, losses[: max(code, 0)]
        room = code


def _loss(loss: records.Loss) -> Loss:
    place: Union[Directory, Block] = Directory(loss.directory) if loss.directory >= 0 else Block(-1 - loss.directory)
    return Loss(place, loss.tag, LossReason(loss.reason))


def save_tiff(
    path: PathLike,
    pixels: Pixels,
    *,
    photo: Union[Photo, Readable, None] = None,
    icc: Optional[bytes] = None,
    iptc: Optional[bytes] = None,
    xmp: Optional[bytes] = None,
    keywords: Sequence[str] = (),
    settings: Optional[Settings] = None,
    resolution: Optional[int] = None,
    orientation: int = 1,
    software: Optional[str] = None,
    modify_date: Optional[datetime] = None,
) -> list[Loss]:
    """Save pixels as an uncompressed TIFF file with metadata; BigTIFF from 4 GiB on.

    `pixels` is an object with the buffer protocol and the shape (height, width) or (height, width,
    channels), such as a numpy array: uint8, uint16, float16 or float32 in native byte order. Three
    or four channels are written as RGB, one or two as grey; a warning is given for the channel that
    is left out. Rows are written from the object's own memory if the samples of each row are
    adjacent, with any distance between rows, also a negative one; otherwise they are copied once.

    `photo` is a Photo, or what read() accepts. The result keeps all of its metadata that are true of
    the result. Its IPTC block and XMP packet are replaced by `iptc` and `xmp`; b"" omits them.
    `keywords` are added to both. `settings` are added to the XMP packet. `icc` is an RGB or a grey
    profile, as the pixels are. `resolution` in dots per inch is the photograph's, else 300;
    `software` is the photograph's; without `modify_date` the result has no time of change.

    Returns what the result has not kept of the photograph. The file is written to a temporary file
    in the same folder and renamed, and keeps mode, owner, access control list and attributes of an
    old file. If that fails, an old file remains as it was.
    """
    name, _ = library_path(path)
    view = view_of(pixels)
    picture = _picture(view, memoryview(icc or b"").tobytes())
    if resolution is not None and not 1 <= resolution <= _MAX_RESOLUTION:
        raise ValueError(f"resolution: 1 to {_MAX_RESOLUTION} is required, not {resolution}")
    if not 1 <= orientation <= 8:
        raise ValueError(f"orientation: 1 to 8 is required, not {orientation}")
    if isinstance(keywords, str):
        raise TypeError("keywords: a sequence of texts is required, not a text")
    words = [_keyword(word) for word in keywords]
    result = records.Result(
        **picture,
        **_blocks(icc=icc, iptc=iptc, xmp=xmp),
        recordSize=sizeof(records.Result),
        resolution=resolution or 0,
        orientation=orientation,
        keywords=(c_char_p * len(words))(*words),
        keywordCount=len(words),
        method=settings.method if settings is not None else 0,
        settings=settings.slots() if settings is not None else None,
        software=_check_text("software", software) if software is not None else None,
        modifyDate=modify_date and modify_date.isoformat(" ", "seconds")[:19].replace("-", ":").encode(),
    )
    if picture["channels"] in (2, 4):
        warnings.warn(f"{os.fsdecode(name)}: the last of {picture['channels']} channels is not written", stacklevel=2)
    rows, result.rowPitch = rows_of(view)
    given = photo.source if isinstance(photo, Photo) else photo
    opening = nullcontext() if given is None else opened(given)
    with opening as source, files.replaced(name) as (_, temporary), address_of(rows) as address:
        result.path, result.pixels, result.photo = temporary, address, source and pointer(source)
        code, losses = _write(result)
        if code == _WRITE_FAILED:
            cause = os.strerror(get_errno()) if get_errno() else "the file cannot be written"
            raise FileError(name, f"{cause}; not written", code, get_errno() or None)
        if code < 0:
            raise failure(None if given is None else path_of(given), code)
    return [_loss(loss) for loss in losses]
