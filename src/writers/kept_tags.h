// Writers: which entries of a photograph a result keeps, and why it does not keep the others.
#pragma once

#include <cstdint>

namespace tvmeta {

enum class Fate {
    Kept,
    KeptAtSameSize, // positions in the picture: true of a result of the same size
    Resolution,     // kept unless the caller gives one
    Software,       // likewise
    ColorSpace,     // kept unless a profile or the samples say another
    Replaced,       // the result has a value of its own, or none because the caller gave none
    OfItsPixels,    // how the photograph's own pixels are stored or to be interpreted
    OfItsFile,      // places in the photograph's file, or names of files beside it
    Block,          // XMP, IPTC and ICC, which are handled as blocks
    MakerNote,      // kept only if its offsets count from its own start
    Private,        // of a raw format or a program; unknown, so that nobody can say whether it is true
};

// What becomes of an entry with this tag in a directory of the photograph.
Fate fateOf(std::int32_t directory, std::uint16_t tag);

} // namespace tvmeta
