// The loops behind MorphologyKernels, compiled for every level.
#pragma once

#include "image/filter/morphology_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

struct Least {
  static Vek8u of(Vek8u a, Vek8u b) { return a < b ? a : b; }
};
struct Greatest {
  static Vek8u of(Vek8u a, Vek8u b) { return a > b ? a : b; }
};

/// The extremes of the columns are kept for a block, so that each is found once.
template <class Extreme, int channels>
void extreme3x3(const Vek8u* __restrict src, ptrdiff_t srcStep, Vek8u* __restrict dst,
                ptrdiff_t n) {
  constexpr ptrdiff_t block = 4096;
  Vek8u columns[block + 2 * channels];
  for (ptrdiff_t x = 0; x < n; x += block) {
    const ptrdiff_t count = n - x < block ? n - x : block;
    const Vek8u* middle = src + x - channels;
    const Vek8u* upper = middle - srcStep;
    const Vek8u* lower = middle + srcStep;
    for (ptrdiff_t i = 0; i < count + 2 * channels; ++i) {
      columns[i] = Extreme::of(Extreme::of(upper[i], middle[i]), lower[i]);
    }
    for (ptrdiff_t i = 0; i < count; ++i) {
      dst[x + i] =
          Extreme::of(Extreme::of(columns[i], columns[i + channels]), columns[i + 2 * channels]);
    }
  }
}

}  // namespace

constexpr MorphologyKernels morphologyKernels = {extreme3x3<Least, 1>, extreme3x3<Least, 3>,
                                                 extreme3x3<Greatest, 1>, extreme3x3<Greatest, 3>};

}  // namespace vek::VEK_LEVEL
