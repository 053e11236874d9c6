"""The fields of a photograph under the names, and with the values, of `tvmeta info --json`."""

from __future__ import annotations

import base64
import math
import struct
from datetime import datetime, timedelta
from functools import lru_cache
from typing import TYPE_CHECKING, Callable, NamedTuple, Optional, SupportsFloat, Union, cast
from unicodedata import category

from .enums import Block

if TYPE_CHECKING:
    from .photo import Photo

Value = Union[str, int, float, list[str], None]
_NOT_PRINTABLE = ("Cc", "Cn", "Zl", "Zp")  # for a terminal
_TURNING = "\u061c\u200e\u200f\u202a\u202b\u202c\u202d\u202e\u2066\u2067\u2068\u2069"  # the writing direction
_DERIVED = {"exposure_time": "exposureTime", "f_number": "fNumber", "iso_speed": "isoSpeed"}


class Field(NamedTuple):
    """A field: its name, its type ("text", "integer", "real" or "texts"), and its value in a photograph."""

    name: str
    type: str
    value: Callable[[Photo], Value]


def _is_printable(text: str) -> bool:
    return text.isprintable() or not any(category(c) in _NOT_PRINTABLE or c in _TURNING for c in text)


def name_fields(name: bytes) -> dict[str, str]:
    """Return a path as text, and as base64 too if it is not printable UTF-8."""
    shown = name.decode("utf-8", "replace")
    if shown.encode() == name and _is_printable(shown):
        return {"file": shown}
    return {"file": shown, "fileBytes": base64.b64encode(name).decode()}


def _decimal(value: Optional[SupportsFloat]) -> Optional[float]:
    return None if value is None else shortest(float(value))


@lru_cache(maxsize=4096)  # photographs share few exposures
def shortest(value: float) -> float:
    """Return the shortest decimal number that is the same single-precision number, such as 0.008 for 1/125."""
    packed = struct.pack("f", value)
    (single,) = struct.unpack("f", packed)
    shortest = (float(f"{single:.{digits}g}") for digits in range(1, 10))
    return next(number for number in shortest if struct.pack("f", number) == packed)


def _real(name: str) -> Field:
    attribute = "".join("_" + c.lower() if c.isupper() else c for c in name)
    return Field(name, "real", lambda photo: _decimal(getattr(photo, attribute)))


def _plain(name: str, kind: str, attribute: str = "") -> Field:
    return Field(name, kind, lambda photo: cast(Value, getattr(photo, attribute or name)))


def _place(name: str, block: Block) -> tuple[Field, Field]:
    """Return length and position of a block; the position is missing if the block is in several pieces."""

    def position(photo: Photo) -> Value:
        place = photo.record.blocks[block]
        return int(place.position) if place.size and place.position >= 0 else None

    length = Field(name + "Length", "integer", lambda photo: photo.record.blocks[block].size or None)
    return length, Field(name + "Offset", "integer", position)


def _date_time(time: Optional[datetime]) -> Optional[str]:
    """Return a time as EXIF writes it."""
    return None if time is None else time.replace(tzinfo=None).isoformat(" ", "seconds").replace("-", ":")


def _gps(part: slice) -> Callable[[Photo], Value]:
    return lambda photo: (_date_time(photo.gps_time) or "")[part] or None


def _offset(photo: Photo) -> Value:
    if photo.utc_offset is None:
        return None
    minutes = photo.utc_offset // timedelta(minutes=1)
    return f"{'-' if minutes < 0 else '+'}{abs(minutes) // 60:02}:{abs(minutes) % 60:02}"


def _derived(photo: Photo) -> Value:
    return " ".join(name for attribute, name in _DERIVED.items() if attribute in photo.derived) or None


def _ev100(photo: Photo) -> Value:
    time, stop, iso = _decimal(photo.exposure_time) or 0, _decimal(photo.f_number) or 0, photo.iso_speed or 0
    if time <= 0 or stop <= 0 or iso <= 0:
        return None
    return math.log2(stop * stop / time) - math.log2(iso / 100)


def _coordinate(degrees: float) -> str:
    text = f"{degrees:.7f}".rstrip("0")
    return text + "0" if text.endswith(".") else text


def _position(photo: Photo) -> Value:
    if photo.latitude is None or photo.longitude is None:
        return None
    return f"{_coordinate(photo.latitude)}, {_coordinate(photo.longitude)}"


FIELDS: tuple[Field, ...] = (
    _plain("container", "text"),
    _plain("width", "integer"),
    _plain("height", "integer"),
    Field("orientation", "integer", lambda photo: photo.orientation and int(photo.orientation)),
    _plain("make", "text"),
    _plain("model", "text"),
    _plain("serialNumber", "text", "serial_number"),
    _plain("lens", "text"),
    Field("dateTimeOriginal", "text", lambda photo: _date_time(photo.taken)),
    _plain("subSecond", "text", "sub_second"),
    Field("utcOffset", "text", _offset),
    _real("exposureTime"),
    _real("fNumber"),
    _plain("isoSpeed", "integer", "iso_speed"),
    Field("derived", "text", _derived),
    Field("ev100", "real", _ev100),
    _real("exposureBias"),
    _plain("exposureMode", "integer", "exposure_mode"),
    _plain("exposureProgram", "integer", "exposure_program"),
    _plain("meteringMode", "integer", "metering_mode"),
    _plain("flash", "integer"),
    _plain("whiteBalance", "integer", "white_balance"),
    _real("focalLength"),
    _plain("focalLength35mm", "integer", "focal_length_35mm"),
    Field("gpsPosition", "text", _position),
    _plain("gpsLatitude", "real", "latitude"),
    _plain("gpsLongitude", "real", "longitude"),
    _plain("gpsAltitude", "real", "altitude"),
    Field("gpsDate", "text", _gps(slice(10))),
    Field("gpsTime", "text", _gps(slice(11, None))),
    _plain("title", "text"),
    _plain("description", "text"),
    _plain("artist", "text"),
    _plain("copyright", "text"),
    Field("keywords", "texts", lambda photo: list(photo.keywords) or None),
    _plain("rating", "integer"),
    _plain("software", "text"),
    *_place("thumbnail", Block.THUMBNAIL),
    *_place("preview", Block.PREVIEW),
    *_place("icc", Block.ICC),
    *_place("iptc", Block.IPTC),
    *_place("xmp", Block.XMP),
)
