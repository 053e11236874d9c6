// The type of a photograph by its first bytes (JPEG ITU-T T.81, Photoshop file format, TIFF 6.0).
#include "support/file.h"
#include "tvmeta.h"

#include <cstdint>
#include <cstring>

using namespace tvmeta;

namespace {

struct Signature {
    unsigned char bytes[4];
    std::size_t size;
    std::int32_t fileType;
};

constexpr Signature Signatures[] = {
    {{0xFF, 0xD8}, 2, FILE_TYPE_JPEG},
    {{'8', 'B', 'P', 'S'}, 4, FILE_TYPE_PSD},
    {{'I', 'I', 42, 0}, 4, FILE_TYPE_TIFF},
    {{'M', 'M', 0, 42}, 4, FILE_TYPE_TIFF},
};

} // namespace

std::int32_t tvmeta_file_type(const char* path) noexcept {
    const File file = openUnbuffered(path, "rb");
    if (!file) {
        return TVMETA_FILE_UNREADABLE;
    }
    unsigned char start[4] = {};
    const std::size_t size = std::fread(start, 1, sizeof start, file.get());
    if (std::ferror(file.get()) != 0) { // a directory opens, but cannot be read
        return TVMETA_FILE_UNREADABLE;
    }
    for (const Signature& signature : Signatures) {
        if (size >= signature.size && std::memcmp(start, signature.bytes, signature.size) == 0) {
            return signature.fileType;
        }
    }
    return TVMETA_FILE_UNKNOWN;
}
