#include "image/transform/plain_doubles.h"

namespace vek::portable {

constexpr RealFftKernels realFftKernels = realFftKernelsOf<PlainDoubles>;

}  // namespace vek::portable
