// 16.16 sampling phases and sampled rows, shared by the resize functions.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <string.h>

#include "camera/preview/resample_rows.h"
#include "core/region.h"

namespace vek {

inline constexpr Vek32u oneSample = 65536;   ///< one source sample in 16.16
inline constexpr Vek32u halfSample = 32768;  ///< where nearest sampling starts

/// Whether `step` would carry the last sample of `dstSize` past the end of `srcSize`. The limit is
/// ((srcSize & ~1) - 1) * 65536 / ((dstSize & ~1) - 1), the product taken modulo 2^32 and read as
/// signed; sizes below 2 have no second sample and always fail.
inline bool stepTooLarge(int step, int srcSize, int dstSize) {
  if (srcSize < 2 || dstSize < 2) return true;
  const Vek32u last = static_cast<Vek32u>((srcSize & ~1) - 1);
  return step > static_cast<Vek32s>(last << 16) / ((dstSize & ~1) - 1);
}

/// What a resize takes from its arguments.
struct Scaling {
  int width, height;  ///< scaled size, as the source is oriented
  bool bilinear;
  Vek32u xStep, yStep;

  Scaling(int dstWidth, int dstHeight, int interpolation, int xSampling, int ySampling)
      : width(dstWidth),
        height(dstHeight),
        bilinear(interpolation == 1),
        xStep(static_cast<Vek32u>(xSampling)),
        yStep(static_cast<Vek32u>(ySampling)) {}

  /// Whether nearest samples are the source's own.
  bool unscaled() const { return !bilinear && xStep == oneSample && yStep == oneSample; }
};

/// Row phase from which a bilinear blend has no row below: that of the last row.
inline Vek32u lastRowPhase(int srcHeight) {
  return static_cast<Vek32u>(srcHeight - 1) << 16;
}

/// `n` samples of a row at the nearest columns, beginning with sample x of the scaled row; unscaled
/// samples are used where they lie.
inline const Vek8u* nearestRow(const ResampleRows& rows, const Vek8u* row, Vek32u xStep,
                               ptrdiff_t x, ptrdiff_t n, Vek8u* buffer) {
  if (xStep == oneSample) return row + x;
  rows.nearest(row, halfSample + static_cast<Vek32u>(x) * xStep, xStep, n, buffer);
  return buffer;
}

/// `n` samples blended from the source row at `rowPhase` and the one below, beginning with sample x
/// of the scaled row. A row or column that has weight 0 is not read.
inline const Vek8u* bilinearRow(const ResampleRows& rows, const Plane<const Vek8u>& plane,
                                ptrdiff_t lastColumn, Vek32u rowPhase, Vek32u xStep, ptrdiff_t x,
                                ptrdiff_t n, Vek8u* buffer) {
  const Vek8u* top = plane.row(rowPhase >> 16);
  const Vek32s fy = static_cast<Vek32s>(rowPhase & 0xFFFF);
  if (fy == 0 && xStep == oneSample) return top + x;
  rows.bilinear(top, fy == 0 ? top : top + plane.step, fy, lastColumn,
                static_cast<Vek32u>(x) * xStep, xStep, n, buffer);
  return buffer;
}

/// Puts a sampled row where it is wanted, unless it was made there.
inline void putRow(const Vek8u* row, ptrdiff_t n, Vek8u* dst) {
  if (row != dst) memcpy(dst, row, static_cast<size_t>(n));
}

}  // namespace vek
