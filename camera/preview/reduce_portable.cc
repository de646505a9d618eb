#include "camera/preview/reduce_body.h"

namespace vek::portable {

constexpr ReduceKernels reduceKernels = {pick, sumBlocks, averageBlocks<2>, averageBlocks<4>,
                                         averageBlocks<8>};

}  // namespace vek::portable
