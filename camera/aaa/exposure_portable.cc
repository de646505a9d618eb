#include "camera/aaa/exposure_body.h"
#include "camera/aaa/exposure_kernels.h"

namespace vek::portable {

constexpr ExposureKernels exposureKernels = {_vekiAEHist_10RGGB, _vekiAEWnd_10RGGB};

}  // namespace vek::portable
