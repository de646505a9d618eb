#include "camera/preview/halve_kernels.h"
#include "core/assert.h"

namespace vek::portable {
namespace {

Vek8u roundedAverage(Vek8u a, Vek8u b) {
  return static_cast<Vek8u>((a + b + 1) >> 1);
}

void averageRows(const Vek8u* __restrict top, const Vek8u* __restrict bottom, ptrdiff_t n,
                 Vek8u* __restrict dst) {
  VEK_ASSERT(n >= 1);
  for (ptrdiff_t i = 0; i < n; ++i) dst[i] = roundedAverage(top[i], bottom[i]);
}

void splitRows(const Vek8u* __restrict top, const Vek8u* __restrict bottom, ptrdiff_t n,
               Vek8u* __restrict topLuma, Vek8u* __restrict bottomLuma, Vek8u* __restrict cb,
               Vek8u* __restrict cr) {
  VEK_ASSERT(n >= 2 && n % 2 == 0);
  for (ptrdiff_t i = 0; i < n; ++i) {
    topLuma[i] = top[2 * i + 1];
    bottomLuma[i] = bottom[2 * i + 1];
  }
  for (ptrdiff_t i = 0; i < n / 2; ++i) {
    cb[i] = roundedAverage(top[4 * i], bottom[4 * i]);
    cr[i] = roundedAverage(top[4 * i + 2], bottom[4 * i + 2]);
  }
}

}  // namespace

constexpr HalveKernels halveKernels = {.averageRows = averageRows, .splitRows = splitRows};

}  // namespace vek::portable
