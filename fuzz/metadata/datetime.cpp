// Capture times as seconds.
#include "support.h"

using namespace fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr float Untouched = -0.5F;
    const std::vector<char> text = terminated(textOf(data, size));
    float seconds = Untouched;
    const std::int32_t result = time_from_datetime(text.data(), 0, &seconds);
    require(result == 1 || (result == -1 && seconds == Untouched), "seconds require a date");
    return 0;
}
