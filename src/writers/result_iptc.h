// Writers: the IPTC block of a result (IPTC-IIM 4.1).
#pragma once

#include "support/zeroed_buffer.h"

#include <cstdint>
#include <span>

namespace tvmeta {

enum class IptcProblem { None, NoMemory, OtherEncoding };

// The block with keywords that it lacks, in UTF-8. A new block has record version 4. If a keyword is not ASCII, the
// block is declared as UTF-8, unless other texts of it are in another encoding.
struct IptcResult {
    ZeroedBuffer block;
    IptcProblem problem = IptcProblem::None;
};
IptcResult withKeywords(std::span<const unsigned char> block, std::span<const char* const> keywords);

} // namespace tvmeta
