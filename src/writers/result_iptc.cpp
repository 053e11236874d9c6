#include "writers/result_iptc.h"

#include "photo/iptc_text.h"
#include "photo/utf8.h"
#include "support/text_search.h"
#include "tvmeta_photo.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace tvmeta {

namespace {

using namespace iptc_dataset;

constexpr std::array<unsigned char, 8> Utf8Designation = {Marker, 1, 90, 0, 3, 0x1B, '%', 'G'}; // ISO 2022
constexpr std::array<unsigned char, 7> NewRecord = {Marker, ApplicationRecord, 0, 0, 2, 0, 4};

bool isAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// What decides where the keywords go, and in which encoding.
struct Survey {
    bool hasDesignation = false;
    bool isUtf8 = false;              // designated
    bool hasOtherTexts = false;       // neither ASCII nor UTF-8
    std::size_t designationPlace = 0; // after datasets with lower numbers, before record 2
    std::size_t keywordPlace = 0;     // after the last keyword, else after record 2
    bool hasRecord = false;           // 2
    std::size_t end = 0;              // of the last dataset; padding follows
};

Survey survey(std::span<const unsigned char> block) {
    Survey result;
    IptcReader reader(block);
    bool hasKeyword = false;
    for (IptcDataset dataset; reader.next(dataset);) {
        if (dataset.record == 1 && dataset.number == 90) {
            result.hasDesignation = true;
            result.isUtf8 = std::ranges::equal(dataset.value, std::span(Utf8Designation).subspan(5));
        }
        if (!result.hasRecord && std::pair<int, int>(dataset.record, dataset.number) < std::pair(1, 90)) {
            result.designationPlace = reader.position();
        }
        if (dataset.record == ApplicationRecord) {
            result.hasRecord = true;
            const bool isKeyword = dataset.number == Keyword;
            if (isKeyword || !hasKeyword) {
                result.keywordPlace = reader.position();
            }
            hasKeyword |= isKeyword;
            result.hasOtherTexts |= dataset.number != 0 && !isUtf8(asText(dataset.value));
        }
        result.end = reader.position();
    }
    if (!result.hasRecord) {
        result.keywordPlace = result.end;
    }
    return result;
}

bool hasKeyword(std::span<const unsigned char> block, std::string_view keyword) {
    IptcReader reader(block);
    for (IptcDataset dataset; reader.next(dataset);) {
        if (dataset.record == ApplicationRecord && dataset.number == Keyword && asText(dataset.value) == keyword) {
            return true;
        }
    }
    return false;
}

} // namespace

void putKeyword(ByteWriter& writer, std::string_view keyword) {
    const auto size = static_cast<std::uint16_t>(keyword.size());
    const std::array<unsigned char, HeaderSize> header = {
        Marker, ApplicationRecord, Keyword, static_cast<unsigned char>(size >> 8), static_cast<unsigned char>(size)};
    writer.put(header);
    writer.put({reinterpret_cast<const unsigned char*>(keyword.data()), keyword.size()});
}

bool areKeywords(const char* const* keywords, std::int64_t count) {
    if (count < 0 || (count > 0 && keywords == nullptr)) {
        return false;
    }
    return std::ranges::all_of(std::span(keywords, static_cast<std::size_t>(count)), [](const char* keyword) {
        return keyword != nullptr && keyword[0] != '\0' && isUtf8(keyword) && std::strlen(keyword) <= MaxSize;
    });
}

bool isNew(std::span<const char* const> keywords, std::size_t index) {
    const std::string_view keyword = keywords[index];
    return std::ranges::none_of(keywords.first(index), [keyword](std::string_view other) { return other == keyword; });
}

IptcResult withKeywords(std::span<const unsigned char> block, std::span<const char* const> keywords) {
    const Survey found = survey(block);
    const bool allowsUtf8 = found.isUtf8 || (!found.hasDesignation && !found.hasOtherTexts);
    const auto isAdded = [&](std::size_t index) {
        const std::string_view keyword = keywords[index];
        return (allowsUtf8 || isAscii(keyword)) && !hasKeyword(block, keyword) && isNew(keywords, index);
    };
    IptcResult result;
    std::size_t added = 0;
    bool needsUtf8 = false;
    for (std::size_t i = 0; i < keywords.size(); ++i) {
        const std::string_view keyword = keywords[i];
        result.leftOut += allowsUtf8 || isAscii(keyword) ? 0 : 1;
        if (isAdded(i)) {
            added += HeaderSize + keyword.size();
            needsUtf8 |= !isAscii(keyword);
        }
    }
    const auto designation = std::span(Utf8Designation).first(needsUtf8 && !found.isUtf8 ? Utf8Designation.size() : 0);
    const auto newRecord = std::span(NewRecord).first(added > 0 && !found.hasRecord ? NewRecord.size() : 0);
    result.block = ZeroedBuffer(block.size() + added + designation.size() + newRecord.size());
    if (!result.block) {
        return result;
    }
    ByteWriter writer(result.block.bytes());
    writer.put(block.first(found.designationPlace));
    writer.put(designation);
    writer.put(block.subspan(found.designationPlace, found.keywordPlace - found.designationPlace));
    writer.put(newRecord);
    for (std::size_t i = 0; i < keywords.size(); ++i) {
        if (isAdded(i)) {
            putKeyword(writer, keywords[i]);
        }
    }
    writer.put(block.subspan(found.keywordPlace));
    return result;
}

} // namespace tvmeta

using namespace tvmeta;

std::int64_t tvmeta_add_keywords(const void* block, std::int64_t size, const char* const* keywords, std::int64_t count,
                                 void* buffer, std::int64_t capacity, std::int64_t* leftOut) noexcept {
    constexpr std::int64_t MaxBlock = INT32_MAX;
    if (size < 0 || (size > 0 && block == nullptr) || !areKeywords(keywords, count) || capacity < 0) {
        return TVMETA_BAD_ARGUMENT;
    }
    if (size > MaxBlock) {
        return TVMETA_TOO_LARGE;
    }
    const IptcResult result = withKeywords({static_cast<const unsigned char*>(block), static_cast<std::size_t>(size)},
                                           {keywords, static_cast<std::size_t>(count)});
    if (!result.block) {
        return TVMETA_NO_MEMORY;
    }
    if (leftOut != nullptr) {
        *leftOut = result.leftOut;
    }
    if (buffer != nullptr && result.block.size() > static_cast<std::uint64_t>(capacity)) {
        return TVMETA_TOO_SMALL;
    }
    if (buffer != nullptr) {
        std::memcpy(buffer, result.block.data(), result.block.size());
    }
    return static_cast<std::int64_t>(result.block.size());
}
