// Adds a keyword to an IPTC block (IPTC-IIM 4.1).
#include "photo/iptc_text.h"
#include "tvmeta.h"
#include "writers/result_iptc.h"

#include <array>
#include <cstdint>

using namespace tvmeta;
using namespace tvmeta::iptc_dataset;

namespace {

// Dataset 2:00, the record version, is the first of record 2.
constexpr std::array<unsigned char, 7> RecordVersion = {Marker, ApplicationRecord, 0, 0, 2, 2, 0};

// The offset of the dataset that the new one follows: the last keyword, else the last dataset of the record. Datasets
// are found by their first bytes, so a broken dataset at the start does not matter.
std::size_t findAnchor(std::span<const unsigned char> block) {
    std::size_t dataset = 0;
    std::size_t keyword = 0;
    for (std::size_t i = 0; i + HeaderSize < block.size(); ++i) {
        if (block[i] == Marker && block[i + 1] == ApplicationRecord) {
            dataset = i;
            keyword = block[i + 2] == Keyword ? i : keyword;
        }
    }
    return keyword > 0 ? keyword : dataset;
}

} // namespace

std::int32_t add_iptc_keyword(std::int32_t length, const unsigned char* block, std::int32_t keywordLength,
                              const char* keyword, unsigned char* out) noexcept {
    const bool tooShort = length < 0 || (length > 0 && length < static_cast<std::int32_t>(HeaderSize));
    if (tooShort || keywordLength < 0 || keywordLength > static_cast<std::int32_t>(MaxSize) || out == nullptr ||
        (length > 0 && block == nullptr) || (keywordLength > 0 && keyword == nullptr)) {
        return ADD_KEYWORD_REJECTED;
    }
    const std::span<const unsigned char> existing(block, static_cast<std::size_t>(length));
    std::span<const unsigned char> before = RecordVersion;
    std::span<const unsigned char> after;
    if (!existing.empty()) {
        const std::size_t anchor = findAnchor(existing);
        const std::size_t split = anchor + HeaderSize + ByteCursor(existing.subspan(anchor + 3)).get16();
        if (split > existing.size()) {
            return ADD_KEYWORD_REJECTED;
        }
        before = existing.first(split);
        after = existing.subspan(split);
    }
    const auto size = static_cast<std::size_t>(keywordLength);
    ByteWriter writer(std::span(out, before.size() + HeaderSize + size + after.size()));
    writer.put(before);
    putKeyword(writer, {keyword, size});
    writer.put(after);
    return static_cast<std::int32_t>(before.size());
}
