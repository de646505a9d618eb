// Mapping bytes through a table.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"
#include "image/filter/gamma_tables.h"

namespace vek {

struct GammaKernels {
  /// dst[i] = table.entries[src[i]] for n >= 1 bytes; dst may be src.
  void (*map)(const GammaTable& table, const Vek8u* src, Vek8u* dst, ptrdiff_t n);
};

VEK_KERNEL_TABLE(GammaKernels, gammaKernels)

}  // namespace vek
