// The search for a tag in the directories of a TIFF file.
#include "support.h"

using namespace fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t EntrySize = 12;
    constexpr std::uint32_t Short = 3;
    constexpr std::int32_t Untouched = -123'456'789;
    FuzzedDataProvider input(data, size);
    const std::int32_t tag = input.ConsumeIntegral<std::uint16_t>();
    const Bytes file = input.ConsumeRemainingBytes<std::uint8_t>();

    const Stream stream = memoryFile().write(file).open();
    std::int32_t count = Untouched;
    std::int32_t value = Untouched;
    const std::int32_t result = get_tif_tag(stream.get(), tag, &count, &value);
    if (result < 0) {
        require(result >= -3, "the result is documented");
        require(count == Untouched && value == Untouched, "a failure changes nothing");
        return 0;
    }
    const auto entry = static_cast<std::size_t>(result);
    if (entry + EntrySize <= file.size()) { // otherwise its missing bytes have end-of-file values
        const bool isShort = loadLe(file, entry + 2, 2) == Short && count <= 2;
        require(loadLe(file, entry, 2) == static_cast<std::uint32_t>(tag) &&
                    loadLe(file, entry + 4, 4) == static_cast<std::uint32_t>(count) &&
                    loadLe(file, entry + 8, isShort ? 2 : 4) == static_cast<std::uint32_t>(value),
                "count and value are those of the entry");
    }
    return 0;
}
