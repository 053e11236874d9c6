#include "containers/finders.h"

#include "containers/joined_regions.h"
#include "support/text_search.h"
#include "support/zeroed_buffer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace tvmeta {

namespace {

constexpr std::string_view RdfStart = "<rdf:RDF";
constexpr std::string_view RdfEnd = "</rdf:RDF>";
constexpr std::size_t GuidSize = 32; // digits that name an extended packet

struct Span {
    std::int64_t begin;
    std::int64_t end;
};

// The property that names the extended packet, which a joined packet does not have: an attribute or an element. Empty
// if there is none.
std::optional<Span> referenceIn(std::string_view packet) {
    constexpr std::string_view Name = "xmpNote:HasExtendedXMP";
    const std::size_t name = packet.find(Name);
    if (name == NotFound || name == 0) {
        return std::nullopt;
    }
    const bool isElement = packet[name - 1] == '<';
    const std::size_t begin = isElement ? name - 1 : name;
    const std::size_t size = GuidSize + (isElement ? 2 * Name.size() + 5 : Name.size() + 3); // tags, or '=' and quotes
    const std::string_view last = textFrom(packet, begin + size - 1);
    return last.starts_with('>') || last.starts_with('"') || last.starts_with('\'')
               ? std::optional(Span{static_cast<std::int64_t>(begin), static_cast<std::int64_t>(begin + size)})
               : std::nullopt;
}

// Whether a chunk belongs to the packet that the reference names. Editors leave chunks of former packets.
bool isNamed(SourceReader& reader, const Region& chunk, std::string_view reference) {
    constexpr std::int64_t GuidBefore = GuidSize + 8; // and the size of the whole, and the offset
    std::array<unsigned char, GuidSize> guid{};
    return readAt(reader, chunk.position - GuidBefore, guid) && reference.find(asText(guid)) != NotFound;
}

// The bytes between the tags of the RDF element. Empty if its opening declares names that the joined packet would lack.
std::optional<Span> descriptionsIn(SourceReader& reader, const JoinedRegions& packet) {
    std::array<unsigned char, 2048> block{};
    const std::int64_t size = std::min(packet.size(), static_cast<std::int64_t>(block.size()));
    const auto bytes = std::span(block).first(static_cast<std::size_t>(size));
    const std::string_view text = asText(bytes);
    if (!packet.read(reader, 0, bytes)) {
        return std::nullopt;
    }
    const std::size_t start = text.find(RdfStart);
    const std::size_t end = start == NotFound ? NotFound : text.find('>', start);
    if (end == NotFound) {
        return std::nullopt;
    }
    const std::string_view opening(text.data() + start, end - start);
    const std::size_t names = opening.find("xmlns:");
    if (names != NotFound &&
        (!textFrom(opening, names).starts_with("xmlns:rdf=") || opening.find("xmlns:", names + 1) != NotFound)) {
        return std::nullopt;
    }
    const auto begin = static_cast<std::int64_t>(end) + 1;
    const std::int64_t tail = packet.size() - size;
    if (!packet.read(reader, tail, bytes)) {
        return std::nullopt;
    }
    const std::size_t close = text.rfind(RdfEnd);
    const std::int64_t last = tail + static_cast<std::int64_t>(close);
    return close == NotFound || last < begin ? std::nullopt : std::optional(Span{begin, last});
}

} // namespace

void joinExtendedXmp(SourceReader& reader, Layout& layout) {
    if (!layout.has(ExtendedXmp)) {
        return; // before the array below is cleared, which takes as long as a system call
    }
    std::array<Region, Layout::MaxPieces> chunks;
    const std::size_t count = layout.regionsOf(ExtendedXmp, chunks);
    layout.removePieces(ExtendedXmp);
    Region standard;
    if (layout.regionsOf(TVMETA_XMP, std::span(&standard, 1)) == 0) {
        return;
    }
    const auto add = [&](const Region& region) { layout.addPiece(TVMETA_XMP, region); };
    ZeroedBuffer packet(static_cast<std::size_t>(standard.size)); // one segment
    if (!packet || !readAt(reader, standard.position, packet.bytes())) {
        layout.isWithoutMemory |= !packet;
        return;
    }
    const std::string_view text(packet.text(), packet.size());
    const std::optional<Span> reference = referenceIn(text);
    if (!reference) {
        return;
    }
    const auto named = std::string_view(text.data() + reference->begin, text.data() + reference->end);
    const auto end = std::remove_if(chunks.begin(), chunks.begin() + count,
                                    [&](const Region& chunk) { return !isNamed(reader, chunk, named); });
    const JoinedRegions extended{std::span<const Region>(chunks.begin(), end)};
    const std::size_t close = text.rfind(RdfEnd);
    const std::optional<Span> descriptions = descriptionsIn(reader, extended);
    if (!descriptions || close == NotFound) {
        return extended.slice(0, extended.size(), add);
    }
    const auto split = static_cast<std::int64_t>(close);
    const JoinedRegions whole(std::span<const Region>(&standard, 1));
    layout.removePieces(TVMETA_XMP);
    whole.slice(0, reference->begin, add);
    whole.slice(reference->end, split - reference->end, add);
    extended.slice(descriptions->begin, descriptions->end - descriptions->begin, add);
    whole.slice(split, standard.size - split, add);
}

} // namespace tvmeta
