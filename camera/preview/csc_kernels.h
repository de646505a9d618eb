// Kernels that convert planar YCbCr into preview pixels.
#pragma once

#include "vek/vek.h"

#include "core/color/convert_planes.h"
#include "core/level.h"

namespace vek {

/// Studio-range BT.601 with the coefficients of csc_matrix.h, clamped to each field.
struct CscFormats {
  ConvertPlanes rgb565;
  ConvertPlanes rgb555;
  ConvertPlanes rgb444;
  ConvertPlanes bgr24;
  ConvertPlanes rgb565Q10;  ///< 10 fractional bits; the others have 8
  ConvertPlanes rgb555Q10;

  /// The formats with 8 fractional bits in the order above, from 0.
  ConvertPlanes of(int format) const {
    const ConvertPlanes kernels[] = {rgb565, rgb555, rgb444, bgr24};
    return kernels[format];
  }
};

struct CscKernels {
  CscFormats paired;  ///< pixels 2k and 2k + 1 of a row share chroma sample k
  CscFormats single;  ///< each pixel has its own chroma sample
};

VEK_KERNEL_TABLE(CscKernels, cscKernels)

}  // namespace vek
