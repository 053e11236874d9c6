// Photo: the entries of a photograph that its record is made of.
#pragma once

#include "tvmeta_photo.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tvmeta {

// Of several entries with a tag, the first counts.
class TagSet {
  public:
    void offer(const tvmeta_Tag& tag);

    // The entry of a directory; null if there is none.
    const tvmeta_Tag* find(std::int32_t directory, std::uint16_t tag) const;

    // Raw files have EXIF tags in their first directory too (TIFF/EP).
    const tvmeta_Tag* exif(std::uint16_t tag) const;
    const tvmeta_Tag* image(std::uint16_t tag) const { return find(TVMETA_IMAGE, tag); }
    const tvmeta_Tag* gps(std::uint16_t tag) const { return find(TVMETA_GPS_DIRECTORY, tag); }

  private:
    std::array<tvmeta_Tag, 96> tags_;
    std::size_t count_ = 0;
};

} // namespace tvmeta
