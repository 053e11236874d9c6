"""Values, blocks and failures of photographs."""

import errno
import os
import pickle
import random
import struct
from datetime import datetime, timezone
from fractions import Fraction

import numpy
import pytest
from conftest import SCENE, exiftool

import tvmeta
from tvmeta import _values

NOON = datetime(2024, 2, 29, 12, 0, 1)

VALUES = [
    (["-ExposureTime=0.4", "-FNumber=2.8"], {"exposure_time": Fraction(2, 5), "f_number": Fraction(14, 5)}),
    (["-ExposureTime=1/8000"], {"exposure_time": Fraction(1, 8000), "f_number": None}),
    (["-ExposureTime=30", "-FocalLength=17.3"], {"exposure_time": 30, "focal_length": Fraction(173, 10)}),
    (["-ISO=6400", "-FocalLengthIn35mmFormat=35"], {"iso_speed": 6400, "focal_length_35mm": 35}),
    (["-DateTimeOriginal=2024:02:29 12:00:01"], {"taken": NOON}),
    (["-DateTimeOriginal=0000:00:00 00:00:00"], {"taken": None}),
    (["-Orientation#=6"], {"orientation": tvmeta.Orientation.RIGHT_TOP}),
    (["-GPSLatitude=33.75", "-GPSLatitudeRef=S"], {"latitude": -33.75, "longitude": None}),
    (["-GPSLongitude=0.25", "-GPSLongitudeRef=W"], {"longitude": -0.25}),
    (["-GPSAltitude=12.5", "-GPSAltitudeRef#=1"], {"altitude": -12.5}),
    (
        ["-GPSDateStamp=2024:02:29", "-GPSTimeStamp=00:30:15"],
        {"gps_time": datetime(2024, 2, 29, 0, 30, 15, tzinfo=timezone.utc)},
    ),
    (["-Model=Käfer 1"], {"model": "Käfer 1"}),
    ([], {"model": None, "taken": None, "exposure_time": None, "record.isoSpeed": 0}),
]


@pytest.mark.parametrize("tags, expected", VALUES, ids=lambda value: str(value)[:40])
def test_values(make_photo, tags, expected):
    photo = tvmeta.read(make_photo(*tags))
    for name, value in expected.items():
        found = photo.record.isoSpeed if name == "record.isoSpeed" else getattr(photo, name)
        assert found == value and type(found) is (Fraction if value == 30 else type(value)), name


def test_fractions_are_the_simplest_ones():
    generator = random.Random(7)
    for _ in range(3000):
        value = struct.unpack("<f", struct.pack("<I", generator.randrange(0x2E000000, 0x4F000000)))[0]
        found = _values.fraction(value)
        assert numpy.float32(found.numerator / found.denominator) == numpy.float32(value)
        for denominator in range(1, min(found.denominator, 60)):
            assert numpy.float32(round(value * denominator) / denominator) != numpy.float32(value)
    assert [_values.fraction(value) for value in (0.0, float("inf"), float("nan"))] == [None] * 3


@pytest.mark.parametrize("name", [b"caf\xe9.jpg", b"-n.jpg", "日本.jpg".encode(), b"new\nline"])
def test_any_name_can_be_read(tmp_path, name):
    path = os.path.join(os.fsencode(tmp_path), name)
    with open(path, "wb") as file:
        file.write(SCENE.read_bytes())
    for form in (path, os.fsdecode(path)):
        photo = tvmeta.read(form)
        assert (photo.path, photo.model, photo.file_type) == (form, "TV-100", tvmeta.FileType.JPEG)
    with pytest.raises(ValueError, match="null byte"):
        tvmeta.read(path + b"\0.jpg")


def packet_of(path):
    return exiftool("-b", "-XMP", path)


def test_blocks_are_those_of_other_programs(tmp_path, make_photo):
    photo = tvmeta.read(SCENE)
    assert photo.thumbnail() == exiftool("-b", "-ThumbnailImage", SCENE)
    assert photo.iptc() == exiftool("-b", "-IPTC", SCENE)
    assert photo.xmp() == packet_of(SCENE)
    other = make_photo("-XMP-dc:Title=no settings", "-IPTC:Keywords=one")
    assert b"no settings" in tvmeta.read(other).xmp() == packet_of(other)
    result = tmp_path / "result.tif"
    tvmeta.save_tiff(result, numpy.zeros((2, 2), "u1"), xmp=photo.xmp(), iptc=photo.iptc())
    saved = tvmeta.read(result)
    assert saved.xmp() == packet_of(result) == photo.xmp() and saved.iptc().startswith(photo.iptc())
    bare = tvmeta.read(make_photo(name="bare.jpg"))
    assert (bare.thumbnail(), bare.iptc(), bare.xmp()) == (b"", b"", b"")


