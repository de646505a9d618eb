#include "core/assert.h"
#include "image/filter/gamma_kernels.h"

namespace vek::portable {
namespace {

void map(const GammaTable& table, const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  VEK_ASSERT(n >= 1);
  for (ptrdiff_t i = 0; i < n; ++i) dst[i] = table.entries[src[i]];
}

}  // namespace

constexpr GammaKernels gammaKernels = {.map = map};

}  // namespace vek::portable
