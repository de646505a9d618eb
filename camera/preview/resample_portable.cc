#include "camera/preview/resample_body.h"

namespace vek::portable {

constexpr ResampleRows resampleRows = {nearest, bilinear, interleave};

}  // namespace vek::portable
