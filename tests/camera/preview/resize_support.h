// What the tests of the resize functions share: random arguments and the naive luma.
#pragma once

#include <algorithm>
#include <cstdint>

#include "tests/footprint/preview.h"
#include "tests/support/random.h"

namespace vek::test {

using footprint::Resize;

inline int maxStep(int src, int dst) {
  return static_cast<int>((((src & ~1) - 1) * 65536LL) / ((dst & ~1) - 1));
}

inline int roundUp(int value, int unit) {
  return (value + unit - 1) / unit * unit;
}

/// Chooses sampling steps within the limits, often the limits themselves or whole samples.
inline void randomSteps(Resize& a, Random& random) {
  const int xMost = maxStep(a.srcWidth, a.dstWidth), yMost = maxStep(a.srcHeight, a.dstHeight);
  const bool unscaled = a.srcWidth == a.dstWidth && a.srcHeight == a.dstHeight;
  a.xStep = unscaled ? 65536 : random.chance(50) ? xMost : random.in(1, xMost);
  a.yStep = unscaled ? 65536 : random.chance(50) ? yMost : random.in(1, yMost);
  if (a.xStep > 65536 && random.chance(40)) a.xStep &= ~0xFFFF;
}

/// Sizes are multiples of the units (a destination that is to have an even width: 2), row steps of
/// the alignments.
inline Resize randomResize(Random& random, int widthUnit, int heightUnit, int yAlign,
                           int chromaAlign) {
  Resize a = {};
  a.dstWidth = roundUp(random.size(150) + 1, widthUnit);
  a.dstHeight = roundUp(random.size(60) + 1, heightUnit);
  const bool unscaled = random.chance(40);
  a.srcWidth = unscaled ? a.dstWidth : random.size(150) + 1;
  a.srcHeight = unscaled ? a.dstHeight : random.size(60) + 1;
  randomSteps(a, random);
  a.srcStep[0] = roundUp(a.srcWidth, yAlign) + yAlign * random.in(0, 2);
  for (int i : {1, 2}) {
    a.srcStep[i] = roundUp(a.srcWidth / 2, chromaAlign) + chromaAlign * random.in(0, 2);
  }
  a.interpolation = random.in(0, 1);
  a.rotation = random.in(0, 5);
  return a;
}

/// Luma at two phases: the sample there, or the blend of those around; neighbours without weight
/// are not read.
inline int lumaAt(const uint8_t* plane, const Resize& a, int64_t row, int64_t column) {
  const ptrdiff_t step = a.srcStep[0];
  const uint8_t* const at = plane + (row >> 16) * step + (column >> 16);
  if (a.interpolation == 0) return *at;
  const int64_t fx = column & 0xFFFF, fy = row & 0xFFFF;
  const auto blend = [](int from, int to, int64_t f) {
    return from + static_cast<int>(((to - from) * f) >> 16);
  };
  const auto across = [&](const uint8_t* p) { return blend(p[0], fx == 0 ? p[0] : p[1], fx); };
  const int top = across(at);
  return blend(top, fy == 0 ? top : across(at + step), fy);
}

/// Formats 565, 555, 444 and 24-bit, counted from 0.
inline int pixelBytes(int format) {
  return format == 3 ? 3 : 2;
}

}  // namespace vek::test
