"""Where blocks of metadata are in a photograph, and their bytes.

The record gives the place of most blocks. In JPEG and PSD files it lacks the packets without
processing settings and the resources of PSD files, and its offsets from tags 700 and 33723 do not
count the position of the TIFF structure.
"""

from __future__ import annotations

import os
from itertools import islice
from typing import BinaryIO, Iterator, NamedTuple, Optional

from ._records import ExifInfo
from .enums import FileType
from .errors import AnyPath, FormatError

_EXIF = b"Exif\0\0"
_XMP = b"http://ns.adobe.com/xap/1.0/\0"
_APP1 = 0xE1
_END_OF_SEGMENTS = (0xD9, 0xDA)  # end of image, start of scan
_RESOURCE_IPTC, _RESOURCE_EXIF, _RESOURCE_XMP = 1028, 1058, 1060
_DATASET = b"\x1c"  # the first byte of an IPTC block
_MAX_PARTS = 4096  # segments or resources to look at, which bounds the work on a hostile file


class Place(NamedTuple):
    """A region of a file."""

    offset: int
    length: int


def read_place(path: AnyPath, file: BinaryIO, place: Place, what: str) -> bytes:
    """Read a region; a region that is not in the file whole is an error."""
    size = os.fstat(file.fileno()).st_size
    if place.offset < 0 or place.length > size - place.offset:
        raise FormatError(path, f"the {what} is beyond the end of the file")
    file.seek(place.offset)
    return file.read(place.length)


def _segments(file: BinaryIO) -> Iterator[tuple[int, Place]]:
    """Give marker and content of each JPEG segment before the image data."""
    position = 2
    while True:
        file.seek(position)
        head = file.read(4)
        if len(head) < 4 or head[0] != 0xFF or head[1] in _END_OF_SEGMENTS:
            return
        if head[1] == 0xFF:  # fill byte
            position += 1
            yield 0xFF, Place(position, 0)
            continue
        length = int.from_bytes(head[2:], "big")
        yield head[1], Place(position + 4, max(length - 2, 0))
        position += 2 + max(length, 2)


def _resources(file: BinaryIO) -> Iterator[tuple[int, Place]]:
    """Give number and content of each image resource of a PSD file."""
    file.seek(26)
    file.seek(int.from_bytes(file.read(4), "big"), os.SEEK_CUR)
    end = int.from_bytes(file.read(4), "big") + file.tell()
    while file.tell() < end:
        head = file.read(7)
        if len(head) < 7 or head[:4] != b"8BIM":
            return
        file.seek(head[6] | 1, os.SEEK_CUR)  # the name and its length byte occupy an even size
        length = int.from_bytes(file.read(4), "big")
        place = Place(file.tell(), length)
        yield int.from_bytes(head[4:6], "big"), place
        file.seek(place.offset + length + (length & 1))


def _app1(file: BinaryIO, signature: bytes) -> Optional[Place]:
    """Return what follows a signature in the first APP1 segment that has it."""
    for marker, (offset, length) in islice(_segments(file), _MAX_PARTS):
        if marker == _APP1 and length >= len(signature):
            file.seek(offset)
            if file.read(len(signature)) == signature:
                return Place(offset + len(signature), length - len(signature))
    return None


def _resource(file: BinaryIO, number: int) -> Optional[Place]:
    return next((place for found, place in islice(_resources(file), _MAX_PARTS) if found == number), None)


def _base(file: BinaryIO, kind: FileType) -> int:
    """Return the position of the TIFF structure in a JPEG or PSD file."""
    place = _resource(file, _RESOURCE_EXIF) if kind is FileType.PSD else _app1(file, _EXIF)
    return place.offset if place else 0


def xmp_place(file: BinaryIO, kind: FileType, record: ExifInfo) -> Place:
    """Return the place of the XMP packet; length 0 if there is none."""
    if kind is FileType.TIFF:
        return Place(record.xmpOffset, max(record.xmpLength, 0))
    own = _resource(file, _RESOURCE_XMP) if kind is FileType.PSD else _app1(file, _XMP)
    if own or record.xmpLength <= 0:
        return own or Place(0, 0)
    return Place(record.xmpOffset + _base(file, kind), record.xmpLength)


def iptc_place(file: BinaryIO, kind: FileType, record: ExifInfo) -> Place:
    """Return the place of the IPTC block; length 0 if there is none."""
    own = _resource(file, _RESOURCE_IPTC) if kind is FileType.PSD else None
    place = own or Place(record.iptcOffset, max(record.iptcLength, 0))
    if own or kind is FileType.TIFF or place.length == 0:
        return place
    # The offset comes from a Photoshop segment, which counts from the start, or from a tag, which does not.
    file.seek(max(place.offset, 0))
    return place if file.read(1) == _DATASET else Place(place.offset + _base(file, kind), place.length)
