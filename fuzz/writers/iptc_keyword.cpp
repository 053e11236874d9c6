// A keyword added to an IPTC block.
#include "support.h"

using namespace fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::uint8_t Untouched = 0xA5;
    const Bytes recordVersion = {0x1C, 2, 0, 0, 2, 2, 0};
    FuzzedDataProvider input(data, size);
    const auto keywordSize = input.ConsumeIntegralInRange<std::size_t>(0, 300);
    const bool tooLong = keywordSize == 300;
    const std::vector<char> keyword = tooLong ? std::vector<char>(0x8000, 'k') : input.ConsumeBytes<char>(keywordSize);
    const Bytes block = input.ConsumeRemainingBytes<std::uint8_t>();

    const Bytes before = block.empty() ? recordVersion : block;
    Bytes out(before.size() + 5 + keyword.size(), Untouched);
    const std::int32_t result =
        add_iptc_keyword(lengthOf(block.size()), block.data(), lengthOf(keyword.size()), keyword.data(), out.data());
    if (result < 0) {
        require(result == -1 && (tooLong || !block.empty()), "the failure is documented");
        require(out == Bytes(out.size(), Untouched), "a failure changes nothing");
        return 0;
    }
    require(!tooLong && result <= lengthOf(before.size()), "the dataset is in the new block");
    Bytes dataset = {0x1C, 2, 25, static_cast<std::uint8_t>(keyword.size() >> 8),
                     static_cast<std::uint8_t>(keyword.size())};
    dataset.insert(dataset.end(), keyword.begin(), keyword.end());
    Bytes expected = before;
    expected.insert(expected.begin() + result, dataset.begin(), dataset.end());
    require(out == expected, "the new block is the old one plus the dataset");
    return 0;
}
