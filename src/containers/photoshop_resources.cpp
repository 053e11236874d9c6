#include "containers/finders.h"

#include "containers/joined_regions.h"
#include "metadata/byte_cursor.h"
#include "metadata/signatures.h"
#include "support/text_search.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

namespace tvmeta {

namespace {

constexpr int MaxResources = 1 << 12;

struct ResourceBlock {
    std::uint16_t id;
    std::int32_t block;
    std::int64_t headerSize; // bytes of the resource before the block
};

constexpr ResourceBlock Blocks[] = {
    {photoshop::IptcBlock, TVMETA_IPTC, 0},
    {photoshop::Thumbnail, TVMETA_THUMBNAIL, 28},
    {photoshop::IccProfile, TVMETA_ICC, 0},
    {photoshop::Xmp, TVMETA_XMP, 0},
};

// Photoshop and programs like it use these.
constexpr std::string_view Signatures[] = {"8BIM", "MeSa", "AgHg", "PHUT", "DCSR"};

struct Resource {
    std::uint16_t id = 0;
    std::int64_t dataOffset = 0;
    std::int64_t dataSize = 0;
};

// A signature, an identifier, a name padded to an even size, the data size.
bool readResource(SourceReader& reader, const JoinedRegions& resources, std::int64_t offset, Resource& resource) {
    constexpr std::int64_t NameOffset = 6;
    std::array<unsigned char, NameOffset + 1> start{};
    std::array<unsigned char, 4> size{};
    if (!resources.read(reader, offset, start)) {
        return false;
    }
    ByteCursor cursor(start);
    if (std::ranges::count(Signatures, asText(cursor.take(4))) == 0) {
        return false;
    }
    resource.id = cursor.get16();
    const std::int64_t nameSize = (1 + cursor.get8() + 1) / 2 * 2;
    if (!resources.read(reader, offset + NameOffset + nameSize, size)) {
        return false;
    }
    resource.dataOffset = offset + NameOffset + nameSize + static_cast<std::int64_t>(size.size());
    resource.dataSize = ByteCursor(size).get32();
    return true;
}

// Thumbnails may be uncompressed, too.
bool isJpeg(SourceReader& reader, const JoinedRegions& resources, std::int64_t offset) {
    std::array<unsigned char, 2> start{};
    return resources.read(reader, offset, start) && start[0] == 0xFF && start[1] == 0xD8;
}

} // namespace

void findInResources(SourceReader& reader, std::span<const Region> regions, Layout& layout) {
    const JoinedRegions resources(regions);
    const std::int64_t end = resources.size();
    std::array<bool, TVMETA_BLOCKS> known{};
    for (std::int32_t block = 0; block < TVMETA_BLOCKS; ++block) {
        known[static_cast<std::size_t>(block)] = layout.has(block);
    }
    Resource resource;
    std::int64_t offset = 0;
    for (int i = 0; i < MaxResources && readResource(reader, resources, offset, resource); ++i) {
        const std::int64_t size = std::min(resource.dataSize, end - resource.dataOffset);
        if (resource.id == photoshop::ExifData && layout.format == TVMETA_FORMAT_PSD) {
            resources.slice(resource.dataOffset, size, [&](const Region& region) { layout.addStructure(region); });
        }
        const auto found = std::ranges::find(Blocks, resource.id, &ResourceBlock::id);
        if (found != std::end(Blocks) && !known[static_cast<std::size_t>(found->block)] &&
            (found->id != photoshop::Thumbnail || isJpeg(reader, resources, resource.dataOffset + found->headerSize))) {
            resources.slice(resource.dataOffset + found->headerSize, size - found->headerSize,
                            [&](const Region& region) { layout.addPiece(found->block, region); });
            known[static_cast<std::size_t>(found->block)] = true; // of several resources the first counts
        }
        offset = resource.dataOffset + resource.dataSize + resource.dataSize % 2;
    }
}

} // namespace tvmeta
