// The GPS directory.
#include "metadata/directory.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::parseDirectory(parse_gps_data, data, size);
    return 0;
}
