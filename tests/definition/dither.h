// What dithering writes.
#pragma once

#include "vek/image.h"

#include <algorithm>
#include <cmath>
#include <stddef.h>
#include <vector>

namespace vek::test::definition {

/// The grey value of index k of n, halves up.
inline int greyOf(int k, int n) {
  return static_cast<int>(std::floor(255.0 * k / (n - 1) + 0.5));
}

inline constexpr int bayer[8][8] = {
    {0, 32, 8, 40, 2, 34, 10, 42},  {48, 16, 56, 24, 50, 18, 58, 26},
    {12, 44, 4, 36, 14, 46, 6, 38}, {60, 28, 52, 20, 62, 30, 54, 22},
    {3, 35, 11, 43, 1, 33, 9, 41},  {51, 19, 59, 27, 49, 17, 57, 25},
    {15, 47, 7, 39, 13, 45, 5, 37}, {63, 31, 55, 23, 61, 29, 53, 21}};

/// The indices of one channel: every `channels`-th byte of the rows.
inline std::vector<int> dithered(const Vek8u* src, int step, int channels, VekiSize roi, int n,
                                 int method, VekiPoint origin) {
  const int w = roi.width;
  std::vector<int> indices, errors(static_cast<size_t>(w) * static_cast<size_t>(roi.height));
  const auto error = [&](int x, int y) -> int {
    return x < 0 || x >= w || y < 0 ? 0 : errors[static_cast<size_t>(ptrdiff_t{y} * w + x)];
  };
  for (int y = 0; y < roi.height; ++y) {
    for (int x = 0; x < w; ++x) {
      const int v = src[ptrdiff_t{y} * step + ptrdiff_t{x} * channels];
      if (method == vekiDitherOrdered) {
        const auto row = static_cast<unsigned>(y) + static_cast<unsigned>(origin.y);
        const auto column = static_cast<unsigned>(x) + static_cast<unsigned>(origin.x);
        const int threshold = 255 * (2 * bayer[row % 8][column % 8] + 1) / 128;
        indices.push_back((v * (n - 1) + threshold) / 255);
        continue;
      }
      const int sum =
          7 * error(x - 1, y) + error(x - 1, y - 1) + 5 * error(x, y - 1) + 3 * error(x + 1, y - 1);
      const int wanted = 16 * v + static_cast<int>(std::floor((sum + 8) / 16.0));
      const int clamped = std::clamp(static_cast<int>(std::floor((wanted + 8) / 16.0)), 0, 255);
      indices.push_back((clamped * (n - 1) + 127) / 255);
      errors[static_cast<size_t>(ptrdiff_t{y} * w + x)] = wanted - 16 * greyOf(indices.back(), n);
    }
  }
  return indices;
}

inline VekStatus ditheredBytes(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                               VekiSize roi, int levels, int method, VekiPoint origin) {
  const std::vector<int> indices = dithered(pSrc, srcStep, 1, roi, levels, method, origin);
  for (size_t i = 0; i < indices.size(); ++i) {
    const auto x = static_cast<ptrdiff_t>(i) % roi.width, y = static_cast<ptrdiff_t>(i) / roi.width;
    pDst[y * dstStep + x] = static_cast<Vek8u>(greyOf(indices[i], levels));
  }
  return vekStsNoErr;
}

inline VekStatus ditheredBits(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roi, int bits, int method, VekiPoint origin) {
  const std::vector<int> indices = dithered(pSrc, srcStep, 1, roi, 1 << bits, method, origin);
  auto index = indices.begin();
  for (ptrdiff_t y = 0; y < roi.height; ++y) {
    Vek8u* const row = pDst + y * dstStep;
    std::fill_n(row, (roi.width * bits + 7) / 8, Vek8u{0});
    for (int at = 0; at < roi.width * bits; at += bits) {
      row[at / 8] = static_cast<Vek8u>(row[at / 8] | *index++ << (8 - bits - at % 8));
    }
  }
  return vekStsNoErr;
}

/// 16-bit pixels with fields of so many bits, the first one highest.
template <int bits0, int bits1, int bits2>
VekStatus ditheredPixels(const Vek8u* pSrc, int srcStep, Vek16u* pDst, int dstStep, VekiSize roi,
                         int method, VekiPoint origin) {
  std::vector<int> words(static_cast<size_t>(roi.width) * static_cast<size_t>(roi.height));
  const int bits[] = {bits0, bits1, bits2};
  for (int c = 0; c < 3; ++c) {
    const std::vector<int> indices =
        dithered(pSrc + c, srcStep, 3, roi, 1 << bits[c], method, origin);
    for (size_t i = 0; i < words.size(); ++i) words[i] = words[i] << bits[c] | indices[i];
  }
  auto* const dst = reinterpret_cast<Vek8u*>(pDst);
  for (size_t i = 0; i < words.size(); ++i) {
    const auto x = static_cast<ptrdiff_t>(i) % roi.width, y = static_cast<ptrdiff_t>(i) / roi.width;
    dst[y * dstStep + 2 * x] = static_cast<Vek8u>(words[i]);
    dst[y * dstStep + 2 * x + 1] = static_cast<Vek8u>(words[i] >> 8);
  }
  return vekStsNoErr;
}

}  // namespace vek::test::definition
