// HDR: the kernels in vectors of 32 bytes, for processors that have them.
#pragma once

#include "hdr/block_kernels.h"
#include "support/processor.h"

namespace tvmeta::hdr {

#ifdef TVMETA_WIDE_VECTORS
extern const BlockKernels Avx2Kernels;
#endif

} // namespace tvmeta::hdr
