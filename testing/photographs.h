// Photographs with every kind of metadata.
#pragma once

#include "testing/bytes.h"

namespace test {

// A TIFF file with every tag that the library reads. The entries of the EXIF directory are in ascending order.
inline Bytes fullTiff(bool little) {
    Tiff tiff(little);
    const std::uint32_t exif =
        tiff.add({tiff.rationalEntry(33434, 1, 60), tiff.rationalEntry(33437, 28, 10), tiff.shortEntry(34855, 400),
                  tiff.textEntry(36867, "2013:05:01 12:00:00"), tiff.rationalEntry(37377, 6, 1),
                  tiff.rationalEntry(37378, 5, 1), tiff.rationalEntry(37386, 50, 1), tiff.rationalEntry(41486, 5000, 1),
                  tiff.shortEntry(41488, 3), tiff.shortEntry(41989, 75)});
    const Bytes position = tiff.rational(48, 1) + tiff.rational(51, 1) + tiff.rational(2996, 100);
    const std::uint32_t gps = tiff.add({{1, 2, 2, "N"},
                                        {2, 5, 3, position},
                                        {3, 2, 2, "E"},
                                        {4, 5, 5, position},
                                        {5, 1, 1, "\x01"},
                                        {6, 5, 1, tiff.rational(35, 1)},
                                        {7, 5, 2, tiff.rational(12, 1) + tiff.rational(30, 1)},
                                        tiff.textEntry(29, "2013:05:01")});
    const std::uint32_t thumbnail = tiff.add({tiff.longEntry(513, 1000), tiff.longEntry(514, 2000)});
    return tiff.finish(tiff.add({tiff.textEntry(272, "TV-100"),
                                 tiff.shortEntry(274, 6),
                                 tiff.longEntry(513, 77),
                                 {700, 1, 500, tiff.n32(3000)},
                                 {33723, 4, 25, tiff.n32(4000)},
                                 tiff.longEntry(34665, exif),
                                 tiff.longEntry(34853, gps)},
                                thumbnail));
}

inline Bytes fullJpeg() {
    const Bytes thumbnail = be32(1) + be32(160) + be32(120) + be32(480) + be32(57600) + be32(3) + be16(24) + be16(1);
    const Bytes resources = resource(0x040C, thumbnail + "JPG") + resource(0x0404, "\x1C\x02\x19\x00\x01k");
    const Bytes packet = lensPacket("<aux:Lens>TV 35mm f/1.8</aux:Lens>") + elementPacket("Fusion/Intensive", "");
    return jpeg(exifSegment(fullTiff(true)) + xmpSegment(packet) +
                segment(0xED, Bytes("Photoshop 3.0\0", 14) + resources));
}

} // namespace test
