// Gamma look-ups, sample by sample: the portable kernel and the ends of rows at every level.
#pragma once

#include "camera/raw/rggb_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

void mapSamples(const Vek16u* __restrict src, ptrdiff_t period, const Vek8u* __restrict gamma,
                ptrdiff_t n, Vek8u* __restrict first, Vek8u* __restrict second) {
  for (ptrdiff_t k = 0; k < n; ++k) {
    first[k] = gamma[src[k * period] & rawCodeMask];
    second[k] = gamma[src[k * period + 1] & rawCodeMask];
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
