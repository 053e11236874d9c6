"""Saved pictures, read by exiftool and numpy."""

import os
import resource
import struct
import tempfile
import warnings
from contextlib import suppress
from datetime import datetime
from pathlib import Path

import numpy
import pytest
import typed_use
from conftest import SCENE, pixels_of, tags_of

import tvmeta

RANDOM = numpy.random.default_rng(5)
BASE = RANDOM.integers(0, 255, (14, 18, 3))
GREY = BASE[:, :, 0]


# Pixels, the array that exiftool and numpy must find, bits and channels.
LAYOUTS = {
    "rgb16": (BASE.astype("u2") * 257, BASE * 257, 16, 3),
    "half": (BASE.astype("f2") / 4, BASE / 4, 16, 3),
    "grey": (GREY.astype("u2"), GREY, 16, 1),
    "one channel": (GREY.astype("u1")[:, :, None], GREY, 8, 1),
    "every other row": (BASE.astype("f4")[1::2], BASE[1::2], 32, 3),
    "bottom up": (BASE.astype("u1")[::-1], BASE[::-1], 8, 3),
    "mirrored": (BASE.astype("u2")[:, ::-1], BASE[:, ::-1], 16, 3),
    "one row for all": (numpy.broadcast_to(BASE[0].astype("u1"), BASE.shape), BASE[[0] * 14], 8, 3),
    "memoryview": (memoryview(bytes(range(24))).cast("B", (2, 4, 3)), numpy.arange(24).reshape(2, 4, 3), 8, 3),
    "alpha": (numpy.dstack([BASE, GREY]).astype("u1"), BASE, 8, 3),
}


@pytest.mark.parametrize("pixels, expected, bits, channels", LAYOUTS.values(), ids=LAYOUTS.keys())
def test_pixels(tmp_path, pixels, expected, bits, channels):
    path = tmp_path / "result.tif"
    with warnings.catch_warnings(record=True) as said:
        warnings.simplefilter("always")
        tvmeta.save_tiff(path, pixels)
    tags = tags_of(path)
    kind = "f" if memoryview(pixels).format in "ef" else "u"
    found = pixels_of(path, f"<{kind}{bits // 8}", expected.shape)
    assert numpy.array_equal(found, expected)
    assert (tags["ImageWidth"], tags["ImageHeight"]) == (expected.shape[1], expected.shape[0])
    assert tags["SamplesPerPixel"] == channels and str(tags["BitsPerSample"]).split()[0] == str(bits)
    assert tags.get("SampleFormat", "1")[0] == ("3" if kind == "f" else "1")
    assert len(said) == (pixels.shape[2:] == (4,)) and all("last of 4 channels" in str(w.message) for w in said)


def test_rows_are_not_copied(tmp_path, monkeypatch):
    from tvmeta import tiff

    seen = []
    monkeypatch.setattr(tiff, "rows_of", lambda view, f=tiff.rows_of: seen.append((view, f(view))) or seen[-1][1])
    padded = numpy.zeros((8, 32, 3), "u1")[::-2, :20]
    tvmeta.save_tiff(tmp_path / "a.tif", padded)
    tvmeta.save_tiff(tmp_path / "b.tif", padded[:, ::2])
    (first, (same, pitch)), (second, (copy, _)) = seen
    assert same is first and pitch == -192 and copy is not second


REFUSED = {
    "big-endian": (numpy.zeros((2, 2), ">u2"), {}, TypeError, "byte order"),
    "float64": (numpy.zeros((2, 2)), {}, TypeError, "format 'd'"),
    "one axis": (numpy.zeros(4, "u1"), {}, ValueError, "shape"),
    "five channels": (numpy.zeros((2, 2, 5), "u1"), {}, ValueError, "shape"),
    "no rows": (numpy.zeros((0, 2), "u1"), {}, ValueError, "shape"),
    "2^32 + 1 rows": (numpy.broadcast_to(GREY[:1, :1].astype("u1"), (2**32 + 1, 1)), {}, ValueError, "shape"),
    "resolution": (GREY.astype("u1"), {"resolution": 2147484}, ValueError, "resolution"),
    "orientation": (GREY.astype("u1"), {"orientation": 9}, ValueError, "orientation"),
    "grey profile": (BASE.astype("u1"), {"icc": bytes(16) + b"GRAY" + bytes(200)}, ValueError, "icc"),
    "one text": (GREY.astype("u1"), {"keywords": "sun"}, TypeError, "sequence of texts"),
    "empty keyword": (GREY.astype("u1"), {"keywords": [""]}, ValueError, "keywords"),
    "long keyword": (GREY.astype("u1"), {"keywords": ["x" * 32768]}, ValueError, "32768 bytes"),
    "null byte": (GREY.astype("u1"), {"software": "a\0b"}, ValueError, "software"),
    "no photograph": (GREY.astype("u1"), {"photo": b"text"}, tvmeta.FormatError, "not a photograph"),
    "no photo": (GREY.astype("u1"), {"photo": "/none.jpg"}, FileNotFoundError, "/none.jpg"),
}


