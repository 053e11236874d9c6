// The parts of the report that are repeated: photographs, diagrams and checkboxes.
#pragma once

#include "pages/page_content.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

// A photograph as an item of a list: thumbnail, caption, and a larger picture that a click shows. Has few elements,
// because pages can have thousands. `facts` is markup that precedes the name of the file in the caption. `id` is
// unique.
std::string photoItem(const PagePhoto& photo, const std::string& facts, const std::string& id);

// An SVG element: an axis in stops from the middle exposure, and each photograph as a dot with its number in order of
// capture. Dots of equal exposures are stacked.
std::string exposureDiagram(std::span<const double> offsets);

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
