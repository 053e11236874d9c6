// IPTC blocks (IPTC-IIM 4.1), which are chains of datasets.
#pragma once

#include "output/files.h"

#include <optional>
#include <string>
#include <string_view>

struct IptcDataset {
    int record = 0;
    int number = 0;
    std::string_view value;
};

// Cuts the first dataset off the block; none where no dataset of the standard form follows.
std::optional<IptcDataset> takeDataset(std::string_view& block);

// The block with one keyword more, in UTF-8; `path` is where the block comes from. A keyword that is not ASCII gets the
// block the designation of UTF-8. Throws Failure if that would change the meaning of other texts.
Bytes withKeyword(const std::string& path, const Bytes& block, const std::string& keyword);
