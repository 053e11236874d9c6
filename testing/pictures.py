"""Writes pictures of a few pixels, with headers of many kinds, for a test of the tool: pictures.py DIR PROFILE."""
import os
import struct
import sys

os.chdir(sys.argv[1])
profile = open(sys.argv[2], "rb").read()


def save(name, content):
    """Write a file."""
    with open(name, "wb") as file:
        file.write(content)


# OpenEXR: channels have the types 0 (whole numbers), 1 (half) and 2 (float), and are in the order of their names.
def attribute(name, kind, value):
    """Return an entry of an OpenEXR header."""
    return name.encode() + b"\0" + kind.encode() + b"\0" + struct.pack("<I", len(value)) + value


def exr_header(channels, *more, name="", kind="", window=(0, 0, 0, 0), sampling=1):
    """Return the OpenEXR header of a file or part."""
    entries = [label.encode() + b"\0" + struct.pack("<IB3xII", code, 0, sampling, sampling) for label, code in channels]
    box = struct.pack("<4i", *window)
    header = attribute("channels", "chlist", b"".join(entries) + b"\0") + attribute("compression", "compression", b"\0")
    header += attribute("dataWindow", "box2i", box) + attribute("displayWindow", "box2i", box)
    header += attribute("lineOrder", "lineOrder", b"\0") + attribute("pixelAspectRatio", "float", struct.pack("<f", 1))
    header += attribute("screenWindowCenter", "v2f", bytes(8)) + attribute(
        "screenWindowWidth", "float", struct.pack("<f", 1)
    )
    if kind:
        header += attribute("name", "string", name.encode()) + attribute("type", "string", kind.encode())
        header += attribute("chunkCount", "int", struct.pack("<i", 1))
    return header + b"".join(more) + b"\0"


def exr(channels, pixels, row=0, **options):
    """Return an OpenEXR file of one row."""
    start = b"\x76\x2f\x31\1\2\0\0\0" + exr_header(channels, **options)
    return start + struct.pack("<Qii", len(start) + 8, row, len(pixels)) + pixels


RGB = (("B", 2), ("G", 2), ("R", 2))
DEEP = [attribute(name, "int", struct.pack("<i", 1)) for name in ("version", "maxSamplesPerPixel")]
deep = (exr_header(RGB, *DEEP, name="deep", kind="deepscanline"), struct.pack("<iQQQi3f", 0, 4, 12, 12, 1, 1, 2, 3))


def flat(name, *values):
    """Return header and chunk of an OpenEXR part."""
    return exr_header(RGB, name=name, kind="scanlineimage"), struct.pack("<ii3f", 0, 12, *values)


def exr_parts(*parts):
    """Return an OpenEXR file of several parts."""
    headers = b"".join(header for header, _ in parts) + b"\0"
    place, table, chunks = 8 + len(headers) + 8 * len(parts), b"", b""
    for number, (_, chunk) in enumerate(parts):
        table += struct.pack("<Q", place + len(chunks))
        chunks += struct.pack("<i", number) + chunk
    return b"\x76\x2f\x31\1" + struct.pack("<I", 0x1802 if deep in parts else 0x1002) + headers + table + chunks


single = b"\x76\x2f\x31\1\2\x08\0\0" + deep[0]
save("deep.exr", single + struct.pack("<Q", len(single) + 8) + deep[1])
save("two.exr", exr_parts(flat("a", 0.25, 0.5, 8), flat("b", 1, 2, 4)))
save("flat-deep.exr", exr_parts(flat("a", 1, 2, 4), deep))
save("deep-flat.exr", exr_parts(deep, flat("a", 1, 2, 4)))
save("whole.exr", exr([(name, 0) for name in "BGR"], struct.pack("<3I", 7, 8, 9)))
save("mixed.exr", exr((("B", 1), ("G", 2), ("R", 1)), struct.pack("<efe", 0.5, 1, 2)))
save("more.exr", exr((("A", 1), *RGB, ("X", 1), ("Z", 1)), struct.pack("<e3f2e", 1, 1, 2, 3, 4, 5)))
save("mask.exr", exr((*RGB, ("Z", 1)), struct.pack("<3fe", 1, 2, 3, 4)))
save("y.exr", exr((("Y", 2), ("Z", 1)), struct.pack("<fe", 2, 3)))
save("colour-differences.exr", exr([(name, 1) for name in ("BY", "RY", "Y")], bytes(6)))
save("no-blue.exr", exr((("G", 1), ("R", 1), ("Y", 1)), bytes(6)))
save("subsampled.exr", exr(RGB, bytes(12), sampling=2, window=(0, 0, 1, 1)))
save("window.exr", exr((("Y", 2),), struct.pack("<2f", 5, 6), window=(-3, -2, -2, -2), row=-2))
save("wide.exr", exr((("Y", 2),), b"", window=(0, 0, 1 << 16, 0)))

