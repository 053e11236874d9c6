"""Values, blocks and failures of photographs."""

import errno
import io
import json
import os
import pickle
import struct
import subprocess
from datetime import datetime, timedelta, timezone
from fractions import Fraction

import numpy
import pytest
from conftest import SCENE, exiftool, write

import tvmeta
from tvmeta import _library

NOON = datetime(2024, 2, 29, 12, 0, 1)

VALUES = [
    (["-ExposureTime=0.4", "-FNumber=2.8"], {"exposure_time": Fraction(2, 5), "f_number": Fraction(14, 5)}),
    (["-ExposureTime=30", "-FocalLength=17.3"], {"exposure_time": 30, "focal_length": Fraction(173, 10)}),
    (["-ISO=6400", "-Orientation#=6"], {"iso_speed": 6400, "orientation": tvmeta.Orientation.RIGHT_TOP}),
    (["-GPSLatitude=33.75", "-GPSLatitudeRef=S"], {"latitude": -33.75, "longitude": None}),
    (["-GPSLongitude=0.25", "-GPSLongitudeRef=W", "-GPSAltitude=12.5"], {"longitude": -0.25, "altitude": 12.5}),
    (["-GPSDateStamp=2024:02:29", "-GPSTimeStamp=12:00:01"], {"gps_time": NOON.replace(tzinfo=timezone.utc)}),
    (["-Model=Käfer 1", "-Make=K", "-SerialNumber=07"], {"model": "Käfer 1", "make": "K", "serial_number": "07"}),
    (
        ["-EXIF:LensModel=50mm", "-EXIF:Flash#=9", "-FocalLengthIn35mmFormat=35"],
        {"lens": "50mm", "focal_length_35mm": 35},
    ),
    (["-ExposureCompensation=-0.5", "-MeteringMode#=5"], {"exposure_bias": Fraction(-1, 2), "metering_mode": 5}),
    (["-ExposureMode#=2", "-ExposureProgram#=3", "-WhiteBalance#=1"], {"exposure_mode": 2, "exposure_program": 3}),
    (
        ["-DateTimeOriginal=2024:02:29 12:00:01", "-SubSecTimeOriginal=0123456", "-OffsetTimeOriginal=-03:30"],
        {"taken": NOON.replace(microsecond=12345), "sub_second": "0123456", "utc_offset": timedelta(minutes=-210)},
    ),
    (["-ShutterSpeedValue=1/64"], {"exposure_time": Fraction(1, 64), "derived": frozenset({"exposure_time"})}),
    (["-DateTimeOriginal=2024:02:31 12:00:01"], {"taken": None, "damaged": frozenset({"taken"})}),
    (["-XMP-dc:Title=one", "-XMP-xmp:Rating=4"], {"title": "one", "rating": 4, "keywords": ()}),
    (["-IPTC:Keywords=a", "-IPTC:Keywords=b", "-EXIF:Artist=Ada"], {"keywords": ("a", "b"), "artist": "Ada"}),
    (["-EXIF:ImageDescription=sun", "-EXIF:Software=1.0"], {"description": "sun", "software": "1.0"}),
    ([], {"model": None, "exposure_time": None, "iso_speed": None, "title": None, "keywords": (), "broken_at": None}),
    ([], {"width": 648, "height": 432, "container": "JPEG", "damaged": frozenset()}),
]


@pytest.mark.parametrize("tags, expected", VALUES, ids=lambda value: str(value)[:40])
def test_values(make_photo, tags, expected):
    photo = tvmeta.read(make_photo(*tags))
    for name, value in expected.items():
        found = getattr(photo, name)
        assert found == value and type(found) is (Fraction if value == 30 else type(value)), name


def test_bytes_are_content_and_no_path():
    with pytest.raises(ValueError, match="null byte"):
        tvmeta.read(f"{SCENE}\0.jpg")
    with pytest.raises(tvmeta.FormatError, match="starts with"):
        tvmeta.read(os.fsencode(SCENE))


KINDS = {
    "os.PathLike": lambda path: path,
    "memoryview": lambda path: memoryview(path.read_bytes())[::1],
    "file object": lambda path: io.BytesIO(path.read_bytes()),
}


