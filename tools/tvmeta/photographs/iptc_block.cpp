#include "photographs/iptc_block.h"

#include "base/failure.h"
#include "base/text.h"

#include <tvmeta.h>

#include <algorithm>
#include <tuple>

namespace {

using namespace std::string_view_literals;

constexpr size_t HeaderSize = 5;
constexpr auto CharacterSet = std::make_tuple(1, 90);
const Bytes NewBlock = {0x1C, 2, 0, 0, 2, 0, 4};       // the record version
constexpr std::string_view Utf8Designation = "\x1B%G"; // ISO 2022

bool isAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// The text encoding of a block.
struct Encoding {
    bool hasOtherBytes = false; // bytes that are not ASCII in text records
    std::optional<std::string_view> designation;
    size_t place = 0; // where the declaration is inserted: before datasets with higher numbers
};

Encoding encodingOf(std::string_view block) {
    constexpr int TextRecord = 2;
    Encoding encoding;
    const size_t size = block.size();
    while (const std::optional<IptcDataset> dataset = takeDataset(block)) {
        const auto key = std::make_tuple(dataset->record, dataset->number);
        if (key == CharacterSet) {
            encoding.designation = dataset->value;
        }
        if (key < CharacterSet) {
            encoding.place = size - block.size();
        }
        encoding.hasOtherBytes |= dataset->record == TextRecord && dataset->number != 0 && !isAscii(dataset->value);
    }
    return encoding;
}

// The block with a declaration of UTF-8; an error if that would change the meaning of its texts.
Bytes asUtf8(const std::string& path, const Bytes& block) {
    constexpr std::string_view Dataset = "\x1C\x01\x5A\x00\x03\x1B%G"sv;
    const Encoding encoding = encodingOf(asText(block));
    if (encoding.designation == Utf8Designation) {
        return block;
    }
    if (encoding.designation || encoding.hasOtherBytes) {
        throw Failure(path, "the IPTC block contains texts in an encoding other than UTF-8, so only keywords in "
                            "ASCII can be added");
    }
    Bytes result = block;
    result.insert(result.begin() + static_cast<std::ptrdiff_t>(encoding.place), Dataset.begin(), Dataset.end());
    return result;
}

} // namespace

// IPTC-IIM 4.1, section 1.5: a dataset is a marker, record, number and big-endian length, then its value. A length of
// 32768 or more marks the extended form, which only large values such as pictures need.
std::optional<IptcDataset> takeDataset(std::string_view& block) {
    const auto byteAt = [&](size_t i) { return static_cast<unsigned char>(block[i]); };
    if (block.size() < HeaderSize || block[0] != 0x1C) {
        return std::nullopt;
    }
    const size_t length = static_cast<size_t>(byteAt(3)) << 8 | byteAt(4);
    if (length > 0x7FFF || length > block.size() - HeaderSize) {
        return std::nullopt;
    }
    const IptcDataset dataset = {byteAt(1), byteAt(2), block.substr(HeaderSize, length)};
    block.remove_prefix(HeaderSize + length);
    return dataset;
}

Bytes withKeyword(const std::string& path, const Bytes& block, const std::string& keyword) {
    constexpr size_t MaxKeyword = 32767;
    if (keyword.empty() || keyword.size() > MaxKeyword) {
        throw WrongCommandLine("expected a keyword of 1 to " + std::to_string(MaxKeyword) + " bytes, found " +
                               std::to_string(keyword.size()));
    }
    if (!isUtf8(keyword)) {
        throw WrongCommandLine("expected a keyword in UTF-8, found '" + keyword + "'");
    }
    const Bytes designated = isAscii(keyword) ? block : asUtf8(path, block.empty() ? NewBlock : block);
    Bytes longer(designated.size() + HeaderSize + keyword.size() + (designated.empty() ? NewBlock.size() : 0));
    const int32_t result = add_iptc_keyword(librarySize(designated), designated.data(), librarySize(keyword),
                                            keyword.data(), longer.data());
    if (result < 0) {
        throw Failure(path, "the IPTC block is damaged");
    }
    return longer;
}
