// The table of a level whose cscRow<pixels, Matrix, Format> converts one row.
#pragma once

#include "camera/preview/csc_matrix.h"
#include "camera/preview/csc_rows.h"
#include "core/kernel/pixel_format.h"

namespace vek::VEK_LEVEL {
namespace {

template <int pixels, class Matrix, class Format>
void csc(const Samples& samples, ptrdiff_t n, ptrdiff_t rows, Vek8u* dst, ptrdiff_t dstStep) {
  for (ptrdiff_t y = 0; y < rows; ++y) {
    const ptrdiff_t chroma = y >> samples.chromaShift;
    cscRow<pixels, Matrix, Format>(samples.y.row(y), samples.cb.row(chroma), samples.cr.row(chroma),
                                   n, dst + y * dstStep);
  }
}

template <int pixels>
constexpr CscFormats formats = {csc<pixels, MatrixQ8, Rgb565>,  csc<pixels, MatrixQ8, Rgb555>,
                                csc<pixels, MatrixQ8, Rgb444>,  csc<pixels, MatrixQ8, Bgr24>,
                                csc<pixels, MatrixQ10, Rgb565>, csc<pixels, MatrixQ10, Rgb555>};

}  // namespace

constexpr CscRows cscRows = {formats<2>, formats<1>};

}  // namespace vek::VEK_LEVEL
