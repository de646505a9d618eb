// The loops behind ReduceRows, compiled for every level.
#pragma once

#include "camera/preview/reduce_rows.h"

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

Vek8u roundedAverage(int a, int b) {
  return static_cast<Vek8u>((a + b + 1) >> 1);
}

void splitPairs(const Vek8u* __restrict src, ptrdiff_t n, Vek8u* __restrict y, Vek8u* __restrict cb,
                Vek8u* __restrict cr) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    y[i] = roundedAverage(src[4 * i + 1], src[4 * i + 3]);
    cb[i] = src[4 * i];
    cr[i] = src[4 * i + 2];
  }
}

void halve(const Vek8u* __restrict src, ptrdiff_t n, Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n / 2; ++i) dst[i] = roundedAverage(src[2 * i], src[2 * i + 1]);
  if (n % 2 != 0) dst[n / 2] = src[n - 1];
}

void average(const Vek8u* __restrict src, ptrdiff_t n, Vek8u* __restrict acc) {
  for (ptrdiff_t i = 0; i < n; ++i) acc[i] = roundedAverage(acc[i], src[i]);
}

}  // namespace

}  // namespace vek::VEK_LEVEL
