// What the tests of the resize functions share: random arguments and the naive bilinear blend.
#pragma once

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <vector>

#include "tests/footprint/preview.h"
#include "tests/support/random.h"

namespace vek::test {

using footprint::Resize;

}  // namespace vek::test

namespace vek::test::footprint {

inline std::ostream& operator<<(std::ostream& out, const Resize& a) {
  return out << a.srcWidth << 'x' << a.srcHeight << " (steps " << a.srcStep[0] << ", "
             << a.srcStep[1] << ", " << a.srcStep[2] << ") to " << a.dstWidth << 'x' << a.dstHeight
             << " interpolation " << a.interpolation << " rotation " << a.rotation
             << " sampling steps " << a.xStep << ", " << a.yStep;
}

}  // namespace vek::test::footprint

namespace vek::test {

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

/// The bilinear blend around column phase q and row phase p; neighbours without weight are not
/// read, nor is the right one if `repeatRight`.
inline int bilinear(const uint8_t* plane, ptrdiff_t step, int64_t p, int64_t q, bool repeatRight) {
  const int64_t fx = q & 0xFFFF, fy = p & 0xFFFF;
  const auto blend = [](int a, int b, int64_t f) {
    return a + static_cast<int>(((b - a) * f) >> 16);
  };
  const auto across = [&](const uint8_t* at) {
    return blend(at[0], fx == 0 || repeatRight ? at[0] : at[1], fx);
  };
  const uint8_t* at = plane + (p >> 16) * step + (q >> 16);
  const int top = across(at);
  return blend(top, fy == 0 ? top : across(at + step), fy);
}

/// Formats 565, 555, 444 and 24-bit, counted from 0.
inline int pixelBytes(int format) {
  return format == 3 ? 3 : 2;
}

/// One converted pixel in memory, by the formula.
inline std::vector<uint8_t> convert(int y, int cb, int cr, int format) {
  const int bits[4][3] = {{5, 6, 5}, {5, 5, 5}, {4, 4, 4}, {8, 8, 8}};
  const int luma = (y - 16) * 298;
  const int raw[3] = {luma + 409 * (cr - 128), luma - 100 * (cb - 128) - 208 * (cr - 128),
                      luma + 516 * (cb - 128)};
  int c[3];
  for (int i = 0; i < 3; ++i) {
    const int n = bits[format][i];
    c[i] = std::clamp(raw[i] >> (16 - n), 0, (1 << n) - 1);
  }
  if (format == 3) return {uint8_t(c[2]), uint8_t(c[1]), uint8_t(c[0])};
  const int green = bits[format][1], blue = bits[format][2];
  const int word = c[0] << (green + blue) | c[1] << blue | c[2];
  return {uint8_t(word & 255), uint8_t(word >> 8)};
}

}  // namespace vek::test
