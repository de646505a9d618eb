// 16.16 sampling phases and sampled rows, shared by the resize functions.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <string.h>

#include "camera/preview/resample_kernels.h"
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

/// The columns of a strip that begins with sample x of the scaled row, for nearest samples.
inline void nearestColumns(const ResampleKernels& rows, Vek32u xStep, ptrdiff_t x, ptrdiff_t n,
                           Columns& columns) {
  columns.phase = halfSample + static_cast<Vek32u>(x) * xStep;
  columns.step = xStep;
  columns.n = n;
  if (xStep != oneSample) rows.prepare(columns, false);
}

/// The same for blended samples.
inline void blendedColumns(const ResampleKernels& rows, Vek32u xStep, ptrdiff_t x, ptrdiff_t n,
                           ptrdiff_t lastColumn, Columns& columns) {
  columns.phase = static_cast<Vek32u>(x) * xStep;
  columns.step = xStep;
  columns.n = n;
  columns.lastColumn = lastColumn;
  rows.prepare(columns, true);
}

/// The nearest samples of a row; unscaled ones are used where they lie.
inline const Vek8u* nearestRow(const ResampleKernels& rows, const Vek8u* row,
                               const Columns& columns, Vek8u* buffer) {
  if (columns.step == oneSample) return row + (columns.phase >> 16);
  rows.nearest(row, columns, buffer);
  return buffer;
}

/// Samples blended from the source row at `rowPhase` and the one below. A row or column that has
/// weight 0 is not read.
inline const Vek8u* blendedRow(const ResampleKernels& rows, const Plane<const Vek8u>& plane,
                               Vek32u rowPhase, const Columns& columns, Vek8u* buffer) {
  const Vek8u* top = plane.row(rowPhase >> 16);
  const Vek32s fy = static_cast<Vek32s>(rowPhase & 0xFFFF);
  if (fy == 0 && columns.step == oneSample) return top + (columns.phase >> 16);
  rows.bilinear(top, top + plane.step, fy, columns, buffer);
  return buffer;
}

/// Puts a sampled row where it is wanted, unless it was made there.
inline void putRow(const Vek8u* row, ptrdiff_t n, Vek8u* dst) {
  if (row != dst) memcpy(dst, row, static_cast<size_t>(n));
}

}  // namespace vek
