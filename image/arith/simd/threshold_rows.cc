#include "image/arith/threshold_rows.h"

#include "image/arith/simd/pointwise.h"

#if VEK_HAVE_HIGHWAY

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

#include "image/arith/threshold_kernels.h"

HWY_AFTER_NAMESPACE();

#else

#include "image/arith/threshold_body.h"
// The kernels need the operators.
#include "image/arith/threshold_kernels.h"

#endif
