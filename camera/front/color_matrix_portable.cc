#include "camera/front/color_matrix_kernels.h"
#include "core/assert.h"

namespace vek::portable {
namespace {

/// The sums are at most 4 * 1023, and products with them at most 2^27; what larger samples give is of no
/// use, but wraps as it does in the lanes of the fast kernels.
Vek16u mixed(const Vek16u* up, const Vek16u* at, const Vek16u* down,
             const ColorMatrixWeights& weights, size_t c) {
  const auto product = [](Vek16s weight, int sum) {
    return static_cast<Vek32u>(weight * static_cast<Vek16s>(sum));
  };
  const Vek32u sum = product(weights.own[c], 4 * at[0]) +
                     product(weights.beside[c], at[-1] + at[1]) +
                     product(weights.vertical[c], up[0] + down[0]) +
                     product(weights.diagonal[c], up[-1] + up[1] + down[-1] + down[1]);
  const Vek32s value = static_cast<Vek32s>(sum + (1 << 13)) >> 14;
  return static_cast<Vek16u>(value < 0 ? 0 : value < 1023 ? value : 1023);
}

void row(const Vek16u* up, const Vek16u* at, const Vek16u* down, Vek16u* dst, ptrdiff_t n,
         const ColorMatrixWeights& weights) {
  VEK_ASSERT(n >= 1);
  const ColorMatrixWeights w = weights;
  ptrdiff_t i = 0;
  for (; i + 2 <= n; i += 2) {
    dst[i] = mixed(up + i, at + i, down + i, w, 0);
    dst[i + 1] = mixed(up + i + 1, at + i + 1, down + i + 1, w, 1);
  }
  if (i < n) dst[i] = mixed(up + i, at + i, down + i, w, 0);
}

}  // namespace

constexpr ColorMatrixKernels colorMatrixKernels = {.row = row};

}  // namespace vek::portable
