#include "settings/settings.h"

#include "base/failure.h"
#include "base/mapped.h"
#include "base/text.h"
#include "base/words.h"
#include "system/files.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace {

std::vector<int32_t> methods() {
    std::vector<int32_t> codes;
    for (int32_t code = METHOD_NONE + 1; code < MODE_LENS; ++code) {
        if (tvmeta_method_name(code) != nullptr) {
            codes.push_back(code);
        }
    }
    return codes;
}

std::vector<tvmeta_Parameter> parametersOf(int32_t method) {
    std::vector<tvmeta_Parameter> parameters;
    tvmeta_Parameter parameter = {};
    for (int32_t i = 0; tvmeta_parameter(method, i, &parameter) > 0; ++i) {
        parameters.push_back(parameter);
    }
    return parameters;
}

std::vector<std::string> parameterNames(int32_t method) {
    return mapped<std::string>(parametersOf(method), &tvmeta_Parameter::name);
}

int32_t methodNamed(const std::string& name) {
    for (const int32_t code : methods()) {
        if (lowerCase(name) == lowerCase(tvmeta_method_name(code))) {
            return code;
        }
    }
    throw WrongCommandLine("unknown method '" + name + "'" + nearestOrAll(name, methodNames()));
}

// The NAME=VALUE assignments, with the names spelled as in the method.
std::vector<Setting> parseAssignments(const std::vector<std::string>& assignments, int32_t method) {
    const std::vector<std::string> names = parameterNames(method);
    std::vector<Setting> settings;
    for (const std::string& assignment : assignments) {
        const size_t equals = assignment.find('=');
        if (equals == std::string::npos) {
            throw WrongCommandLine("invalid --set '" + assignment + "': use NAME=VALUE");
        }
        const std::string given = assignment.substr(0, equals);
        const auto name = std::ranges::find_if(names, [&](const auto& n) { return lowerCase(n) == lowerCase(given); });
        if (name == names.end()) {
            throw WrongCommandLine("unknown setting '" + given + "' of method '" + tvmeta_method_name(method) + "'" +
                                   nearestOrAll(given, names));
        }
        if (std::ranges::find(settings, *name, &Setting::name) != settings.end()) {
            throw WrongCommandLine("--set " + assignment + ": " + *name + " is set twice");
        }
        settings.push_back({*name, assignment.substr(equals + 1)});
    }
    return settings;
}

// As a packet contains it.
std::string valueText(int32_t method, int32_t index, const SlotValues& values) {
    std::array<char, TVMETA_SETTING_TEXT_SIZE> text = {};
    tvmeta_setting_text(method, index, values.data(), text.data());
    return text.data();
}

// The smoothing is a number instead of a word.
bool usesSlider(const SlotValues& values) {
    return values[DETAILS_ENHANCER_SMOOTHING_MODE] == 1;
}

// The words of a parameter: the texts of slot values from 0 on, until one is repeated.
std::vector<std::string> wordsOf(int32_t method, int32_t index, int32_t slot) {
    std::vector<std::string> words;
    SlotValues values = {};
    for (std::string word = valueText(method, index, values); std::ranges::count(words, word) == 0;
         word = valueText(method, index, values)) {
        words.push_back(word);
        values[static_cast<size_t>(slot)] += 1;
    }
    return words;
}

// The values that a parameter accepts, for messages.
std::string allowedValues(const Settings& settings, int32_t index, const tvmeta_Parameter& parameter) {
    const auto words = [&] { return wordList(wordsOf(settings.method, index, parameter.slot)); };
    switch (parameter.kind) {
    case TVMETA_GAMMA:
        return "a number above 0";
    case TVMETA_CLIP:
        return "a number of 0 or more";
    case TVMETA_SMOOTHING:
        return usesSlider(settings.values) ? "a number, because SmoothingMode is Slider"
                                           : words() + ", or a number with SmoothingMode=Slider";
    case TVMETA_SMOOTHING_MODE:
    case TVMETA_YES_NO:
        return words();
    default:
        return "a number";
    }
}

