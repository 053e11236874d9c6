// Photo: values of IPTC blocks (IPTC-IIM 4.1).
#pragma once

#include "photo/utf8.h"

#include <cstdint>
#include <span>

namespace tvmeta {

namespace iptc_dataset { // of record 2
inline constexpr std::uint8_t ObjectName = 5;
inline constexpr std::uint8_t Keyword = 25;
inline constexpr std::uint8_t Byline = 80;
inline constexpr std::uint8_t CopyrightNotice = 116;
inline constexpr std::uint8_t Caption = 120;
} // namespace iptc_dataset

// Writes the value of a dataset of record 2; of a repeated one, that at an index. Returns false if there is none.
bool findDataset(std::span<const unsigned char> block, std::uint8_t dataset, TextWriter& writer, int index = 0);

} // namespace tvmeta
