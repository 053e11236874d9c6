#include "containers/finders.h"

#include "metadata/byte_cursor.h"
#include "support/tiff_vocabulary.h"

#include <array>

namespace tvmeta {

namespace {

constexpr std::uint16_t PictureEntries = 0xB002;
constexpr std::size_t PictureEntrySize = 16;

} // namespace

void findMultiPicturePreview(SourceReader& reader, const Region& index, const Region& file, Layout& layout) {
    constexpr std::uint32_t PreviewClass = 0x01; // in bits 16 to 23 of the attributes
    std::array<unsigned char, 2048> block;       // of 3 entries and 100 pictures
    const std::span<const unsigned char> bytes = readStart(reader, index, block);
    const ByteOrder order = ByteCursor(bytes).get16() == LittleEndianMark ? ByteOrder::Little : ByteOrder::Big;
    const auto at = [&](std::size_t offset) {
        ByteCursor cursor(bytes, order);
        cursor.skip(offset);
        return cursor;
    };
    const std::size_t directory = at(4).get32();
    ByteCursor entries = at(directory);
    for (std::uint16_t left = entries.get16(); left > 0 && entries; --left) {
        const std::uint16_t tag = entries.get16();
        entries.skip(2); // type
        const std::size_t count = entries.get32() / PictureEntrySize;
        const std::size_t offset = entries.get32();
        if (tag != PictureEntries) {
            continue;
        }
        entries.skip(entries.remaining()); // one list, however often a hostile index has it
        ByteCursor pictures = at(offset);
        for (std::size_t i = 0; i < count && pictures; ++i) {
            const std::uint32_t attributes = pictures.get32();
            const Region picture{0, pictures.get32()};
            const std::int64_t place = pictures.get32(); // from the start of the index
            pictures.skip(4);                            // dependent images
            const std::int64_t position = index.position + place;
            if (pictures && (attributes >> 16 & 0xFF) == PreviewClass && place > 0 && position < file.end() &&
                picture.size <= file.end() - position) {
                layout.offerLarger(TVMETA_PREVIEW, {position, picture.size});
            }
        }
    }
}

} // namespace tvmeta
