// Settings files: whole files, regions of files, writing.
#include "support.h"

using namespace fuzz;

namespace {

constexpr char Untouched = 'x';

void checkWhole(const char* path, std::string_view text, std::int32_t method) {
    const std::vector<char> block = terminated(text);
    Settings fromFile(SETTINGS_SLOTS);
    Settings fromMemory(SETTINGS_SLOTS);
    require(read_xmp(path, method, fromFile.data()) ==
                get_settings_from_xmp(method, lengthOf(block.size()), block.data(), nullptr, fromMemory.data()),
            "a file gives the result of its text");
    require(std::memcmp(fromFile.data(), fromMemory.data(), sizeof(SettingsValues)) == 0,
            "a file gives the settings of its text");
}

void checkRegion(const char* path, std::string_view text, std::int32_t count, std::int32_t offset) {
    std::vector<char> block(static_cast<std::size_t>(std::max(count, 0)) + 1, Untouched);
    block.back() = '\0';
    std::vector<char> expected = block;
    const std::int32_t result = extract_xmp(path, count, offset, block.data());
    if (text.empty()) {
        require(result == -1, "an empty file is refused");
    } else if (offset < 0 || std::int64_t{offset} + count >= lengthOf(text.size())) {
        require(result == 0, "a region past the end of the file is refused");
    } else if (count < 0) {
        require(result == -3, "a negative count is refused");
    } else {
        const std::string_view region = text.substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(count));
        region.copy(expected.data(), region.size());
        require(result == detectedMethod(region), "a region gives the method of its text");
    }
    require(block == expected, "the region is read whole or not at all");
}

void checkWritten(const char* path, std::int32_t method, const Settings& settings) {
    std::vector<char> packet(static_cast<std::size_t>(embed_xmp(0, method, settings.data(), 0, nullptr, nullptr)));
    embed_xmp(1, method, settings.data(), 0, nullptr, packet.data());
    require(write_xmp(path, method, settings.data()) == 1, "the file is written");
    const Bytes written = contentOf(memoryFile());
    require(std::equal(written.begin(), written.end(), packet.begin(), packet.end(),
                       [](std::uint8_t a, char b) { return a == static_cast<std::uint8_t>(b); }),
            "the file is the packet");
    require(read_xmp(path, METHOD_DETECT, nullptr) == method, "the file is read back");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const std::int32_t method = input.PickValueInArray(MethodCodes);
    const std::int32_t count = input.ConsumeIntegral<std::int16_t>();
    const bool farAway = input.ConsumeBool();
    const auto number = input.ConsumeIntegral<std::int32_t>();
    const std::int32_t offset = farAway ? number : number % 1024;
    const Settings settings = takeFloats(input);
    const Bytes file = input.ConsumeRemainingBytes<std::uint8_t>();

    const std::string_view text = textOf(file.data(), file.size());
    const char* const path = memoryFile().write(file).path();
    checkWhole(path, text, METHOD_DETECT);
    checkWhole(path, text, method);
    checkRegion(path, text, count, offset);
    checkWritten(path, method, settings);
    return 0;
}
