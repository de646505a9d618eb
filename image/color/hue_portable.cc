#include "image/color/hue_body.h"

namespace vek::portable {

constexpr HueKernels hueKernels = {lineRGBToHLS_8u_C3R, lineHLSToRGB_8u_C3R, lineRGBToHSV_8u_C3R,
                                   lineHSVToRGB_8u_C3R};

}  // namespace vek::portable
