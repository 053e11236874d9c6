// Saves an image, checks its size, reads it back and replaces its profile.
#include "writers/written_tiff.h"

using namespace fuzz;

namespace {

constexpr std::size_t HeaderSize = 8;
constexpr std::int32_t BadArguments = -6;
constexpr std::int32_t Float16 = 3216;
constexpr std::size_t BlockSize = 1 << 20; // size of the blocks in which pixels are written

struct Image {
    TifImageInfo info = {};
    std::size_t sampleBytes = 0;  // as written
    std::size_t sourceSample = 0; // bytes of a sample in the buffer
    std::int32_t rowPitch = 0;
    std::size_t firstRow = 0; // offset in the buffer
    Bytes pixels;

    std::size_t width() const { return static_cast<std::size_t>(info.width); }
    std::size_t height() const { return static_cast<std::size_t>(info.height); }
    std::size_t channels() const { return static_cast<std::size_t>(info.channels); }
    std::size_t samples() const { return channels() >= 3 ? 3 : 1; }
    std::size_t dataSize() const { return width() * height() * samples() * sampleBytes; }
};

struct Attachments {
    Bytes icc;
    Bytes iptc;
    std::vector<char> xmp;
    std::int32_t method;
    Settings settings;
};

std::size_t bytesPerSample(const TifImageInfo& info) {
    return info.bitsCode == Float16 ? 2 : static_cast<std::size_t>(info.bitsCode) / 8;
}

TifImageInfo takeInfo(FuzzedDataProvider& input) {
    TifImageInfo info = {};
    const bool wide = input.ConsumeIntegralInRange<int>(0, 99) == 99; // wider than a block or 16 bits
    info.width = input.ConsumeIntegralInRange<std::int32_t>(1, 100) * (wide ? 700 : 1);
    info.height = input.ConsumeIntegralInRange<std::int32_t>(0, 20);
    info.channels = input.ConsumeIntegralInRange<std::int32_t>(1, 4);
    info.bitsCode = input.PickValueInArray({8, 16, 32, Float16});
    info.pixelMode = info.bitsCode == 8 && input.ConsumeBool() ? 1 : 0;
    info.resolution = input.ConsumeIntegral<std::int32_t>();
    info.orientation = input.ConsumeIntegralInRange<std::int32_t>(-1, 10);
    // One row after the first block is enough.
    const std::int32_t rowSize = info.width * info.channels * lengthOf(bytesPerSample(info));
    info.height = std::min(info.height, lengthOf(BlockSize) / rowSize + 2);
    return info;
}

// A buffer that ends with the last row, filled with a pattern.
void fillPixels(Image& image, std::size_t rowSize, std::size_t pitch, const Bytes& pattern) {
    image.pixels.resize(image.height() > 0 ? (image.height() - 1) * pitch + rowSize : 0);
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        image.pixels[i] = pattern.empty() ? static_cast<std::uint8_t>(i) : pattern[i % pattern.size()];
    }
}

Image takeImage(FuzzedDataProvider& input) {
    Image image;
    image.info = takeInfo(input);
    image.sampleBytes = bytesPerSample(image.info);
    image.sourceSample = image.info.pixelMode == 1 ? 2 : image.sampleBytes;
    const std::size_t unit = image.info.pixelMode == 1 ? 2 : 1; // unit of the pitch
    const std::size_t rowSize = image.width() * image.channels() * image.sourceSample;
    const std::size_t pitch = rowSize + unit * input.ConsumeIntegralInRange<std::size_t>(0, 7);
    const bool bottomUp = image.height() > 0 && input.ConsumeBool();
    image.rowPitch = lengthOf(pitch / unit) * (bottomUp ? -1 : 1);
    image.firstRow = bottomUp ? (image.height() - 1) * pitch : 0;
    fillPixels(image, rowSize, pitch,
               input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 64)));
    return image;
}

Attachments takeAttachments(FuzzedDataProvider& input) {
    Attachments attachments;
    attachments.method = input.ConsumeBool() ? input.PickValueInArray(MethodCodes) : METHOD_NONE;
    attachments.settings = takeFloats(input);
    attachments.icc = input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 200));
    attachments.iptc = input.ConsumeBytes<std::uint8_t>(input.ConsumeIntegralInRange<std::size_t>(0, 200));
    attachments.xmp = input.ConsumeRemainingBytes<char>();
    return attachments;
}

std::int32_t writeImage(const Image& image, const Records& records, const Attachments& attachments) {
    return buf2tif(image.pixels.data() + image.firstRow, &image.info, image.rowPitch, attachments.icc.data(),
                   &records.metadata, &records.gps, lengthOf(attachments.iptc.size()), attachments.iptc.data(),
                   attachments.method, attachments.settings.data(), lengthOf(attachments.xmp.size()),
                   attachments.xmp.data(), memoryFile().path());
}

// The rows in the last block.
std::int32_t expectedRows(const Image& image) {
    const std::size_t rows =
        std::max<std::size_t>(BlockSize / (image.width() * image.channels() * image.sampleBytes), 1);
    return image.height() == 0 ? 0 : lengthOf((image.height() - 1) % rows + 1);
}

