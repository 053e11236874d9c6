#include "commands/settings_options.h"

#include "output/failure.h"
#include "output/suggestion.h"
#include "output/text.h"
#include "system/files.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <string_view>
#include <utility>

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

std::vector<std::string> namesOf(const std::vector<tvmeta_Parameter>& parameters) {
    std::vector<std::string> names;
    std::ranges::transform(parameters, std::back_inserter(names), &tvmeta_Parameter::name);
    return names;
}

int32_t methodNamed(const std::string& name) {
    for (const int32_t code : methods()) {
        if (equalsIgnoringCase(name, tvmeta_method_name(code))) {
            return code;
        }
    }
    throw WrongCommandLine("unknown method '" + name + "'" + nearestOrAll(name, methodNames()));
}

// The NAME=VALUE assignments, with the names spelled as in the method.
std::vector<Setting> parseAssignments(const SettingsOptions& options, int32_t method) {
    const std::vector<std::string> names = namesOf(parametersOf(method));
    std::vector<Setting> settings;
    for (const std::string& assignment : options.assignments) {
        const size_t equals = assignment.find('=');
        if (equals == std::string::npos) {
            throw WrongCommandLine("invalid --set '" + assignment + "': use NAME=VALUE");
        }
        const std::string given = assignment.substr(0, equals);
        const auto name = std::ranges::find_if(names, [&](const auto& n) { return equalsIgnoringCase(n, given); });
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
    return slots.values[static_cast<size_t>(slotOf(slots.values, parameter))] != Unset;
}

} // namespace

void addSettingsOptions(std::vector<Option>& options, SettingsOptions& settings, bool isRequired) {
    options.push_back({.names = {"--method"},
                       .target = &settings.method,
                       .help = "Processing method, listed below",
                       .value = "NAME",
                       .isRequired = isRequired});
    options.push_back({.names = {"--set"},
                       .target = &settings.assignments,
                       .help = "A setting of the method, as settings show prints\nit; can be repeated",
                       .value = "NAME=VALUE",
                       .needs = {"--method"}});
}

std::string methodHelp() {
    return helpList("Methods", methodNames());
}

std::vector<std::string> methodNames() {
    std::vector<std::string> names;
    std::ranges::transform(methods(), std::back_inserter(names), tvmeta_method_name);
    return names;
}

std::vector<std::string> settingNames(const std::string& method) {
    return namesOf(parametersOf(methodNamed(method)));
}

Settings settingsFrom(const SettingsOptions& options) {
    Settings settings;
    if (options.method.empty()) {
        return settings;
    }
    settings.method = methodNamed(options.method);
    const std::vector<Setting> given = parseAssignments(options, settings.method);
    for (const tvmeta_Parameter& parameter : parametersOf(settings.method)) {
        const auto found = std::ranges::find(given, std::string_view(parameter.name), &Setting::name);
        if (found != given.end()) {
            setValue(settings.values, parameter, found->value);
        } else {
            settings.values[static_cast<size_t>(parameter.slot)] = defaultValue(parameter);
        }
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
    for (const tvmeta_Parameter& parameter : parametersOf(method)) {
        const bool isAssumed = parameter.kind == TVMETA_SMOOTHING_MODE && !hasMode;
        if (!isAssumed && isContained(parameter, slots, packet)) {
            settings.push_back({parameter.name, valueText(slots.values, parameter)});
        }
    }
    return settings;
}
