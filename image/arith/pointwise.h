// The forms that the pointwise functions share: two images, or an image and constants.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <string.h>

#include "core/check.h"
#include "core/region.h"
#include "image/arith/pattern.h"

namespace vek {

/// A row kernel of n >= 1 samples. `b` is a second image's row, or the bytes of a Pattern that begins
/// anew with the row. `dst` may be the same row as `a` or `b`.
using PointwiseRow = void (*)(const Vek8u* a, const Vek8u* b, ptrdiff_t n, Vek8u* dst);

/// The row of an operation whose result is 0 whatever its sources are.
inline void zeroRow(const Vek8u*, const Vek8u*, ptrdiff_t n, Vek8u* dst) {
  memset(dst, 0, static_cast<size_t>(n));
}

inline ptrdiff_t rowBytes(VekiSize roi, int channels) {
  return ptrdiff_t{roi.width} * channels;
}

/// Runs row(a, b, n, dst) over a region of two images. Pointers are tested first, then steps, then
/// the size.
template <class Row>
VekStatus combineImages(const Vek8u* a, int aStep, const Vek8u* b, int bStep, Vek8u* pDst,
                        int dstStep, VekiSize roi, int channels, Row row) {
  const VekStatus status = checkPointersStepsSize({a, b, pDst}, {aStep, bStep, dstStep}, roi);
  if (status != vekStsNoErr) return status;
  const auto call = [=](ptrdiff_t n, Vek8u* dst, const Vek8u* aRow, const Vek8u* bRow) {
    row(aRow, bRow, n, dst);
  };
  forEachRow(rowBytes(roi, channels), roi.height, call, Plane{pDst, dstStep}, Plane{a, aStep},
             Plane{b, bStep});
  return vekStsNoErr;
}

/// Runs row(src, pattern, n, dst) over a region of one image and a Pattern of `values`, one for each
/// channel. The checks are the same, with `values` among the pointers.
template <class Row>
VekStatus combineWithConstants(const Vek8u* pSrc, int srcStep, const Vek8u* values, Vek8u* pDst,
                               int dstStep, VekiSize roi, int channels, Row row) {
  const VekStatus status = checkPointersStepsSize({pSrc, pDst, values}, {srcStep, dstStep}, roi);
  if (status != vekStsNoErr) return status;
  const Pattern pattern(values, channels);
  const auto call = [&](ptrdiff_t n, Vek8u* dst, const Vek8u* src) {
    row(src, pattern.bytes, n, dst);
  };
  forEachRow(rowBytes(roi, channels), roi.height, call, Plane{pDst, dstStep}, Plane{pSrc, srcStep});
  return vekStsNoErr;
}

}  // namespace vek