void checkPixels(const Image& image, const Bytes& file) {
    const auto pitch = image.rowPitch * static_cast<std::ptrdiff_t>(image.info.pixelMode == 1 ? 2 : 1);
    const std::size_t highByte = image.sourceSample - image.sampleBytes;
    std::size_t at = HeaderSize;
    for (std::size_t y = 0; y < image.height(); ++y) {
        const std::uint8_t* const row = image.pixels.data() + image.firstRow + static_cast<std::ptrdiff_t>(y) * pitch;
        for (std::size_t i = 0; i < image.width() * image.channels(); ++i) {
            if (i % image.channels() < image.samples()) {
                require(std::equal(row + i * image.sourceSample + highByte, row + (i + 1) * image.sourceSample,
                                   file.begin() + lengthOf(at)),
                        "the pixels are written");
                at += image.sampleBytes;
            }
        }
    }
}

// The packet in the file is the caller's or a new one.
void checkXmp(const ExifInfo& info, const Bytes& file, const Records& records, const Attachments& attachments) {
    if (info.xmpLength <= 4) {
        return; // it is in the entry
    }
    require(info.xmpOffset > 0 && static_cast<std::size_t>(info.xmpOffset + info.xmpLength) <= file.size(),
            "the packet is in the file");
    const std::string_view packet = textOf(file.data() + info.xmpOffset, static_cast<std::size_t>(info.xmpLength));
    const bool callers = std::string_view(attachments.xmp.data(), attachments.xmp.size()).starts_with(packet);
    require(callers || attachments.method > 0 || records.metadata.lens[0] != '\0', "a packet needs settings or a lens");
    const bool plainLens = fieldText(records.metadata.lens).find("tvtm") == std::string::npos;
    require(attachments.method == METHOD_NONE || !plainLens ||
                (callers ? detectedMethod(packet) > 0 : detectedMethod(packet) == attachments.method),
            "the packet contains settings");
}

void checkIptc(const ExifInfo& info, const Bytes& file, const Bytes& iptc) {
    require(info.iptcLength == lengthOf((iptc.size() + 3) / 4 * 4), "the IPTC block is padded");
    if (info.iptcLength > 4) {
        require(info.iptcOffset > 0 && static_cast<std::size_t>(info.iptcOffset + info.iptcLength) <= file.size() &&
                    std::equal(iptc.begin(), iptc.end(), file.begin() + info.iptcOffset),
                "the IPTC block is written");
    }
}

// The file is well-formed: the replaced profile must be found and everything else must be unchanged.
void checkProfile(const Bytes& file, const Bytes& icc, std::int32_t length) {
    constexpr std::int32_t IccProfile = 34675;
    const bool written = !icc.empty() && (icc.size() <= 20 || textOf(icc.data() + 16, 3) == "RGB");
    const Bytes profile(static_cast<std::size_t>(length), 0x5A);
    require(update_tif_profile(length, profile.data(), memoryFile().path()) == (written ? length : 0),
            "a profile for RGB can be replaced");
    std::int32_t count = 0;
    std::int32_t offset = 0;
    const std::int32_t entry = get_tif_tag(memoryFile().open().get(), IccProfile, &count, &offset);
    require(written ? entry > 0 && count == length && offset == lengthOf(file.size()) : entry == -1,
            "the new profile is found");
    Bytes expected = file;
    Bytes now = contentOf(memoryFile());
    if (written) {
        expected.insert(expected.end(), profile.begin(), profile.end());
        std::copy_n(file.begin() + entry + 4, 8, now.begin() + entry + 4);
    }
    require(now == expected, "only the entry and the end of the file change");
}

// Undocumented field values are refused before anything is touched, so the pixels may be null.
void writeAnything(FuzzedDataProvider& input) {
    TifImageInfo info = {};
    for (std::int32_t* const field : {&info.width, &info.height, &info.channels, &info.bitsCode, &info.resolution,
                                      &info.iccLength, &info.pixelMode, &info.orientation}) {
        *field = input.ConsumeBool() ? input.ConsumeIntegral<std::int32_t>() : input.ConsumeIntegralInRange(0, 8);
    }
    const Records records = {};
    const Bytes untouched = {'t', 'v'};
    const std::int32_t result =
        buf2tif(nullptr, &info, input.ConsumeIntegral<std::int32_t>(), nullptr, &records.metadata, &records.gps, 0,
                nullptr, METHOD_NONE, nullptr, 0, nullptr, memoryFile().write(untouched).path());
    require(result == BadArguments || (result == 0 && info.height == 0 && info.iccLength == 0),
            "null pixels are accepted only for an image without rows");
    require(result == 0 || contentOf(memoryFile()) == untouched, "refused arguments touch no file");
}

void writeKnown(FuzzedDataProvider& input) {
    const Records records = takeRecords(input);
    Image image = takeImage(input);
    const std::int32_t profileLength = input.ConsumeIntegralInRange<std::int32_t>(1, 300);
    const Attachments attachments = takeAttachments(input);
    image.info.iccLength = lengthOf(attachments.icc.size());

    require(writeImage(image, records, attachments) == expectedRows(image), "the result is the rows of the last block");
    const Bytes file = contentOf(memoryFile());
    const std::size_t directory = HeaderSize + image.dataSize();
    require(loadLe(file, 0, 4) == 0x002A4949 && loadLe(file, 4, 4) == directory,
            "the header points to the directory after the pixels");
    require(file.size() == directory + directorySize(file, directory), "the file ends with its directory");
    checkPixels(image, file);
    const ExifInfo info = requireReadBack(memoryFile(), records, image.info.orientation);
    checkXmp(info, file, records, attachments);
    checkIptc(info, file, attachments.iptc);
    checkProfile(file, attachments.icc, profileLength);
    requireReadBack(memoryFile(), records, image.info.orientation);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    if (input.ConsumeIntegralInRange<int>(0, 15) == 15) {
        writeAnything(input);
    } else {
        writeKnown(input);
    }
    return 0;
}