@pytest.mark.parametrize("kind", KINDS.values(), ids=KINDS.keys())
def test_sources(kind):
    source, expected = kind(SCENE), tvmeta.read(SCENE)
    if hasattr(source, "seek"):
        source.seek(7)
    photo = tvmeta.read(source)
    assert photo.path in (None, SCENE, str(SCENE)) and photo.fields()["isoSpeed"] == 200
    assert (photo.taken, photo.keywords, photo.gps_time) == (expected.taken, expected.keywords, expected.gps_time)
    assert (photo.xmp(), photo.thumbnail(), photo.tags()) == (expected.xmp(), expected.thumbnail(), expected.tags())
    assert not hasattr(source, "seek") or source.tell() == 7


class Broken(io.BytesIO):
    """A file object that fails, or that returns what it is told."""

    def __init__(self, content, result):
        super().__init__(content)
        self.result = result

    def read(self, size=-1):
        if isinstance(self.result, Exception):
            raise self.result
        if self.tell() > 0:
            return super().read(size)
        self.seek(len(self.result))
        return self.result


def test_file_objects_that_fail():
    content = SCENE.read_bytes()
    for result, kind in ((OSError(5, "gone"), OSError), (KeyError("key"), KeyError), ("text", TypeError)):
        with pytest.raises(kind):
            tvmeta.read(Broken(content, result))
    assert tvmeta.read(Broken(content, content)).model == "TV-100"  # more bytes than it was asked for
    assert tvmeta.read(Broken(content, content[:9])).model == "TV-100"  # fewer
    with pytest.raises(io.UnsupportedOperation), subprocess.Popen(["true"], stdout=subprocess.PIPE) as process:
        tvmeta.read(process.stdout)
    for wrong in (7, None, [content], io.StringIO("text"), numpy.zeros((4, 4))[:, ::2].data):
        with pytest.raises(TypeError):
            tvmeta.read(wrong)


def test_blocks_are_those_of_other_programs(tmp_path, make_photo):
    photo = tvmeta.read(SCENE)
    assert photo.thumbnail() == exiftool("-b", "-ThumbnailImage", SCENE)
    assert photo.iptc() == exiftool("-b", "-IPTC", SCENE)
    assert photo.xmp() == exiftool("-b", "-XMP", SCENE)
    profile = tmp_path / "profile.icc"
    profile.write_bytes(struct.pack(">I8x4s4s16x4s92x", 132, b"mntr", b"RGB ", b"acsp"))
    other = make_photo("-XMP-dc:Title=no settings", f"-ICC_Profile<={profile}")
    assert b"no settings" in tvmeta.read(other).xmp() == exiftool("-b", "-XMP", other)
    assert tvmeta.read(other).icc() == profile.read_bytes()
    bare = tvmeta.read(make_photo(name="bare.jpg"))
    assert [bare.exif(), bare.thumbnail(), bare.iptc(), bare.xmp(), bare.icc(), bare.preview()] == [b""] * 6


def test_tags_have_places(make_photo):
    path = make_photo("-Model=Käfer 1", "-GPSLatitude=33.75", "-GPSLatitudeRef=S", "-FNumber=2.8")
    data, tags = path.read_bytes(), {(t.directory.name, t.tag): t for t in tvmeta.read(path).tags()}
    model = tags["IMAGE", 272]
    assert data[model.position :].startswith("Käfer 1\0".encode()) and model.value_count == 9
    stop = tags["EXIF", 33437]
    order = ">" if stop.is_big_endian else "<"
    assert (stop.type, struct.unpack_from(order + "II", data, stop.position)) == (5, (14, 5))
    assert tags["GPS", 1].directory_number == tags["GPS", 2].directory_number != stop.directory_number


def test_blocks_of_a_file_that_changes(tmp_path):
    path = tmp_path / "photo.jpg"
    path.write_bytes(SCENE.read_bytes())
    photo = pickle.loads(pickle.dumps(tvmeta.read(path)))
    before = set(os.listdir("/proc/self/fd"))
    assert len(photo.xmp()) == 2767 and set(os.listdir("/proc/self/fd")) == before
    path.write_bytes(SCENE.read_bytes().replace(b"shadows", b"SHADOWS"))
    assert b"SHADOWS" in photo.iptc()
    for content in (SCENE.read_bytes()[:5000], b"\xff\xd8\xff\xd9", b""):
        path.write_bytes(content)
        with pytest.raises(tvmeta.FormatError, match="photo.jpg: has changed"):
            photo.xmp()
    path.unlink()
    with pytest.raises(FileNotFoundError):
        photo.tags()


