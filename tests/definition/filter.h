// What the filters write.
#pragma once

#include "vek/vek.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace vek::test::definition {

/// Writes naive(at) for every sample, where at(i, j) is that of the same channel in column i and
/// row j of the neighbourhood; `anchor` is the sample's own place there.
template <int channels, class Naive>
void fromNeighbourhoods(const Vek8u* src, ptrdiff_t srcStep, Vek8u* dst, ptrdiff_t dstStep,
                        VekiSize roi, VekiPoint anchor, Naive naive) {
  for (int y = 0; y < roi.height; ++y) {
    for (ptrdiff_t x = 0; x < ptrdiff_t{roi.width} * channels; ++x) {
      const Vek8u* corner = src + (y - anchor.y) * srcStep + x - anchor.x * channels;
      const auto at = [&](int i, int j) { return int{corner[j * srcStep + i * channels]}; };
      dst[y * dstStep + x] = static_cast<Vek8u>(naive(at));
    }
  }
}

// ---- Box ----------------------------------------------------------------------------------------

inline uint8_t mean(uint64_t sum, uint64_t n) {
  const auto ratio = [&](uint64_t one) { return one / n + (2 * (one % n) > n); };
  const uint64_t value =
      n <= 128 ? (sum * ratio(16384) + 8192) >> 14 : (sum * ratio(1ull << 32) + (1ull << 31)) >> 32;
  return static_cast<uint8_t>(std::min<uint64_t>(value, 255));
}

template <int channels>
void box(const Vek8u* src, int srcStep, Vek8u* dst, int dstStep, VekiSize roi, VekiSize mask,
         VekiPoint anchor) {
  // Sums of columns keep large masks affordable.
  const ptrdiff_t columns = ptrdiff_t{channels} * (roi.width + mask.width - 1);
  for (int y = 0; y < roi.height; ++y) {
    const Vek8u* const corner =
        src + (y - anchor.y) * ptrdiff_t{srcStep} - ptrdiff_t{anchor.x} * channels;
    std::vector<uint64_t> sums(static_cast<size_t>(columns));
    for (int j = 0; j < mask.height; ++j) {
      for (ptrdiff_t x = 0; x < columns; ++x) {
        sums[static_cast<size_t>(x)] += corner[j * ptrdiff_t{srcStep} + x];
      }
    }
    for (ptrdiff_t x = 0; x < ptrdiff_t{roi.width} * channels; ++x) {
      uint64_t sum = 0;
      for (int i = 0; i < mask.width; ++i) sum += sums[static_cast<size_t>(x + i * channels)];
      dst[y * ptrdiff_t{dstStep} + x] = mean(sum, uint64_t(mask.width) * uint64_t(mask.height));
    }
  }
}

// ---- Linear filters -----------------------------------------------------------------------------

inline uint8_t scaledSum(int64_t value, int divisor) {
  if (divisor & (divisor - 1)) {
    const int64_t one = int64_t{1} << 32;
    const int64_t multiplier = one / divisor + (2 * (one % divisor) > divisor);
    // The product may need more than 64 bits: by halves.
    const int64_t low = ((value & (one - 1)) * multiplier + (one >> 1)) >> 32;
    value = (value >> 32) * multiplier + low;
  } else if (divisor > 1) {
    const int shift = __builtin_ctz(static_cast<unsigned>(divisor));
    value = (value + (int64_t{1} << (shift - 1))) >> shift;
  }
  return static_cast<uint8_t>(std::clamp<int64_t>(value, 0, 255));
}

/// Kernel entry (i, j) lies on column x + anchor.x - i and row y + anchor.y - j.
template <int channels>
void convolution(const Vek8u* src, int srcStep, Vek8u* dst, int dstStep, VekiSize roi,
                 const Vek32s* kernel, VekiSize size, VekiPoint anchor, int divisor) {
  const VekiPoint place = {size.width - 1 - anchor.x, size.height - 1 - anchor.y};
  fromNeighbourhoods<channels>(src, srcStep, dst, dstStep, roi, place, [&](auto at) {
    int64_t sum = 0;
    for (int k = 0; k < size.width * size.height; ++k) {
      const int i = k % size.width, j = k / size.width;
      sum += int64_t{kernel[k]} * at(size.width - 1 - i, size.height - 1 - j);
    }
    return scaledSum(sum, divisor);
  });
}

template <int channels>
void rowFilter(const Vek8u* src, int srcStep, Vek8u* dst, int dstStep, VekiSize roi,
               const Vek32s* kernel, int n, int anchor, int divisor) {
  convolution<channels>(src, srcStep, dst, dstStep, roi, kernel, {n, 1}, {anchor, 0}, divisor);
}

