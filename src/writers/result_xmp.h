// Writers: the XMP packet of a result (ISO 16684-1), edited as text where the text is certain.
#pragma once

#include "settings/packet_writer.h"
#include "support/zeroed_buffer.h"
#include "writers/losses.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace tvmeta {

struct XmpChanges {
    std::int32_t width;
    std::int32_t height;
    std::int32_t orientation;
    PacketRequest settings; // of method 0 or less: none
    std::span<const char* const> keywords;
    std::span<const unsigned char> iptc; // whose keywords a packet without any receives too
    bool isPhotographs;                  // sizes and orientation in the packet are those of the photograph
};

// The packet with the changes; a new one if `packet` is empty. Empty if there is nothing to say. Names what the text
// does not allow. False without memory.
ZeroedBuffer resultXmp(std::string_view packet, const XmpChanges& changes, LossList& losses);

} // namespace tvmeta
