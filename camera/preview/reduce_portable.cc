// The reductions sample by sample.
#include "camera/preview/reduce_body.h"
#include "camera/preview/reduce_kernels.h"
#include "core/kernel/words.h"

namespace vek::portable {
namespace {

Vek32s roundedAverage(Vek32s a, Vek32s b) {
  return (a + b + 1) >> 1;
}

/// The average in pairs of `columns` samples `stride` bytes apart in each of `rows` rows. Of 4 x 2
/// samples, for example, each row becomes avg(avg(s0, s1), avg(s2, s3)), and then the two rows one
/// value.
template <int columns, int rows>
Vek32s average(Plane<const Vek8u> src, ptrdiff_t stride) {
  if constexpr (rows > 1) {
    constexpr int halfRows = rows / 2;
    return roundedAverage(average<columns, halfRows>(src, stride),
                          average<columns, halfRows>({src.row(halfRows), src.step}, stride));
  } else if constexpr (columns > 1) {
    constexpr int halfColumns = columns / 2;
    return roundedAverage(
        average<halfColumns, rows>(src, stride),
        average<halfColumns, rows>({src.data + halfColumns * stride, src.step}, stride));
  } else {
    return *src.data;
  }
}

// The same averages in vectors, which have them as one instruction: rows are halved until a sample is
// left of each block, then pairs of rows are averaged.

[[gnu::noinline, maybe_unused]] void halve(const Vek8u* __restrict samples, ptrdiff_t n,
                                           Vek8u* __restrict to) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    to[i] = static_cast<Vek8u>(roundedAverage(samples[2 * i], samples[2 * i + 1]));
  }
}

template <int factor>
struct BlockRows {
  static constexpr ptrdiff_t most = 64;  // averages

  Vek8u rows[factor][most];
  Vek8u samples[most * factor], halves[most * factor / 2];

  /// Averages `factor` times n samples.
  void halveSamples(int row, ptrdiff_t n) {
    Vek8u *from = samples, *to = halves;
    for (int left = factor / 2; left > 1; left /= 2) {
      halve(from, n * left, to);
      Vek8u* const next = from;
      from = to;
      to = next;
    }
    halve(from, n, rows[row]);
  }
  void averageTo(ptrdiff_t n, Vek8u* __restrict dst) {
    for (int apart = 1; apart < factor; apart *= 2) {
      for (int row = 0; row < factor; row += 2 * apart) {
        Vek8u* __restrict const upper = rows[row];
        const Vek8u* __restrict const lower = rows[row + apart];
        for (ptrdiff_t i = 0; i < n; ++i) {
          upper[i] = static_cast<Vek8u>(roundedAverage(upper[i], lower[i]));
        }
      }
    }
    for (ptrdiff_t i = 0; i < n; ++i) dst[i] = rows[0][i];
  }
};

[[gnu::noinline, maybe_unused]] void separate422(const Vek8u* __restrict pixels, ptrdiff_t pairs,
                                                 Vek8u* __restrict y, Vek8u* __restrict cb,
                                                 Vek8u* __restrict cr) {
  for (ptrdiff_t i = 0; i < 2 * pairs; ++i) y[i] = pixels[2 * i + 1];
  for (ptrdiff_t i = 0; i < pairs; ++i) {
    cb[i] = pixels[4 * i];
    cr[i] = pixels[4 * i + 2];
  }
}

/// Pairs of blocks, each of which has its own chroma sample.
template <int factor>
void averagePairs(Plane<const Vek8u> src, ptrdiff_t pairs, Vek8u* y, Vek8u* cb, Vek8u* cr) {
  using Rows = BlockRows<factor>;
  Rows luma = {}, blue = {}, red = {};
  for (ptrdiff_t first = 0; first < pairs; first += Rows::most / 2) {
    const ptrdiff_t n = pairs - first < Rows::most / 2 ? pairs - first : Rows::most / 2;
    for (int row = 0; row < factor; ++row) {
      const Vek8u* const from = src.row(row) + 4 * factor * first;
      separate422(from, factor * n, luma.samples, blue.samples, red.samples);
      luma.halveSamples(row, 2 * n);
      blue.halveSamples(row, n);
      red.halveSamples(row, n);
    }
    luma.averageTo(2 * n, y + 2 * first);
    blue.averageTo(n, cb + first);
    red.averageTo(n, cr + first);
  }
}

template <int factor>
void averageBlocks(Plane<const Vek8u> src, ptrdiff_t n, Vek8u* __restrict y, Vek8u* __restrict cb,
                   Vek8u* __restrict cr) {
  const auto from = [&](ptrdiff_t x) -> Plane<const Vek8u> { return {src.data + x, src.step}; };
  ptrdiff_t i = 0;
  if constexpr (hasWords) {
    averagePairs<factor>(src, n / 2, y, cb, cr);
    i = n / 2 * 2;
  }
  for (; i < n; ++i) {
    const ptrdiff_t x = i * 2 * factor;  // a pixel takes two bytes
    y[i] = static_cast<Vek8u>(average<factor, factor>(from(x + 1), 2));
    if (i % 2 != 0) continue;
    const bool alone = i == n - 1;
    const auto chroma = alone ? average<factor / 2, factor> : average<factor, factor>;
    cb[i / 2] = static_cast<Vek8u>(chroma(from(x), 4));
    cr[i / 2] = static_cast<Vek8u>(chroma(from(x + 2), 4));
  }
}

}  // namespace

constexpr ReduceKernels reduceKernels = {
    .pick2 = pick<2>,
    .pick4 = pick<4>,
    .pick8 = pick<8>,
    .pick16 = pick<16>,
    .pick32 = pick<32>,
    .sumBlocks2 = sumBlocks<2>,
    .sumBlocks4 = sumBlocks<4>,
    .averageBlocks2 = averageBlocks<2>,
    .averageBlocks4 = averageBlocks<4>,
    .averageBlocks8 = averageBlocks<8>,
};

}  // namespace vek::portable
