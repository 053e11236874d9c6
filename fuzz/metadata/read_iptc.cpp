// The IPTC block of a source file.
#include "support.h"

using namespace fuzz;

namespace {

constexpr std::uint8_t Untouched = 0xA5;

std::int32_t expectedResult(const Bytes& file, std::int32_t count, std::int32_t offset) {
    if (file.empty()) {
        return -1;
    }
    if (count <= 0 || offset < 0 || std::int64_t{offset} + count >= lengthOf(file.size())) {
        return 0;
    }
    return file[static_cast<std::size_t>(offset)] == 0x1C ? count : -2;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const std::int32_t count = input.ConsumeIntegral<std::int16_t>();
    const bool farAway = input.ConsumeBool();
    const auto number = input.ConsumeIntegral<std::int32_t>();
    const std::int32_t offset = farAway ? number : number % 4096;
    const Bytes file = input.ConsumeRemainingBytes<std::uint8_t>();

    Bytes block(static_cast<std::size_t>(std::max(count, 0)), Untouched);
    const std::int32_t result = read_iptc(memoryFile().write(file).path(), count, offset, block.data());
    require(result == expectedResult(file, count, offset), "the result depends on the region only");
    const bool copied = result > 0 || result == -2;
    const Bytes expected =
        copied ? Bytes(file.begin() + offset, file.begin() + offset + count) : Bytes(block.size(), Untouched);
    require(block == expected, "the region is copied whole or not at all");
    return 0;
}
