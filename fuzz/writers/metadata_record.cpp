// The readers' record converted into the writers' records.
#include "support.h"

using namespace fuzz;

namespace {

bool isExpected(const std::int32_t (&rational)[2], float value) {
    const bool written = rational[0] > 0 && rational[1] > 0 && (rational[0] == 100 || rational[1] == 100);
    return value > 0.0F ? written : rational[0] == 0 && rational[1] == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ExifInfo info = {};
    std::memcpy(&info, data, std::min(size, sizeof info));
    MetadataBuf metadata = {};
    GpsBuf gps = {};
    require(metadataBufFromExifInfo(&info, &metadata, &gps) == metadata.exposureTime[0], "the result is the numerator");
    require(isExpected(metadata.exposureTime, info.exposureTime) && isExpected(metadata.fNumber, info.fNumber) &&
                isExpected(metadata.focalLength, info.focalLength) &&
                isExpected(metadata.focalPlaneXResolution, info.focalPlaneXResolution),
            "numbers above zero become rationals");
    require(std::memcmp(metadata.model, info.model, sizeof metadata.model) == 0 &&
                std::memcmp(metadata.lens, info.lens, sizeof metadata.lens) == 0 &&
                std::memcmp(metadata.dateTimeOriginal, info.dateTimeOriginal, sizeof metadata.dateTimeOriginal) == 0,
            "texts are copied");
    return 0;
}
