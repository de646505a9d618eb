// Sampled rows, sample by sample.
#include <stdint.h>
#include <string.h>

#include "camera/preview/resample_kernels.h"
#include "core/assert.h"
#include "core/kernel/words.h"

namespace vek::portable {
namespace {

/// Whether the samples lie in every other column: loops that vectors can take.
bool isByTwo(const Columns& columns) {
  return columns.step == 2 << 16;
}

/// For blends in vectors, the columns and fractions of the phases, which the rows of a tile share:
/// blocks of one sample. Other levels come to these kernels with no blocks at all.
void prepare(Columns& columns, bool blended) {
  columns.blockSize = hasWords && blended && !isByTwo(columns) ? 1 : 0;
  if (columns.blockSize == 0) return;
  const Vek32u first = columns.phase, step = columns.step;
  Vek32s* __restrict const windows = columns.windows();
  Vek16u* __restrict const fractions = columns.fractions;
  for (ptrdiff_t i = 0; i < columns.n; ++i) {
    const Vek32u phase = first + static_cast<Vek32u>(i) * step;
    windows[i] = static_cast<Vek32s>(phase >> 16);
    fractions[i] = static_cast<Vek16u>(phase & 0xFFFF);
  }
}

void pickByTwo(const Vek8u* __restrict row, ptrdiff_t n, Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n; ++i) dst[i] = row[2 * i];
}

void nearest(const Vek8u* __restrict row, const Columns& columns, Vek8u* __restrict dst) {
  VEK_ASSERT(columns.n <= columns.room);
  Vek32u phase = columns.phase;
  if (isByTwo(columns)) return pickByTwo(row + (phase >> 16), columns.n, dst);
  const auto next = [&] {
    const Vek8u sample = row[phase >> 16];
    phase += columns.step;
    return sample;
  };
  ptrdiff_t i = 0;
  for (; hasWords && i <= columns.n - 8; i += 8) {
    uint64_t eight = 0;
    for (int k = 0; k < 8; ++k) eight |= uint64_t{next()} << 8 * k;
    storeWord(eight, dst + i);
  }
  for (; i < columns.n; ++i) dst[i] = next();
}

/// `fraction` is 0..65535, so that the product stays within 255 * 65535.
Vek32s blend(Vek32s a, Vek32s b, Vek32s fraction) {
  return a + (((b - a) * fraction) >> 16);
}

/// The same in 16 bits. A fraction from 32768 on is taken as 65536 less, and b - a made up for it.
struct Blend16 {
  Vek16s fraction, missing;

  explicit Blend16(Vek32s fullFraction)
      : fraction(static_cast<Vek16s>(fullFraction)),
        missing(static_cast<Vek16s>(fraction < 0 ? -1 : 0)) {}

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

/// Samples and their right neighbours: pairs[i] is row[columns[i]] and 256 times the sample after it.
/// Collected in words, since storing them one by one takes longer than loading.
[[gnu::noinline]] void loadPairs(const Vek8u* row, const Vek32s* columns, ptrdiff_t n,
                                 Vek16u* pairs) {
  const auto pairAt = [&](ptrdiff_t i) { return loadWord<Vek16u>(row + columns[i]); };
  ptrdiff_t i = 0;
  for (; i <= n - 4; i += 4) {
    const uint64_t four = pairAt(i) | Vek32u{pairAt(i + 1)} << 16 | uint64_t{pairAt(i + 2)} << 32 |
                          uint64_t{pairAt(i + 3)} << 48;
    memcpy(pairs + i, &four, sizeof four);
  }
  for (; i < n; ++i) pairs[i] = pairAt(i);
}

[[gnu::noinline]] void blendPairs(const Vek16u* __restrict top, const Vek16u* __restrict bottom,
                                  const Vek16u* __restrict fractions, Vek32s fy, ptrdiff_t n,
                                  Vek8u* __restrict dst) {
  const Blend16 down(fy);
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Blend16 across(fractions[i]);
    const auto row = [&](Vek16u pair) {
      return across.of(static_cast<Vek16s>(pair & 0xFF), static_cast<Vek16s>(pair >> 8));
    };
    dst[i] = static_cast<Vek8u>(down.of(row(top[i]), row(bottom[i])));
  }
}

/// Blends the samples that have a right neighbour, and returns their number.
ptrdiff_t bilinearPairs(const Vek8u* top, const Vek8u* bottom, Vek32s fy, const Columns& columns,
                        Vek8u* dst) {
  constexpr ptrdiff_t block = 256;
  alignas(16) Vek16u upper[block], lower[block];
  ptrdiff_t n = columns.n;
  while (n > 0 && columns.windows()[n - 1] >= columns.lastColumn) --n;
  for (ptrdiff_t x = 0; x < n; x += block) {
    const ptrdiff_t count = n - x < block ? n - x : block;
    loadPairs(top, columns.windows() + x, count, upper);
    loadPairs(bottom, columns.windows() + x, count, lower);
    blendPairs(upper, lower, columns.fractions + x, fy, count, dst + x);
  }
  return n;
}

void bilinear(const Vek8u* top, const Vek8u* bottom, Vek32s fy, const Columns& columns,
              Vek8u* __restrict dst) {
  VEK_ASSERT(columns.n <= columns.room && fy >= 0 && fy <= 0xFFFF);
  if (fy == 0) bottom = top;
  Vek32u phase = columns.phase;
  if (((phase | columns.step) & 0xFFFF) == 0 && fy == 0) return nearest(top, columns, dst);
  const ptrdiff_t first = phase >> 16;
  const Vek32s firstFx = static_cast<Vek32s>(phase & 0xFFFF);
  if (isByTwo(columns) && first + 2 * columns.n - 1 <= columns.lastColumn) {
    return bilinearByTwo(top + first, bottom + first, firstFx, fy, columns.n, dst);
  }
  ptrdiff_t i = columns.blockSize == 1 ? bilinearPairs(top, bottom, fy, columns, dst) : 0;
  phase += static_cast<Vek32u>(i) * columns.step;
  for (; i < columns.n; ++i) {
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
