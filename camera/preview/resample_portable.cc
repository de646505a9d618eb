// Sampled rows, sample by sample.
#include "camera/preview/resample_kernels.h"
#include "core/assert.h"

namespace vek::portable {
namespace {

/// The loops take each phase as it comes.
void prepare(Columns& /*columns*/, bool /*blended*/) {}

void nearest(const Vek8u* __restrict row, const Columns& columns, Vek8u* __restrict dst) {
  VEK_ASSERT(columns.n <= Columns::maxCount);
  Vek32u phase = columns.phase;
  for (ptrdiff_t i = 0; i < columns.n; ++i) {
    dst[i] = row[phase >> 16];
    phase += columns.step;
  }
}

/// `fraction` is 0..65535, so that the product stays within 255 * 65535.
Vek32s blend(Vek32s a, Vek32s b, Vek32s fraction) {
  return a + (((b - a) * fraction) >> 16);
}

void bilinear(const Vek8u* __restrict top, const Vek8u* __restrict bottom, Vek32s fy,
              const Columns& columns, Vek8u* __restrict dst) {
  VEK_ASSERT(columns.n <= Columns::maxCount && fy >= 0 && fy <= 0xFFFF);
  if (fy == 0) bottom = top;
  Vek32u phase = columns.phase;
  for (ptrdiff_t i = 0; i < columns.n; ++i) {
    const ptrdiff_t left = phase >> 16;
    const ptrdiff_t right = left < columns.lastColumn ? left + 1 : left;
    const Vek32s fx = static_cast<Vek32s>(phase & 0xFFFF);
    const Vek32s upper = blend(top[left], top[right], fx);
    const Vek32s lower = blend(bottom[left], bottom[right], fx);
    dst[i] = static_cast<Vek8u>(blend(upper, lower, fy));
    phase += columns.step;
  }
}

}  // namespace

constexpr ResampleKernels resampleKernels = {
    .prepare = prepare, .nearest = nearest, .bilinear = bilinear};

}  // namespace vek::portable
