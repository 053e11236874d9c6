"""The records of tvmeta.h and tvmeta_photo.h as ctypes structures, member by member."""

from ctypes import CFUNCTYPE, POINTER, Structure
from ctypes import c_char, c_char_p, c_double, c_float, c_int32, c_int64, c_uint16, c_uint32, c_uint64, c_void_p

SETTINGS_SLOTS = 18
SettingsValues = c_float * SETTINGS_SLOTS
SourceRead = CFUNCTYPE(c_int64, c_void_p, c_int64, c_void_p, c_int64)


class Source(Structure):
    """Bytes that can be read at any position: tvmeta_Source."""

    _fields_ = [("context", c_void_p), ("size", c_int64), ("read", SourceRead), ("close", c_void_p)]


class Rational(Structure):
    """A fraction as the file contains it: tvmeta_Rational."""

    _fields_ = [("numerator", c_int64), ("denominator", c_int64)]


class Block(Structure):
    """Where a block is: tvmeta_Block."""

    _fields_ = [("position", c_int64), ("size", c_int64), ("pieces", c_int32), ("isCompressed", c_int32)]


class Photo(Structure):
    """What the library reads of a photograph: tvmeta_Photo."""

    _fields_ = [
        ("recordSize", c_uint32),
        ("format", c_int32),
        ("present", c_uint64),
        ("derived", c_uint64),
        ("damaged", c_uint64),
        ("brokenAt", c_int64),
        ("width", c_int32),
        ("height", c_int32),
        ("orientation", c_int32),
        ("make", c_char * 64),
        ("model", c_char * 64),
        ("lens", c_char * 128),
        ("serialNumber", c_char * 64),
        ("exposureTime", Rational),
        ("fNumber", Rational),
        ("focalLength", Rational),
        ("exposureBias", Rational),
        ("isoSpeed", c_int32),
        ("exposureMode", c_int32),
        ("exposureProgram", c_int32),
        ("meteringMode", c_int32),
        ("flash", c_int32),
        ("whiteBalance", c_int32),
        ("focalLength35mm", c_int32),
        ("captureTime", c_int64),
        ("captureNanoseconds", c_int32),
        ("subSecondDigits", c_int32),
        ("utcOffset", c_int32),
        ("latitude", c_double),
        ("longitude", c_double),
        ("altitude", c_double),
        ("gpsTime", c_int64),
        ("blocks", Block * 6),
    ]


class Tag(Structure):
    """An entry of a directory: tvmeta_Tag."""

    _fields_ = [
        ("directory", c_int32),
        ("tag", c_uint16),
        ("type", c_uint16),
        ("count", c_uint64),
        ("position", c_int64),
        ("isBigEndian", c_int32),
        ("directoryNumber", c_int32),
    ]


class Result(Structure):
    """A result and its photograph: tvmeta_Result."""

    _fields_ = [
        ("recordSize", c_uint32),
        ("width", c_int32),
        ("height", c_int32),
        ("channels", c_int32),
        ("bitsCode", c_int32),
        ("pixelMode", c_int32),
        ("resolution", c_int32),
        ("orientation", c_int32),
        ("path", c_char_p),
        ("pixels", c_void_p),
        ("rowPitch", c_int64),
        ("icc", c_char_p),
        ("iccSize", c_int64),
        ("iptc", c_char_p),
        ("iptcSize", c_int64),
        ("xmp", c_char_p),
        ("xmpSize", c_int64),
        ("keywords", POINTER(c_char_p)),
        ("keywordCount", c_int32),
        ("method", c_int32),
        ("settings", POINTER(c_float)),
        ("software", c_char_p),
        ("modifyDate", c_char_p),
        ("photo", POINTER(Source)),
    ]


class Loss(Structure):
    """What a result has not kept: tvmeta_Loss."""

    _fields_ = [("directory", c_int32), ("tag", c_int32), ("reason", c_int32)]


class Shot(Structure):
    """What grouping needs of one file: tvmeta_Shot."""

    _fields_ = [
        ("recordSize", c_uint32),
        ("format", c_int32),
        ("folder", c_void_p),
        ("name", c_void_p),
        ("camera", c_uint64),
        ("serialNumber", c_uint64),
        ("present", c_uint64),
        ("captureTime", c_int64),
        ("captureNanoseconds", c_int32),
        ("utcOffset", c_int32),
        ("exposureTime", c_float),
        ("fNumber", c_float),
        ("isoSpeed", c_float),
        ("exposureBias", c_float),
        ("focalLength", c_float),
        ("exposureMode", c_int32),
        ("width", c_int32),
        ("height", c_int32),
        ("orientation", c_int32),
        ("hidesBrackets", c_int32),
    ]


class BracketOptions(Structure):
    """How to group: tvmeta_BracketOptions."""

    _fields_ = [("recordSize", c_uint32), ("count", c_int32), ("gap", c_double)]


class BracketMember(Structure):
    """The place of one file: tvmeta_BracketMember."""

    _fields_ = [("set", c_int64), ("place", c_int64), ("leader", c_int64), ("offset", c_double)]


class BracketSet(Structure):
    """One set: tvmeta_BracketSet."""

    _fields_ = [
        ("recordSize", c_uint32),
        ("confidence", c_int32),
        ("shots", c_int64),
        ("expectedShots", c_int64),
        ("longestPause", c_double),
        ("evidence", c_int32),
        ("reserved", c_int32),
    ]


class Parameter(Structure):
    """One parameter of a method: tvmeta_Parameter of the header."""

    _fields_ = [("name", c_char_p), ("slot", c_int32), ("kind", c_int32)]
