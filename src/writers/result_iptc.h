// Writers: the IPTC block of a result (IPTC-IIM 4.1).
#pragma once

#include "support/packed_numbers.h"
#include "support/zeroed_buffer.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace tvmeta {

// Keywords are UTF-8, not empty, and fit a dataset without an extended size.
bool areKeywords(const char* const* keywords, std::int64_t count);

// A dataset of up to iptc_dataset::MaxSize bytes.
void putKeyword(ByteWriter& writer, std::string_view keyword);

// A keyword that the list has twice is added once.
bool isNew(std::span<const char* const> keywords, std::size_t index);

struct IptcResult {
    ZeroedBuffer block;       // false without memory
    std::int64_t leftOut = 0; // keywords
};

// The block with keywords that it lacks, in UTF-8. A new block has record version 4. If a keyword is not ASCII, the
// block is declared as UTF-8; such keywords are left out if other texts of it are in another encoding.
IptcResult withKeywords(std::span<const unsigned char> block, std::span<const char* const> keywords);

} // namespace tvmeta
