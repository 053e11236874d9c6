// Exposure and ISO speed in the text of an ImageDescription tag.
#include "support.h"

using namespace fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const std::int32_t excess = input.ConsumeIntegralInRange<std::int32_t>(-3, 3);
    const Bytes text = input.ConsumeRemainingBytes<std::uint8_t>();
    const std::int32_t announced = excess == 3 ? INT32_MAX : lengthOf(text.size()) + excess;

    const Stream stream = memoryFile().write(text).open();
    ExifInfo info = {};
    const std::int32_t result = parse_image_description(stream.get(), announced, &info);
    const bool readable = announced > 0 && announced <= lengthOf(text.size());
    require(readable || (result == -1 && allZero(info)), "a missing text changes nothing");
    require(info.exposureSource == 0 || (info.exposureSource == 2 && result > 0),
            "the source of the exposure is 0 or 2");

    ExifInfo others = info;
    others.exposureTime = 0.0F;
    others.isoSpeed = 0;
    others.exposureSource = 0;
    require(allZero(others), "the other fields are unchanged");
    return 0;
}
