// Row kernels between RGB and YCbCr or YUV, n pixels each. No pointer needs an alignment; source
// and destination do not overlap.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/color/convert_planes.h"
#include "core/level.h"

namespace vek {

using InterleavedRow = void (*)(ptrdiff_t n, const Vek8u* src, Vek8u* dst);
using ToPlanesRow = void (*)(ptrdiff_t n, const Vek8u* src, Vek8u* y, Vek8u* u, Vek8u* v);

/// To 16-bit pixels: each component is shifted down to its field's width without a rounding term
/// and clamped to the field. YCBCR420 and YUV420 rows share a chroma sample between pixels 2k and
/// 2k + 1; C2C3 sources are groups Y0, Cb, Y1, Cr, whose third byte a row of odd width ignores.
struct YcbcrPackedKernels {
  ConvertPlanes YCBCR420_RGB565_8u16u_P3C3, YCBCR420_RGB555_8u16u_P3C3, YCBCR420_RGB444_8u16u_P3C3,
      YCBCR420_BGR565_8u16u_P3C3, YCBCR420_BGR555_8u16u_P3C3, YCBCR420_BGR444_8u16u_P3C3;
  ConvertPlanes YUV420_RGB565_8u16u_P3C3, YUV420_RGB555_8u16u_P3C3, YUV420_RGB444_8u16u_P3C3,
      YUV420_BGR565_8u16u_P3C3, YUV420_BGR555_8u16u_P3C3, YUV420_BGR444_8u16u_P3C3;
  ConvertPlanes YCBCR_RGB565_8u16u_P3C3, YCBCR_RGB555_8u16u_P3C3, YCBCR_RGB444_8u16u_P3C3,
      YCBCR_BGR565_8u16u_P3C3, YCBCR_BGR555_8u16u_P3C3, YCBCR_BGR444_8u16u_P3C3;
  InterleavedRow YCBCR422_RGB565_8u16u_C2C3, YCBCR422_RGB555_8u16u_C2C3, YCBCR422_RGB444_8u16u_C2C3,
      YCBCR422_BGR565_8u16u_C2C3, YCBCR422_BGR555_8u16u_C2C3, YCBCR422_BGR444_8u16u_C2C3;
  InterleavedRow YCBCR_RGB565_8u16u_C3, YCBCR_RGB555_8u16u_C3, YCBCR_RGB444_8u16u_C3,
      YCBCR_BGR565_8u16u_C3, YCBCR_BGR555_8u16u_C3, YCBCR_BGR444_8u16u_C3;
};

/// Between RGB bytes and the others. Chroma that pixels share comes from the rounded average of
/// their R, G and B; at the end of a row of odd width it belongs to the last pixel alone, and an
/// interleaved group repeats that pixel's Y as its third byte.
struct YcbcrRgbKernels {
  InterleavedRow lineRGBToYCbCr_8u_C3R, lineYCbCrToRGB_8u_C3R;
  InterleavedRow lineRGBToYCbCr422_8u_C3C2R, lineYCbCr422ToRGB_8u_C2C3R;

  InterleavedRow lineRGBToYUV_8u_C3R, lineYUVToRGB_8u_C3R;
  ToPlanesRow lineRGBToYUV_8u_C3P3R;
  ConvertPlanes lineYUVToRGB_8u_P3C3R;

  InterleavedRow lineRGBToYUV422_8u_C3R, lineYUV422ToRGB_8u_C3R;
  ToPlanesRow lineRGBToYUV422_8u_C3P3R;
  ConvertPlanes lineYUV422ToRGB_8u_P3C3R;

  /// Two rows of RGB, whose 2 x 2 blocks share chroma.
  void (*rgbToYuv420Pair)(ptrdiff_t n, const Vek8u* top, const Vek8u* bottom, Vek8u* yTop,
                          Vek8u* yBottom, Vek8u* u, Vek8u* v);
};

VEK_KERNEL_TABLE(YcbcrPackedKernels, ycbcrPackedKernels)
VEK_KERNEL_TABLE(YcbcrRgbKernels, ycbcrRgbKernels)

}  // namespace vek
