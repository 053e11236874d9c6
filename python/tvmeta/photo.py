"""Reading the metadata of photographs."""

from __future__ import annotations

import os
from ctypes import create_string_buffer
from dataclasses import dataclass, field, replace
from datetime import datetime
from enum import IntEnum
from fractions import Fraction
from typing import Callable, Optional, Type, TypeVar, Union

from . import _places as places
from . import _values as values
from ._library import library
from ._records import ExifInfo
from .enums import ExposureSource, FileType, Orientation, ResolutionUnit
from .errors import AnyPath, FileError, FormatError, UnknownFormatError, file_error

PathLike = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]

_MODE_LENS = 100
_NO_EXIF = -2  # of a JPEG
_CHAIN_BREAKS_AFTER_EXIF = -10

_REASONS = {
    (FileType.JPEG, -1): "the chain of JPEG segments is broken",
    (FileType.JPEG, -3): "the EXIF data are not a TIFF structure",
    (FileType.JPEG, -10): "the chain of JPEG segments is broken after the EXIF data",
    (FileType.PSD, -1): "no EXIF resource, or the image resources are broken",
    (FileType.PSD, -2): "the EXIF resource has no TIFF byte-order mark",
    (FileType.PSD, -3): "not an RGB picture, or the EXIF resource is not a TIFF structure",
}

_Code = TypeVar("_Code", bound=IntEnum)


@dataclass(frozen=True)
class Photo:
    """The metadata of one photograph. A value that the file does not contain is None.

    Exposure values are the simplest fractions that give the floats of the record exactly, such as
    1/125 s and f/14/5. `record` is the library's record with the raw values.
    """

    path: AnyPath
    file_type: FileType
    model: Optional[str] = None
    lens: Optional[str] = None
    taken: Optional[datetime] = None  # by the camera's clock, without a time zone
    exposure_time: Optional[Fraction] = None  # seconds
    f_number: Optional[Fraction] = None
    iso_speed: Optional[int] = None
    exposure_source: ExposureSource = ExposureSource.EXIF
    focal_length: Optional[Fraction] = None  # millimetres
    focal_length_35mm: Optional[int] = None  # millimetres in 35 mm film terms
    focal_plane_x_resolution: Optional[Fraction] = None  # pixels per unit
    focal_plane_resolution_unit: Optional[ResolutionUnit] = None
    orientation: Optional[Orientation] = None
    latitude: Optional[float] = None  # degrees, negative in the south
    longitude: Optional[float] = None  # degrees, negative in the west
    altitude: Optional[float] = None  # metres above sea level
    gps_time: Optional[datetime] = None  # UTC
    damage: Optional[str] = None  # what is broken in a file whose metadata could be read all the same
    record: ExifInfo = field(default_factory=ExifInfo, repr=False, compare=False)

    def thumbnail(self) -> bytes:
        """Read the JPEG thumbnail; empty if there is none."""
        return self._read(
            lambda file, kind, record: places.Place(record.thumbnailOffset, max(record.thumbnailLength, 0)), "thumbnail"
        )

    def iptc(self) -> bytes:
        """Read the IPTC block; empty if there is none."""
        return self._read(places.iptc_place, "IPTC block")

    def xmp(self) -> bytes:
        """Read the XMP packet; empty if there is none."""
        return self._read(places.xmp_place, "XMP packet")

    def _read(self, find: Callable[..., places.Place], what: str) -> bytes:
        try:
            with open(self.path, "rb") as file:
                place = find(file, self.file_type, self.record)
                return places.read_place(self.path, file, place, what) if place.length else b""
        except FileError:
            raise
        except OSError as error:
            raise file_error(self.path, error) from error


def library_path(path: PathLike) -> tuple[AnyPath, bytes]:
    """Return a path as given, for messages, and as the bytes that the library opens."""
    name = os.fspath(path)
    encoded = os.fsencode(name)
    if b"\0" in encoded:
        raise ValueError("embedded null byte in a path")
    return name, encoded


def _file_type(name: AnyPath, encoded: bytes) -> FileType:
    found = library.tvmeta_file_type(encoded)
    if found >= 0:
        return FileType(found)
    try:
        with open(name, "rb") as file:  # the operating system's reason
            start = file.read(4)
    except OSError as error:
        raise file_error(name, error, found) from error
    shown = f"starts with {start.hex(' ')}" if start else "empty"
    raise UnknownFormatError(name, f"not a JPEG, TIFF or PSD file: {shown}", found)


def _code(kind: Type[_Code], value: int) -> Optional[_Code]:
    return kind(value) if value in kind._value2member_map_ else None


def _packet_lens(photo: Photo) -> Optional[str]:
    """Return the lens of the XMP packet, which the library reads in JPEG files alone."""
    try:
        packet = photo.xmp()
    except FileError:  # reported when the packet itself is asked for
        return None
    lens = create_string_buffer(256)
    library.get_settings_from_xmp(_MODE_LENS, len(packet) + 1, packet, lens, None)
    return values.text(lens.value)


def _photo(name: AnyPath, kind: FileType, record: ExifInfo, damage: Optional[str]) -> Photo:
    return Photo(
        path=name,
        file_type=kind,
        model=values.text(record.model),
        lens=values.text(record.lens),
        taken=values.date_time(record.dateTimeOriginal),
        exposure_time=values.fraction(record.exposureTime),
        f_number=values.fraction(record.fNumber),
        iso_speed=record.isoSpeed or None,
        exposure_source=_code(ExposureSource, record.exposureSource) or ExposureSource.EXIF,
        focal_length=values.fraction(record.focalLength),
        focal_length_35mm=record.focalLength35mm or None,
        focal_plane_x_resolution=values.fraction(record.focalPlaneXResolution),
        focal_plane_resolution_unit=_code(ResolutionUnit, record.focalPlaneResolutionUnit),
        orientation=_code(Orientation, record.orientation),
        latitude=values.degrees(record.gpsLatitude, record.gpsLatitudeRef),
        longitude=values.degrees(record.gpsLongitude, record.gpsLongitudeRef),
        altitude=values.altitude(record.gpsAltitude, record.gpsAltitudeRef),
        gps_time=values.gps_time(record.gpsDateStamp, record.gpsTimeStamp),
        damage=damage,
        record=record,
    )


def read(path: PathLike) -> Photo:
    """Read the metadata of a JPEG, TIFF or PSD file; its first bytes decide which it is.

    A JPEG without EXIF data gives a Photo without values. A file that is damaged after its metadata
    gives a Photo whose `damage` says so. Other failures raise FileError. The interpreter lock is
    released during the call, so several threads read in parallel.
    """
    name, encoded = library_path(path)
    kind = _file_type(name, encoded)
    record = ExifInfo()
    code = library.getExifData(encoded, kind, record)
    damage = None
    if code == _CHAIN_BREAKS_AFTER_EXIF:
        damage = _REASONS[kind, code]
    elif code < 0 and not (kind is FileType.JPEG and code == _NO_EXIF):
        raise FormatError(name, _REASONS.get((kind, code), "not a TIFF file"), code)
    photo = _photo(name, kind, record, damage)
    if photo.lens is None and kind is not FileType.JPEG and record.xmpLength > 0:
        return replace(photo, lens=_packet_lens(photo))
    return photo