template <int channels>
void columnFilter(const Vek8u* src, int srcStep, Vek8u* dst, int dstStep, VekiSize roi,
                  const Vek32s* kernel, int n, int anchor, int divisor) {
  convolution<channels>(src, srcStep, dst, dstStep, roi, kernel, {1, n}, {0, anchor}, divisor);
}

// ---- Medians ------------------------------------------------------------------------------------

template <int channels>
void median(const Vek8u* src, int srcStep, Vek8u* dst, int dstStep, VekiSize roi, VekiSize mask,
            VekiPoint anchor) {
  const int half = mask.width * mask.height / 2;
  fromNeighbourhoods<channels>(src, srcStep, dst, dstStep, roi, anchor, [&](auto at) {
    int counts[256] = {}, value = 0;
    for (int j = 0; j < mask.height; ++j) {
      for (int i = 0; i < mask.width; ++i) ++counts[at(i, j)];
    }
    for (int below = counts[0]; below <= half; below += counts[value]) ++value;
    return value;
  });
}

/// The winner of the pixels around p, row after row.
inline const Vek8u* colorMedianOf(const Vek8u* p, ptrdiff_t step, int side) {
  std::vector<const Vek8u*> pixels;
  for (int j = 0; j < side; ++j) {
    for (int i = 0; i < side; ++i) pixels.push_back(p + (j - side / 2) * step + 3 * (i - side / 2));
  }
  const auto score = [&](const Vek8u* candidate) {
    int sum = 0;
    for (const Vek8u* other : pixels) {
      for (int k = 0; k < 3; ++k) sum += std::abs(candidate[k] - other[k]);
    }
    return sum;
  };
  return *std::min_element(pixels.begin(), pixels.end(),
                           [&](const Vek8u* a, const Vek8u* b) { return score(a) < score(b); });
}

inline void colorMedian(const Vek8u* src, int srcStep, Vek8u* dst, int dstStep, VekiSize roi,
                        int mask) {
  for (ptrdiff_t y = 0; y < roi.height; ++y) {
    for (ptrdiff_t x = 0; x < roi.width; ++x) {
      std::copy_n(colorMedianOf(src + y * srcStep + 3 * x, srcStep, mask / 11), 3,
                  dst + y * dstStep + 3 * x);
    }
  }
}

// ---- Erosion, dilation, mirror, gamma -----------------------------------------------------------

/// The least or the greatest of nine.
template <int channels, bool greatest>
void extreme3x3(const Vek8u* src, int srcStep, Vek8u* dst, int dstStep, VekiSize roi) {
  fromNeighbourhoods<channels>(src, srcStep, dst, dstStep, roi, {1, 1}, [&](auto at) {
    int result = at(0, 0);
    for (int k = 1; k < 9; ++k) {
      const int other = at(k % 3, k / 3);
      result = greatest ? std::max(result, other) : std::min(result, other);
    }
    return result;
  });
}

template <int channels>
void mirror(const Vek8u* src, int srcStep, Vek8u* dst, int dstStep, VekiSize roi, int flip) {
  for (ptrdiff_t y = 0; y < roi.height; ++y) {
    for (ptrdiff_t x = 0; x < roi.width; ++x) {
      const ptrdiff_t fromX = flip == 0 ? x : roi.width - 1 - x;
      const ptrdiff_t fromY = flip == 1 ? y : roi.height - 1 - y;
      std::copy_n(src + fromY * srcStep + fromX * channels, channels,
                  dst + y * dstStep + x * channels);
    }
  }
}

template <bool forward>
void gamma(const Vek8u* src, int srcStep, Vek8u* dst, int dstStep, VekiSize roi) {
  static const std::vector<uint8_t> table = [] {
    std::vector<uint8_t> entries;
    for (int i = 0; i < 256; ++i) {
      const double v = i / 255.0;
      const double result = forward     ? (v < 0.018 ? 4.5 * v : 1.099 * std::pow(v, 0.45) - 0.099)
                            : v < 0.081 ? v / 4.5
                                        : std::pow((v + 0.099) / 1.099, 1 / 0.45);
      entries.push_back(static_cast<uint8_t>(std::nearbyint(255 * result)));
    }
    return entries;
  }();
  fromNeighbourhoods<3>(src, srcStep, dst, dstStep, roi, {0, 0},
                        [&](auto at) { return table[static_cast<size_t>(at(0, 0))]; });
}

}  // namespace vek::test::definition
