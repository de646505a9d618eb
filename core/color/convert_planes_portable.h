// The conversion of planes to pixels as its definition reads: the portable kernels of the families
// that have such conversions.
#pragma once

#include "core/assert.h"
#include "core/color/color_matrix.h"
#include "core/color/convert_planes.h"

namespace vek::VEK_LEVEL {
namespace {

/// Each chroma sample of a row serves `pixels` pixels.
template <int pixels, const Matrix& m, class Format>
void convertRow(const Vek8u* __restrict y, const Vek8u* __restrict cb, const Vek8u* __restrict cr,
                ptrdiff_t n, Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Vek32s b = cb[i / pixels], r = cr[i / pixels];
    Format::store(dst + i * Format::bytes, component<m, 0, Format::rBits>(y[i], b, r),
                  component<m, 1, Format::gBits>(y[i], b, r),
                  component<m, 2, Format::bBits>(y[i], b, r));
  }
}

/// The kernel of convert_planes.h.
template <int pixels, const Matrix& m, class Format>
void convertPlanes(const YccPlanes& planes, ptrdiff_t n, ptrdiff_t rows, Vek8u* dst,
                   ptrdiff_t dstStep) {
  VEK_ASSERT(planes.chromaShift == 0 || planes.chromaShift == 1);
  for (ptrdiff_t y = 0; y < rows; ++y) {
    const ptrdiff_t chroma = y >> planes.chromaShift;
    convertRow<pixels, m, Format>(planes.y.row(y), planes.cb.row(chroma), planes.cr.row(chroma), n,
                                  dst + y * dstStep);
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
