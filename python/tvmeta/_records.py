"""The records of tvmeta.h as ctypes structures, member by member."""

from ctypes import Structure, c_char, c_char_p, c_float, c_int32, c_uint8, c_uint32

SETTINGS_SLOTS = 18
SettingsValues = c_float * SETTINGS_SLOTS


class ExifInfo(Structure):
    """The metadata of one photograph as the library reads it."""

    _fields_ = [
        ("exposureSource", c_int32),
        ("exposureTime", c_float),
        ("fNumber", c_float),
        ("isoSpeed", c_int32),
        ("focalLength", c_float),
        ("focalLength35mm", c_int32),
        ("focalPlaneXResolution", c_float),
        ("focalPlaneResolutionUnit", c_int32),
        ("model", c_char * 64),
        ("dateTimeOriginal", c_char * 20),
        ("thumbnailWidth", c_int32),
        ("thumbnailHeight", c_int32),
        ("thumbnailRowBytes", c_int32),
        ("thumbnailLength", c_int32),
        ("thumbnailOffset", c_int32),
        ("orientation", c_int32),
        ("iptcLength", c_int32),
        ("iptcOffset", c_int32),
        ("gpsLatitudeRef", c_char),
        ("gpsLatitude", c_uint32 * 6),
        ("gpsLongitudeRef", c_char),
        ("gpsLongitude", c_uint32 * 6),
        ("gpsAltitudeRef", c_uint8),
        ("gpsAltitude", c_uint32 * 2),
        ("gpsTimeStamp", c_uint32 * 6),
        ("gpsDateStamp", c_char * 11),
        ("xmpLength", c_int32),
        ("xmpOffset", c_int32),
        ("lens", c_char * 256),
    ]


class MetadataBuf(Structure):
    """Metadata for the writers: rationals as numerator, denominator pairs."""

    _fields_ = [
        ("exposureTime", c_int32 * 2),
        ("fNumber", c_int32 * 2),
        ("isoSpeed", c_int32),
        ("exposureSource", c_int32),
        ("focalLength", c_int32 * 2),
        ("focalLength35mm", c_int32),
        ("focalPlaneXResolution", c_int32 * 2),
        ("focalPlaneResolutionUnit", c_int32),
        ("thumbnailOffset", c_int32),
        ("thumbnailLength", c_int32),
        ("iptcOffset", c_int32),
        ("iptcLength", c_int32),
        ("orientation", c_int32),
        ("xmpOffset", c_int32),
        ("xmpLength", c_int32),
        ("model", c_char * 64),
        ("dateTimeOriginal", c_char * 20),
        ("lens", c_char * 64),
    ]


class GpsBuf(Structure):
    """GPS position for the writers."""

    _fields_ = [
        ("latitude", c_int32 * 6),
        ("longitude", c_int32 * 6),
        ("altitude", c_int32 * 2),
        ("timeStamp", c_int32 * 6),
        ("latitudeRef", c_char),
        ("longitudeRef", c_char),
        ("altitudeRef", c_uint8),
        ("dateStamp", c_char * 11),
    ]


class TifImageInfo(Structure):
    """The image that buf2tif() writes."""

    _fields_ = [
        ("width", c_int32),
        ("height", c_int32),
        ("channels", c_int32),
        ("bitsCode", c_int32),
        ("resolution", c_int32),
        ("iccLength", c_int32),
        ("pixelMode", c_int32),
        ("orientation", c_int32),
    ]


class Parameter(Structure):
    """One parameter of a method: tvmeta_Parameter of the header."""

    _fields_ = [("name", c_char_p), ("slot", c_int32), ("kind", c_int32)]
