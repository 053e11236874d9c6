"""Reading the metadata of photographs."""

from __future__ import annotations

import os
import re
from ctypes import byref, create_string_buffer, get_errno, sizeof
from dataclasses import dataclass, field
from datetime import datetime, timedelta, timezone
from fractions import Fraction
from typing import Any, Callable, NamedTuple, Optional, Union

from . import _records as records
from ._fields import FIELDS, Value, name_fields
from ._library import library
from ._sources import Readable, opened, path_of
from .enums import Block, Directory, Orientation
from .errors import AnyPath, FileError, FormatError

UNKNOWN_KIND = -2
_OK, _READ_FAILED, _REFUSED_KIND, _BROKEN, _NO_MEMORY = 0, -1, -3, -4, -5
_TEXTS = ("title", "description", "artist", "copyright", "keywords", "rating", "software")  # by number
_USUAL_TEXT = 256  # bytes
_MAX_KEYWORDS = 1000  # each is a search in the whole packet

# Values by their bits in the masks of the record. Values without a row in _CONVERTED have the members' names.
VALUES = (
    *("size", "orientation", "make", "model", "lens", "serial_number", "exposure_time", "f_number", "iso_speed"),
    *("exposure_bias", "exposure_mode", "exposure_program", "metering_mode", "flash", "white_balance"),
    *("focal_length", "focal_length_35mm", "taken", "sub_second", "utc_offset"),
    *("latitude", "longitude", "altitude", "gps_time"),
)


