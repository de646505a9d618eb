// The thresholds' operators on single samples: the portable kernels, and the fallback of every
// level.
#pragma once

#include "image/arith/pointwise_body.h"

namespace vek::VEK_LEVEL {
namespace {

inline Sample lesser(Sample a, Sample b) {
  return a < b ? a : b;
}

inline Sample greater(Sample a, Sample b) {
  return a > b ? a : b;
}

inline Sample ifAbove(Sample v, Sample limit, Sample yes, Sample no) {
  return v > limit ? yes : no;
}

}  // namespace
}  // namespace vek::VEK_LEVEL
