"""Codes of the formats and of the library, by name."""

from enum import IntEnum


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


class Block(IntEnum):
    """A block of metadata in a photograph."""

    EXIF = 0
    XMP = 1
    IPTC = 2
    ICC = 3
    THUMBNAIL = 4
    PREVIEW = 5

    def __str__(self) -> str:
        """Return the block's name in messages."""
        return ("EXIF data", "XMP packet", "IPTC block", "ICC profile", "thumbnail", "preview")[self]


class Directory(IntEnum):
    """A kind of directory of a TIFF structure."""

    IMAGE = 0
    THUMBNAIL = 1
    EXIF = 2
    GPS = 3
    INTEROPERABILITY = 4
    SUB_IMAGE = 5


class LossReason(IntEnum):
    """Why a result has not kept something of the photograph."""

    BROKEN = 1
    PRIVATE = 2
    MAKER_NOTE = 3
    BLOCK = 4
    XMP_LEFT = 5
    CLAMPED = 6


class Method(IntEnum):
    """Processing methods of a settings packet."""

    DETAILS_ENHANCER = 1
    TONE_COMPRESSOR = 2
    CONTRAST_OPTIMIZER = 3
    FUSION_ADJUST = 10
    FUSION_INTENSIVE = 11
    FUSION_REAL_ESTATE = 15
