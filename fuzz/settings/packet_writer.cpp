// The text of a settings packet: measured, written and read back.
#include "support.h"

#include <cmath>

using namespace fuzz;

namespace {

struct Request {
    std::int32_t pass;
    std::int32_t method;
    Settings settings;
    std::string lens;
};

// Both passes of the writer.
std::string packetOf(const Request& request) {
    const auto write = [&](std::int32_t pass, char* out) {
        return embed_xmp(pass, request.method, request.settings.data(), lengthOf(request.lens.size()),
                         request.lens.c_str(), out);
    };
    const std::int32_t measured = write(0, nullptr);
    require(measured >= 0, "a length is not negative");
    const std::size_t digits = std::to_string(std::max(request.pass, 1)).size();
    const bool numbered = request.method > 0; // the namespace ends with the pass, in at least two digits
    const std::size_t more = numbered && digits > 2 ? digits - 2 : 0;
    std::vector<char> packet(static_cast<std::size_t>(measured) + more);
    require(write(request.pass, packet.data()) == lengthOf(packet.size()), "the written size is the measured size");
    return {packet.begin(), packet.end()};
}

void checkLens(const Request& request, std::string_view packet) {
    constexpr std::string_view Closing = "</aux:Lens";
    const std::vector<char> block = terminated(packet);
    std::vector<char> lens(64);
    get_settings_from_xmp(MODE_LENS, lengthOf(block.size()), block.data(), lens.data(), nullptr);
    const std::string text(request.lens.c_str());
    const std::string name = text.substr(0, (text + std::string(Closing)).find(Closing));
    require(lens.data() == (name.size() < lens.size() ? name : std::string()), "the lens name is read back");
}

Settings settingsIn(std::string_view packet, std::int32_t method) {
    const std::vector<char> block = terminated(packet);
    Settings settings(SETTINGS_SLOTS);
    const std::int32_t result =
        get_settings_from_xmp(method, lengthOf(block.size()), block.data(), nullptr, settings.data());
    require(result >= 47, "the settings are read back");
    return settings;
}

// Numbers are printed and read as by the C library.
void checkNumber(const Request& request, const std::string& packet, const Settings& read, const std::string& tag,
                 std::size_t slot, int decimals) {
    const float value = request.settings[slot];
    std::array<char, 64> text = {};
    std::snprintf(text.data(), text.size(), "%.*f", decimals, static_cast<double>(value));
    require(packet.find("<tvtm:" + tag + ">" + text.data() + "</tvtm:") != std::string::npos, "the number is printed");
    require(!std::isfinite(value) || read[slot] == std::strtof(text.data(), nullptr), "the number is scanned");
}

void checkNumbers(const Request& request, const std::string& packet, const Settings& read) {
    if (request.method == METHOD_TONE_COMPRESSOR) {
        checkNumber(request, packet, read, "Brightness", TONE_COMPRESSOR_BRIGHTNESS, 1);
        checkNumber(request, packet, read, "Contrast", TONE_COMPRESSOR_CONTRAST, 1);
        checkNumber(request, packet, read, "WhiteClip", TONE_COMPRESSOR_WHITE_CLIP, 6);
        checkNumber(request, packet, read, "BlackClip", TONE_COMPRESSOR_BLACK_CLIP, 6);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    Request request;
    request.pass = input.ConsumeBool() ? input.ConsumeIntegral<std::int32_t>() : 1;
    request.pass = request.pass == 0 ? 1 : request.pass;
    const bool knownMethod = input.ConsumeBool();
    const auto anyCode = input.ConsumeIntegral<std::int32_t>();
    request.method = knownMethod ? input.PickValueInArray(MethodCodes) : anyCode;
    const bool sliders = input.ConsumeBool();
    request.settings = sliders ? takeSliders(input) : takeFloats(input);
    request.lens = input.ConsumeRemainingBytesAsString();

    const std::string packet = packetOf(request);
    // A lens name that contains settings is written unchanged, and its settings are found first.
    const bool plainLens = request.lens.find("tvtm") == std::string::npos;
    if (!knownMethod || !plainLens) {
        return 0;
    }
    require(detectedMethod(packet) == request.method && countedDeclarations(packet) == 1, "the method is found");
    checkLens(request, packet);
    const Settings settings = settingsIn(packet, request.method);
    checkNumbers(request, packet, settings);
    if (sliders) {
        require(packetOf({request.pass, request.method, settings, request.lens}) == packet,
                "the settings read back give the same packet");
    }
    return 0;
}
