// Adds a keyword to an IPTC block (IPTC-IIM 4.1). A dataset is a marker, a record number, a dataset number, a 16-bit
// big-endian length, and the data.
#include "support/packed_numbers.h"
#include "tvmeta.h"

#include <array>
#include <cstdint>

using namespace tvmeta;

namespace {

constexpr unsigned char Marker = 0x1C;
constexpr unsigned char ApplicationRecord = 2;
constexpr unsigned char Keywords = 25;
constexpr std::size_t DatasetHeader = 5;
constexpr std::int32_t MaxKeyword = 0x7FFF; // the highest bit of a length marks an extended dataset

// Dataset 2:00, the record version, is the first of record 2.
constexpr std::array<unsigned char, 7> RecordVersion = {Marker, ApplicationRecord, 0, 0, 2, 2, 0};

// The offset of the dataset that the new one follows: the last keyword, else the last dataset of the record. Datasets
// are found by their first bytes, so a broken dataset at the start does not matter.
std::size_t findAnchor(std::span<const unsigned char> block) {
    std::size_t dataset = 0;
    std::size_t keyword = 0;
    for (std::size_t i = 0; i + DatasetHeader < block.size(); ++i) {
        if (block[i] == Marker && block[i + 1] == ApplicationRecord) {
            dataset = i;
            keyword = block[i + 2] == Keywords ? i : keyword;
        }
    }
    return keyword > 0 ? keyword : dataset;
}

} // namespace

std::int32_t add_iptc_keyword(std::int32_t length, const unsigned char* block, std::int32_t keywordLength,
                              const char* keyword, unsigned char* out) noexcept {
    const bool tooShort = length < 0 || (length > 0 && length < static_cast<std::int32_t>(DatasetHeader));
    if (tooShort || keywordLength < 0 || keywordLength > MaxKeyword || out == nullptr ||
        (length > 0 && block == nullptr) || (keywordLength > 0 && keyword == nullptr)) {
        return ADD_KEYWORD_REJECTED;
    }
    const std::span<const unsigned char> existing(block, static_cast<std::size_t>(length));
    std::span<const unsigned char> before = RecordVersion;
    std::span<const unsigned char> after;
    if (!existing.empty()) {
        const std::size_t anchor = findAnchor(existing);
        const std::size_t split = anchor + DatasetHeader + loadBe16(existing.data() + anchor + 3);
        if (split > existing.size()) {
            return ADD_KEYWORD_REJECTED;
        }
        before = existing.first(split);
        after = existing.subspan(split);
    }
    const auto size = static_cast<std::uint16_t>(keywordLength);
    const std::array<unsigned char, DatasetHeader> header = {
        Marker, ApplicationRecord, Keywords, static_cast<unsigned char>(size >> 8), static_cast<unsigned char>(size)};
    ByteWriter writer(std::span(out, before.size() + header.size() + size + after.size()));
    writer.put(before);
    writer.put(header);
    writer.put(std::span(reinterpret_cast<const unsigned char*>(keyword), size));
    writer.put(after);
    return static_cast<std::int32_t>(before.size());
}
