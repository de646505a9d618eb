#include "image/arith/pointwise_portable.h"
#include "image/arith/threshold_body.h"

namespace vek::portable {
namespace {

struct ThresholdLanes : PlainLanes {
  static Sample lesser(Sample a, Sample b) { return a < b ? a : b; }
  static Sample greater(Sample a, Sample b) { return a > b ? a : b; }
  static Sample ifAbove(Sample v, Sample limit, Sample yes, Sample no) {
    return v > limit ? yes : no;
  }
};

}  // namespace

constexpr ThresholdKernels thresholdKernels = thresholdKernelsOf<ThresholdLanes>();

}  // namespace vek::portable
