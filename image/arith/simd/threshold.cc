#include "image/arith/simd/pointwise.h"
#include "image/arith/threshold_body.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

struct ThresholdLanes : VectorLanes {
  static V8u lesser(V8u a, V8u b) { return hn::Min(a, b); }
  static V8u greater(V8u a, V8u b) { return hn::Max(a, b); }

  /// v is above the limit unless it is the lesser of both. Unsigned bytes compare in two instructions
  /// this way.
  static V8u ifAbove(V8u v, V8u limit, V8u yes, V8u no) {
    return hn::IfThenElse(hn::Eq(hn::Min(v, limit), v), no, yes);
  }
};

}  // namespace

constexpr ThresholdKernels thresholdKernels = thresholdKernelsOf<ThresholdLanes>();

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
