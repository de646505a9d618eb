// What padding writes.
#pragma once

#include "vek/image.h"

#include <algorithm>
#include <stddef.h>
#include <vector>

namespace vek::test::definition {

/// The position within 0 .. side - 1 that a border repeats at `at`, or -1 for the constant.
inline int padFrom(int at, int side, int border) {
  if (border == vekiBorderReplicate || side == 1) {
    return border == vekiBorderConstant && at != 0 ? -1 : std::clamp(at, 0, side - 1);
  }
  while (border == vekiBorderMirror && (at < 0 || at >= side)) {
    at = at < 0 ? -at : 2 * (side - 1) - at;
  }
  return at < 0 || at >= side ? -1 : at;
}

template <int channels>
VekStatus padded(const Vek8u* pSrc, int srcStep, VekiSize srcSize, Vek8u* pDst, int dstStep,
                 VekiSize dstSize, int left, int top, int border, const Vek8u* value) {
  std::vector<Vek8u> result;
  for (int y = 0; y < dstSize.height; ++y) {
    for (int x = 0; x < dstSize.width; ++x) {
      const int column = padFrom(x - left, srcSize.width, border);
      const int row = padFrom(y - top, srcSize.height, border);
      const Vek8u* const pixel =
          column < 0 || row < 0 ? value : pSrc + ptrdiff_t{row} * srcStep + column * channels;
      result.insert(result.end(), pixel, pixel + channels);
    }
  }
  const ptrdiff_t bytes = ptrdiff_t{dstSize.width} * channels;
  for (ptrdiff_t y = 0; y < dstSize.height; ++y) {
    std::copy_n(result.begin() + y * bytes, bytes, pDst + y * dstStep);
  }
  return vekStsNoErr;
}

inline VekStatus paddedPlane(const Vek8u* pSrc, int srcStep, VekiSize srcSize, Vek8u* pDst,
                             int dstStep, VekiSize dstSize, int left, int top, int border,
                             Vek8u value) {
  return padded<1>(pSrc, srcStep, srcSize, pDst, dstStep, dstSize, left, top, border, &value);
}

}  // namespace vek::test::definition
