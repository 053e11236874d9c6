#!/usr/bin/env python3
"""Reads a photograph with libtvmeta, from Python with only ctypes: read_photo.py [--library PATH] PHOTO

The library is the one named by --library, else by the environment variable TVMETA_LIBRARY, else an installed one."""

import argparse
import ctypes.util
import datetime
import os
import sys
from ctypes import POINTER, c_char, c_double, c_int32, c_int64, c_uint32, c_uint64

TAKEN, LATITUDE, LONGITUDE = 17, 20, 21  # bits of `present`


class Source(ctypes.Structure):
    _fields_ = [("context", ctypes.c_void_p), ("size", c_int64), ("read", ctypes.c_void_p), ("close", ctypes.c_void_p)]


class Rational(ctypes.Structure):
    _fields_ = [("numerator", c_int64), ("denominator", c_int64)]


class Photo(ctypes.Structure):
    """The record of tvmeta_photo.h, member by member, up to those that are printed."""

    _fields_ = [
        ("recordSize", c_uint32),
        ("format", c_int32),
        *((name, c_uint64) for name in ("present", "derived", "damaged")),
        ("brokenAt", c_int64),
        *((name, c_int32) for name in ("width", "height", "orientation")),
        *((name, c_char * size) for name, size in (("make", 64), ("model", 64), ("lens", 128), ("serialNumber", 64))),
        *((name, Rational) for name in ("exposureTime", "fNumber", "focalLength", "exposureBias")),
        *((name, c_int32) for name in ("isoSpeed", "exposureMode", "exposureProgram", "meteringMode", "flash")),
        *((name, c_int32) for name in ("whiteBalance", "focalLength35mm")),
        ("captureTime", c_int64),
        *((name, c_int32) for name in ("captureNanoseconds", "subSecondDigits", "utcOffset")),
        *((name, c_double) for name in ("latitude", "longitude", "altitude")),
    ]


def load_library(path):
    path = path or os.environ.get("TVMETA_LIBRARY") or ctypes.util.find_library("tvmeta")
    if not path:
        sys.exit("libtvmeta is not installed; name it with --library or TVMETA_LIBRARY")
    library = ctypes.CDLL(path)
    library.tvmeta_open.argtypes = [ctypes.c_char_p, POINTER(Source)]
    library.tvmeta_read_photo.argtypes = [POINTER(Source), POINTER(Photo)]
    library.tvmeta_close.argtypes = [POINTER(Source)]
    library.tvmeta_status_text.restype = ctypes.c_char_p
    return library


def read_photo(library, path):
    source, photo = Source(), Photo(recordSize=ctypes.sizeof(Photo))  # the library fills as much as there is
    status = library.tvmeta_open(os.fsencode(path), source) or library.tvmeta_read_photo(source, photo)
    library.tvmeta_close(source)
    if status != 0:
        sys.exit(f"{path}: {library.tvmeta_status_text(status).decode()}")
    return photo


def has(photo, field):
    return photo.present >> field & 1


def number(fraction):
    return fraction.numerator / (fraction.denominator or 1)


def main():
    parser = argparse.ArgumentParser(description="Reads a photograph with libtvmeta.")
    parser.add_argument("--library", metavar="PATH", help="the shared library")
    parser.add_argument("photo", metavar="PHOTO")
    arguments = parser.parse_args()

    photo = read_photo(load_library(arguments.library), arguments.photo)
    print(f"Camera    {', '.join(text.decode() for text in (photo.model, photo.lens) if text)}")
    if has(photo, TAKEN):
        print(f"Taken     {datetime.datetime(1970, 1, 1) + datetime.timedelta(seconds=photo.captureTime)}")
    exposure = f"{number(photo.exposureTime):g} s, f/{number(photo.fNumber):g}, ISO {photo.isoSpeed}"
    print(f"Exposure  {exposure}, {number(photo.focalLength):g} mm")
    if has(photo, LATITUDE) and has(photo, LONGITUDE):
        print(f"Place     {photo.latitude:.4f}, {photo.longitude:.4f}")


main()
