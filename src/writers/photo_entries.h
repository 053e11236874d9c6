// Writers: the entries of a photograph that its result keeps, in memory and in little-endian order.
#pragma once

#include "metadata/source_reader.h"
#include "support/zeroed_buffer.h"
#include "writers/losses.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tvmeta {

struct KeptEntry {
    tvmeta_Tag tag;
    std::span<const unsigned char> value;
};

// What a result keeps besides what every one keeps.
struct KeptValues {
    bool resolution;
    bool software;
    bool colorSpace;
};

class PhotoEntries {
  public:
    // Chooses the entry, or names it as lost. Returns false without memory.
    bool offer(SourceReader& reader, const tvmeta_Tag& tag, KeptValues kept, LossList& losses);

    // Reads the values of the chosen entries, and drops those that are true of a result of the same size only.
    // Returns a status.
    std::int32_t readValues(SourceReader& reader, bool isSameSize, LossList& losses);

    std::span<const KeptEntry> entries() const { return {entries_, count_}; }

  private:
    unsigned char& seen(const tvmeta_Tag& tag);
    bool append(const tvmeta_Tag& tag);

    ZeroedBuffer seen_{(TVMETA_SUB_IMAGE + 1) << 16}; // a byte for each tag of each directory
    ZeroedBuffer entryBlock_;
    ZeroedBuffer values_;
    KeptEntry* entries_ = nullptr; // in entryBlock_
    std::size_t count_ = 0;
    std::uint64_t valueBytes_ = 0;
};

} // namespace tvmeta
