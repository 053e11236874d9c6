// The type of a photograph by its first bytes (JPEG ITU-T T.81, Photoshop file format, TIFF 6.0).
#include "support/file.h"
#include "tvmeta.h"

#include <cstdint>
#include <string_view>

using namespace tvmeta;
using namespace std::string_view_literals;

namespace {

struct Signature {
    std::string_view bytes;
    std::int32_t fileType;
};

constexpr Signature Signatures[] = {
    {"\xFF\xD8"sv, FILE_TYPE_JPEG},
    {"8BPS"sv, FILE_TYPE_PSD},
    {"II\x2A\0"sv, FILE_TYPE_TIFF},
    {"MM\0\x2A"sv, FILE_TYPE_TIFF},
};

} // namespace

std::int32_t tvmeta_file_type(const char* path) noexcept {
    const File file = openUnbuffered(path, Access::Read);
    char start[4] = {};
    const std::size_t size = file ? std::fread(start, 1, sizeof start, file.get()) : 0;
    if (!file || std::ferror(file.get()) != 0) { // a directory opens, but cannot be read
        return TVMETA_FILE_UNREADABLE;
    }
    for (const Signature& signature : Signatures) {
        if (std::string_view(start, size).starts_with(signature.bytes)) {
            return signature.fileType;
        }
    }
    return TVMETA_FILE_UNKNOWN;
}
