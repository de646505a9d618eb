#include "image/color/luv_body.h"

namespace vek::portable {

constexpr LuvKernels luvKernels = {RGB_LUV_8u_C3, LUV_RGB_8u_C3};

}  // namespace vek::portable
