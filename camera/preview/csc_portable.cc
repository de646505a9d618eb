// The conversions to preview pixels one by one, as several families convert planes.
#include "camera/preview/csc_tables.h"
#include "core/color/convert_planes_portable.h"

namespace vek::portable {
namespace {

struct PlainConversion {
  template <int pixels, const Matrix& matrix, class Format>
  static constexpr ConvertPlanes kernel = convertPlanes<pixels, matrix, Format>;
};

}  // namespace

constexpr CscKernels cscKernels = cscKernelsOf<PlainConversion>();

}  // namespace vek::portable
