// The loops behind ReduceKernels, compiled for every level.
#pragma once

#include "camera/preview/reduce_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

/// The compiler makes vectors of the loop only where it knows the stride.
template <int stride>
void pickEvery(const Vek8u* __restrict src, ptrdiff_t n, Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n; ++i) dst[i] = src[i * stride];
}

void pick(const Vek8u* src, ptrdiff_t stride, ptrdiff_t n, Vek8u* dst) {
  switch (stride) {
    case 2:
      return pickEvery<2>(src, n, dst);
    case 4:
      return pickEvery<4>(src, n, dst);
    case 8:
      return pickEvery<8>(src, n, dst);
    case 16:
      return pickEvery<16>(src, n, dst);
    default:
      return pickEvery<32>(src, n, dst);
  }
}

template <int stride>
void sumBlocksEvery(const Vek8u* __restrict top, const Vek8u* __restrict bottom, ptrdiff_t n,
                    Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const ptrdiff_t x = i * stride;
    dst[i] = static_cast<Vek8u>((top[x] + top[x + 1] + bottom[x] + bottom[x + 1] + 4) >> 2);
  }
}

void sumBlocks(const Vek8u* top, const Vek8u* bottom, ptrdiff_t stride, ptrdiff_t n, Vek8u* dst) {
  if (stride == 2) {
    sumBlocksEvery<2>(top, bottom, n, dst);
  } else {
    sumBlocksEvery<4>(top, bottom, n, dst);
  }
}

/// The average in pairs of `columns` samples `stride` bytes apart in each of `rows` rows.
template <int columns, int rows>
Vek32s average(Plane<const Vek8u> src, ptrdiff_t stride) {
  const auto rounded = [](Vek32s a, Vek32s b) { return (a + b + 1) >> 1; };
  if constexpr (rows > 1) {
    constexpr int half = rows / 2;
    return rounded(average<columns, half>(src, stride),
                   average<columns, half>({src.row(half), src.step}, stride));
  } else if constexpr (columns > 1) {
    constexpr int half = columns / 2;
    return rounded(average<half, rows>(src, stride),
                   average<half, rows>({src.data + half * stride, src.step}, stride));
  } else {
    return *src.data;
  }
}

template <int factor>
void averageBlocks(Plane<const Vek8u> src, ptrdiff_t n, Vek8u* __restrict y, Vek8u* __restrict cb,
                   Vek8u* __restrict cr) {
  const auto at = [&](ptrdiff_t x) -> Plane<const Vek8u> { return {src.data + x, src.step}; };
  for (ptrdiff_t i = 0; i < n; ++i) {
    const ptrdiff_t x = i * 2 * factor;
    y[i] = static_cast<Vek8u>(average<factor, factor>(at(x + 1), 2));
    if (i % 2 != 0) continue;
    const bool alone = i == n - 1;
    const auto chroma = alone ? average<factor / 2, factor> : average<factor, factor>;
    cb[i / 2] = static_cast<Vek8u>(chroma(at(x), 4));
    cr[i / 2] = static_cast<Vek8u>(chroma(at(x + 2), 4));
  }
}

}  // namespace

}  // namespace vek::VEK_LEVEL
