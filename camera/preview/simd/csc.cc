// The conversions to preview pixels in vectors, as several families convert planes.
#include "camera/preview/csc_tables.h"
#include "core/color/convert_planes_lanes.h"

namespace vek::VEK_LEVEL {
namespace {

struct VectorConversion {
  template <int pixels, const Matrix& matrix, class Format>
  static constexpr ConvertPlanes kernel = convertPlanes<pixels, matrix, Format>;
};

}  // namespace

constexpr CscKernels cscKernels = cscKernelsOf<VectorConversion>();

}  // namespace vek::VEK_LEVEL
