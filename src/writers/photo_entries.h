// Writers: the entries of a photograph that its result keeps, in memory and in little-endian order.
#pragma once

#include "photo/open_photo.h"
#include "support/zeroed_buffer.h"
#include "writers/losses.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tvmeta {

struct KeptEntry {
    std::int32_t directory;
    std::uint16_t tag;
    std::uint16_t type;
    std::uint64_t count;
    std::span<const unsigned char> value;
};

// What a result keeps besides what every one keeps.
struct KeptValues {
    bool positions; // in the picture
    bool resolution;
    bool software;
    bool colorSpace;
};

class PhotoEntries {
  public:
    // Reads what the result keeps, and names what it loses. Returns a status.
    std::int32_t load(const tvmeta_Source& photo, KeptValues kept, LossList& losses);

    std::span<const KeptEntry> entries() const { return {entries_, count_}; }

    // Null if the photograph has no such entry.
    const KeptEntry* find(std::int32_t directory, std::uint16_t tag) const;

  private:
    ZeroedBuffer entryBlock_;
    ZeroedBuffer values_;
    KeptEntry* entries_ = nullptr;
    std::size_t count_ = 0;
};

} // namespace tvmeta
