#include "camera/preview/reduce_body.h"

namespace vek::portable {

constexpr ReduceRows reduceRows = {pick, sumBlocks, averageBlocks<2>, averageBlocks<4>,
                                   averageBlocks<8>};

}  // namespace vek::portable
