// The fields of a little-endian TIFF structure, classic or BigTIFF, read without the library.
#pragma once

#include "testing/bytes.h"

#include <gtest/gtest.h>
#include <map>
#include <utility>

namespace test {

struct TiffField {
    unsigned type;
    std::uint64_t count;
    Bytes value;

    bool operator==(const TiffField&) const = default;
};

enum { ImageFields, ExifFields, GpsFields, InteroperabilityFields };

class TiffFields {
  public:
    // Expects ascending tags, and values inside of the file at even offsets.
    explicit TiffFields(const Bytes& file) : file_(file), isBig_(number(2, 2) == 43) {
        readDirectory(ImageFields, number(isBig_ ? 8 : 4, isBig_ ? 8 : 4));
    }

    bool isBig() const { return isBig_; }
    std::size_t size(int directory) const { return sizes_.contains(directory) ? sizes_.at(directory) : 0; }

    // Null if there is none.
    const TiffField* find(int directory, unsigned tag) const {
        const auto found = fields_.find({directory, tag});
        return found != fields_.end() ? &found->second : nullptr;
    }
    Bytes value(int directory, unsigned tag) const {
        const TiffField* const field = find(directory, tag);
        return field != nullptr ? field->value : Bytes("absent");
    }

  private:
    static std::size_t itemSize(unsigned type) {
        constexpr std::size_t Sizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
        return type == 129 ? 1 : type < std::size(Sizes) ? Sizes[type] : 0;
    }
    std::uint64_t number(std::uint64_t at, std::size_t size) const {
        std::uint64_t value = 0;
        for (std::size_t i = size; i > 0; --i) {
            value = value << 8 | static_cast<unsigned char>(file_.at(static_cast<std::size_t>(at) + i - 1));
        }
        return value;
    }
    void readDirectory(int directory, std::uint64_t at) {
        const std::size_t wide = isBig_ ? 8 : 4;
        const std::size_t countSize = isBig_ ? 8 : 2;
        const std::uint64_t count = number(at, countSize);
        EXPECT_EQ(at % 2, 0U) << "directory " << directory;
        unsigned previous = 0;
        sizes_[directory] = static_cast<std::size_t>(count);
        for (std::uint64_t entry = at + countSize; entry < at + countSize + count * (4 + 2 * wide);
             entry += 4 + 2 * wide) {
            const auto tag = static_cast<unsigned>(number(entry, 2));
            TiffField field{static_cast<unsigned>(number(entry + 2, 2)), number(entry + 4, wide), {}};
            const std::size_t size = itemSize(field.type) * static_cast<std::size_t>(field.count);
            const bool isInline = size <= wide;
            const std::uint64_t place = isInline ? entry + 4 + wide : number(entry + 4 + wide, wide);
            EXPECT_TRUE(tag > previous || previous == 0) << tag;
            EXPECT_EQ(place % 2, 0U) << tag;
            EXPECT_LE(place + size, file_.size()) << tag;
            field.value = file_.substr(static_cast<std::size_t>(place), size);
            previous = tag;
            fields_[{directory, tag}] = field;
            const int child = tag == 34665   ? ExifFields
                              : tag == 34853 ? GpsFields
                              : tag == 40965 ? InteroperabilityFields
                                             : ImageFields;
            if (child != ImageFields) {
                readDirectory(child, number(place, wide));
            }
        }
        EXPECT_EQ(number(at + countSize + count * (4 + 2 * wide), wide), 0U) << "no further directory";
    }

    const Bytes& file_;
    bool isBig_;
    std::map<std::pair<int, unsigned>, TiffField> fields_;
    std::map<int, std::size_t> sizes_;
};

} // namespace test
