// Containers: Photoshop image resources (Photoshop file format), in Photoshop files, JPEG segments and TIFF tags.
#pragma once

#include "containers/layout.h"

#include <span>

namespace tvmeta {

// Adds the blocks among the resources in these regions, which are one sequence. A block that the layout has already
// takes precedence.
void findInResources(SourceReader& reader, std::span<const Region> regions, Layout& layout);

} // namespace tvmeta
