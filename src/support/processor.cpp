#include "support/processor.h"

#ifdef TVMETA_WIDE_VECTORS
#include <sys/platform/x86.h>
#endif

namespace tvmeta {

#ifdef TVMETA_WIDE_VECTORS
bool hasAvx2() noexcept {
    return CPU_FEATURE_ACTIVE(AVX2);
}
#endif

} // namespace tvmeta
