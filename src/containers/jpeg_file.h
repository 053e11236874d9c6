// Containers: JPEG.
#pragma once

#include "containers/layout.h"

namespace tvmeta {

// Finds the blocks of the JPEG file in a region: the source, or a preview that has the metadata of a raw file.
void findInJpeg(SourceReader& reader, const Region& region, Layout& layout);

} // namespace tvmeta
