// The table of the conversions to preview pixels, for kernels of any kind.
// Compiled into kernels of every level, so everything sits in the level's own namespace.
#pragma once

#include "camera/preview/csc_kernels.h"
#include "camera/preview/csc_matrix.h"
#include "core/color/pixel_format.h"

namespace vek::VEK_LEVEL {
namespace {

template <class Conversion, int pixels>
constexpr CscFormats cscFormatsOf() {
  return {.rgb565 = Conversion::template kernel<pixels, matrixQ8, Rgb565>,
          .rgb555 = Conversion::template kernel<pixels, matrixQ8, Rgb555>,
          .rgb444 = Conversion::template kernel<pixels, matrixQ8, Rgb444>,
          .bgr24 = Conversion::template kernel<pixels, matrixQ8, Bgr24>,
          .rgb565Q10 = Conversion::template kernel<pixels, matrixQ10, Rgb565>,
          .rgb555Q10 = Conversion::template kernel<pixels, matrixQ10, Rgb555>};
}

/// Conversion::kernel<pixels, matrix, Format> converts planes of which each chroma sample serves
/// `pixels` pixels of a row.
template <class Conversion>
constexpr CscKernels cscKernelsOf() {
  return {.paired = cscFormatsOf<Conversion, 2>(), .single = cscFormatsOf<Conversion, 1>()};
}

}  // namespace
}  // namespace vek::VEK_LEVEL
