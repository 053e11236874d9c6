// Method, settings, lens name and number of declarations of an XMP text.
#include "support.h"

#include <initializer_list>

using namespace fuzz;

namespace {

constexpr float Untouched = -12345.25F;

constexpr std::uint32_t slots(std::initializer_list<int> numbers) {
    std::uint32_t set = 0;
    for (const int number : numbers) {
        set |= 1U << number;
    }
    return set;
}

// The slots of each method, in the order of MethodCodes.
constexpr std::array<std::uint32_t, MethodCodes.size()> MethodSlots = {(1U << SETTINGS_SLOTS) - 1,
                                                                       slots({0, 1, 2, 3, 4, 12, 13}),
                                                                       slots({0, 1, 2, 3, 4, 8, 12, 13, 15}),
                                                                       slots({0, 1, 2, 3, 4, 5, 6, 7, 8}),
                                                                       slots({0, 1, 2}),
                                                                       slots({0, 1, 2, 3, 7, 8})};

// Counts the declarations with an independent method.
std::int32_t declarationsIn(std::string_view text) {
    constexpr std::string_view Name = "xmlns:tvtm=";
    constexpr std::string_view Host = "http://tonalvista.test/";
    std::int32_t count = 0;
    for (std::size_t at = text.find(Name); at != std::string_view::npos; at = text.find(Name, at + 1)) {
        const std::string_view value = text.substr(at + Name.size());
        const bool quoted = value.starts_with('\'') || value.starts_with('"');
        if (quoted && value.substr(1).starts_with(Host)) {
            ++count;
        }
    }
    return count;
}

void checkMethod(std::string_view text, const std::vector<char>& block, std::size_t index, std::int32_t detected) {
    const std::int32_t code = MethodCodes[index];
    Settings settings(SETTINGS_SLOTS, Untouched);
    const std::int32_t result =
        get_settings_from_xmp(code, lengthOf(block.size()), block.data(), nullptr, settings.data());
    const bool found = detected == code;
    if (found) {
        require(result >= 47 && text.substr(static_cast<std::size_t>(result)).starts_with("tvtm:Method"),
                "the result is the offset of the method tag");
    } else {
        require(result == (declarationsIn(text) == 0 ? 0 : -5), "the settings of another method are not read");
    }
    for (std::size_t slot = 0; slot < settings.size(); ++slot) {
        const bool mayChange = found && (MethodSlots[index] >> slot & 1) != 0;
        require(mayChange || settings[slot] == Untouched, "slots of other methods are unchanged");
    }
}

void checkLens(std::string_view text, const std::vector<char>& block) {
    std::vector<char> lens(64);
    const std::int32_t result =
        get_settings_from_xmp(MODE_LENS, lengthOf(block.size()), block.data(), lens.data(), nullptr);
    require(result >= 0, "the result is the end of the search");
    require(lens.back() == '\0' && text.find(lens.data()) != std::string_view::npos,
            "the lens name is a part of the text, of at most 63 bytes");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = textOf(data, size);
    const std::vector<char> block = terminated(text);
    const std::int32_t detected = detectedMethod(text);
    const bool known = std::find(MethodCodes.begin(), MethodCodes.end(), detected) != MethodCodes.end();
    require(known || detected == 0 || detected == -5, "the method is documented");
    for (std::size_t i = 0; i < MethodCodes.size(); ++i) {
        checkMethod(text, block, i, detected);
    }
    checkLens(text, block);
    require(countedDeclarations(text) == declarationsIn(text), "all declarations are counted");
    if (!text.empty() && text.back() != '\0') {
        require(tvsettings_occurences_in_xmp(lengthOf(size), block.data()) == -3 &&
                    get_settings_from_xmp(METHOD_DETECT, lengthOf(size), block.data(), nullptr, nullptr) == -3,
                "a text without a terminator is refused");
    }
    return 0;
}
