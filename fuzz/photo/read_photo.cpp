// Reading any photograph: record, tags, blocks, texts and the records of the writers.
#include "support.h"

#include "testing/photo_sources.h"

namespace {

using fuzz::require;

template <std::size_t Size>
bool isTerminated(const char (&text)[Size]) {
    return std::find(text, text + Size, '\0') != text + Size;
}

bool isBlockInside(const tvmeta_Block& block, std::int64_t size) {
    return block.size >= 0 && block.size <= size && block.position <= size - block.size &&
           (block.size > 0) == (block.pieces > 0);
}

void checkRecord(const tvmeta_Photo& photo, std::int32_t status, std::int64_t size) {
    require(status == TVMETA_OK || status == TVMETA_BROKEN || status == TVMETA_UNKNOWN_KIND ||
                status == TVMETA_REFUSED_KIND,
            "the result is documented");
    require((status == TVMETA_BROKEN) == (photo.brokenAt >= 0), "the place of the damage is in the record");
    require((photo.derived & ~photo.present) == 0, "derived fields are present");
    require(isTerminated(photo.make) && isTerminated(photo.model) && isTerminated(photo.lens) &&
                isTerminated(photo.serialNumber),
            "texts are terminated");
    for (const tvmeta_Block& block : photo.blocks) {
        require(isBlockInside(block, size), "blocks are inside of the source");
    }
}

void checkBlocks(const tvmeta_Source& source, const tvmeta_Photo& photo) {
    for (std::int32_t i = 0; i < TVMETA_BLOCKS; ++i) {
        const tvmeta_Block& block = photo.blocks[i];
        fuzz::Bytes bytes(static_cast<std::size_t>(block.size));
        const std::int64_t read = tvmeta_read_block(&source, nullptr, i, bytes.data(), block.size);
        require(read == (block.isCompressed != 0 ? std::int64_t{TVMETA_REFUSED_KIND} : block.size),
                "a block has the size in the record");
    }
}

void checkTags(const tvmeta_Source& source, const tvmeta_Photo& photo) {
    std::array<tvmeta_Tag, 64> tags;
    const std::int64_t count = tvmeta_list_tags(&source, &photo, tags.data(), std::ssize(tags));
    require(count >= 0, "tags are listed");
    for (std::int64_t i = 0; i < std::min(count, std::ssize(tags)); ++i) {
        const tvmeta_Tag& tag = tags[static_cast<std::size_t>(i)];
        require(tag.position >= -1 && tag.position <= source.size, "values are inside of the source");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    test::CallerSource counted(bytes);
    const tvmeta_Source source = counted.source();
    tvmeta_Photo photo = test::emptyRecord();
    const std::int32_t status = tvmeta_read_photo(&source, &photo);
    checkRecord(photo, status, source.size);
    // A read costs a window, and a directory entry one read at most.
    require(counted.bytesRead() <= 64 * (1 << 14) + 16 * source.size + 1024 * counted.calls(), "reads are bounded");
    if (status == TVMETA_OK || status == TVMETA_BROKEN) {
        checkTags(source, photo);
        checkBlocks(source, photo);
        std::array<char, 40> text;
        for (std::int32_t i = 0; i <= TVMETA_TEXT_SOFTWARE; ++i) {
            require(tvmeta_read_text(&source, &photo, i, static_cast<std::int32_t>(size % 3), text.data(),
                                     std::ssize(text)) >= 0,
                    "texts have a size");
        }
    }
    MetadataBuf metadata;
    GpsBuf gps;
    require(tvmeta_writer_records(&photo, &metadata, &gps) >= 0, "every record can be converted");
    if (size >= sizeof photo) { // any other record, too
        std::memcpy(&photo, data, sizeof photo);
        photo.recordSize = sizeof photo;
        require(tvmeta_writer_records(&photo, &metadata, &gps) >= 0, "every record can be converted");
    }
    require(!counted.isMisused(), "only bytes of the source are read");
    return 0;
}
