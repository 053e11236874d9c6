// The kinds of files, by their first bytes.
#include "containers/finders.h"
#include "support/text_search.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace tvmeta {

namespace {

using namespace std::string_view_literals;

enum Refused : std::int32_t {
    X3f = TVMETA_FORMAT_REFUSED,
    Crw,
    Mrw,
    Iiq,
    Gif,
    Mp4,
    QuickTime,
    Avi,
    Jpeg2000,
    Bmp,
    OpenExr,
    Radiance,
    Pdf,
};

using Find = void (*)(SourceReader& reader, const Region& file, Layout& layout);

// Bytes at an offset, and what they are. The first row that fits decides. Formats without a function are refused.
struct Kind {
    std::size_t offset;
    std::string_view bytes;
    std::int32_t format;
    const char* name;
    Find find;
};

void findInTiff(SourceReader&, const Region& file, Layout& layout) {
    layout.addStructure(file);
}

constexpr Kind Kinds[] = {
    {0, "\xFF\xD8\xFF"sv, TVMETA_FORMAT_JPEG, "JPEG", findInJpeg},
    {6, "HEAPCCDR"sv, Crw, "CRW", nullptr},
    {8, "IIII"sv, Iiq, "IIQ", nullptr},
    {8, "MMMM"sv, Iiq, "IIQ", nullptr},
    {0, "II\x2A\0"sv, TVMETA_FORMAT_TIFF, "TIFF", findInTiff},
    {0, "MM\0\x2A"sv, TVMETA_FORMAT_TIFF, "TIFF", findInTiff},
    {0, "II\x2B\0\x08\0\0\0"sv, TVMETA_FORMAT_BIGTIFF, "BigTIFF", findInTiff},
    {0, "MM\0\x2B\0\x08\0\0"sv, TVMETA_FORMAT_BIGTIFF, "BigTIFF", findInTiff},
    {0, "8BPS\0\x01"sv, TVMETA_FORMAT_PSD, "PSD", findInPhotoshopFile},
    {0, "8BPS\0\x02"sv, TVMETA_FORMAT_PSD, "PSD", findInPhotoshopFile},
    {0, "IIRO"sv, TVMETA_FORMAT_ORF, "ORF", findInTiff},
    {0, "IIRS"sv, TVMETA_FORMAT_ORF, "ORF", findInTiff},
    {0, "MMOR"sv, TVMETA_FORMAT_ORF, "ORF", findInTiff},
    {0, "IIU\0"sv, TVMETA_FORMAT_RW2, "RW2", findInRw2},
    {0, "FUJIFILMCCD-RAW "sv, TVMETA_FORMAT_RAF, "RAF", findInRaf},
    {4, "ftypcrx "sv, TVMETA_FORMAT_CR3, "CR3", findInCr3},
    {4, "ftypavif"sv, TVMETA_FORMAT_AVIF, "AVIF", findInHeif},
    {4, "ftypavis"sv, TVMETA_FORMAT_AVIF, "AVIF", findInHeif},
    {4, "ftyphe"sv, TVMETA_FORMAT_HEIF, "HEIF", findInHeif},
    {4, "ftypmif1"sv, TVMETA_FORMAT_HEIF, "HEIF", findInHeif},
    {4, "ftypmsf1"sv, TVMETA_FORMAT_HEIF, "HEIF", findInHeif},
    {0, "\0\0\0\x0CJXL \r\n\x87\n"sv, TVMETA_FORMAT_JXL, "JPEG XL", findInJxl},
    {0, "\xFF\x0A"sv, TVMETA_FORMAT_JXL, "JPEG XL", findInJxl},
    {0, "\x89PNG\r\n\x1A\n"sv, TVMETA_FORMAT_PNG, "PNG", findInPng},
    {8, "WEBP"sv, TVMETA_FORMAT_WEBP, "WebP", findInWebp},
    {0, "FOVb"sv, X3f, "X3F", nullptr},
    {0, "\0MRM"sv, Mrw, "MRW", nullptr},
    {0, "GIF8"sv, Gif, "GIF", nullptr},
    {4, "ftypqt  "sv, QuickTime, "QuickTime", nullptr},
    {4, "ftyp"sv, Mp4, "MP4", nullptr},
    {4, "moov"sv, QuickTime, "QuickTime", nullptr},
    {4, "mdat"sv, QuickTime, "QuickTime", nullptr},
    {4, "wide"sv, QuickTime, "QuickTime", nullptr},
    {8, "AVI "sv, Avi, "AVI", nullptr},
    {4, "jP  \r\n\x87\n"sv, Jpeg2000, "JPEG 2000", nullptr},
    {0, "\xFF\x4F\xFF\x51"sv, Jpeg2000, "JPEG 2000", nullptr},
    {0, "BM"sv, Bmp, "BMP", nullptr},
    {0, "v/1\x01"sv, OpenExr, "OpenEXR", nullptr},
    {0, "#?RADIANCE"sv, Radiance, "Radiance", nullptr},
    {0, "#?RGBE"sv, Radiance, "Radiance", nullptr},
    {0, "%PDF-"sv, Pdf, "PDF", nullptr},
};

const Kind* kindOf(std::span<const unsigned char> start) {
    const auto* const found = std::ranges::find_if(
        Kinds, [start](const Kind& kind) { return textFrom(asText(start), kind.offset).starts_with(kind.bytes); });
    return found != std::end(Kinds) ? found : nullptr;
}

} // namespace

std::int32_t findBlocks(SourceReader& reader, std::int64_t size, Layout& layout) {
    std::array<unsigned char, 64> start{};
    reader.seek(0);
    const std::size_t read = reader.read(start);
    const Kind* kind = kindOf(std::span(start).first(read));
    if (kind == nullptr) {
        return TVMETA_UNKNOWN_KIND;
    }
    layout.format = kind->format;
    if (kind->find == nullptr) {
        return TVMETA_REFUSED_KIND;
    }
    if (kind->format != TVMETA_FORMAT_JPEG && kind->format != TVMETA_FORMAT_RAF) { // a RAF has its in one, too
        reader.setWindowSize(window_size::Tiff);
    }
    kind->find(reader, {0, size}, layout);
    return TVMETA_OK;
}

} // namespace tvmeta

using namespace tvmeta;

const char* tvmeta_format_name(std::int32_t format) noexcept {
    const auto* const found = std::ranges::find(Kinds, format, &Kind::format);
    return found != std::end(Kinds) ? found->name : "unknown";
}
