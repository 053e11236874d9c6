// Reads the pixels of a little-endian TIFF file from its strips.
#pragma once

#include "support/bytes.h"

#include <span>

namespace bench {

class TiffPixels {
  public:
    explicit TiffPixels(const Bytes& file) : file_(file), directory_(loadLe32(file, 4)) {}

    // Do the strips contain these bytes, in order?
    bool are(std::span<const unsigned char> pixels) const {
        const std::vector<std::uint32_t> offsets = numbers(StripOffsets);
        const std::vector<std::uint32_t> sizes = numbers(StripByteCounts);
        std::size_t done = 0;
        for (std::size_t i = 0; i < offsets.size(); ++i) {
            const std::size_t size = sizes.at(i);
            if (size > pixels.size() - done || size > file_.size() - offsets[i] ||
                std::memcmp(file_.data() + offsets[i], pixels.data() + done, size) != 0) {
                return false;
            }
            done += size;
        }
        return done == pixels.size();
    }

  private:
    static constexpr std::uint32_t StripOffsets = 273;
    static constexpr std::uint32_t StripByteCounts = 279;
    static constexpr std::size_t EntrySize = 12;

    // The numbers of an entry; empty if it is missing.
    std::vector<std::uint32_t> numbers(std::uint32_t tag) const {
        std::vector<std::uint32_t> values;
        const std::uint32_t entries = loadLe16(file_, directory_);
        for (std::size_t i = 0; i < entries; ++i) {
            const std::size_t entry = directory_ + 2 + i * EntrySize;
            if (loadLe16(file_, entry) == tag) {
                load(entry, values);
            }
        }
        return values;
    }

    void load(std::size_t entry, std::vector<std::uint32_t>& values) const {
        constexpr std::uint32_t Short = 3;
        const bool isShort = loadLe16(file_, entry + 2) == Short;
        const std::size_t count = loadLe32(file_, entry + 4);
        const std::size_t size = isShort ? 2 : 4;
        const std::size_t start = count * size > 4 ? loadLe32(file_, entry + 8) : entry + 8;
        for (std::size_t at = start; values.size() < count; at += size) {
            values.push_back(isShort ? loadLe16(file_, at) : loadLe32(file_, at));
        }
    }

    const Bytes& file_;
    std::size_t directory_;
};

} // namespace bench
