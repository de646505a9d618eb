// 16.16 sampling phases and sampled rows, shared by the resize functions.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <string.h>

#include "camera/preview/preview_call.h"
#include "camera/preview/resample_kernels.h"
#include "core/assert.h"
#include "core/region.h"

namespace vek {

inline constexpr Vek32u oneSample = 65536;   ///< one source sample in 16.16
inline constexpr Vek32u halfSample = 32768;  ///< where nearest sampling starts

/// Whether the samples of a call are the source's own.
inline bool isUnscaled(const PreviewCall& call) {
  return !call.isBilinear() && call.columnStep() == oneSample && call.rowStep() == oneSample;
}

/// Row phase from which a bilinear blend has no row below: that of the last row.
inline Vek32u lastRowPhase(int srcHeight) {
  return static_cast<Vek32u>(srcHeight - 1) << 16;
}

/// Sets what columns are prepared from. False if they are the same as before, as in tiles below each
/// other: an object serves one kind of sampling of one source.
inline bool setColumns(Vek32u phase, Vek32u step, ptrdiff_t n, Columns& columns) {
  VEK_ASSERT(n <= columns.room);
  if (columns.n == n && columns.phase == phase && columns.step == step) return false;
  columns.phase = phase;
  columns.step = step;
  columns.n = n;
  return true;
}

/// The columns of a strip that begins with sample x of the scaled row, for nearest samples.
inline void nearestColumns(const ResampleKernels& kernels, Vek32u step, ptrdiff_t x, ptrdiff_t n,
                           Columns& columns) {
  const Vek32u phase = halfSample + static_cast<Vek32u>(x) * step;
  if (setColumns(phase, step, n, columns) && step != oneSample) kernels.prepare(columns, false);
}

/// The same for blended samples.
inline void blendedColumns(const ResampleKernels& kernels, Vek32u step, ptrdiff_t x, ptrdiff_t n,
                           ptrdiff_t lastColumn, Columns& columns) {
  columns.lastColumn = lastColumn;
  if (setColumns(static_cast<Vek32u>(x) * step, step, n, columns)) kernels.prepare(columns, true);
}

/// The nearest samples of a row: made in the buffer, or where they lie if the row is not scaled.
inline const Vek8u* nearestRow(const ResampleKernels& kernels, const Vek8u* row,
                               const Columns& columns, Vek8u* buffer) {
  if (columns.step == oneSample) return row + (columns.phase >> 16);
  kernels.nearest(row, columns, buffer);
  return buffer;
}

/// Samples blended from the source row at `rowPhase` and the one below, like nearestRow(). A row or
/// column that has weight 0 is not read.
inline const Vek8u* blendedRow(const ResampleKernels& kernels, const Plane<const Vek8u>& plane,
                               Vek32u rowPhase, const Columns& columns, Vek8u* buffer) {
  const Vek8u* top = plane.row(rowPhase >> 16);
  const Vek32s fy = static_cast<Vek32s>(rowPhase & 0xFFFF);
  if (fy == 0 && columns.step == oneSample) return top + (columns.phase >> 16);
  kernels.bilinear(top, top + plane.step, fy, columns, buffer);
  return buffer;
}

/// Copies a sampled row to where it is wanted, unless it was made there.
inline void putRow(const Vek8u* row, ptrdiff_t n, Vek8u* dst) {
  if (row != dst) memcpy(dst, row, static_cast<size_t>(n));
}

}  // namespace vek
