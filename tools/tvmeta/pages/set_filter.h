// Checkboxes that hide sets.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

// Hides the sets with a property. CSS implements it, because the page has no scripts.
class SetFilter {
  public:
    // `prefix` begins the names of classes; `properties` are those of all sets.
    SetFilter(std::string legend, std::string prefix, std::vector<std::string> properties);

    // The class of a set.
    std::string classOf(size_t set) const;

    std::string rules() const;
    std::string controls() const;

  private:
    std::string legend;
    std::string id;
    std::vector<std::string> ofSets;
    std::vector<std::string> choices;
};
