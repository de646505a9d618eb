#include "core/assert.h"
#include "image/filter/morphology_kernels.h"

namespace vek::portable {
namespace {

Vek8u lower(Vek8u a, Vek8u b) {
  return a < b ? a : b;
}
Vek8u higher(Vek8u a, Vek8u b) {
  return a > b ? a : b;
}

template <Vek8u (*extreme)(Vek8u, Vek8u), int pixelBytes>
void extreme3x3(const Vek8u* __restrict src, ptrdiff_t srcStep, Vek8u* __restrict dst,
                ptrdiff_t n) {
  VEK_ASSERT(n >= 1);
  const auto column = [=](ptrdiff_t x) {
    return extreme(extreme(src[x - srcStep], src[x]), src[x + srcStep]);
  };
  for (ptrdiff_t x = 0; x < n; ++x) {
    dst[x] = extreme(extreme(column(x - pixelBytes), column(x)), column(x + pixelBytes));
  }
}

}  // namespace

constexpr MorphologyKernels morphologyKernels = {
    .erode = {.c1 = extreme3x3<lower, 1>, .c3 = extreme3x3<lower, 3>},
    .dilate = {.c1 = extreme3x3<higher, 1>, .c3 = extreme3x3<higher, 3>},
};

}  // namespace vek::portable
