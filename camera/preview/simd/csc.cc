// The conversions to preview pixels in vectors: instances of the conversion that several families
// share.
#include "camera/preview/csc_kernels.h"
#include "camera/preview/csc_matrix.h"
#include "core/color/convert_planes_lanes.h"
#include "core/color/pixel_format.h"

namespace vek::VEK_LEVEL {
namespace {

template <int pixels>
constexpr CscFormats formats = {
    .rgb565 = convertPlanes<pixels, matrixQ8, Rgb565>,
    .rgb555 = convertPlanes<pixels, matrixQ8, Rgb555>,
    .rgb444 = convertPlanes<pixels, matrixQ8, Rgb444>,
    .bgr24 = convertPlanes<pixels, matrixQ8, Bgr24>,
    .rgb565Q10 = convertPlanes<pixels, matrixQ10, Rgb565>,
    .rgb555Q10 = convertPlanes<pixels, matrixQ10, Rgb555>,
};

}  // namespace

constexpr CscKernels cscKernels = {.paired = formats<2>, .single = formats<1>};

}  // namespace vek::VEK_LEVEL
