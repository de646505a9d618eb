// The conversion as its definition reads: the portable kernels, and the fallback of every level.
#pragma once

#include <stddef.h>

#include "camera/preview/csc_matrix.h"
#include "camera/preview/csc_rows.h"
#include "core/kernel/pixel_format.h"

namespace vek::VEK_LEVEL {
namespace {

/// Each chroma sample of a row serves `pixels` pixels.
template <int pixels, class Matrix, class Format>
void cscRow(const Vek8u* __restrict y, const Vek8u* __restrict cb, const Vek8u* __restrict cr,
            ptrdiff_t n, Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Vek32s luma = (y[i] - 16) * Matrix::luma;
    const Vek32s b = cb[i / pixels] - 128;
    const Vek32s r = cr[i / pixels] - 128;
    const Vek32s red = (luma + Matrix::redCr * r) >> shiftToField<Matrix>(Format::rBits);
    const Vek32s green =
        (luma + Matrix::greenCb * b + Matrix::greenCr * r) >> shiftToField<Matrix>(Format::gBits);
    const Vek32s blue = (luma + Matrix::blueCb * b) >> shiftToField<Matrix>(Format::bBits);
    Format::store(dst + i * Format::bytes, clampToBits<Format::rBits>(red),
                  clampToBits<Format::gBits>(green), clampToBits<Format::bBits>(blue));
  }
}

template <int pixels, class Matrix, class Format>
void csc(const Samples& samples, ptrdiff_t n, ptrdiff_t rows, Vek8u* dst, ptrdiff_t dstStep) {
  for (ptrdiff_t y = 0; y < rows; ++y) {
    const ptrdiff_t chroma = y >> samples.chromaShift;
    cscRow<pixels, Matrix, Format>(samples.y.row(y), samples.cb.row(chroma), samples.cr.row(chroma),
                                   n, dst + y * dstStep);
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
