#!/usr/bin/env python3
"""Reads a photograph with libtvmeta, from Python with only ctypes: read_photo.py [--library PATH] PHOTO

The library is the one named by --library, else by the environment variable TVMETA_LIBRARY, else an installed one."""

import argparse
import ctypes
import ctypes.util
import os
import sys
from ctypes import POINTER, c_char, c_char_p, c_float, c_int32, c_uint8, c_uint32

FILE_TYPES = {".jpg": 1, ".jpeg": 1, ".psd": 2}  # FILE_TYPE_TIFF, which is 0, for any other


class ExifInfo(ctypes.Structure):
    """The record of tvmeta.h, member by member."""

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


def load_library(path):
    path = path or os.environ.get("TVMETA_LIBRARY") or ctypes.util.find_library("tvmeta")
    if not path:
        sys.exit("libtvmeta is not installed; name it with --library or TVMETA_LIBRARY")
    library = ctypes.CDLL(path)
    library.getExifData.argtypes = [c_char_p, c_int32, POINTER(ExifInfo)]
    library.getExifData.restype = c_int32
    library.init_exifInfo.argtypes = [ctypes.c_void_p]
    library.init_exifInfo.restype = None
    return library


def record_size(library):
    """The size of the record in the library: the number of bytes that it clears."""
    room = (c_uint8 * 4096)(*[0xFF] * 4096)
    library.init_exifInfo(room)
    return bytes(room).rindex(0) + 1


def read_photo(library, path):
    info = ExifInfo()
    kind = FILE_TYPES.get(os.path.splitext(path)[1].lower(), 0)
    result = library.getExifData(os.fsencode(path), kind, info)
    if result != 1:
        sys.exit(f"{path}: getExifData gives {result}")
    return info


def degrees(angle, reference):
    parts = [angle[i] / (angle[i + 1] or 1) for i in range(0, 6, 2)]
    value = parts[0] + parts[1] / 60 + parts[2] / 3600
    return -value if reference in (b"S", b"W") else value


def main():
    parser = argparse.ArgumentParser(description="Reads a photograph with libtvmeta.")
    parser.add_argument("--library", metavar="PATH", help="the shared library")
    parser.add_argument("photo", metavar="PHOTO")
    arguments = parser.parse_args()
    library = load_library(arguments.library)
    if record_size(library) != ctypes.sizeof(ExifInfo):
        sys.exit(f"the library's record has {record_size(library)} bytes, this one {ctypes.sizeof(ExifInfo)}")

    info = read_photo(library, arguments.photo)
    camera = [os.fsdecode(text) for text in (info.model, info.lens) if text]
    print(f"Camera    {', '.join(camera)}")
    print(f"Taken     {os.fsdecode(info.dateTimeOriginal)}")
    print(f"Exposure  {info.exposureTime:g} s, f/{info.fNumber:g}, ISO {info.isoSpeed}, {info.focalLength:g} mm")
    if info.gpsLatitudeRef.isalpha() and info.gpsLongitudeRef.isalpha():
        latitude = degrees(info.gpsLatitude, info.gpsLatitudeRef)
        longitude = degrees(info.gpsLongitude, info.gpsLongitudeRef)
        print(f"Place     {latitude:.4f}, {longitude:.4f}")


main()
