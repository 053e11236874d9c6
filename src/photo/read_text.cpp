// Texts for people, from XMP, IPTC or EXIF.
#include "containers/tag_values.h"
#include "photo/iptc_text.h"
#include "photo/open_photo.h"
#include "photo/xmp_text.h"
#include "support/text_numbers.h"
#include "support/tiff_vocabulary.h"

#include <algorithm>
#include <iterator>

using namespace tvmeta;

namespace {

// Where a text is, by falling precedence. 0 and empty: nowhere.
struct TextPlace {
    std::string_view property;
    std::uint8_t dataset;
    std::uint16_t tag;
    std::uint16_t wideTag; // in UTF-16, little-endian
};

// By the numbers of texts in the header.
constexpr TextPlace Places[] = {
    {"dc:title", iptc_dataset::ObjectName, 0, tiff_tag::XpTitle},
    {"dc:description", iptc_dataset::Caption, tiff_tag::ImageDescription, 0},
    {"dc:creator", iptc_dataset::Byline, tiff_tag::Artist, tiff_tag::XpAuthor},
    {"dc:rights", iptc_dataset::CopyrightNotice, tiff_tag::Copyright, 0},
    {"dc:subject", iptc_dataset::Keyword, 0, tiff_tag::XpKeywords},
    {"xmp:Rating", 0, tiff_tag::Rating, 0},
    {"xmp:CreatorTool", 0, tiff_tag::Software, 0},
};
static_assert(std::size(Places) == TVMETA_TEXT_SOFTWARE + 1);

constexpr std::size_t MaxTagText = 1 << 16;

// Pairs outside of the first plane are rare, and become two replacement characters.
void putWide(std::string_view bytes, int index, TextWriter& writer) {
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto unit =
            static_cast<char32_t>(static_cast<unsigned char>(bytes[i]) | static_cast<unsigned char>(bytes[i + 1]) << 8);
        if (unit == 0) {
            return;
        }
        if (unit == U';') { // between keywords
            --index;
        } else if (index == 0) {
            writer.put(unit >= 0xD800 && unit <= 0xDFFF ? U'\uFFFD' : unit);
        }
    }
}

void putTag(OpenPhoto& photo, const TagSet& tags, const TextPlace& place, int index, TextWriter& writer) {
    const tvmeta_Tag* const tag = tags.image(place.tag);
    const tvmeta_Tag* const wide = tags.image(place.wideTag);
    if (tag != nullptr && index == 0 && place.tag == tiff_tag::Rating) {
        return writer.put(PrintedInteger(readInteger(photo.reader, *tag).value_or(0)).text());
    }
    const bool isWide = tag == nullptr || index > 0;
    const tvmeta_Tag* const chosen = isWide ? wide : tag;
    if (chosen == nullptr) {
        return;
    }
    ZeroedBuffer buffer(static_cast<std::size_t>(std::min<std::uint64_t>(chosen->count, MaxTagText)));
    photo.layout.isWithoutMemory |= !buffer;
    const std::string_view text(buffer.text(), readBytes(photo.reader, *chosen, {buffer.text(), buffer.size()}));
    if (isWide) {
        putWide(text, index, writer);
    } else {
        putText(writer, trimmed(chosen->count > text.size() ? wholeCharacters(text) : text));
    }
}

void putFirst(OpenPhoto& photo, const TagSet& tags, const TextPlace& place, int index, TextWriter& writer) {
    ZeroedBuffer packet = loadBlock(photo, TVMETA_XMP);
    if (packet && findProperty({packet.text(), packet.size()}, place.property, writer, 0)) {
        if (index > 0) {
            writer.clear();
            findProperty({packet.text(), packet.size()}, place.property, writer, index);
        }
        return;
    }
    ZeroedBuffer block = loadBlock(photo, TVMETA_IPTC);
    if (block && place.dataset != 0 && findDataset(block.bytes(), place.dataset, writer, 0)) {
        if (index > 0) {
            writer.clear();
            findDataset(block.bytes(), place.dataset, writer, index);
        }
        return;
    }
    putTag(photo, tags, place, index, writer);
}

} // namespace

std::int64_t tvmeta_read_text(const tvmeta_Source* source, const tvmeta_Photo*, std::int32_t text, std::int32_t index,
                              char* buffer, std::int64_t capacity) noexcept {
    if (!isUsable(source) || text < 0 || text > TVMETA_TEXT_SOFTWARE || index < 0 || capacity < 0) {
        return TVMETA_BAD_ARGUMENT;
    }
    OpenPhoto photo(*source);
    const TagSet tags = photo.readTags();
    const auto size = static_cast<std::size_t>(buffer != nullptr ? capacity : 0);
    TextWriter writer({buffer, size});
    if (photo.status == TVMETA_OK && (index == 0 || text == TVMETA_TEXT_KEYWORD)) {
        putFirst(photo, tags, Places[text], index, writer);
    }
    const std::int32_t failure = photo.failure();
    return failure == TVMETA_OK ? static_cast<std::int64_t>(writer.size()) : failure;
}
