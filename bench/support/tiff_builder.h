// Builds a little-endian TIFF structure and records which bytes a reader of its metadata needs.
#pragma once

#include "support/bytes.h"

#include <algorithm>

namespace bench {

// Bytes of a file.
struct Region {
    std::size_t offset;
    std::size_t size;
};

// Does every reader need this value if it is outside of its entry?
enum class Need { Always, Never };

struct Field {
    std::uint32_t tag;
    std::uint32_t type;
    std::uint32_t count;
    Bytes value;
    Need need = Need::Never;
};

inline Field shortField(std::uint32_t tag, std::uint32_t value) {
    return {tag, 3, 1, le16(value)};
}
inline Field longField(std::uint32_t tag, std::uint32_t value) {
    return {tag, 4, 1, le32(value)};
}
inline Field linkField(std::uint32_t tag) { // points to a directory that is added later
    return longField(tag, 0);
}
inline Field textField(std::uint32_t tag, const Bytes& text, Need need = Need::Never) {
    return {tag, 2, sizeOf(text) + 1, text + '\0', need};
}
inline Field rationalField(std::uint32_t tag, std::uint32_t numerator, std::uint32_t denominator,
                           Need need = Need::Never) {
    return {tag, 5, 1, le32(numerator) + le32(denominator), need};
}
inline Field signedRationalField(std::uint32_t tag, std::uint32_t numerator, std::uint32_t denominator) {
    return {tag, 10, 1, le32(numerator) + le32(denominator)};
}
inline Field bytesField(std::uint32_t tag, const Bytes& bytes) {
    return {tag, 7, sizeOf(bytes), bytes};
}

class TiffBuilder {
  public:
    TiffBuilder() : bytes_("II" + le16(42) + le32(0)), needed_{{0, bytes_.size()}} {}

    const Bytes& bytes() const { return bytes_; }
    const std::vector<Region>& needed() const { return needed_; }

    // Appends bytes at an even offset and returns the offset.
    std::uint32_t append(const Bytes& bytes) {
        bytes_.resize(bytes_.size() + bytes_.size() % 2);
        const std::uint32_t offset = sizeOf(bytes_);
        bytes_ += bytes;
        return offset;
    }

    // Appends a directory and its values and returns its offset.
    std::uint32_t addDirectory(const std::vector<Field>& fields) {
        Bytes block = le16(static_cast<std::uint32_t>(fields.size()));
        for (const Field& field : fields) {
            Bytes value = field.value;
            value.resize(std::max(value.size(), EntryValueSize), '\0');
            block += le16(field.tag) + le16(field.type) + le32(field.count) + value.substr(0, EntryValueSize);
        }
        const std::uint32_t directory = append(block + le32(0));
        needed_.push_back({directory, bytes_.size() - directory});
        for (const Field& field : fields) {
            if (field.value.size() > EntryValueSize) {
                addValue(directory, field);
            }
        }
        return directory;
    }

    void linkFirst(std::uint32_t directory) { store(4, directory); }
    void linkNext(std::uint32_t directory, std::uint32_t next) {
        store(directory + 2 + EntrySize * loadLe16(bytes_, directory), next);
    }
    void link(std::uint32_t directory, std::uint32_t tag, std::uint32_t offset) {
        store(entryValue(directory, tag), offset);
    }

    // The offset of a value that is too long for its entry.
    std::uint32_t valueOffset(std::uint32_t directory, std::uint32_t tag) const {
        return loadLe32(bytes_, entryValue(directory, tag));
    }

  private:
    static constexpr std::size_t EntrySize = 12;
    static constexpr std::size_t EntryValueSize = 4;

    void addValue(std::uint32_t directory, const Field& field) {
        const std::uint32_t offset = append(field.value);
        link(directory, field.tag, offset);
        if (field.need == Need::Always) {
            needed_.push_back({offset, field.value.size()});
        }
    }

    std::size_t entryValue(std::uint32_t directory, std::uint32_t tag) const {
        std::size_t entry = directory + 2;
        while (loadLe16(bytes_, entry) != tag) {
            entry += EntrySize;
        }
        return entry + EntrySize - EntryValueSize;
    }

    void store(std::size_t offset, std::uint32_t value) { bytes_.replace(offset, 4, le32(value)); }

    Bytes bytes_;
    std::vector<Region> needed_;
};

} // namespace bench
