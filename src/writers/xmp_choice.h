// Writers: which XMP packet goes into a result.
#pragma once

#include "support/zeroed_buffer.h"
#include "tvmeta.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace tvmeta {

// The packet as it is stored: the caller's, one that was made, or none.
struct XmpPacket {
    std::optional<ZeroedBuffer> made;
    std::span<const unsigned char> bytes;
};

// The caller's packet is stored if it holds processing settings, or if there are none to be written. Otherwise one is
// made of the settings and the first `lensCount` bytes of the lens name. Nothing when there is no memory for it.
std::optional<XmpPacket> chooseXmp(std::string_view callersPacket, std::int32_t method, const float* settings,
                                   const MetadataBuf& metadata, std::size_t lensCount) noexcept;

} // namespace tvmeta