def _time(seconds: int, nanoseconds: int = 0) -> Optional[datetime]:
    try:
        return datetime(1970, 1, 1) + timedelta(seconds=seconds, microseconds=nanoseconds // 1000)
    except OverflowError:  # a leap second at the end of 9999
        return None


def capture_time(record: Union[records.Photo, records.Shot]) -> Optional[datetime]:
    """Return the capture time of a record; None if it has none."""
    has_time = record.present >> VALUES.index("taken") & 1
    return _time(record.captureTime, record.captureNanoseconds) if has_time else None


def damage_text(position: int) -> Optional[str]:
    """Describe the damage at a position; None for -1."""
    return None if position < 0 else f"damaged at byte {position}; the rest was read"


def _gps_time(record: records.Photo) -> Optional[datetime]:
    time = _time(record.gpsTime)
    return time and time.replace(tzinfo=timezone.utc)


_CONVERTED: dict[str, Callable[[records.Photo], object]] = {
    "orientation": lambda record: Orientation(record.orientation),
    "taken": capture_time,
    "sub_second": lambda record: f"{record.captureNanoseconds:09}"[: record.subSecondDigits],
    "utc_offset": lambda record: timedelta(minutes=record.utcOffset),
    "gps_time": _gps_time,
}


def _member(name: str) -> str:
    first, *rest = name.split("_")
    return first + "".join(word.capitalize() for word in rest)


_MEMBERS = {name: _member(name) for name in VALUES}


class Tag(NamedTuple):
    """An entry of a directory."""

    directory: Directory
    tag: int
    type: int  # TIFF 6.0 and its supplements: 2 is text, 5 a fraction
    value_count: int
    position: int  # of the value in the file or the content
    is_big_endian: bool
    directory_number: int  # of the directory in the photograph, from 0


@dataclass(frozen=True)
class Photo:
    """The metadata of one photograph. A value that the file does not contain is None.

    Fractions are in lowest terms. `record` is the library's record with the raw values. Texts are
    those of XMP, else IPTC, else EXIF. Codes are those of EXIF 2.32.

    Nothing is kept open. The blocks and the tags are read when they are asked for: from the file,
    which is opened again by its path; from the content, which is kept; or from the file object,
    which must still be open. A file whose blocks have moved since is a FormatError.
    """

    path: Optional[AnyPath]  # None for content and file objects
    container: str  # "JPEG", "TIFF", "CR3", ...
    width: Optional[int] = None  # of the main image in pixels, before orientation
    height: Optional[int] = None
    orientation: Optional[Orientation] = None
    make: Optional[str] = None
    model: Optional[str] = None
    lens: Optional[str] = None
    serial_number: Optional[str] = None
    taken: Optional[datetime] = None  # by the camera's clock, without a time zone
    sub_second: Optional[str] = None  # the digits; `taken` contains six of them
    utc_offset: Optional[timedelta] = None  # of `taken`, positive in the east
    exposure_time: Optional[Fraction] = None  # seconds
    f_number: Optional[Fraction] = None
    iso_speed: Optional[int] = None
    exposure_bias: Optional[Fraction] = None  # stops
    exposure_mode: Optional[int] = None
    exposure_program: Optional[int] = None
    metering_mode: Optional[int] = None
    flash: Optional[int] = None  # bit 0: it fired
    white_balance: Optional[int] = None
    focal_length: Optional[Fraction] = None  # millimetres
    focal_length_35mm: Optional[int] = None  # millimetres in 35 mm film terms
    latitude: Optional[float] = None  # degrees, negative in the south
    longitude: Optional[float] = None  # degrees, negative in the west
    altitude: Optional[float] = None  # metres above sea level
    gps_time: Optional[datetime] = None  # UTC
    title: Optional[str] = None
    description: Optional[str] = None
    artist: Optional[str] = None
    copyright: Optional[str] = None
    keywords: tuple[str, ...] = ()  # at most 1000
    rating: Optional[int] = None
    software: Optional[str] = None
    derived: frozenset[str] = frozenset()  # values computed from APEX values, an exposure index or a description
    damaged: frozenset[str] = frozenset()  # unreadable, impossible or cut values; "size" is width and height
    broken_at: Optional[int] = None  # position of the damage in a file of which a part could be read
    record: records.Photo = field(default_factory=records.Photo, repr=False, compare=False)
    source: Readable = field(default="", repr=False, compare=False)  # what was given to read()

    @property
    def damage(self) -> Optional[str]:
        """Describe the damage of a file of which a part could be read."""
        return None if self.broken_at is None else damage_text(self.broken_at)

    def fields(self) -> dict[str, Value]:
        """Return the object that `tvmeta info --json` writes: without the values that the file lacks."""
        found = ((name, value(self)) for name, _, value in FIELDS)
        named: dict[str, Value] = {}
        if self.path is not None:
            named.update(name_fields(os.fsencode(self.path)))
        return {**named, **{name: value for name, value in found if value is not None}}

    def exif(self) -> bytes:
        """Read the EXIF data, a TIFF structure; empty if there is none, or if it is the file itself."""
        return self._block(Block.EXIF)

    def xmp(self) -> bytes:
        """Read the XMP packet; empty if there is none."""
        return self._block(Block.XMP)

    def iptc(self) -> bytes:
        """Read the IPTC block; empty if there is none."""
        return self._block(Block.IPTC)

    def icc(self) -> bytes:
        """Read the ICC profile; empty if there is none."""
        return self._block(Block.ICC)

    def thumbnail(self) -> bytes:
        """Read the JPEG thumbnail; empty if there is none."""
        return self._block(Block.THUMBNAIL)

    def preview(self) -> bytes:
        """Read the largest JPEG preview; empty if there is none."""
        return self._block(Block.PREVIEW)

    def tags(self) -> list[Tag]:
        """List the entries of all directories."""
        with opened(self.source) as source:
            count = _checked(self.path, library.tvmeta_list_tags(source, self.record, None, 0))
            tags = (records.Tag * count)()
            count = min(count, _checked(self.path, library.tvmeta_list_tags(source, self.record, tags, count)))
        return [
            Tag(Directory(t.directory), t.tag, t.type, t.count, t.position, bool(t.isBigEndian), t.directoryNumber)
            for t in tags[:count]
        ]

    def _block(self, number: Block) -> bytes:
        place, what = self.record.blocks[number], str(number)
        if place.isCompressed:
            raise FormatError(self.path, f"the {what} is compressed, which is not supported", _REFUSED_KIND)
        if not place.size:
            return b""
        with opened(self.source) as source:
            record = _new_record()
            library.tvmeta_read_photo(source, record)
            if bytes(record.blocks) != bytes(self.record.blocks):
                raise FormatError(self.path, "has changed since it was read")
            buffer = create_string_buffer(place.size)
            _checked(self.path, library.tvmeta_read_block(source, record, number, buffer, place.size))
        return buffer.raw


def _new_record() -> records.Photo:
    return records.Photo(recordSize=sizeof(records.Photo))


def failure(path: Optional[AnyPath], code: int, reason: str = "") -> Exception:
    """Return the exception for a status of the library."""
    reason = reason or library.tvmeta_status_text(code).decode()
    if code == _NO_MEMORY:
        return MemoryError(reason)
    if code == _READ_FAILED:
        return FileError(path, os.strerror(get_errno()) if get_errno() else reason, code, get_errno() or None)
    return FormatError(path, reason, code)


def _checked(path: Optional[AnyPath], result: int) -> int:
    if result < 0:
        raise failure(path, result)
    return result


def _kind(source: records.Source, record: records.Photo, code: int) -> str:
    """Describe a file that is no photograph."""
    if code == _REFUSED_KIND:
        return f"{library.tvmeta_format_name(record.format).decode()} files are not supported"
    start = create_string_buffer(4)
    count = source.read(source.context, 0, start, min(4, source.size))
    return "not a photograph: " + (f"starts with {start.raw[:count].hex(' ')}" if count > 0 else "empty")


def _texts(source: records.Source, record: records.Photo) -> dict[str, Any]:
    usual = create_string_buffer(_USUAL_TEXT)

    def text_of(text: int, index: int = 0) -> str:
        buffer, size = usual, _USUAL_TEXT
        while (found := library.tvmeta_read_text(source, record, text, index, buffer, size)) > size:
            buffer, size = create_string_buffer(found), found
        return buffer.raw[:found].decode("utf-8", "replace") if found > 0 else ""

    texts: dict[str, Any] = {name: text_of(number) or None for number, name in enumerate(_TEXTS)}
    keywords = [texts["keywords"]] if texts["keywords"] else []
    while keywords and len(keywords) < _MAX_KEYWORDS and keywords[-1]:
        keywords.append(text_of(_TEXTS.index("keywords"), len(keywords)))
    stars = re.match(r"-?[0-9]{1,18}(?![0-9])", texts["rating"] or "")
    return {**texts, "keywords": tuple(filter(None, keywords)), "rating": int(stars.group()) if stars else None}


def _value(record: records.Photo, name: str) -> object:
    if name in _CONVERTED:
        return _CONVERTED[name](record)
    value = getattr(record, _MEMBERS[name])
    if isinstance(value, bytes):
        return value.decode("utf-8", "replace")
    if isinstance(value, records.Rational):
        return Fraction(value.numerator, value.denominator) if value.denominator else None
    return value


def _names(mask: int) -> list[str]:
    return [name for bit, name in enumerate(VALUES) if mask >> bit & 1]


def _values(record: records.Photo) -> dict[str, Any]:
    present = _names(record.present)
    values = {name: _value(record, name) for name in present if name != "size"}
    if "size" in present:
        values.update(width=record.width, height=record.height)
    return values


def read_record(path: Optional[AnyPath], source: records.Source) -> records.Photo:
    """Return the library's record of a photograph."""
    record = _new_record()
    code = library.tvmeta_read_photo(source, byref(record))
    if code not in (_OK, _BROKEN):
        raise failure(path, code, _kind(source, record, code) if code in (UNKNOWN_KIND, _REFUSED_KIND) else "")
    return record


def read(photograph: Readable) -> Photo:
    """Read the metadata of a photograph; its first bytes decide which kind it is.

    `photograph` is a path as text or os.PathLike; the content as bytes, bytearray or memoryview; or
    a binary file object that can seek, of which as much is read as the metadata require. A path of
    bytes is os.fsdecode(path). A photograph without metadata gives a Photo without values, and one
    that is damaged a Photo with `broken_at`. A file that cannot be read, also a FIFO or a device,
    is a FileError, and one that is no photograph a FormatError. The interpreter lock is released
    during the calls, so several threads read in parallel.
    """
    path = path_of(photograph)
    with opened(photograph) as source:
        record = read_record(path, source)
        texts = _texts(source, record)
    return Photo(
        path=path,
        container=library.tvmeta_format_name(record.format).decode(),
        **_values(record),
        **texts,
        derived=frozenset(_names(record.derived)),
        damaged=frozenset(_names(record.damaged)),
        broken_at=record.brokenAt if record.brokenAt >= 0 else None,
        record=record,
        source=photograph,
    )
