// Containers: XMP packets of more than 64 KiB in JPEG files (XMP storage in files, JPEG).
#pragma once

#include "containers/layout.h"

namespace tvmeta {

// Joins the standard packet and the extended one to a single packet: the descriptions of the extended packet become the
// last ones of the standard packet. Packets whose text does not allow that follow each other.
void joinExtendedXmp(SourceReader& reader, Layout& layout);

} // namespace tvmeta
