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

// The packet to be stored: the caller's, one that was made, or none.
struct XmpPacket {
    std::optional<ZeroedBuffer> made;
    std::span<const unsigned char> bytes;
};

// Uses the caller's packet if it contains processing settings, or if there are no settings to be written. Otherwise
// makes one from the settings and the first `lensCount` bytes of the lens name. Empty if there is no memory.
std::optional<XmpPacket> chooseXmp(std::string_view callersPacket, std::int32_t method, const float* settings,
                                   const MetadataBuf& metadata, std::size_t lensCount);

} // namespace tvmeta
