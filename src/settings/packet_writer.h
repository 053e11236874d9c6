// Settings: the text of a settings packet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tvmeta {

// The interface adds this to a method code to request the settings description without the packet around it.
inline constexpr std::int32_t DescriptionOnly = 200;

struct Parameter;

// The content of a packet.
struct PacketRequest {
    std::int32_t method; // 0 or less: no settings description
    bool isWrapped;      // in x:xmpmeta and rdf:RDF
    const float* settings;
    std::optional<std::string_view> lens = {};
    std::int32_t namespaceNumber = 1;
};

// Decodes the method argument of the interface.
PacketRequest packetRequest(std::int32_t methodArgument, const float* settings);

// False if the method needs settings, and there are none.
bool hasNeededSettings(const PacketRequest& request);

// Writes the text, without a terminator, and returns its length. Without a buffer it only measures.
std::size_t writePacket(const PacketRequest& request, char* out);

// Writes the value of one parameter with its padding, at most PrintedFloatSize bytes, and returns its length.
std::size_t writeValue(const Parameter& parameter, const float* settings, char* out);

} // namespace tvmeta
