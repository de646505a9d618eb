// The plain loop behind GammaKernels.
#pragma once

#include "image/filter/gamma_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

void ownGamma_8u_(const GammaTable& table, const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) dst[i] = table.entries[src[i]];
}

}  // namespace
}  // namespace vek::VEK_LEVEL
