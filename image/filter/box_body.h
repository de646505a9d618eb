// The loops behind BoxRows, compiled for every level.
#pragma once

#include "image/filter/box_rows.h"

namespace vek::VEK_LEVEL {
namespace {

/// sum * factor < 2^64: the factor is 2^32 / area, rounded, and 0 is not used.
template <class Sum>
Vek8u boxMean(Sum sum, Vek32u factor) {
  const uint64_t mean = (uint64_t{sum} * factor + 0x80000000u) >> 32;
  return static_cast<Vek8u>(mean < 255 ? mean : 255);
}

void slideColumns(Vek16u* __restrict columns, const Vek8u* __restrict entering,
                  const Vek8u* __restrict leaving, ptrdiff_t n) {
  if (leaving == nullptr) {
    for (ptrdiff_t i = 0; i < n; ++i) columns[i] = static_cast<Vek16u>(columns[i] + entering[i]);
  } else {
    for (ptrdiff_t i = 0; i < n; ++i) {
      columns[i] = static_cast<Vek16u>(columns[i] + entering[i] - leaving[i]);
    }
  }
}

[[maybe_unused]] void averageColumns(const Vek16u* __restrict columns, ptrdiff_t width,
                                     ptrdiff_t pixelBytes, ptrdiff_t n, Vek32u factor,
                                     Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    Vek32u sum = 0;
    for (ptrdiff_t k = 0; k < width; ++k) sum += columns[i + k * pixelBytes];
    dst[i] = boxMean(sum, factor);
  }
}

/// Adds the `width` pixels of each channel to `sums`.
template <int pixelBytes, class Sum>
void addPixels(const Vek8u* __restrict row, ptrdiff_t width, Sum* __restrict sums) {
  Sum total[pixelBytes] = {};
  for (ptrdiff_t x = 0; x < width; ++x) {
    for (int c = 0; c < pixelBytes; ++c) total[c] += row[x * pixelBytes + c];
  }
  for (int c = 0; c < pixelBytes; ++c) sums[c] += total[c];
}

/// Sums and differences are modulo 2^bits; the sum of a whole window fits.
template <class Sum>
void slideWindows(Sum* __restrict differences, Sum* __restrict first,
                  const Vek8u* __restrict entering, const Vek8u* __restrict leaving,
                  ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n) {
  const auto addRow = pixelBytes == 1 ? addPixels<1, Sum> : addPixels<3, Sum>;
  const ptrdiff_t gap = width * pixelBytes;
  const ptrdiff_t inner = n - pixelBytes;
  addRow(entering, width, first);
  if (leaving == nullptr) {
    for (ptrdiff_t i = 0; i < inner; ++i) {
      differences[i] += static_cast<Sum>(entering[i + gap] - entering[i]);
    }
    return;
  }
  Sum gone[3] = {};
  addRow(leaving, width, gone);
  for (ptrdiff_t c = 0; c < pixelBytes; ++c) first[c] -= gone[c];
  for (ptrdiff_t i = 0; i < inner; ++i) {
    differences[i] +=
        static_cast<Sum>(entering[i + gap] - entering[i] - leaving[i + gap] + leaving[i]);
  }
}

/// Sums up a block of differences, then scales it: the second loop is the one that vectorises.
template <class Sum>
void averageWindows(const Sum* __restrict differences, const Sum* __restrict first,
                    ptrdiff_t pixelBytes, ptrdiff_t n, Vek32u factor, Vek8u* __restrict dst) {
  constexpr ptrdiff_t block = 384;  // a multiple of three
  Sum window[3 + block];
  for (ptrdiff_t c = 0; c < pixelBytes; ++c) window[c] = first[c];
  for (ptrdiff_t x = 0; x < n; x += block) {
    const ptrdiff_t count = n - x < block ? n - x : block;
    const ptrdiff_t summed = n - x - pixelBytes < block ? n - x - pixelBytes : block;
    for (ptrdiff_t i = 0; i < summed; ++i) {
      window[i + pixelBytes] = window[i] + differences[x + i];
    }
    for (ptrdiff_t i = 0; i < count; ++i) dst[x + i] = boxMean(window[i], factor);
    for (ptrdiff_t c = 0; c < pixelBytes; ++c) window[c] = window[block + c];
  }
}

template <class Sum>
constexpr WideBoxRows<Sum> wideBoxRows = {slideWindows<Sum>, averageWindows<Sum>};

}  // namespace
}  // namespace vek::VEK_LEVEL
