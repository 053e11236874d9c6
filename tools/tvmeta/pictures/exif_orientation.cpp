#include "pictures/exif_orientation.h"

#include <tvmeta_photo.h>

#include <iterator>

std::optional<int32_t> exifOrientation(std::span<const unsigned char> structure) {
    tvmeta_Source source;
    tvmeta_Photo photo = {};
    photo.recordSize = sizeof photo;
    tvmeta_memory(structure.data(), std::ssize(structure), &source);
    tvmeta_read_photo(&source, &photo); // what a damaged structure still contains counts
    return TVMETA_HAS(&photo, TVMETA_ORIENTATION) ? std::optional(photo.orientation) : std::nullopt;
}
