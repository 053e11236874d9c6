"""Codes of the formats and of the library, by name."""

from enum import IntEnum


class FileType(IntEnum):
    """Kind of a photograph's file."""

    TIFF = 0
    JPEG = 1
    PSD = 2


class Orientation(IntEnum):
    """TIFF 6.0, tag 274: where row 0 and column 0 of the pixels are on the upright picture."""

    TOP_LEFT = 1
    TOP_RIGHT = 2
    BOTTOM_RIGHT = 3
    BOTTOM_LEFT = 4
    LEFT_TOP = 5
    RIGHT_TOP = 6
    RIGHT_BOTTOM = 7
    LEFT_BOTTOM = 8


class ResolutionUnit(IntEnum):
    """EXIF, tag 41488: unit of the focal plane resolution."""

    INCH = 2
    CENTIMETRE = 3


class ExposureSource(IntEnum):
    """Where exposure time and ISO speed come from."""

    EXIF = 0
    IMAGE_DESCRIPTION = 2


class Method(IntEnum):
    """Processing methods of a settings packet."""

    DETAILS_ENHANCER = 1
    TONE_COMPRESSOR = 2
    CONTRAST_OPTIMIZER = 3
    FUSION_ADJUST = 10
    FUSION_INTENSIVE = 11
    FUSION_REAL_ESTATE = 15
