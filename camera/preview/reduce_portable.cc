// The reductions sample by sample.
#include "camera/preview/reduce_body.h"
#include "camera/preview/reduce_kernels.h"

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

template <int factor>
void averageBlocks(Plane<const Vek8u> src, ptrdiff_t n, Vek8u* __restrict y, Vek8u* __restrict cb,
                   Vek8u* __restrict cr) {
  const auto from = [&](ptrdiff_t x) -> Plane<const Vek8u> { return {src.data + x, src.step}; };
  for (ptrdiff_t i = 0; i < n; ++i) {
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
