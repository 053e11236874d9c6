// Containers: files of chunks: PNG (third edition) and WebP (RFC 9649).
#pragma once

#include "containers/layout.h"

namespace tvmeta {

void findInPng(SourceReader& reader, const Region& file, Layout& layout);
void findInWebp(SourceReader& reader, const Region& file, Layout& layout);

} // namespace tvmeta
