// What changes of channels write, and semi-planar conversions.
#pragma once

#include "vek/image.h"

#include <stddef.h>
#include <vector>

namespace vek::test::definition {

template <int srcChannels, int dstChannels>
VekStatus permuted(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep, VekiSize roi,
                   const int* order, Vek8u value) {
  for (ptrdiff_t y = 0; y < roi.height; ++y) {
    for (ptrdiff_t x = 0; x < roi.width; ++x) {
      std::vector<Vek8u> pixel(pSrc + y * srcStep + x * srcChannels,
                               pSrc + y * srcStep + (x + 1) * srcChannels);
      pixel.push_back(value);
      for (int i = 0; i < dstChannels; ++i) {
        pDst[y * dstStep + x * dstChannels + i] = pixel[static_cast<size_t>(order[i])];
      }
    }
  }
  return vekStsNoErr;
}

template <int srcChannels, int dstChannels>
VekStatus permuted(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep, VekiSize roi,
                   const int* order) {
  return permuted<srcChannels, dstChannels>(pSrc, srcStep, pDst, dstStep, roi, order, 0);
}

/// Where chroma p (1 or 2) of block x of a row is.
inline ptrdiff_t chromaAt(bool semiPlanar, int p, ptrdiff_t x) {
  return semiPlanar ? 2 * x + p - 1 : x;
}

/// Between three planes and two, either way.
template <bool fromSemiPlanar>
VekStatus planesMoved(const Vek8u* const* pSrc, const int* srcStep, Vek8u* const* pDst,
                      const int* dstStep, VekiSize roi) {
  for (int p = 0; p < 3; ++p) {
    const int from = fromSemiPlanar && p == 2 ? 1 : p, to = !fromSemiPlanar && p == 2 ? 1 : p;
    const int share = p == 0 ? 1 : 2;
    for (ptrdiff_t y = 0; y * share < roi.height; ++y) {
      for (ptrdiff_t x = 0; x * share < roi.width; ++x) {
        const Vek8u* const src = pSrc[from] + y * srcStep[from];
        Vek8u* const dst = pDst[to] + y * dstStep[to];
        dst[p == 0 ? x : chromaAt(!fromSemiPlanar, p, x)] =
            src[p == 0 ? x : chromaAt(fromSemiPlanar, p, x)];
      }
    }
  }
  return vekStsNoErr;
}

}  // namespace vek::test::definition