def psd_with(*resources):
    """Build a PSD file of image resources, given as number, name and content."""
    blocks = b""
    for number, name, data in resources:
        field = bytes([len(name)]) + name + b"\0" * (1 - len(name) % 2)
        blocks += b"8BIM" + struct.pack(">H", number) + field + struct.pack(">I", len(data)) + data
        blocks += b"\0" * (len(data) % 2)
    header = b"8BPS\0\1" + bytes(6) + struct.pack(">HIIHH", 3, 1, 1, 8, 3)
    return header + struct.pack(">I", 0) + struct.pack(">I", len(blocks)) + blocks + bytes(5)


def tiff_with(*entries):
    """Build a TIFF structure of entries with one value after the directory, given as tag, type, bytes."""
    place, directory, data = 8 + 2 + 12 * len(entries) + 4, struct.pack("<H", len(entries)), b""
    for tag, kind, value in entries:
        count = len(value) // (4 if kind == 4 else 1)
        directory += struct.pack("<HHII", tag, kind, count, place + len(data))
        data += value
    return b"II*\0" + struct.pack("<I", 8) + directory + bytes(4) + data


PACKET, BLOCK = b"<x:xmpmeta xmlns:x='adobe:ns:meta/'/>", b"\x1c\x02\x19\0\3one"
EXIF = tiff_with((700, 1, PACKET), (33723, 7, BLOCK))
JPEG = b"\xff\xd8\xff\xe1" + struct.pack(">H", len(EXIF) + 8) + b"Exif\0\0" + EXIF + b"\xff\xda"

BLOCKS = {
    "PSD resources": psd_with((1005, b"abc", b"1234567"), (1028, b"", BLOCK), (1060, b"", PACKET), (1058, b"", EXIF)),
    "PSD tags": psd_with((1005, b"ab", b"1234567"), (1058, b"", EXIF)),
    "JPEG tags": JPEG,
    "TIFF that ends with the packet": tiff_with((33723, 7, BLOCK), (700, 1, PACKET)),
}


@pytest.mark.parametrize("content", BLOCKS.values(), ids=BLOCKS.keys())
def test_places_of_blocks(tmp_path, content):
    path = tmp_path / "photo"
    path.write_bytes(content)
    photo = tvmeta.read(path)
    assert (photo.xmp(), photo.iptc()) == (PACKET, BLOCK)


BROKEN = [
    ("empty", b"", tvmeta.FormatError, -2, "empty"),
    ("text", b"hello", tvmeta.FormatError, -2, "starts with 68 65 6c 6c"),
    ("cut", b"\xff\xd8\xff\xe1\0\1", tvmeta.FormatError, -1, "JPEG segments is broken"),
    ("psd", b"8BPS\0\1" + bytes(30), tvmeta.FormatError, -3, "not an RGB picture"),
]


@pytest.mark.parametrize("name, content, kind, code, reason", BROKEN, ids=[case[0] for case in BROKEN])
def test_broken_files(tmp_path, name, content, kind, code, reason):
    path = tmp_path / name
    path.write_bytes(content)
    with pytest.raises(kind, match=reason) as caught:
        tvmeta.read(path)
    failure = pickle.loads(pickle.dumps(caught.value))
    assert isinstance(failure, OSError) and (failure.code, failure.path, failure.filename) == (
        code,
        str(path),
        str(path),
    )
    assert str(failure).startswith(f"{path}: ")


def test_files_that_cannot_be_opened(tmp_path):
    found = ((tmp_path / "none.jpg", FileNotFoundError, errno.ENOENT), (tmp_path, IsADirectoryError, errno.EISDIR))
    for path, kind, kind_number in found:
        with pytest.raises(kind) as caught:
            tvmeta.read(path)
        failure = pickle.loads(pickle.dumps(caught.value))
        assert isinstance(failure, tvmeta.FileError) and isinstance(failure, kind)
        assert (failure.filename, failure.errno) == (str(path), kind_number)


def test_damage_after_the_metadata(tmp_path):
    path = tmp_path / "photo.jpg"
    path.write_bytes(JPEG[:-2] + b"no marker")
    photo = tvmeta.read(path)
    assert photo.damage == "the chain of JPEG segments is broken after the EXIF data"
    assert photo.xmp() == PACKET
    os.truncate(path, len(JPEG) - 60)
    with pytest.raises(tvmeta.FormatError, match="XMP packet is beyond the end"):
        photo.xmp()
