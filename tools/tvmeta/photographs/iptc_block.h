// IPTC blocks (IPTC-IIM 4.1): sequences of datasets.
#pragma once

#include "system/files.h"

#include <optional>
#include <string>
#include <string_view>

struct IptcDataset {
    int record = 0;
    int number = 0;
    std::string_view value;
};

// Removes the first dataset from the block and returns it; empty if no standard dataset follows.
std::optional<IptcDataset> takeDataset(std::string_view& block);

// The block with one more keyword, in UTF-8; `path` is for messages. For a keyword that is not ASCII, the block is
// declared as UTF-8. Throws Failure if that would change the meaning of other texts.
Bytes withKeyword(const std::string& path, const Bytes& block, const std::string& keyword);
