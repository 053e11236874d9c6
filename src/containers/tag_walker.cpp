#include "containers/tag_walker.h"

#include "containers/finders.h"
#include "containers/tag_values.h"
#include "metadata/byte_cursor.h"
#include "support/tiff_vocabulary.h"

#include <algorithm>
#include <iterator>

namespace tvmeta {

namespace {

// The number after the byte order of TIFF structures, and of raw formats that differ from TIFF in nothing else:
// "RO" and "RS" of ORF, 85 of RW2.
constexpr std::uint16_t Magics[] = {TiffMagic, BigTiffMagic, 0x4F52, 0x5352, 85};

struct ImageRow {
    std::uint16_t tag;
    std::int64_t ImageDirectory::*member;
    bool isOfStrip = false; // of which only a single one is used
};

constexpr ImageRow ImageRows[] = {
    {tiff_tag::NewSubfileType, &ImageDirectory::subfileType},
    {tiff_tag::ImageWidth, &ImageDirectory::width},
    {tiff_tag::ImageLength, &ImageDirectory::height},
    {tiff_tag::Compression, &ImageDirectory::compression},
    {tiff_tag::PhotometricInterpretation, &ImageDirectory::photometric},
    {tiff_tag::StripOffsets, &ImageDirectory::stripOffset, true},
    {tiff_tag::StripByteCounts, &ImageDirectory::stripSize, true},
    {tiff_tag::JpegInterchangeFormat, &ImageDirectory::jpegOffset},
    {tiff_tag::JpegInterchangeFormatLength, &ImageDirectory::jpegSize},
};

constexpr bool isImage(std::int32_t kind) {
    return kind == TVMETA_IMAGE || kind == TVMETA_THUMBNAIL_IMAGE || kind == TVMETA_SUB_IMAGE;
}

bool isReduced(const ImageDirectory& image) {
    constexpr std::int64_t Page = 2; // a page of a document; every other bit marks a smaller or an auxiliary image
    return (image.subfileType & ~Page) != 0;
}

} // namespace

bool TagWalker::next(tvmeta_Tag& tag) {
    while (!isFinished_) {
        if (!isOpen_ && !openDirectory() && !openStructure()) {
            isFinished_ = true;
            finish();
        } else if (isOpen_ && (remaining_ == 0 || (blockUsed_ == blockSize_ && !readBlock()))) {
            closeDirectory();
        } else if (isOpen_) {
            tag = decodeEntry();
            follow(tag);
            return true;
        }
    }
    return false;
}

// Reads the header of the next structure, and has its first directory wait.
bool TagWalker::openStructure() {
    if (structureIndex_ == layout_.structures().size()) {
        return false;
    }
    structure_ = layout_.structures()[structureIndex_++];
    directoryCount_ = 0;
    directoryIndex_ = 0;
    std::array<unsigned char, 16> header{};
    const std::span<const unsigned char> bytes = readStart(reader_, structure_.region, header);
    const std::uint16_t mark = ByteCursor(bytes).get16();
    order_ = mark == LittleEndianMark ? ByteOrder::Little : ByteOrder::Big;
    ByteCursor cursor(bytes, order_);
    cursor.skip(2);
    const std::uint16_t magic = cursor.get16();
    isBig_ = magic == BigTiffMagic;
    if (isBig_) {
        cursor.skip(4); // the size of offsets, and zero
    }
    const std::uint64_t first = cursor.number(offsetSize());
    if (!cursor || (mark != LittleEndianMark && mark != BigEndianMark) ||
        std::ranges::find(Magics, magic) == std::end(Magics)) {
        layout_.markBroken(structure_.region.position);
        return true;
    }
    enqueue(first, structure_.directory, 0, true);
    return true;
}

// An offset of a directory that the structure has already is a loop.
void TagWalker::enqueue(std::uint64_t offset, std::int32_t kind, std::size_t chainIndex, bool isChained) {
    if (offset == 0 || directoryCount_ == directories_.size()) {
        return;
    }
    const bool isInside = offset < static_cast<std::uint64_t>(structure_.region.size);
    if (!isInside) {
        // Editors leave dangling offsets of thumbnails. They cost no value of the photograph.
        if (kind != TVMETA_THUMBNAIL_IMAGE && kind != TVMETA_SUB_IMAGE && kind != TVMETA_INTEROPERABILITY) {
            layout_.markBroken(structure_.region.position);
        }
        return;
    }
    const std::int64_t position = structure_.region.position + static_cast<std::int64_t>(offset);
    const std::span known = std::span(directories_).first(directoryCount_);
    if (std::ranges::find(known, position, &Directory::position) == known.end()) {
        directories_[directoryCount_++] = {position, kind, chainIndex, isChained};
    }
}

// Opens the next waiting directory of the structure.
bool TagWalker::openDirectory() {
    if (directoryIndex_ == directoryCount_) {
        return false;
    }
    const Directory& directory = directories_[directoryIndex_];
    std::array<unsigned char, 8> bytes{};
    const std::size_t countSize = isBig_ ? 8 : 2;
    if (!readAt(reader_, directory.position, std::span(bytes).first(countSize))) {
        layout_.markBroken(directory.position);
    }
    remaining_ = ByteCursor(bytes, order_).number(countSize);
    entryPosition_ = directory.position + static_cast<std::int64_t>(countSize);
    ++number_;
    isOpen_ = true;
    if (isImage(directory.kind) && imageCount_ < images_.size()) {
        ImageDirectory& image = images_[imageCount_++];
        image = {};
        image.structure = structure_.region;
        image.kind = directory.kind;
    }
    return true;
}

// The offset of the next directory follows the last entry.
void TagWalker::closeDirectory() {
    const Directory directory = directories_[directoryIndex_++];
    isOpen_ = false;
    std::array<unsigned char, 8> bytes{};
    const auto offset = std::span(bytes).first(offsetSize());
    if (remaining_ > 0 || !directory.isChained || structure_.directory != TVMETA_IMAGE ||
        directory.chainIndex + 1 == MaxChainedImages || !readAt(reader_, entryPosition_, offset)) {
        return;
    }
    const std::int32_t kind = directory.chainIndex == 0 ? TVMETA_THUMBNAIL_IMAGE : TVMETA_SUB_IMAGE;
    enqueue(ByteCursor(offset, order_).number(offset.size()), kind, directory.chainIndex + 1, true);
}

// Reads some entries. Returns false if there are none, though the directory says so.
bool TagWalker::readBlock() {
    const auto left = static_cast<std::uint64_t>(std::max<std::int64_t>(structure_.region.end() - entryPosition_, 0));
    const std::uint64_t entries = std::min({remaining_, BlockEntries, left / entrySize(), entriesLeft_});
    blockUsed_ = 0;
    blockSize_ = 0;
    if (reader_.seek(entryPosition_)) {
        const std::size_t read = reader_.read(std::span(block_).first(static_cast<std::size_t>(entries) * entrySize()));
        blockSize_ = read - read % entrySize();
    }
    entriesLeft_ -= entries;
    if (blockSize_ == 0) {
        layout_.markBroken(entryPosition_);
    }
    return blockSize_ > 0;
}

tvmeta_Tag TagWalker::decodeEntry() {
    ByteCursor cursor{std::span<const unsigned char>(block_).subspan(blockUsed_, entrySize()), order_};
    tvmeta_Tag tag{};
    tag.directory = directories_[directoryIndex_].kind;
    tag.tag = cursor.get16();
    tag.type = cursor.get16();
    tag.count = cursor.number(offsetSize());
    tag.isBigEndian = order_ == ByteOrder::Big ? 1 : 0;
    tag.directoryNumber = number_;
    tag.position = -1;
    const std::uint64_t size = itemSize(tag.type);
    const auto structureSize = static_cast<std::uint64_t>(structure_.region.size);
    if (size > 0 && tag.count <= offsetSize() / size) {
        tag.position = entryPosition_ + static_cast<std::int64_t>(cursor.position());
    } else if (size > 0 && tag.count <= structureSize / size) {
        const std::uint64_t offset = cursor.number(offsetSize());
        if (offset <= structureSize - tag.count * size) {
            tag.position = structure_.region.position + static_cast<std::int64_t>(offset);
        }
    }
    blockUsed_ += entrySize();
    entryPosition_ += static_cast<std::int64_t>(entrySize());
    --remaining_;
    return tag;
}

std::uint64_t TagWalker::valueOf(const tvmeta_Tag& tag, std::uint64_t index) {
    return static_cast<std::uint64_t>(std::max<std::int64_t>(readInteger(reader_, tag, index).value_or(0), 0));
}

// Has the directories wait to which an entry points, and notes what the entry says of images and blocks.
void TagWalker::follow(const tvmeta_Tag& tag) {
    if (isImage(tag.directory) && imageCount_ > 0) {
        describeImage(tag);
    }
    if (isImage(tag.directory) && tag.tag == tiff_tag::IccProfile) {
        addBlock(tag); // raw files have it beside the full picture
    }
    if (tag.directory == TVMETA_EXIF_DIRECTORY && tag.tag == exif_tag::InteroperabilityIfd) {
        enqueue(valueOf(tag), TVMETA_INTEROPERABILITY);
    }
    if (tag.directory != TVMETA_IMAGE) {
        return;
    }
    switch (tag.tag) {
    case tiff_tag::ExifIfd:
        return enqueue(valueOf(tag), TVMETA_EXIF_DIRECTORY);
    case tiff_tag::GpsIfd:
        return enqueue(valueOf(tag), TVMETA_GPS_DIRECTORY);
    case tiff_tag::SubIfds:
        for (std::uint64_t i = 0; i < tag.count && childrenLeft_ > 0; ++i, --childrenLeft_) {
            enqueue(valueOf(tag, i), TVMETA_SUB_IMAGE);
        }
        return;
    default:
        return addBlock(tag);
    }
}

void TagWalker::describeImage(const tvmeta_Tag& tag) {
    const auto* const row = std::ranges::find(ImageRows, tag.tag, &ImageRow::tag);
    if (row != std::end(ImageRows)) {
        const bool isUsed = tag.count == 1 || !row->isOfStrip;
        images_[imageCount_ - 1].*row->member = isUsed ? static_cast<std::int64_t>(valueOf(tag)) : 0;
    }
}

// Blocks in directories. Segments and chunks of their own take precedence, as does the first structure.
void TagWalker::addBlock(const tvmeta_Tag& tag) {
    const Region value{tag.position, static_cast<std::int64_t>(tag.position < 0 ? 0 : tag.count * itemSize(tag.type))};
    switch (tag.tag) {
    case tiff_tag::Xmp:
        return layout_.addFirst(TVMETA_XMP, value);
    case tiff_tag::Iptc:
        return layout_.addFirst(TVMETA_IPTC, value);
    case tiff_tag::IccProfile:
        return layout_.addFirst(TVMETA_ICC, value);
    case tiff_tag::Photoshop:
        if (!areResourcesRead_) { // a hostile file can have this tag thousands of times
            areResourcesRead_ = true;
            findInResources(reader_, std::span(&value, 1), layout_);
        }
        return;
    default:
        return;
    }
}

const ImageDirectory* TagWalker::mainImage() const {
    const ImageDirectory* main = nullptr;
    for (const ImageDirectory& image : std::span(images_).first(imageCount_)) {
        // A page after a full-size first one is another picture.
        const bool isPage = image.kind == TVMETA_THUMBNAIL_IMAGE && main != nullptr;
        if (image.width > 0 && image.height > 0 && image.width <= INT32_MAX && image.height <= INT32_MAX &&
            !isReduced(image) && !isPage && (main == nullptr || image.width > main->width)) {
            main = &image;
        }
    }
    return main != nullptr ? main : imageCount_ > 0 ? &images_[0] : nullptr;
}

void TagWalker::finish() {
    if (layout_.width == 0) {
        if (const ImageDirectory* const main = mainImage()) {
            layout_.width = static_cast<std::int32_t>(std::min<std::int64_t>(main->width, INT32_MAX));
            layout_.height = static_cast<std::int32_t>(std::min<std::int64_t>(main->height, INT32_MAX));
        }
    }
    addJpegs();
}

// The thumbnail is the second image of EXIF data. Raw files have their previews in other directories.
void TagWalker::addJpegs() {
    constexpr std::int64_t OldJpeg = 6;
    constexpr std::int64_t Jpeg = 7;
    constexpr std::int64_t Rgb = 2;
    constexpr std::int64_t YCbCr = 6;
    for (const ImageDirectory& image : std::span(images_).first(imageCount_)) {
        const bool isPicture = image.photometric == Rgb || image.photometric == YCbCr;
        const bool isStrip = image.compression == OldJpeg || (image.compression == Jpeg && isPicture);
        const std::int32_t block = image.kind == TVMETA_THUMBNAIL_IMAGE ? TVMETA_THUMBNAIL : TVMETA_PREVIEW;
        addJpeg(block, image.structure, {image.jpegOffset, image.jpegSize});
        if (isStrip) {
            addJpeg(TVMETA_PREVIEW, image.structure, {image.stripOffset, image.stripSize});
        }
    }
}

// Offsets count from the header of the structure.
void TagWalker::addJpeg(std::int32_t block, const Region& structure, Region region) {
    if (region.position <= 0 || region.size <= 0 || region.position > structure.size ||
        region.size > structure.size - region.position) {
        return;
    }
    region.position += structure.position;
    std::array<unsigned char, 2> start{};
    if (readAt(reader_, region.position, start) && start[0] == 0xFF && start[1] == 0xD8) {
        layout_.offerLarger(block, region);
    }
}

} // namespace tvmeta
