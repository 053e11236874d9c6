#include "commands/completion.h"

#include "base/failure.h"
#include "photographs/fields.h"
#include "settings/settings.h"

#include <algorithm>
#include <functional>
#include <iostream>

namespace {

// A command line up to the word that is completed.
struct Place {
    const Command* command;
    const Option* option = nullptr; // whose value is completed
    bool isAfterDashes = false;     // after "--" all words are file names
};

Place placeAfter(const Command& tool, std::span<const std::string> words) {
    Place place = {&tool};
    for (const std::string& word : words) {
        if (place.option != nullptr) { // the word is its value
            place.option = nullptr;
            continue;
        }
        const auto command = std::ranges::find(place.command->commands, word, &Command::name);
        const Option* const option = optionNamed(*place.command, word);
        if (command != place.command->commands.end()) {
            place.command = &*command;
        } else if (option != nullptr && !isFlag(*option)) {
            place.option = option;
        }
        place.isAfterDashes = place.isAfterDashes || word == "--";
    }
    return place;
}

// Before what is completed, each candidate begins with `start`.
void printMatching(const std::vector<std::string>& candidates, const std::string& start, const std::string& text) {
    for (const std::string& candidate : candidates) {
        if (candidate.starts_with(text)) {
            std::cout << start << candidate << "\n";
        }
    }
}

void printValues(const Option& option, const std::string& start, const std::string& value,
                 std::span<const std::string> words) {
    if (!option.rules.choices.empty()) {
        printMatching(option.rules.choices, start, value);
    } else if (option.rules.suggest != nullptr) {
        const std::vector<std::string> candidates = option.rules.suggest(value, words);
        if (std::ranges::any_of(candidates, [](const auto& candidate) { return candidate.ends_with('='); })) {
            std::cout << ":nospace\n";
        }
        printMatching(candidates, start, value);
    } else if (std::holds_alternative<std::string*>(option.target) ||
               std::holds_alternative<std::vector<std::string>*>(option.target)) {
        std::cout << ":files\n";
    }
}

// The value of an option on the command line; empty if it is missing.
std::string valueOf(const std::string& name, std::span<const std::string> words) {
    for (size_t i = 0; i < words.size(); ++i) {
        if (words[i] == name && i + 1 < words.size()) {
            return words[i + 1];
        }
        if (words[i].starts_with(name + "=")) {
            return words[i].substr(name.size() + 1);
        }
    }
    return {};
}

std::vector<std::string> withAffixes(const std::string& start, std::vector<std::string> words, const char* end) {
    std::ranges::for_each(words, [&](std::string& word) { word = start + word + end; });
    return words;
}

} // namespace

void printCompletions(const Command& tool, std::span<const std::string> words) {
    if (words.size() > 1 && words.front() == "help") { // the commands are the same as without it
        words = words.subspan(1);
    }
    if (words.empty()) {
        return;
    }
    const std::string& current = words.back();
    const auto before = words.first(words.size() - 1);
    const Place place = placeAfter(tool, before);
    const size_t equals = current.find('=');
    const Option* const joined = optionNamed(*place.command, current.substr(0, equals));
    if (place.option != nullptr) {
        printValues(*place.option, "", current, before);
    } else if (place.isAfterDashes) {
        std::cout << ":files\n";
    } else if (equals != std::string::npos && joined != nullptr) {
        printValues(*joined, current.substr(0, equals + 1), current.substr(equals + 1), before);
    } else if (current.starts_with('-')) {
        printMatching(optionNames(*place.command), "", current);
    } else if (!place.command->commands.empty()) {
        printMatching(commandNames(*place.command), "", current);
    } else {
        const auto argument = std::ranges::find_if(place.command->options, std::not_fn(hasName));
        if (argument != place.command->options.end()) {
            printValues(*argument, "", current, before);
        }
    }
}

std::vector<std::string> suggestNothing(const std::string& /*value*/, std::span<const std::string> /*words*/) {
    return {};
}

std::vector<std::string> suggestFields(const std::string& value, std::span<const std::string> /*words*/) {
    const size_t comma = value.rfind(',');
    return withAffixes(value.substr(0, comma == std::string::npos ? 0 : comma + 1), fieldKeys(), "");
}

std::vector<std::string> suggestOrder(const std::string& value, std::span<const std::string> /*words*/) {
    return withAffixes(value.starts_with('-') ? "-" : "", fieldKeys(), "");
}

std::vector<std::string> suggestMethods(const std::string& /*value*/, std::span<const std::string> /*words*/) {
    return methodNames();
}

std::vector<std::string> suggestSettings(const std::string& /*value*/, std::span<const std::string> words) {
    try {
        return withAffixes("", settingNames(valueOf("--method", words)), "=");
    } catch (const WrongCommandLine&) { // the method is missing or unknown
        return {};
    }
}
