// Containers: raw files that have their metadata in a JPEG of their own.
#pragma once

#include "containers/layout.h"

namespace tvmeta {

void findInRaf(SourceReader& reader, const Region& file, Layout& layout);
void findInRw2(SourceReader& reader, const Region& file, Layout& layout);

} // namespace tvmeta