# Radiance HDR. The exponent 129 means units of 1/128, 0 means black.
PIXEL = b"\x80\x40\x20\x81"
for name, lines, rest in (
    ("plain", "", b"-Y 1 +X 1\n" + PIXEL),
    ("other-first-line", "x\n", b"-Y 1 +X 1\n" + PIXEL),
    ("format", "FORMAT=32-bit_rle_rgbe\n", b"-Y 1 +X 1\n" + PIXEL),
    ("xyze", "FORMAT=32-bit_rle_xyze\n", b"-Y 1 +X 1\n" + PIXEL),
    ("turned", "", b"+X 1 -Y 1\n" + PIXEL),
    ("mirrored", "", b"-Y 1 -X 1\n" + PIXEL),
    ("empty-width", "", b"-Y 1 +X 0\n" + PIXEL),
    ("exposure", "EXPOSURE= 0.5 \nEXPOSURE=4\n", b"-Y 1 +X 1\n" + PIXEL),
    ("exposure-0", "EXPOSURE=0\n", b"-Y 1 +X 1\n" + PIXEL),
    ("exposure-x", "EXPOSURE=1x\n", b"-Y 1 +X 1\n" + PIXEL),
    ("exposure-2", "EXPOSURE=1 2\n", b"-Y 1 +X 1\n" + PIXEL),
    ("exposure-large", "EXPOSURE=1e300\nEXPOSURE=1e300\n", b"-Y 1 +X 1\n" + PIXEL),
    ("correction", "COLORCORR= 1 2 4\n", b"-Y 1 +X 1\n" + PIXEL),
    ("correction-2", "COLORCORR= 1 2\n", b"-Y 1 +X 1\n" + PIXEL),
    ("long", "x" * 4095 + "\n", b"-Y 1 +X 1\n" + PIXEL),
    ("too-long", "x" * 4096 + "\n", b"-Y 1 +X 1\n" + PIXEL),
    ("black", "", b"-Y 1 +X 2\n\xff\xff\xff\0" + PIXEL),
    ("old-runs", "", b"-Y 1 +X 2\n" + PIXEL + b"\1\1\1\1"),
    ("seven", "", b"-Y 1 +X 7\n" + b"\2\2\0\7" + PIXEL * 6),
    ("runs", "", b"-Y 1 +X 8\n\2\2\0\x08" + b"\x88\x80" + b"\x84\x40\4\1\2\3\4" + b"\x88\x20" + b"\x88\x81"),
    ("other-width", "", b"-Y 1 +X 8\n\2\2\0\x09" + PIXEL * 7),
    ("long-run", "", b"-Y 1 +X 8\n\2\2\0\x08\x89\x80" + bytes(40)),
    ("long-copy", "", b"-Y 1 +X 8\n\2\2\0\x08\x09\x80" + bytes(40)),
    ("no-run", "", b"-Y 1 +X 8\n\2\2\0\x08\0" + bytes(40)),
    ("cut", "", b"-Y 1 +X 1\n\x80\x40\x20"),
):
    save(name + ".hdr", b"#?RADIANCE\n" + lines.encode() + b"\n" + rest)

# PGM, PPM and PFM.
for name, content in (
    ("comments.pgm", b"P5#a\n#b\n \t2 # c\n1\r\n255\n\1\2"),
    ("width-0.pgm", b"P5 0 1 255 a"),
    ("height-less.pgm", b"P5 1 -1 255 a"),
    ("height-x.pgm", b"P5 1 1x 255 a"),
    ("no-height.pgm", b"P5 1"),
    ("white-256.pgm", b"P5 1 1 256 ab"),
    ("no-white.pgm", b"P5 1 1"),
    ("cut.pgm", b"P5 2 1 255 a"),
    ("longer.pgm", b"P5 1 1 255 ab"),
    ("large.pfm", b"Pf 1 1 1\n" + struct.pack(">f", 2.5)),
    ("little.pfm", b"Pf 1 1 -1\n" + struct.pack("<f", 2.5)),
    ("scale.pfm", b"Pf 1 1 -2\n" + struct.pack("<f", 2.5)),
    ("small-scale.pfm", b"Pf 1 1 1e-9\n" + struct.pack(">f", 2.5)),
    ("scale-0.pfm", b"Pf 1 1 0\n" + bytes(4)),
    ("scale-x.pfm", b"Pf 1 1 x\n" + bytes(4)),
):
    save(name, content)


