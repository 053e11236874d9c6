// Reading a JPEG.
#include "metadata/container.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::readContainer({data, size}, FILE_TYPE_JPEG, {1, -1, -2, -3, -10});
    return 0;
}
