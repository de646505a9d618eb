// Loops over samples at a fixed stride. The compiler makes vectors of them because it knows the
// stride, so that the fast levels use them, too.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

namespace vek::VEK_LEVEL {
namespace {

template <int stride>
void pick(const Vek8u* __restrict src, ptrdiff_t n, Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n; ++i) dst[i] = src[i * stride];
}

template <int stride>
void sumBlocks(const Vek8u* __restrict top, const Vek8u* __restrict bottom, ptrdiff_t n,
               Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const ptrdiff_t x = i * stride;
    dst[i] = static_cast<Vek8u>((top[x] + top[x + 1] + bottom[x] + bottom[x + 1] + 4) >> 2);
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