// Sets a parameter to the value of a text. Set the smoothing mode before the smoothing.
void setValue(Settings& settings, int32_t index, const tvmeta_Parameter& parameter, const std::string& text) {
    const std::string problem = "invalid " + std::string(parameter.name) + " '" + text + "': ";
    switch (tvmeta_setting_value(settings.method, index, text.c_str(), settings.values.data())) {
    case TVMETA_SETTING_OK:
        break;
    case TVMETA_SETTING_TOO_SMALL:
        throw WrongCommandLine(problem + "the number is too small");
    case TVMETA_SETTING_TOO_LARGE:
        throw WrongCommandLine(problem + "the number is too large");
    default:
        throw WrongCommandLine(problem + "use " + allowedValues(settings, index, parameter));
    }
}

// Marks slots that were not read: no packet contains this value.
constexpr float Unset = std::numeric_limits<float>::lowest();

// The slots that the library reads from a packet; the others stay unset.
struct PacketSlots {
    SlotValues values;
    int32_t methodTag; // its offset
};

// Passes the smoothing mode, which decides how the smoothing is read.
PacketSlots readSlots(int32_t method, const std::string& packet, float smoothingMode) {
    PacketSlots slots = {};
    slots.values.fill(Unset);
    slots.values[DETAILS_ENHANCER_SMOOTHING_MODE] = smoothingMode;
    slots.methodTag = get_settings_from_xmp(method, textSize(packet), packet.c_str(), nullptr, slots.values.data());
    return slots;
}

bool isContained(const tvmeta_Parameter& parameter, const PacketSlots& slots, const std::string& packet) {
    if (parameter.kind == TVMETA_GAMMA) { // if it is missing, the library sets the slot to the neutral gamma
        return slots.methodTag > 0 &&
               packet.find("tvtm:Gamma", static_cast<size_t>(slots.methodTag)) != std::string::npos;
    }
    const bool bySlider = parameter.kind == TVMETA_SMOOTHING && usesSlider(slots.values);
    const int32_t slot = bySlider ? DETAILS_ENHANCER_SMOOTHING_SLIDER : parameter.slot;
    return slots.values[static_cast<size_t>(slot)] != Unset;
}

} // namespace

std::vector<std::string> methodNames() {
    return mapped<std::string>(methods(), tvmeta_method_name);
}

std::vector<std::string> settingNames(const std::string& method) {
    return parameterNames(methodNamed(method));
}

Settings settingsFrom(const std::string& method, const std::vector<std::string>& assignments) {
    Settings settings;
    if (method.empty()) {
        return settings;
    }
    settings.method = methodNamed(method);
    const std::vector<Setting> given = parseAssignments(assignments, settings.method);
    int32_t index = 0;
    for (const tvmeta_Parameter& parameter : parametersOf(settings.method)) {
        const auto found = std::ranges::find(given, std::string_view(parameter.name), &Setting::name);
        if (found != given.end()) {
            setValue(settings, index, parameter, found->value);
        } else {
            tvmeta_setting_value(settings.method, index, nullptr, settings.values.data());
        }
        ++index;
    }
    return settings;
}

int32_t insertDescription(std::string& packet, const Settings& settings) {
    const size_t size = packet.size();
    const int32_t length = librarySize(packet);
    const float* values = settings.values.data();
    const int32_t shift = insert_xmp(0, settings.method, values, length, 0, nullptr);
    packet.resize(size + static_cast<size_t>(shift));
    textSize(packet); // refuses texts of 2 GiB and more
    const int32_t result = insert_xmp(1, settings.method, values, length, shift, packet.data());
    if (result < 0) {
        packet.resize(size);
    }
    return result;
}

std::vector<Setting> settingsInPacket(int32_t method, const std::string& packet) {
    PacketSlots slots = readSlots(method, packet, Unset);
    const bool hasMode = slots.values[DETAILS_ENHANCER_SMOOTHING_MODE] != Unset;
    if (!hasMode) {
        slots = readSlots(method, packet, 0);
    }
    std::vector<Setting> settings = {{"Method", tvmeta_method_name(method)}};
    int32_t index = 0;
    for (const tvmeta_Parameter& parameter : parametersOf(method)) {
        const bool isAssumed = parameter.kind == TVMETA_SMOOTHING_MODE && !hasMode;
        if (!isAssumed && isContained(parameter, slots, packet)) {
            settings.push_back({parameter.name, valueText(method, index, slots.values)});
        }
        ++index;
    }
    return settings;
}
