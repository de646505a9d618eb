#include "core/assert.h"
#include "image/channels/semi_planar_kernels.h"

namespace vek::portable {
namespace {

void join(const Vek8u* first, const Vek8u* second, ptrdiff_t n, Vek8u* pairs) {
  VEK_ASSERT(n >= 1);
  for (ptrdiff_t i = 0; i < n; ++i) {
    pairs[2 * i] = first[i];
    pairs[2 * i + 1] = second[i];
  }
}

void split(const Vek8u* pairs, ptrdiff_t n, Vek8u* first, Vek8u* second) {
  VEK_ASSERT(n >= 1);
  for (ptrdiff_t i = 0; i < n; ++i) {
    first[i] = pairs[2 * i];
    second[i] = pairs[2 * i + 1];
  }
}

}  // namespace

constexpr SemiPlanarKernels semiPlanarKernels = {.join = join, .split = split};

}  // namespace vek::portable
