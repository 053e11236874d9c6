#include "writers/kept_tags.h"

#include "tvmeta_photo.h"

#include <algorithm>
#include <iterator>

namespace tvmeta {

namespace {

// The tags from `first` to `last` in the directory. Of overlapping rows the first counts.
struct Rule {
    std::int32_t directory;
    std::uint16_t first;
    std::uint16_t last;
    Fate fate;
};

// Image directory: TIFF 6.0, its supplements, TIFF/EP and DNG. Others: EXIF 3.0.
constexpr Rule Rules[] = {
    {TVMETA_IMAGE, 0, 253, Fate::Private},       // sensor data of RW2
    {TVMETA_IMAGE, 254, 259, Fate::OfItsPixels}, // kind, size, bits, compression
    {TVMETA_IMAGE, 262, 266, Fate::OfItsPixels}, // photometric interpretation, halftoning, fill order
    {TVMETA_IMAGE, 273, 273, Fate::OfItsFile},   // strip offsets
    {TVMETA_IMAGE, 274, 274, Fate::Replaced},    // orientation
    {TVMETA_IMAGE, 277, 281, Fate::OfItsPixels}, // samples, strips, extreme values
    {TVMETA_IMAGE, 282, 283, Fate::Resolution},  // resolution
    {TVMETA_IMAGE, 284, 284, Fate::OfItsPixels}, // planes
    {TVMETA_IMAGE, 286, 287, Fate::OfItsPixels}, // position on a page
    {TVMETA_IMAGE, 288, 289, Fate::OfItsFile},   // free space in the file
    {TVMETA_IMAGE, 290, 293, Fate::OfItsPixels}, // response curves, fax options
    {TVMETA_IMAGE, 296, 296, Fate::Resolution},  // resolution unit
    {TVMETA_IMAGE, 297, 297, Fate::OfItsFile},   // page number
    {TVMETA_IMAGE, 300, 301, Fate::OfItsPixels}, // transfer function
    {TVMETA_IMAGE, 305, 305, Fate::Software},
    {TVMETA_IMAGE, 306, 306, Fate::Replaced},        // modification time
    {TVMETA_IMAGE, 317, 328, Fate::OfItsPixels},     // predictor, white point, colour map, tiles, damaged fax rows
    {TVMETA_IMAGE, 330, 330, Fate::OfItsFile},       // sub-images
    {TVMETA_IMAGE, 332, 336, Fate::OfItsPixels},     // inks
    {TVMETA_IMAGE, 338, 347, Fate::OfItsPixels},     // extra samples, sample format, clip path, JPEG tables
    {TVMETA_IMAGE, 351, 351, Fate::OfItsPixels},     // OPI proxy
    {TVMETA_IMAGE, 400, 435, Fate::OfItsPixels},     // fax profiles
    {TVMETA_IMAGE, 512, 532, Fate::OfItsPixels},     // JPEG streams and colour differences
    {TVMETA_IMAGE, 559, 559, Fate::OfItsPixels},     // strip row counts
    {TVMETA_IMAGE, 700, 700, Fate::Block},           // XMP
    {TVMETA_IMAGE, 33421, 33422, Fate::OfItsPixels}, // colour filter array
    {TVMETA_IMAGE, 33432, 33432, Fate::Kept},        // copyright
    {TVMETA_IMAGE, 33434, 33434, Fate::Kept},        // exposure time, which TIFF/EP has here
    {TVMETA_IMAGE, 33437, 33437, Fate::Kept},        // f-number
    {TVMETA_IMAGE, 33723, 33723, Fate::Block},       // IPTC
    {TVMETA_IMAGE, 34665, 34665, Fate::Replaced},    // EXIF directory
    {TVMETA_IMAGE, 34675, 34675, Fate::Block},       // ICC profile
    {TVMETA_IMAGE, 34850, 34850, Fate::Kept},        // exposure program
    {TVMETA_IMAGE, 34853, 34853, Fate::Replaced},    // GPS directory
    {TVMETA_IMAGE, 34855, 34855, Fate::Kept},        // ISO speed
    {TVMETA_IMAGE, 34858, 34859, Fate::Kept},        // time zone, self timer
    {TVMETA_IMAGE, 36867, 36867, Fate::Kept},        // capture time
    {TVMETA_IMAGE, 37377, 37386, Fate::Kept},        // APEX values, flash, focal length
    {TVMETA_IMAGE, 37393, 37396, Fate::Kept},        // image number to subject area
    {TVMETA_IMAGE, 37398, 37398, Fate::OfItsPixels}, // TIFF/EP standard
    {TVMETA_IMAGE, 37399, 37399, Fate::Kept},        // sensing method
    {TVMETA_IMAGE, 40091, 40095, Fate::Kept},        // title, comment, author, keywords, subject
    {TVMETA_IMAGE, 41483, 41483, Fate::Kept},        // flash energy
    {TVMETA_IMAGE, 41486, 41488, Fate::Kept},        // resolution of the focal plane
    {TVMETA_IMAGE, 42032, 42037, Fate::Kept},        // owner, serial numbers, lens
    {TVMETA_IMAGE, 50341, 50341, Fate::OfItsPixels}, // print matching
    {TVMETA_IMAGE, 50706, 50707, Fate::OfItsFile},   // DNG version
    {TVMETA_IMAGE, 50708, 50709, Fate::Kept},        // name of the camera model
    {TVMETA_IMAGE, 50735, 50736, Fate::Kept},        // serial number, lens
    {TVMETA_IMAGE, 50710, 52551, Fate::OfItsPixels}, // other tags of DNG: raw data and its development
    {TVMETA_IMAGE, 59932, 59933, Fate::OfItsFile},   // padding
    {TVMETA_IMAGE, 32768, 65535, Fate::Private},

    {TVMETA_EXIF_DIRECTORY, 36880, 36880, Fate::Replaced},       // time zone of the modification time
    {TVMETA_EXIF_DIRECTORY, 37121, 37122, Fate::OfItsPixels},    // components, compressed bits
    {TVMETA_EXIF_DIRECTORY, 37396, 37396, Fate::KeptAtSameSize}, // subject area
    {TVMETA_EXIF_DIRECTORY, 37500, 37500, Fate::MakerNote},
    {TVMETA_EXIF_DIRECTORY, 37520, 37520, Fate::Replaced}, // fraction of the modification time
    {TVMETA_EXIF_DIRECTORY, 40961, 40961, Fate::ColorSpace},
    {TVMETA_EXIF_DIRECTORY, 40962, 40963, Fate::Replaced},       // size
    {TVMETA_EXIF_DIRECTORY, 40964, 40964, Fate::OfItsFile},      // sound file
    {TVMETA_EXIF_DIRECTORY, 40965, 40965, Fate::Replaced},       // interoperability directory
    {TVMETA_EXIF_DIRECTORY, 41492, 41492, Fate::KeptAtSameSize}, // subject location
    {TVMETA_EXIF_DIRECTORY, 42240, 42240, Fate::OfItsPixels},    // gamma
    {TVMETA_EXIF_DIRECTORY, 59932, 59933, Fate::OfItsFile},      // padding

    {TVMETA_GPS_DIRECTORY, 65535, 65535, Fate::Private}, // all tags would exceed a 16-bit number of entries

    {TVMETA_INTEROPERABILITY, 4096, 4098, Fate::OfItsFile}, // format and size of a related file

    {TVMETA_THUMBNAIL_IMAGE, 0, 65535, Fate::OfItsPixels},
    {TVMETA_SUB_IMAGE, 0, 65535, Fate::OfItsPixels},
};

} // namespace

Fate fateOf(std::int32_t directory, std::uint16_t tag) {
    const auto* const rule = std::ranges::find_if(
        Rules, [=](const Rule& row) { return row.directory == directory && row.first <= tag && tag <= row.last; });
    return rule != std::end(Rules) ? rule->fate : Fate::Kept;
}

} // namespace tvmeta
