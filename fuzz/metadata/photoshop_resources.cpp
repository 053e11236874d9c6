// The thumbnail and the IPTC block among Photoshop image resources.
#include "support.h"

using namespace fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const bool anySize = input.ConsumeBool();
    const auto number = input.ConsumeIntegral<std::int32_t>();
    const Bytes resources = input.ConsumeRemainingBytes<std::uint8_t>();
    const std::int32_t announced = anySize ? number : lengthOf(resources.size()) + number % 8;

    const Stream stream = memoryFile().write(resources).open();
    ExifInfo info = {};
    const std::int32_t result = parse_photoshop_data(stream.get(), announced, &info);
    require(result == (info.thumbnailOffset != 0 ? info.thumbnailLength : 1), "the result is the thumbnail's size");

    ExifInfo others = info;
    others.thumbnailWidth = others.thumbnailHeight = others.thumbnailRowBytes = 0;
    others.thumbnailLength = others.thumbnailOffset = 0;
    others.iptcLength = others.iptcOffset = 0;
    require(allZero(others), "the other fields are unchanged");
    return 0;
}
