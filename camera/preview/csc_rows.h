// Row kernels that turn planar YCbCr into preview pixels.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// Converts n pixels; pixels 2k and 2k + 1 share cb[k] and cr[k]. `dst` may be at any address.
using CscRow = void (*)(const Vek8u* y, const Vek8u* cb, const Vek8u* cr, ptrdiff_t n, Vek8u* dst);

/// With Yp = (Y - 16) * 298, b = Cb - 128, r = Cr - 128: R = Yp + 409 r, G = Yp - 100 b - 208 r,
/// B = Yp + 516 b, in 1/256 of an 8-bit step (studio-range BT.601 with 8 fractional bits). Each is
/// shifted down to its field's width without a rounding term and clamped to the field.
struct CscRows {
  CscRow rgb565;
  CscRow rgb555;
  CscRow rgb444;
  CscRow bgr24;

  /// Formats in the order above, from 0.
  CscRow of(int format) const {
    const CscRow rows[] = {rgb565, rgb555, rgb444, bgr24};
    return rows[format];
  }
};

VEK_KERNEL_TABLE(CscRows, cscRows)

}  // namespace vek
