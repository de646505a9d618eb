#include "camera/preview/reduce_body.h"

namespace vek::portable {

constexpr ReduceRows reduceRows = {pick, sumBlocks, splitPairs, halve, average};

}  // namespace vek::portable