@pytest.mark.parametrize("pixels, options, kind, reason", REFUSED.values(), ids=REFUSED.keys())
def test_refused_pictures_leave_the_old_file(tmp_path, pixels, options, kind, reason):
    path = tmp_path / "old.tif"
    path.write_bytes(b"old")
    with pytest.raises(kind, match=reason):
        tvmeta.save_tiff(path, pixels, **options)
    assert path.read_bytes() == b"old" and os.listdir(tmp_path) == ["old.tif"]


def test_targets(tmp_path):
    pixels = GREY.astype("u1")
    for path, kind in ((tmp_path / "none" / "a.tif", FileNotFoundError), (tmp_path, IsADirectoryError)):
        with pytest.raises(kind):
            tvmeta.save_tiff(path, pixels)
    with pytest.raises(tvmeta.FileError, match="not a regular file"):
        tvmeta.save_tiff("/dev/full", pixels)
    (tmp_path / "target.tif").write_bytes(b"old")
    (tmp_path / "link.tif").symlink_to("target.tif")
    tvmeta.save_tiff(os.fsencode(tmp_path / "link.tif"), pixels)
    assert (tmp_path / "link.tif").is_symlink()
    assert numpy.array_equal(pixels_of(tmp_path / "target.tif", "u1", GREY.shape), GREY)
    umask = os.umask(0o27)
    tvmeta.save_tiff(tmp_path / "new.tif", pixels)
    os.umask(umask)
    assert (tmp_path / "new.tif").stat().st_mode & 0o777 == 0o640


def test_a_full_disk_leaves_the_old_file(tmp_path):
    path = tmp_path / "old.tif"
    path.write_bytes(b"old")
    limits = resource.getrlimit(resource.RLIMIT_FSIZE)
    resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 20, limits[1]))
    try:
        with pytest.raises(tvmeta.FileError, match="old.tif: File too large; not written"):
            tvmeta.save_tiff(path, numpy.zeros((900, 900, 3), "u1"))
    finally:
        resource.setrlimit(resource.RLIMIT_FSIZE, limits)
    assert path.read_bytes() == b"old" and os.listdir(tmp_path) == ["old.tif"]


PROFILE = bytes(16) + b"RGB " + bytes(108)


def test_blocks_and_settings(tmp_path):
    photo, path = tvmeta.read(SCENE), tmp_path / "result.tif"
    settings = tvmeta.Settings("Fusion/Intensive", {"Strength": 5})
    lost = tvmeta.save_tiff(
        *(path, BASE.astype("u1")),
        photo=photo,
        icc=PROFILE,
        keywords=["sun", "käfer"],
        settings=settings,
        resolution=240,
        orientation=8,
        software="Maker 7",
        modify_date=datetime(2024, 2, 29, 12, 0, 1, 999999),
    )
    tags = tags_of(path)
    assert lost == [] and (tags["XResolution"], tags["Orientation"], tags["Software"]) == (240, 8, "Maker 7")
    assert (tags["ModifyDate"], tags["Make"]) == ("2024:02:29 12:00:01", "Tonalvista")
    assert tags["Keywords"] == ["sun", "shadows", "käfer"] and tags["Lens"] == "TV 16-50mm f/2.8-4"
    assert (tags["Method"], tags["Strength"]) == ("Fusion/Intensive", 5)
    assert tvmeta.Settings.load(path) == tvmeta.Settings.load(bytes(path)) == settings
    saved = tvmeta.read(path)
    assert (saved.lens, saved.icc(), saved.gps_time) == (photo.lens, PROFILE, photo.gps_time)
    tvmeta.save_tiff(path, GREY.astype("u1"), photo=photo, iptc=b"", xmp=b"<x/>")
    saved = tvmeta.read(path)
    assert (saved.iptc(), saved.xmp(), saved.model) == (b"", b"<x/>", "TV-100")


