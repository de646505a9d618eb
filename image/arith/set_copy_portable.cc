#include <string.h>

#include "core/assert.h"
#include "image/arith/pattern.h"
#include "image/arith/set_copy_kernels.h"

namespace vek::portable {
namespace {

void repeat(const Vek8u* pattern, ptrdiff_t n, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  ptrdiff_t x = 0;
  // Of a constant size, so that the compiler copies in place.
  for (; n - x >= Pattern::period; x += Pattern::period) memcpy(dst + x, pattern, Pattern::period);
  memcpy(dst + x, pattern, static_cast<size_t>(n - x));
}

}  // namespace

constexpr SetKernels setKernels = {.repeat = repeat};

}  // namespace vek::portable
