// Containers: the previews that cameras append to a JPEG (CIPA DC-007, Multi-Picture Format).
#pragma once

#include "containers/layout.h"

namespace tvmeta {

// Adds the largest preview that the index in a region lists.
void findMultiPicturePreview(SourceReader& reader, const Region& index, const Region& file, Layout& layout);

} // namespace tvmeta