def test_losses(tmp_path, make_photo, monkeypatch):
    monkeypatch.setattr(tvmeta.tiff, "_USUAL_LOSSES", 0)  # more losses than there is room for
    data = make_photo("-Model=Z", "-PrintIM=", "-XMP-dc:Title=one").read_bytes()
    at = data.index(b"Exif\0\0")  # an entry of a private tag in place of that of YCbCrPositioning
    data = data[:at] + data[at:].replace(b"\x02\x13\0\x03", b"\xfd\xe8\0\x03", 1)
    lost = tvmeta.save_tiff(tmp_path / "result.tif", GREY.astype("u1"), photo=data)
    assert lost == [(tvmeta.Directory.IMAGE, 0xFDE8, tvmeta.LossReason.PRIVATE)]
    tags = tags_of(tmp_path / "result.tif")
    assert (tags["Model"], tags["Title"]) == ("Z", "one")


def test_a_block_is_lost(tmp_path):
    block = b"\x1c\x01\x5a\0\x03\x1b.A\x1c\x02\x19\0\x03one"  # of another encoding than UTF-8
    tvmeta.save_tiff(tmp_path / "photo.tif", GREY.astype("u1"), iptc=block)
    lost = tvmeta.save_tiff(tmp_path / "a.tif", GREY.astype("u1"), photo=tmp_path / "photo.tif", keywords=["käfer"])
    assert lost == [(tvmeta.Block.IPTC, 0, tvmeta.LossReason.CLAMPED)]


def test_a_program_with_types(tmp_path):
    assert typed_use.use(SCENE, tmp_path / "result.tif") == []


WRITERS = {
    "save_tiff": lambda path: tvmeta.save_tiff(path, GREY.astype("u1")),
    "Settings.save": lambda path: tvmeta.Settings(11).save(path),
}


# An access control list as the kernel stores it: owner rw, user 4242 r, group r, mask r, others nothing.
ENTRIES = ((1, 6, 0xFFFFFFFF), (2, 4, 4242), (4, 4, 0xFFFFFFFF), (16, 4, 0xFFFFFFFF), (32, 0, 0xFFFFFFFF))
ACCESS = struct.pack("<I", 2) + b"".join(struct.pack("<HHI", *entry) for entry in ENTRIES)


def attributes_of(path):
    found = path.stat()
    return found.st_mode, found.st_uid, found.st_gid, {name: os.getxattr(path, name) for name in os.listxattr(path)}


@pytest.mark.parametrize("write", WRITERS.values(), ids=WRITERS.keys())
def test_replaced_files_keep_their_attributes(tmp_path, monkeypatch, write):
    path = tmp_path / "old"
    path.write_bytes(b"old")
    if os.geteuid() == 0:
        os.chown(path, 1234, 2345)
    # The first mode is neither that of new files nor that of temporary ones.
    for mode, given in ((0o646, {}), (0o640, {"user.note": b"kept", "system.posix_acl_access": ACCESS})):
        path.chmod(mode)
        for name, value in given.items():
            with suppress(OSError):  # not on every file system
                os.setxattr(path, name, value)
        before, place = attributes_of(path), path.stat().st_ino
        write(path)
        assert attributes_of(path) == before and path.stat().st_ino != place and path.read_bytes() != b"old"
    for name in before[3]:
        os.removexattr(path, name)
    path.chmod(0o664)
    monkeypatch.setattr(os, "fchown", lambda *arguments: os.open("/none/none", os.O_RDONLY))  # as a user who may not
    write(path)
    assert path.stat().st_mode & 0o777 == 0o604  # no rights for another group


@pytest.mark.parametrize("write", WRITERS.values(), ids=WRITERS.keys())
def test_files_that_may_not_be_changed(write):
    with tempfile.TemporaryDirectory(dir="/tmp") as folder:  # where any user may look
        os.chmod(folder, 0o777)
        path = Path(folder, "old")
        path.write_bytes(b"old")
        path.chmod(0o444)
        user = os.geteuid()
        try:
            if user == 0:
                os.seteuid(65534)
            with pytest.raises(PermissionError, match="may not be changed; not written"):
                write(path)
        finally:
            os.seteuid(user)
        assert path.read_bytes() == b"old" and os.listdir(folder) == ["old"]
