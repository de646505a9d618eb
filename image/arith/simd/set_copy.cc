#include "image/arith/set_copy_kernels.h"
#include "image/arith/simd/pointwise.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

void repeat(const Vek8u* pattern, ptrdiff_t n, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  VectorLanes::mapRow(
      n, [](V8u v) { return v; }, dst, VectorLanes::Repeated{pattern});
}

}  // namespace

constexpr SetKernels setKernels = {.repeat = repeat};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
