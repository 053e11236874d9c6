#include "pages/report_parts.h"

#include "base/markup.h"
#include "base/text.h"

#include <algorithm>
#include <utility>

SetFilter::SetFilter(std::string words, std::string prefix, std::vector<std::string> properties)
    : legend(std::move(words)), id(std::move(prefix)), ofSets(std::move(properties)), choices(ofSets) {
    std::ranges::sort(choices, naturalLess);
    choices.erase(std::unique(choices.begin(), choices.end()), choices.end());
}

std::string SetFilter::classOf(size_t set) const {
    return id + std::to_string(std::ranges::find(choices, ofSets[set]) - choices.begin());
}

std::string SetFilter::rules() const {
    std::string text;
    for (size_t i = 0; i < choices.size(); ++i) {
        const std::string name = id + std::to_string(i);
        // Not ":has" of an element that contains the sets: a browser would restyle them all while it reads each of
        // them.
        text += ".choices:has(#" + name + ":not(:checked)) ~ .sets ." + name + " { display: none; }\n";
    }
    return text;
}

std::string SetFilter::controls() const {
    std::string text;
    for (size_t i = 0; i < choices.size(); ++i) {
        text += element("label", "<input type=\"checkbox\" checked" + attribute("id", id + std::to_string(i)) + "> " +
                                     markup(choices[i]));
    }
    return choices.size() < 2 ? "" : element("fieldset", element("legend", legend) + text) + "\n";
}
