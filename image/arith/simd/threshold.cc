#include "image/arith/simd/pointwise.h"
#include "image/arith/threshold_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

Sample lesser(Sample a, Sample b) {
  return hn::Min(a, b);
}

Sample greater(Sample a, Sample b) {
  return hn::Max(a, b);
}

/// Unsigned bytes compare in two instructions this way: v is above the limit unless it is the
/// lesser of both.
Sample ifAbove(Sample v, Sample limit, Sample yes, Sample no) {
  return hn::IfThenElse(hn::Eq(hn::Min(v, limit), v), no, yes);
}

}  // namespace
}  // namespace vek::VEK_LEVEL

#include "image/arith/threshold_table.h"

HWY_AFTER_NAMESPACE();
