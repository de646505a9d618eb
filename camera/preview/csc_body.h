// The conversion as its definition reads: the portable kernels, and the fallback of every level.
#pragma once

#include <stddef.h>

#include "core/kernel/pixel_format.h"

namespace vek::VEK_LEVEL {
namespace {

template <class Format>
void cscRow(const Vek8u* __restrict y, const Vek8u* __restrict cb, const Vek8u* __restrict cr,
            ptrdiff_t n, Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Vek32s luma = (y[i] - 16) * 298;
    const Vek32s b = cb[i >> 1] - 128;
    const Vek32s r = cr[i >> 1] - 128;
    const Vek32s red = (luma + 409 * r) >> (16 - Format::rBits);
    const Vek32s green = (luma - 100 * b - 208 * r) >> (16 - Format::gBits);
    const Vek32s blue = (luma + 516 * b) >> (16 - Format::bBits);
    Format::store(dst + i * Format::bytes, clampToBits<Format::rBits>(red),
                  clampToBits<Format::gBits>(green), clampToBits<Format::bBits>(blue));
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
