// PNG pictures, as stb_image decodes them.

#include "output/failure.h"
#include "pictures/image.h"

#include <memory>

#define STBI_NO_STDIO
#include <stb/stb_image.h>

namespace {

struct StbDeleter {
    void operator()(void* samples) const { stbi_image_free(samples); }
};

} // namespace

Image decodePng(const std::string& path, const Bytes& file) {
    const int size = librarySize(file);
    const bool isDeep = stbi_is_16_bit_from_memory(file.data(), size) != 0;
    Image image = {.depth = isDeep ? Depth::Integer16 : Depth::Integer8};
    const auto decode = [&](auto load) -> void* {
        return load(file.data(), size, &image.width, &image.height, &image.channels, 0);
    };
    const std::unique_ptr<void, StbDeleter> samples(isDeep ? decode(stbi_load_16_from_memory)
                                                           : decode(stbi_load_from_memory));
    if (!samples) {
        // There is no reason where memory for the unpacked rows is lacking.
        const char* reason = stbi_failure_reason();
        throw Failure(path, reason == nullptr ? "there is not enough memory"
                                              : std::string("it cannot be decoded as PNG: ") + reason);
    }
    const auto* bytes = static_cast<const unsigned char*>(samples.get());
    image.samples.assign(bytes, bytes + sampleBytes(image));
    return image;
}
