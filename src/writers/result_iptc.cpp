#include "writers/result_iptc.h"

#include "metadata/byte_cursor.h"
#include "photo/iptc_text.h"
#include "photo/utf8.h"
#include "support/bytes.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tvmeta {

namespace {

constexpr unsigned char Marker = 0x1C;
constexpr std::array<unsigned char, 8> Utf8Designation = {Marker, 1, 90, 0, 3, 0x1B, '%', 'G'}; // ISO 2022
constexpr std::array<unsigned char, 7> NewRecord = {Marker, 2, 0, 0, 2, 0, 4};

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
        const std::string_view value(reinterpret_cast<const char*>(dataset.value.data()), dataset.value.size());
        if (dataset.record == 1 && dataset.number == 90) {
            result.hasDesignation = true;
            result.isUtf8 = std::ranges::equal(dataset.value, std::span(Utf8Designation).subspan(5));
        }
        if (!result.hasRecord && (dataset.record == 0 || (dataset.record == 1 && dataset.number < 90))) {
            result.designationPlace = reader.position();
        }
        if (dataset.record == 2) {
            result.hasRecord = true;
            const bool isKeyword = dataset.number == iptc_dataset::Keyword;
            if (isKeyword || !hasKeyword) {
                result.keywordPlace = reader.position();
            }
            hasKeyword |= isKeyword;
            result.hasOtherTexts |= dataset.number != 0 && !isUtf8(value);
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
        if (dataset.record == 2 && dataset.number == iptc_dataset::Keyword &&
            std::ranges::equal(dataset.value, keyword,
                               [](unsigned char a, char b) { return a == static_cast<unsigned char>(b); })) {
            return true;
        }
    }
    return false;
}

} // namespace

IptcResult withKeywords(std::span<const unsigned char> block, std::span<const char* const> keywords) {
    constexpr std::size_t HeaderSize = 5;
    const Survey found = survey(block);
    std::size_t added = 0;
    bool needsUtf8 = false;
    for (const std::string_view keyword : keywords) {
        if (!hasKeyword(block, keyword)) {
            added += HeaderSize + keyword.size();
            needsUtf8 |= !isAscii(keyword);
        }
    }
    if (needsUtf8 && !found.isUtf8 && (found.hasDesignation || found.hasOtherTexts)) {
        return {ZeroedBuffer(), IptcProblem::OtherEncoding};
    }
    const bool designates = needsUtf8 && !found.isUtf8;
    const bool startsRecord = added > 0 && !found.hasRecord;
    IptcResult result{ZeroedBuffer(block.size() + added + (designates ? Utf8Designation.size() : 0) +
                                   (startsRecord ? NewRecord.size() : 0))};
    if (!result.block) {
        result.problem = IptcProblem::NoMemory;
        return result;
    }
    ByteWriter writer(result.block.bytes());
    writer.put(block.first(found.designationPlace));
    writer.put(std::span(Utf8Designation).first(designates ? Utf8Designation.size() : 0));
    writer.put(block.subspan(found.designationPlace, found.keywordPlace - found.designationPlace));
    writer.put(std::span(NewRecord).first(startsRecord ? NewRecord.size() : 0));
    for (const std::string_view keyword : keywords) {
        if (!hasKeyword(block, keyword)) {
            const auto size = static_cast<std::uint16_t>(keyword.size()); // checked by the caller
            const std::array<unsigned char, HeaderSize> header = {Marker, 2, iptc_dataset::Keyword,
                                                                  static_cast<unsigned char>(size >> 8),
                                                                  static_cast<unsigned char>(size)};
            writer.put(header);
            writer.put({reinterpret_cast<const unsigned char*>(keyword.data()), keyword.size()});
        }
    }
    writer.put(block.subspan(found.keywordPlace));
    return result;
}

} // namespace tvmeta
