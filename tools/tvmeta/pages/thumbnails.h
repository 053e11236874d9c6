// Small pictures of photographs for a page, as JPEG files. They are empty where there is none.
#pragma once

#include "photographs/photo.h"
#include "system/files.h"

// The thumbnail that the photograph contains. Without one it is made from a JPEG's picture or from the preview, if this
// build can.
Bytes thumbnailOf(const Photo& photo);

// The preview that the photograph contains, made smaller if it has more than 256 KiB. Omitted if this build cannot.
Bytes previewOf(const Photo& photo);
