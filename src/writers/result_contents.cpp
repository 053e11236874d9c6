#include "writers/result_contents.h"

#include "photo/open_photo.h"
#include "settings/packet_writer.h"
#include "support/tiff_vocabulary.h"
#include "writers/exif_directories.h"
#include "writers/result_iptc.h"
#include "writers/result_xmp.h"

#include <cstring>
#include <string_view>
#include <utility>

namespace tvmeta {

namespace {

Bytes bytesOf(const void* bytes, std::int64_t size) {
    return {static_cast<const unsigned char*>(bytes), static_cast<std::size_t>(size)};
}

std::span<const char* const> keywordsOf(const tvmeta_Result& result) {
    return {result.keywords, static_cast<std::size_t>(result.keywordCount)};
}

// The blocks of the photograph that the caller does not replace.
struct PhotoBlocks {
    ZeroedBuffer iptc;
    ZeroedBuffer xmp;
};

// Loads a block, or names it as lost. Returns false without memory.
bool loadPhotoBlock(OpenPhoto& photo, std::int32_t block, ZeroedBuffer& bytes, LossList& losses) {
    bytes = loadBlock(photo, block);
    if (bytes && bytes.size() == 0 && photo.layout.has(block)) {
        losses.addBlock(block, TVMETA_LOSS_BLOCK);
    }
    return static_cast<bool>(bytes);
}

KeptValues keptValues(const tvmeta_Result& result) {
    const bool isFloat = result.bitsCode == 32 || result.bitsCode == 3216;
    return {.resolution = result.resolution == 0,
            .software = result.software == nullptr,
            .colorSpace = result.iccSize == 0 && !isFloat};
}

// Without a size of its own, a result has that of the photograph.
bool isSameSize(const tvmeta_Result& result, const tvmeta_Photo& photo) {
    const bool hasSize = result.width > 0 && result.height > 0;
    return !hasSize || (result.width == photo.width && result.height == photo.height);
}

std::int32_t readPhotograph(const tvmeta_Result& result, bool withBlocks, PhotoEntries& entries, PhotoBlocks& blocks,
                            LossList& losses) {
    OpenPhoto photo(*result.photo);
    TagSet tags;
    for (tvmeta_Tag tag; photo.tags.next(tag);) {
        tags.offer(tag);
        if (!entries.offer(photo.reader, tag, keptValues(result), losses)) {
            return TVMETA_NO_MEMORY;
        }
    }
    tvmeta_Photo record{};
    fillPhoto(photo, tags, record);
    if (const std::int32_t failure = photo.failure(); failure != TVMETA_OK) {
        return failure;
    }
    if (record.brokenAt >= 0) { // nobody knows what else the file has
        losses.addBlock(TVMETA_EXIF, TVMETA_LOSS_BROKEN);
    }
    if (photo.layout.hasMakerNote) {
        losses.add(TVMETA_EXIF_DIRECTORY, exif_tag::MakerNote, TVMETA_LOSS_MAKER_NOTE);
    }
    if (photo.layout.isCompressed(TVMETA_EXIF)) {
        losses.addBlock(TVMETA_EXIF, TVMETA_LOSS_BLOCK);
    }
    if (withBlocks && ((result.iptc == nullptr && !loadPhotoBlock(photo, TVMETA_IPTC, blocks.iptc, losses)) ||
                       (result.xmp == nullptr && !loadPhotoBlock(photo, TVMETA_XMP, blocks.xmp, losses)))) {
        return TVMETA_NO_MEMORY;
    }
    return entries.readValues(photo.reader, isSameSize(result, record), losses);
}

// A profile for another number of channels would make the file invalid.
Bytes fittingProfile(const tvmeta_Result& result, LossList& losses) {
    constexpr std::size_t ColourSpaceEnd = 20; // ICC.1, profile header
    const Bytes profile = bytesOf(result.icc, result.iccSize);
    const char* const wanted = result.channels >= 3 ? "RGB " : "GRAY";
    if (profile.size() < ColourSpaceEnd || std::memcmp(profile.data() + ColourSpaceEnd - 4, wanted, 4) == 0) {
        return profile;
    }
    losses.addBlock(TVMETA_ICC, TVMETA_LOSS_BLOCK);
    return {};
}

ZeroedBuffer makeXmp(const tvmeta_Result& result, std::string_view packet, Bytes iptc, LossList& losses) {
    const std::int32_t method = result.method != METHOD_NONE ? result.method + DescriptionOnly : METHOD_NONE;
    const XmpChanges changes = {
        .width = result.width,
        .height = result.height,
        .orientation = writtenOrientation(result.orientation),
        .settings = packetRequest(method, result.settings),
        .keywords = keywordsOf(result),
        .iptc = iptc,
        .isPhotographs = result.xmp == nullptr,
    };
    return resultXmp(packet, changes, losses);
}

} // namespace

std::int32_t ResultContents::collect(const tvmeta_Result& result, bool withBlocks, LossList& losses) {
    PhotoBlocks blocks;
    if (result.photo != nullptr) {
        const std::int32_t status = readPhotograph(result, withBlocks, entries, blocks, losses);
        if (status != TVMETA_OK) {
            return status;
        }
    }
    icc = fittingProfile(result, losses); // also decides the colour space of EXIF
    if (!withBlocks) {
        return TVMETA_OK;
    }
    const Bytes oldIptc = result.iptc != nullptr ? bytesOf(result.iptc, result.iptcSize) : blocks.iptc.bytes();
    IptcResult newIptc = withKeywords(oldIptc, keywordsOf(result));
    if (!newIptc.block) {
        return TVMETA_NO_MEMORY;
    }
    if (newIptc.leftOut > 0) {
        losses.addBlock(TVMETA_IPTC, TVMETA_LOSS_CLAMPED);
    }
    iptc = std::move(newIptc.block);
    const std::string_view oldXmp = result.xmp != nullptr
                                        ? std::string_view(result.xmp, static_cast<std::size_t>(result.xmpSize))
                                        : std::string_view(blocks.xmp.text(), blocks.xmp.size());
    xmp = makeXmp(result, oldXmp, iptc.bytes(), losses);
    return xmp ? TVMETA_OK : TVMETA_NO_MEMORY;
}

} // namespace tvmeta
