"""Image metadata for HDR photo applications: Python interface of libtvmeta.

>>> import tvmeta
>>> photo = tvmeta.read("scene.jpg")
>>> photo.model, photo.exposure_time, photo.latitude
>>> lost = tvmeta.save_tiff("result.tif", pixels, photo=photo)

The package uses the library that the environment variable TVMETA_LIBRARY names, else the one in
its own folder, else the system's libtvmeta.so.1.
"""

from . import _library
from ._brackets import BracketFailure, Brackets, BracketSet, brackets
from .enums import Block, Directory, LossReason, Method, Orientation
from .errors import Error, FileError, FormatError
from .hdr import HdrStatistics, hdr_statistics
from .photo import Photo, Tag, read
from .settings import Settings
from .tiff import Loss, save_tiff

__version__: str = _library.library.tvmeta_version().decode()

__all__ = [
    "Block",
    "BracketFailure",
    "BracketSet",
    "Brackets",
    "Directory",
    "Error",
    "FileError",
    "FormatError",
    "HdrStatistics",
    "Loss",
    "LossReason",
    "Method",
    "Orientation",
    "Photo",
    "Settings",
    "Tag",
    "brackets",
    "hdr_statistics",
    "read",
    "save_tiff",
]
