// A keyword added to an IPTC block.
#include "support.h"
#include "tvmeta_photo.h"

using namespace fuzz;

namespace {

Bytes withLake(const Bytes& block) {
    const char* const keywords[] = {"lake"};
    const auto size = static_cast<std::int64_t>(block.size());
    const std::int64_t needed = tvmeta_add_keywords(block.data(), size, keywords, 1, nullptr, 0, nullptr);
    require(needed >= size, "nothing is lost");
    Bytes longer(static_cast<std::size_t>(needed));
    std::int64_t leftOut = -1;
    require(tvmeta_add_keywords(block.data(), size, keywords, 1, longer.data(), needed, &leftOut) == needed &&
                leftOut == 0,
            "measuring and writing agree");
    return longer;
}

bool hasLake(const Bytes& block) {
    const auto size = static_cast<std::int64_t>(block.size());
    const std::int64_t count = tvmeta_list_datasets(block.data(), size, nullptr, 0);
    std::vector<tvmeta_Dataset> datasets(static_cast<std::size_t>(count));
    tvmeta_list_datasets(block.data(), size, datasets.data(), count);
    return std::any_of(datasets.begin(), datasets.end(), [&](const tvmeta_Dataset& dataset) {
        require(dataset.position >= 5 && dataset.size <= size - dataset.position, "values are in the block");
        return dataset.record == 2 && dataset.number == 25 && dataset.size == 4 &&
               std::equal(block.begin() + dataset.position, block.begin() + dataset.position + 4, "lake");
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::uint8_t Untouched = 0xA5;
    const Bytes recordVersion = {0x1C, 2, 0, 0, 2, 2, 0};
    FuzzedDataProvider input(data, size);
    const auto keywordSize = input.ConsumeIntegralInRange<std::size_t>(0, 300);
    const bool tooLong = keywordSize == 300;
    const std::vector<char> keyword = tooLong ? std::vector<char>(0x8000, 'k') : input.ConsumeBytes<char>(keywordSize);
    const Bytes block = input.ConsumeRemainingBytes<std::uint8_t>();

    const Bytes longer = withLake(block);
    require(hasLake(longer), "the keyword is a dataset");
    require(withLake(longer) == longer, "a keyword is added once");

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
