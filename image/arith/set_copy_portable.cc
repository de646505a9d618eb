#include <string.h>

#include "core/assert.h"
#include "image/arith/pattern.h"
#include "image/arith/set_copy_kernels.h"

namespace vek::portable {
namespace {

void repeat(const Vek8u* pattern, ptrdiff_t n, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  for (ptrdiff_t x = 0; x < n; x += Pattern::period) {
    const ptrdiff_t rest = n - x;
    memcpy(dst + x, pattern, static_cast<size_t>(rest < Pattern::period ? rest : Pattern::period));
  }
}

}  // namespace

constexpr SetKernels setKernels = {.repeat = repeat};

}  // namespace vek::portable
