// Reading a TIFF file: a result image, and a camera's raw file.
#include "metadata/container.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::int32_t RawFile = 7; // any value that is not a FILE_TYPE constant
    fuzz::readContainer({data, size}, FILE_TYPE_TIFF, {1, -2, -3});
    fuzz::readContainer({data, size}, RawFile, {1, -2, -3});
    return 0;
}
