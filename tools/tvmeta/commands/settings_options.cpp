#include "commands/settings_options.h"

#include "output/failure.h"
#include "output/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>
#include <string_view>
#include <utility>

namespace {

constexpr std::array<int32_t, 6> Methods = {METHOD_DETAILS_ENHANCER,   METHOD_TONE_COMPRESSOR,
                                            METHOD_CONTRAST_OPTIMIZER, METHOD_FUSION_ADJUST,
                                            METHOD_FUSION_INTENSIVE,   METHOD_FUSION_REAL_ESTATE};

// embed_xmp writes a description without the packet around it when this is added to the method.
constexpr int32_t DescriptionOnly = 200;

constexpr std::string_view Prefix = "tvtm:";

std::string description(const Settings& settings) {
    const int32_t request = settings.method + DescriptionOnly;
    const int32_t length = embed_xmp(0, request, settings.values.data(), 0, nullptr, nullptr);
    std::string text(static_cast<size_t>(length), ' ');
    embed_xmp(1, request, settings.values.data(), 0, nullptr, text.data());
    return text;
}

std::string_view trimmed(std::string_view text) {
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

// The elements <tvtm:Name>Value</tvtm:Name> of a description from the method on, which stands first.
std::vector<Setting> settingsIn(std::string_view text) {
    std::vector<Setting> settings;
    const std::string opening = "<" + std::string(Prefix);
    text.remove_prefix(text.find(opening + "Method>"));
    for (size_t start = text.find(opening); start != std::string_view::npos; start = text.find(opening, start)) {
        start += opening.size();
        const size_t nameEnd = text.find('>', start);
        const size_t valueEnd = text.find('<', nameEnd);
        settings.push_back({std::string(text.substr(start, nameEnd - start)),
                            std::string(trimmed(text.substr(nameEnd + 1, valueEnd - nameEnd - 1)))});
    }
    return settings;
}

void append(std::string& list, const std::string& name) {
    list += list.empty() ? "" : ", ";
    list += name;
}

std::string nameOf(int32_t method) {
    return settingsIn(description({method})).front().value;
}

std::vector<std::string> methodNames() {
    std::vector<std::string> names;
    std::ranges::transform(Methods, std::back_inserter(names), nameOf);
    return names;
}

int32_t methodNamed(const std::string& name) {
    const auto found = std::ranges::find(Methods, name, nameOf);
    if (found == Methods.end()) {
        std::string known;
        std::ranges::for_each(methodNames(), [&](const std::string& other) { append(known, other); });
        throw WrongCommandLine("there is no method '" + name + "'; there are: " + known);
    }
    return *found;
}

std::vector<Setting> parseAssignments(const std::vector<std::string>& assignments) {
    std::vector<Setting> settings;
    for (const std::string& assignment : assignments) {
        const size_t equals = assignment.find('=');
        if (equals == std::string::npos) {
            throw WrongCommandLine("expected --set NAME=VALUE, found --set " + assignment);
        }
        Setting setting = {assignment.substr(0, equals), assignment.substr(equals + 1)};
        if (std::ranges::find(settings, setting.name, &Setting::name) != settings.end()) {
            throw WrongCommandLine("--set " + assignment + ": " + setting.name + " is set twice");
        }
        settings.push_back(std::move(setting));
    }
    return settings;
}

// A description of the method with no other settings than the given ones.
std::string descriptionOf(int32_t method, const std::vector<Setting>& given) {
    constexpr std::string_view MethodEnd = "</tvtm:Method>\n";
    const std::string head = description({method});
    std::ostringstream text;
    text << head.substr(0, head.find(MethodEnd) + MethodEnd.size());
    for (const auto& [name, value] : given) {
        text << "<" << Prefix << name << ">" << value << "</" << Prefix << name << ">\n";
    }
    text << "</rdf:Description>\n";
    return text.str();
}

bool isNumber(const std::string& text) {
    double number = 0;
    const char* end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && parsed == end && std::isfinite(number);
}

// Why a setting does not take a value. A gamma or clip below 0 has no logarithm, and so becomes no number.
std::string objection(const std::string& given, const std::string& found) {
    if (!isNumber(given) || isNumber(found)) {
        return "it would hold '" + found + "'";
    }
    return found.ends_with("nan") ? "it must not be below 0" : "it cannot hold a number of that size";
}

// The parser passes over what it does not know. So a setting that was given must be found again in what the library
// writes: a number as a number, whatever its decimals, and a word as it is.
void requireTaken(const Setting& given, const std::vector<Setting>& written) {
    const std::string method = "method '" + written.front().value + "'";
    const auto found = std::ranges::find(written.begin() + 1, written.end(), given.name, &Setting::name);
    if (found == written.end()) {
        std::string known;
        for (auto setting = written.begin() + 1; setting != written.end(); ++setting) {
            append(known, setting->name);
        }
        throw WrongCommandLine(method + " has no setting '" + given.name + "'; it has: " + known);
    }
    const bool isTaken = isNumber(given.value) ? isNumber(found->value) : given.value == found->value;
    if (!isTaken) {
        throw WrongCommandLine("setting '" + given.name + "' of " + method + " does not take '" + given.value + "'; " +
                               objection(given.value, found->value));
    }
}

} // namespace

void addSettingsOptions(CLI::App& command, SettingsOptions& options, bool required) {
    CLI::Option* method = command.add_option("--method", options.method, "Processing method, named below");
    method->required(required)->option_text(required ? "NAME REQUIRED" : "NAME");
    command
        .add_option("--set", options.assignments,
                    "A setting of the method, as settings show prints\nit; may be repeated")
        ->option_text("NAME=VALUE")
        ->allow_extra_args(false)
        ->needs(method);
}

std::string methodHelp() {
    return helpList("Methods", methodNames());
}

Settings settingsFrom(const SettingsOptions& options) {
    Settings settings;
    if (options.method.empty()) {
        return settings;
    }
    settings.method = methodNamed(options.method);
    const std::vector<Setting> given = parseAssignments(options.assignments);
    const std::string text = descriptionOf(settings.method, given);
    const int32_t size = static_cast<int32_t>(text.size() + 1);
    const int32_t result = get_settings_from_xmp(settings.method, size, text.c_str(), nullptr, settings.values.data());
    if (result <= 0) {
        throw Failure(
            explain(result, {{0, "the settings were not found again"}, {-5, "the method was not understood"}}));
    }
    const std::vector<Setting> written = settingsIn(description(settings));
    for (const Setting& setting : given) {
        requireTaken(setting, written);
    }
    return settings;
}

std::vector<Setting> heldSettings(int32_t method, const SettingsReader& read) {
    // What the packet lacks stays as it was before: it differs between two readings that begin differently. The
    // smoothing mode begins alike, since it decides how another setting is read.
    Settings settings = {method};
    Settings check = {method};
    check.values.fill(1);
    check.values[DETAILS_ENHANCER_SMOOTHING_MODE] = 0;
    if (read(method, settings.values.data()) <= 0 || read(method, check.values.data()) <= 0) {
        throw Failure("the packet could not be read a second time");
    }
    std::vector<Setting> held = settingsIn(description(settings));
    const std::vector<Setting> other = settingsIn(description(check));
    auto isLacking = [&](const Setting& setting) {
        return std::ranges::find(other, setting.name, &Setting::name)->value != setting.value;
    };
    std::erase_if(held, isLacking);
    return held;
}
