// Sampled rows, sample by sample.
#include "camera/preview/resample_kernels.h"
#include "core/assert.h"

namespace vek::portable {
namespace {

/// The loops take each phase as it comes.
void prepare(Columns& /*columns*/, bool /*blended*/) {}

/// Whether the samples lie in every other column: loops that vectors can take.
bool isByTwo(const Columns& columns) {
  return columns.step == 2 << 16;
}

void pickByTwo(const Vek8u* __restrict row, ptrdiff_t n, Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n; ++i) dst[i] = row[2 * i];
}

void nearest(const Vek8u* __restrict row, const Columns& columns, Vek8u* __restrict dst) {
  VEK_ASSERT(columns.n <= Columns::maxCount);
  Vek32u phase = columns.phase;
  if (isByTwo(columns)) return pickByTwo(row + (phase >> 16), columns.n, dst);
  for (ptrdiff_t i = 0; i < columns.n; ++i) {
    dst[i] = row[phase >> 16];
    phase += columns.step;
  }
}

/// `fraction` is 0..65535, so that the product stays within 255 * 65535.
Vek32s blend(Vek32s a, Vek32s b, Vek32s fraction) {
  return a + (((b - a) * fraction) >> 16);
}

/// The same in 16 bits. A fraction from 32768 on is taken as 65536 less, and b - a made up for it.
struct Blend16 {
  Vek16s fraction, missing;

  explicit Blend16(Vek32s fullFraction)
      : fraction(static_cast<Vek16s>(fullFraction < 32768 ? fullFraction : fullFraction - 65536)),
        missing(static_cast<Vek16s>(fullFraction < 32768 ? 0 : -1)) {}

  Vek16s of(Vek16s a, Vek16s b) const {
    const Vek16s difference = static_cast<Vek16s>(b - a);
    const Vek16s part = static_cast<Vek16s>((difference * fraction) >> 16);
    return static_cast<Vek16s>(a + part + (difference & missing));
  }
};

/// Blends with one horizontal weight.
void bilinearByTwo(const Vek8u* __restrict top, const Vek8u* __restrict bottom, Vek32s fx,
                   Vek32s fy, ptrdiff_t n, Vek8u* __restrict dst) {
  const Blend16 across(fx), down(fy);
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Vek16s upper = across.of(top[2 * i], top[2 * i + 1]);
    const Vek16s lower = across.of(bottom[2 * i], bottom[2 * i + 1]);
    dst[i] = static_cast<Vek8u>(down.of(upper, lower));
  }
}

void bilinear(const Vek8u* __restrict top, const Vek8u* __restrict bottom, Vek32s fy,
              const Columns& columns, Vek8u* __restrict dst) {
  VEK_ASSERT(columns.n <= Columns::maxCount && fy >= 0 && fy <= 0xFFFF);
  if (fy == 0) bottom = top;
  Vek32u phase = columns.phase;
  const ptrdiff_t first = phase >> 16;
  const Vek32s firstFx = static_cast<Vek32s>(phase & 0xFFFF);
  if (isByTwo(columns) && (firstFx | fy) == 0) return pickByTwo(top + first, columns.n, dst);
  if (isByTwo(columns) && first + 2 * columns.n - 1 <= columns.lastColumn) {
    return bilinearByTwo(top + first, bottom + first, firstFx, fy, columns.n, dst);
  }
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