def page(place, **changes):
    """Return the TIFF directory of one pixel, and the values after it; changes are tNUMBER=(type, value)."""
    tags = {
        256: (4, 1),
        257: (4, 1),
        258: (3, 8),
        259: (3, 1),
        262: (3, 2),
        273: (4, 8),
        277: (3, 3),
        278: (4, 1),
        279: (4, 3),
    }
    tags.update({int(tag[1:]): value for tag, value in changes.items()})
    entries, extra, after = b"", b"", place + 2 + 12 * len(tags) + 4
    for tag, (kind, value) in sorted(tags.items()):
        if isinstance(value, bytes):
            size = {3: 2, 5: 8, 7: 1}[kind]
            if len(value) > 4:
                entries += struct.pack("<HHII", tag, kind, len(value) // size, after + len(extra))
                extra += value + bytes(len(value) % 2)
            else:
                entries += struct.pack("<HHI", tag, kind, len(value) // size) + value.ljust(4, b"\0")
        else:
            entries += struct.pack("<HHII", tag, kind, 1, value)
    return struct.pack("<H", len(tags)) + entries, extra


def tiff(name, pixels, *pages):
    """Write a TIFF file of pages with these changes."""
    content, place = pixels, 8 + len(pixels)
    for number, changes in enumerate(pages):
        directory, extra = page(place, **changes)
        place += len(directory) + 4 + len(extra)
        content += directory + struct.pack("<I", place if number + 1 < len(pages) else 0) + extra
    save(name + ".tif", b"II*\0" + struct.pack("<I", 8 + len(pixels)) + content)


icc = {"t34675": (7, profile)}
other = {"t34675": (7, profile.replace(b"A wide", b"Narrow"))}
second = {"t273": (4, 12)}
GREY = {"t262": (3, 1), "t277": (3, 1), "t279": (4, 4)}
COLOUR = bytes(range(1, 13))
tiff("one", COLOUR, icc)
tiff("later-profile", COLOUR, {}, icc)
tiff("two-profiles", COLOUR, icc, other)
tiff("copy-first", COLOUR, {"t254": (4, 1), **icc}, {**second, **other})
tiff("old-copy-first", COLOUR, {"t255": (3, 2), **icc}, second)
tiff("mask-first", COLOUR, {"t254": (4, 4)}, {**second, **icc})
tiff("copy-later", COLOUR, icc, {"t254": (4, 1), **other})
tiff("copies", COLOUR, {"t254": (4, 1), **icc}, {"t254": (4, 1), **second})
tiff("page", COLOUR, {"t254": (4, 2), **icc}, {"t254": (4, 2)})
# The full picture is below the reduced one (tag 330), not after it.
reduced, full = (page(0, **changes)[0] + bytes(4) for changes in ({"t254": (4, 1), "t330": (4, 158)}, second))
save("below.tif", b"II*\0" + struct.pack("<I", 20) + COLOUR + reduced + full)
tiff("primaries", COLOUR, {"t319": (5, struct.pack("<12I", 64, 100, 33, 100, 3, 10, 6, 10, 15, 100, 6, 100))})
tiff("float-white-0", struct.pack("<f", 1), {**GREY, "t258": (3, 32), "t339": (3, 3), "t262": (3, 0)})
tiff("white-0", b"\1", {**GREY, "t262": (3, 0), "t279": (4, 1)})
tiff("signed", b"\1", {**GREY, "t339": (3, 2), "t279": (4, 1)})
tiff("untyped", b"\1", {**GREY, "t339": (3, 4), "t279": (4, 1)})
tiff("whole-32", b"\1\0\0\0", {**GREY, "t258": (3, 32)})
tiff("palette", b"\1", {"t262": (3, 3), "t277": (3, 1), "t279": (4, 1), "t320": (3, bytes(1536))})
tiff("lab", COLOUR, {"t262": (3, 8)})
tiff("sensor", b"\1", {**GREY, "t262": (3, 32803)})
tiff("unknown", COLOUR, {"t262": (3, 99)})
tiff("two-samples", COLOUR, {"t277": (3, 2), "t279": (4, 2)})
tiff("packed", COLOUR, {"t259": (3, 65000)})
for name, kind in (("unknown-alpha", 0), ("associated", 1), ("unassociated", 2)):
    tiff(name, COLOUR, {"t277": (3, 4), "t279": (4, 4), "t338": (3, kind)})
tiff("two-more", COLOUR, {"t277": (3, 5), "t279": (4, 5), "t338": (3, struct.pack("<2H", 0, 0))})
tiff("orientation-9", COLOUR, {"t274": (3, 9)})
tiff("orientation-7", COLOUR, {"t274": (3, 7)})
for name, unit in (("inch", 2), ("centimetre", 3)):
    tiff(
        name,
        COLOUR,
        {"t282": (5, struct.pack("<2I", 100, 1)), "t283": (5, struct.pack("<2I", 100, 1)), "t296": (3, unit)},
    )
