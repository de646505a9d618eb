// Interpolation between samples at a position in 1/128 pixel. at(a, b) is sample a of row b of those
// around the position, counted from the first one that has a weight.
#pragma once

#include "vek/vek.h"

#include "image/warp/cubic_weights.h"

namespace vek::VEK_LEVEL {
namespace {

/// Between two times two samples; rounded to nearest, halves up.
template <class At>
Vek8u linear(At at, int f, int g) {
  const int upper = (128 - f) * at(0, 0) + f * at(1, 0);
  const int lower = (128 - f) * at(0, 1) + f * at(1, 1);
  return static_cast<Vek8u>(((128 - g) * upper + g * lower + 8192) >> 14);
}

/// Between four times four samples, of which the second ones are at the position's whole pixel. Rows are
/// rounded to 1/64 first, which leaves at most 20400 of them: 20480 * 20400 fits 32 bits.
template <class At>
Vek8u cubic(At at, int f, int g) {
  const Vek16s(&columns)[4] = cubicWeights.of[f];
  const Vek16s(&rows)[4] = cubicWeights.of[g];
  int sum = 1 << 19;
  for (int b = 0; b < 4; ++b) {
    int row = 128;
    for (int a = 0; a < 4; ++a) row += columns[a] * at(a, b);
    sum += rows[b] * (row >> 8);
  }
  sum >>= 20;
  return static_cast<Vek8u>(sum < 0 ? 0 : sum > 255 ? 255 : sum);
}

}  // namespace
}  // namespace vek::VEK_LEVEL
