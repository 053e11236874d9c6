// Texts for people, from XMP, IPTC or EXIF.
#include "containers/tag_values.h"
#include "photo/iptc_text.h"
#include "photo/open_photo.h"
#include "photo/xmp_text.h"
#include "support/text_numbers.h"
#include "support/text_search.h"
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

// The start of a text in a tag, zeros where it cannot be read; empty if there is none.
ZeroedBuffer loadText(OpenPhoto& photo, const tvmeta_Tag* tag) {
    ZeroedBuffer buffer(tag != nullptr ? static_cast<std::size_t>(std::min<std::uint64_t>(tag->count, MaxTagText)) : 0);
    photo.layout.isWithoutMemory |= !buffer;
    if (tag != nullptr) {
        readBytes(photo.reader, *tag, {buffer.text(), buffer.size()});
    }
    return buffer;
}

// Pairs outside of the first plane are rare, and become two replacement characters.
void putWide(std::string_view bytes, TextWriter& writer) {
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto unit =
            static_cast<char32_t>(static_cast<unsigned char>(bytes[i]) | static_cast<unsigned char>(bytes[i + 1]) << 8);
        if (unit == 0) {
            return;
        }
        writer.put(unit >= 0xD800 && unit <= 0xDFFF ? U'\uFFFD' : unit);
    }
}

// The item at an index of a list with semicolons; empty items do not count.
std::string_view itemOf(std::string_view list, int index) {
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(';'), list.size());
        const std::string_view item = trimmed({list.data(), end});
        if (!item.empty() && index-- == 0) {
            return item;
        }
        list = textFrom(list, end + 1);
    }
    return {};
}

void putTag(OpenPhoto& photo, const TagSet& tags, const TextPlace& place, int index, TextWriter& writer) {
    constexpr std::size_t MaxBytesOfPair = 3; // in UTF-8
    const tvmeta_Tag* const tag = tags.image(place.tag);
    if (tag != nullptr && place.tag == tiff_tag::Rating) {
        return writer.put(PrintedInteger(readInteger(photo.reader, *tag).value_or(0)).text());
    }
    ZeroedBuffer text = loadText(photo, tag);
    const std::string_view start(text.text(), text.size());
    if (const std::string_view narrow = trimmed(start.size() == MaxTagText ? wholeCharacters(start) : start);
        !narrow.empty()) {
        return putText(writer, narrow);
    }
    ZeroedBuffer pairs = loadText(photo, tags.image(place.wideTag));
    ZeroedBuffer buffer(pairs.size() / 2 * MaxBytesOfPair);
    photo.layout.isWithoutMemory |= !buffer;
    TextWriter converted({buffer.text(), buffer.size()});
    putWide({pairs.text(), pairs.size()}, converted);
    const std::string_view wide = trimmed({buffer.text(), converted.written()});
    writer.put(place.wideTag == tiff_tag::XpKeywords ? itemOf(wide, index) : wide);
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
