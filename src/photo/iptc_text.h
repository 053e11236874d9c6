// Photo: the datasets of IPTC blocks (IPTC-IIM 4.1).
#pragma once

#include "metadata/byte_cursor.h"
#include "photo/utf8.h"

#include <cstdint>
#include <span>

namespace tvmeta {

namespace iptc_dataset {
inline constexpr unsigned char Marker = 0x1C;
inline constexpr std::size_t HeaderSize = 5;   // marker, record, number, big-endian size
inline constexpr std::size_t MaxSize = 0x7FFF; // without an extended size, which the highest bit marks
inline constexpr unsigned char ApplicationRecord = 2;

// Of the application record:
inline constexpr std::uint8_t ObjectName = 5;
inline constexpr std::uint8_t Keyword = 25;
inline constexpr std::uint8_t Byline = 80;
inline constexpr std::uint8_t CopyrightNotice = 116;
inline constexpr std::uint8_t Caption = 120;
} // namespace iptc_dataset

struct IptcDataset {
    std::uint8_t record = 0;
    std::uint8_t number = 0;
    std::span<const unsigned char> value;
};

// Returns the datasets of a block one by one.
class IptcReader {
  public:
    explicit IptcReader(std::span<const unsigned char> block) : cursor_(block) {}

    // Returns false after the last dataset, and where none starts or one is cut short.
    bool next(IptcDataset& dataset);

    std::size_t position() const { return cursor_.position(); }

  private:
    ByteCursor cursor_;
};

// Writes the value of a dataset of record 2; of a repeated one, that at an index. Empty ones do not count. Returns
// false if there is none.
bool findDataset(std::span<const unsigned char> block, std::uint8_t dataset, TextWriter& writer, int index = 0);

} // namespace tvmeta
