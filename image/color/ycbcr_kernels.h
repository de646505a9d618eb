// Kernels between RGB and YCbCr or YUV. No pointer needs an alignment; source and destination do not
// overlap; a row has n >= 1 pixels.
//
// In 4:2:2 and 4:2:0 the pixels 2k and 2k + 1 of a row share a chroma sample. Interleaved 4:2:2 images
// are groups Y0, Cb, Y1, Cr (or Y0, U, Y1, V).
#pragma once

#include "core/color/convert_planes.h"
#include "core/level.h"
#include "image/color/convert_row.h"

namespace vek {

/// The same conversion to each format of 16-bit pixels.
template <class Kernel>
struct PackedFormats {
  Kernel rgb565, rgb555, rgb444, bgr565, bgr555, bgr444;
};

/// To 16-bit pixels: each component is shifted down to its field's width without a rounding term and
/// clamped to the field.
struct YcbcrPackedKernels {
  PackedFormats<ConvertPlanes> ycbcr420, yuv420;  ///< planes with shared chroma
  PackedFormats<ConvertPlanes> ycbcr444;          ///< planes of the same size
  PackedFormats<ConvertRow> ycbcrInterleaved422;
  PackedFormats<ConvertRow> ycbcrInterleaved444;
};

/// A row of RGB to a row of each plane.
using ToPlanesRow = void (*)(ptrdiff_t n, const Vek8u* rgb, Vek8u* y, Vek8u* u, Vek8u* v);

/// Two rows of RGB, whose 2 x 2 blocks share chroma, to two rows of luma and one of U and of V.
using ToPlanes420Rows = void (*)(ptrdiff_t n, const Vek8u* top, const Vek8u* bottom, Vek8u* yTop,
                                 Vek8u* yBottom, Vek8u* u, Vek8u* v);

/// Between RGB bytes and the others. Chroma that pixels share comes from the rounded average of their
/// R, G and B; at the end of a row of odd width it belongs to the last pixel alone. @quirk The last
/// interleaved group of such a row is whole: it repeats the pixel's Y in place of Y1 when it is
/// written, and Y1 is ignored when it is read.
struct YcbcrRgbKernels {
  ConvertRow rgbToYcbcr444, ycbcr444ToRgb;  ///< interleaved
  ConvertRow rgbToYcbcr422, ycbcr422ToRgb;
  ConvertRow rgbToYuv444, yuv444ToRgb;
  ConvertRow rgbToYuv422, yuv422ToRgb;

  ToPlanesRow rgbToYuv444Planes;
  ToPlanesRow rgbToYuv422Planes;
  ToPlanes420Rows rgbToYuv420Planes;
  ConvertPlanes yuv444PlanesToRgb;
  ConvertPlanes yuvSharedPlanesToRgb;  ///< 4:2:2 and 4:2:0: the planes say which rows share chroma
};

VEK_KERNEL_TABLE(YcbcrPackedKernels, ycbcrPackedKernels)
VEK_KERNEL_TABLE(YcbcrRgbKernels, ycbcrRgbKernels)

}  // namespace vek
