// Kernels that turn planar YCbCr into preview pixels.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"
#include "core/region.h"

namespace vek {

/// Rows of samples; row y of the luma goes with chroma row y >> chromaShift.
struct Samples {
  Plane<const Vek8u> y, cb, cr;
  int chromaShift;
};

/// Converts `rows` rows of n pixels into rows `dstStep` bytes apart. `dst` may be at any address.
using Csc = void (*)(const Samples& samples, ptrdiff_t n, ptrdiff_t rows, Vek8u* dst,
                     ptrdiff_t dstStep);

/// Studio-range BT.601 with the coefficients of csc_matrix.h, clamped to each field.
struct CscFormats {
  Csc rgb565;
  Csc rgb555;
  Csc rgb444;
  Csc bgr24;
  Csc rgb565Q10;  ///< 10 fractional bits; the others have 8
  Csc rgb555Q10;

  /// The formats with 8 fractional bits in the order above, from 0.
  Csc of(int format) const {
    const Csc kernels[] = {rgb565, rgb555, rgb444, bgr24};
    return kernels[format];
  }
};

struct CscRows {
  CscFormats paired;  ///< pixels 2k and 2k + 1 of a row share chroma sample k
  CscFormats single;  ///< each pixel has its own chroma sample
};

VEK_KERNEL_TABLE(CscRows, cscRows)

}  // namespace vek
