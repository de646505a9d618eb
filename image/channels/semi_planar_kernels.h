// The row kernels between two chroma planes and one of pairs.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

struct SemiPlanarKernels {
  /// pairs[2 i] = first[i] and pairs[2 i + 1] = second[i] for 0 <= i < n, n >= 1.
  void (*join)(const Vek8u* first, const Vek8u* second, ptrdiff_t n, Vek8u* pairs);
  /// The inverse.
  void (*split)(const Vek8u* pairs, ptrdiff_t n, Vek8u* first, Vek8u* second);
};

VEK_KERNEL_TABLE(SemiPlanarKernels, semiPlanarKernels)

}  // namespace vek
