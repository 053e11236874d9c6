// Reads any photograph into the record, and lists its tags.
#include "photo/open_photo.h"
#include "photo/photo_fields.h"
#include "photo/xmp_text.h"

#include <algorithm>
#include <cstring>

using namespace tvmeta;

namespace {

// What every caller's record has, and a size that none has: a record that was not initialised.
constexpr std::uint32_t MinRecordSize = 48;
constexpr std::uint32_t MaxRecordSize = 1 << 16;

void fillBlocks(const Layout& layout, tvmeta_Photo& photo) {
    for (std::int32_t i = 0; i < TVMETA_BLOCKS; ++i) {
        tvmeta_Block& block = photo.blocks[i];
        for (const Piece& piece : layout.pieces()) {
            if (piece.block == i) {
                block.position = block.pieces++ == 0 ? piece.region.position : -1;
                block.size += piece.region.size;
            }
        }
        if (layout.isCompressed(i)) {
            block.position = -1;
            block.isCompressed = 1;
        }
    }
    // A file that is a TIFF structure itself has no block of it.
    const auto structures = layout.structures();
    if (structures.size() == 1 && structures[0].region.position > 0) {
        photo.blocks[TVMETA_EXIF] = {structures[0].region.position, structures[0].region.size, 1, 0};
    }
}

// Containers know these better than the directories of the EXIF data, which programs forget to change.
void fillImage(const Layout& layout, const PhotoFields& fields) {
    tvmeta_Photo& photo = fields.photo;
    if (layout.width > 0 && layout.height > 0) {
        photo.width = layout.width;
        photo.height = layout.height;
        fields.set(TVMETA_SIZE);
    }
    if (layout.orientation > 0) {
        photo.orientation = layout.orientation;
        fields.set(TVMETA_ORIENTATION);
    }
}

// The lens of older photographs is in XMP only. No more is searched than one segment of a JPEG has.
void findLens(OpenPhoto& open, const PhotoFields& fields) {
    constexpr std::int64_t MaxPacket = 1 << 16;
    const std::int64_t size = open.layout.isCompressed(TVMETA_XMP) ? 0 : blockSize(open.layout, TVMETA_XMP);
    if (fields.has(TVMETA_LENS) || size == 0) {
        return;
    }
    ZeroedBuffer buffer(static_cast<std::size_t>(std::min(size, MaxPacket)));
    open.layout.isWithoutMemory |= !buffer;
    if (!buffer || !copyBlock(open, TVMETA_XMP, buffer.bytes())) {
        return;
    }
    const std::string_view text(buffer.text(), buffer.size());
    for (const std::string_view property : {"aux:Lens", "exifEX:LensModel"}) {
        char lens[4 * sizeof fields.photo.lens]; // one that is cut here is cut in the record, too
        TextWriter writer(lens);
        if (findProperty(text, property, writer)) {
            return setText(fields, TVMETA_LENS, fields.photo.lens, {lens, writer.written()});
        }
    }
}

std::int32_t readPhoto(const tvmeta_Source& source, tvmeta_Photo& photo) {
    OpenPhoto open(source);
    fillPhoto(open, open.readTags(), photo);
    if (const std::int32_t failure = open.failure(); failure != TVMETA_OK) {
        return failure;
    }
    return photo.brokenAt >= 0 ? TVMETA_BROKEN : TVMETA_OK;
}

} // namespace

void tvmeta::fillPhoto(OpenPhoto& open, const TagSet& tags, tvmeta_Photo& photo) {
    photo.format = open.layout.format;
    const PhotoFields fields{open.reader, tags, photo};
    fillImage(open.layout, fields);
    fields.fill();
    findLens(open, fields);
    fillBlocks(open.layout, photo);
    photo.brokenAt = open.layout.brokenAt;
}

std::int32_t tvmeta_read_photo(const tvmeta_Source* source, tvmeta_Photo* photo) noexcept {
    if (photo == nullptr || photo->recordSize < MinRecordSize || photo->recordSize > MaxRecordSize) {
        return TVMETA_BAD_ARGUMENT;
    }
    const std::uint32_t recordSize = photo->recordSize;
    tvmeta_Photo record{};
    record.recordSize = recordSize;
    record.brokenAt = -1;
    const std::int32_t status =
        isUsable(source) ? readPhoto(*source, record) : static_cast<std::int32_t>(TVMETA_BAD_ARGUMENT);
    // A caller that was compiled with another version has a shorter or a longer record.
    std::memset(photo, 0, recordSize);
    std::memcpy(photo, &record, std::min<std::size_t>(recordSize, sizeof record));
    return status;
}

std::int64_t tvmeta_list_tags(const tvmeta_Source* source, const tvmeta_Photo*, tvmeta_Tag* tags,
                              std::int64_t capacity) noexcept {
    if (!isUsable(source) || capacity < 0 || (tags == nullptr && capacity > 0)) {
        return TVMETA_BAD_ARGUMENT;
    }
    OpenPhoto photo(*source);
    std::int64_t count = 0;
    for (tvmeta_Tag tag; photo.tags.next(tag); ++count) {
        if (count < capacity) {
            tags[count] = tag;
        }
    }
    const std::int32_t failure = photo.failure();
    return failure == TVMETA_OK ? count : failure;
}
