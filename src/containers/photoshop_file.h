// Containers: Photoshop files, of the small and the large kind (PSD, PSB).
#pragma once

#include "containers/layout.h"

namespace tvmeta {

void findInPhotoshopFile(SourceReader& reader, const Region& file, Layout& layout);

} // namespace tvmeta