BROKEN = [
    ("empty", b"", -2, "not a photograph: empty"),
    ("text", b"hello", -2, "starts with 68 65 6c 6c"),
    ("video", b"\0\0\0\x18ftypmp42" + bytes(12), -3, "MP4 files are not supported"),
]


@pytest.mark.parametrize("name, content, code, reason", BROKEN, ids=[case[0] for case in BROKEN])
def test_broken_files(tmp_path, name, content, code, reason):
    path = tmp_path / name
    path.write_bytes(content)
    for source, shown in ((path, str(path)), (content, None)):
        with pytest.raises(tvmeta.FormatError, match=reason) as caught:
            tvmeta.read(source)
        failure = pickle.loads(pickle.dumps(caught.value))
        assert isinstance(failure, OSError) and (failure.code, failure.path, failure.filename) == (code, shown, shown)
        assert str(failure).startswith(f"{path}: " if shown else "not a photograph: " if code == -2 else reason)


def test_files_that_cannot_be_opened(tmp_path):
    os.mkfifo(tmp_path / "pipe")
    found = [
        (tmp_path / "none.jpg", FileNotFoundError, errno.ENOENT),
        (tmp_path, IsADirectoryError, errno.EISDIR),
        (tmp_path / "pipe", tvmeta.FileError, None),
        ("/dev/zero", tvmeta.FileError, None),
    ]
    for path, kind, number in found:
        with pytest.raises(kind, match="No such|directory|not a regular file") as caught:
            tvmeta.read(path)
        failure = pickle.loads(pickle.dumps(caught.value))
        assert isinstance(failure, tvmeta.FileError) and isinstance(failure, kind)
        assert (failure.filename, failure.errno) == (str(path), number)


def test_damage_after_the_metadata():
    content = SCENE.read_bytes()
    scan = content.rindex(b"\xff\xda")
    photo = tvmeta.read(content[:scan] + b"no marker")
    assert (photo.broken_at, photo.damage) == (scan, f"damaged at byte {scan}; the rest was read")
    assert photo.xmp() == exiftool("-b", "-XMP", SCENE)


def test_compressed_blocks_are_refused():
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + bytes(4)

    header = struct.pack(">IIBBBBB", 2, 1, 8, 2, 0, 0, 0)
    png = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"iCCP", b"name\0\0data") + chunk(b"IEND", b"")
    with pytest.raises(tvmeta.FormatError, match="the ICC profile is compressed"):
        tvmeta.read(png).icc()


def test_fields_are_those_of_the_tool(tmp_path, make_photo):
    for number, (tags, _) in enumerate(VALUES):
        make_photo(*tags, name=f"{number}.jpg")
    for name in (b"caf\xe9", b"new\nline", "ot\u202eher".encode(), "no\u00a0break \u200d".encode()):
        write(os.path.join(os.fsencode(tmp_path), name), SCENE.read_bytes())
    builder = os.environ.get("TVMETA_PHOTOGRAPH_FILES")  # of every container
    if builder:
        subprocess.run([builder, tmp_path], check=True)
        (tmp_path / "expected.jsonl").unlink()
    paths = sorted(path for path in tmp_path.iterdir() if path.is_file()) + [SCENE]
    command = [os.environ["TVMETA_TOOL"], "info", "--json", "--", *paths]
    lines = subprocess.run(command, capture_output=True).stdout.splitlines()
    assert len(lines) == len(paths) >= 25
    for path, line in zip(paths, lines):
        expected, found = json.loads(line), tvmeta.read(path).fields()
        for key in expected.keys() | found.keys():
            value = expected.get(key)
            equal = pytest.approx(value, rel=1e-15) if isinstance(value, float) else value
            assert found.get(key) == equal, (path.name, key)
        assert list(found) == list(expected)


def test_libraries_of_other_versions_are_refused(monkeypatch):
    for version in ((1, 99), (0, 0), (2, 0)):
        monkeypatch.setattr(_library, "VERSION", version)
        with pytest.raises(ImportError, match=rf"is version 1\.\d+\.\d+; tvmeta requires {version[0]}\.{version[1]}$"):
            _library._load()
    monkeypatch.setattr(_library, "VERSION", (1, 0))
    assert _library._load().tvmeta_version().startswith(b"1.")
