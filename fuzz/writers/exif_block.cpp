// The EXIF block, with the counts of the records and with arbitrary counts.
#include "writers/written_tiff.h"

using namespace fuzz;

namespace {

struct Counts {
    std::int32_t exif;
    std::int32_t exifBytes;
    std::int32_t gps;
    std::int32_t gpsBytes;
    std::int32_t model;
    std::int32_t make;
    std::int32_t date;
    std::int32_t gpsDate;
};

using Make = std::vector<char>;

Counts countsOf(const Records& records, Make& make) {
    Counts counts = {};
    std::int32_t lens = 0;
    const std::int32_t entries =
        get_exif_count(&records.metadata, &counts.exif, &counts.exifBytes, &records.gps, &counts.gps, &counts.gpsBytes,
                       &counts.model, &counts.make, &counts.date, &counts.gpsDate, &lens, make.data());
    require(entries == counts.exif + counts.gps, "the result counts all entries");
    require(counts.exif >= 0 && counts.exif <= 5 && counts.gps >= 0 && counts.gps <= 9,
            "there are not too many entries");
    require(lens >= 0 && lens <= 64, "the lens name fits in its field");
    return counts;
}

Counts takeCounts(FuzzedDataProvider& input) {
    const std::int32_t most = input.PickValueInArray({3, 30, 300, INT32_MAX});
    Counts counts = {};
    for (std::int32_t* const count : {&counts.exif, &counts.exifBytes, &counts.gps, &counts.gpsBytes, &counts.model,
                                      &counts.make, &counts.date, &counts.gpsDate}) {
        *count = input.ConsumeIntegralInRange<std::int32_t>(-1, most);
    }
    return counts;
}

// The documented size of the block.
std::int64_t expectedSize(const Counts& counts) {
    std::int64_t size = 14 + 12;
    for (const std::int64_t text : {counts.model, counts.make}) {
        size += text > 0 ? 12 + (text > 4 ? text : 0) : 0;
    }
    const std::pair<std::int64_t, std::int64_t> directories[] = {{counts.exif, counts.exifBytes},
                                                                 {counts.gps, counts.gpsBytes}};
    for (const auto& [entries, bytes] : directories) {
        size += entries > 0 ? 12 + 2 + 12 * entries + 4 + std::max<std::int64_t>(bytes, 0) : 0;
    }
    return size;
}

std::int32_t writeBlock(const Counts& counts, std::int32_t orientation, const Records& records, const Make& make,
                        Bytes& block) {
    return write_exif_buf(counts.exif, counts.exifBytes, counts.gps, counts.gpsBytes, counts.model, counts.make,
                          counts.date, counts.gpsDate, orientation, &records.metadata, &records.gps, make.data(),
                          block.data());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const bool anyCounts = input.ConsumeBool();
    const std::int32_t orientation = input.ConsumeIntegralInRange<std::int32_t>(-1, 10);
    const Records records = takeRecords(input);
    Make make(64);
    const Counts fitting = countsOf(records, make);
    const Counts counts = anyCounts ? takeCounts(input) : fitting;

    constexpr std::int64_t MaxMemory = 1 << 20;
    const std::int64_t expected = expectedSize(counts);
    const bool nothing = counts.exif <= 0 && counts.gps <= 0 && counts.model <= 0 && counts.make <= 0;
    const bool refused = nothing || expected > INT32_MAX;
    if (!refused && expected > MaxMemory) {
        return 0; // valid, but slow
    }
    Bytes block(refused ? 1 : static_cast<std::size_t>(expected));
    const std::int32_t written = writeBlock(counts, orientation, records, make, block);
    require(written == (refused ? -1 : expected), "the block has the computed size");
    require(!refused || block[0] == 0, "a refused block is unchanged");
    if (!refused && !anyCounts) {
        require(8 + directorySize(block, 8) == block.size(), "the block is filled by its directories");
        requireReadBack(memoryFile().write(block), records, orientation);
    }
    return 0;
}
