#if defined(__SSE2__)
#include "image/transform/sse_doubles.h"
#else
#include "image/transform/plain_doubles.h"
#endif

namespace vek::portable {

#if defined(__SSE2__)
constexpr RealFftKernels realFftKernels = realFftKernelsOf<SseDoubles>;
#else
constexpr RealFftKernels realFftKernels = realFftKernelsOf<PlainDoubles>;
#endif

}  // namespace vek::portable
