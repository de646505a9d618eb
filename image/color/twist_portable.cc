#include "image/color/twist_body.h"

namespace vek::portable {

constexpr TwistKernels twistKernels = {lumaRow, grayQ14<Vek32s>, twist<Vek32s>};

}  // namespace vek::portable
