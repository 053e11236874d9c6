// Settings: the text of a settings packet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tvmeta {

// embed_xmp adds this to a method code to ask for the settings description alone.
inline constexpr std::int32_t DescriptionOnly = 200;

// What goes into a packet. Measuring and writing take the same request, so that both come to the same length.
struct PacketRequest {
    std::int32_t method; // method code, or method code + DescriptionOnly
    const float* settings;
    std::string_view lens = {}; // with a null pointer: no lens description
    std::int32_t namespaceNumber = 1;
};

// Whether the slots that the request reads are there. A code that names no method reads none.
bool isComplete(const PacketRequest& request) noexcept;

// The length of the packet's text.
std::size_t measurePacket(const PacketRequest& request) noexcept;

// Writes the text, without a terminator, and returns its length.
std::size_t writePacket(const PacketRequest& request, char* out) noexcept;

} // namespace tvmeta
