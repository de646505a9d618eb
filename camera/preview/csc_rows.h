// Row kernels that turn planar YCbCr into preview pixels.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// Converts n pixels; pixels 2k and 2k + 1 share cb[k] and cr[k]. `dst` may be at any address.
using CscRow = void (*)(const Vek8u* y, const Vek8u* cb, const Vek8u* cr, ptrdiff_t n, Vek8u* dst);

/// Studio-range BT.601 with the coefficients of csc_matrix.h, clamped to each field.
struct CscRows {
  CscRow rgb565;
  CscRow rgb555;
  CscRow rgb444;
  CscRow bgr24;
  CscRow rgb565Q10;  ///< 10 fractional bits; the others have 8
  CscRow rgb555Q10;

  /// The formats with 8 fractional bits in the order above, from 0.
  CscRow of(int format) const {
    const CscRow rows[] = {rgb565, rgb555, rgb444, bgr24};
    return rows[format];
  }
};

VEK_KERNEL_TABLE(CscRows, cscRows)

}  // namespace vek
