// What warps write.
#pragma once

#include "vek/image.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stddef.h>

namespace vek::test::definition {

/// The four weights of cubic interpolation at f / 128.
inline std::array<int, 4> cubicWeights(int f) {
  const int n[4] = {-f * f * f + 256 * f * f - 16384 * f, 3 * f * f * f - 640 * f * f + 4194304,
                    -3 * f * f * f + 512 * f * f + 16384 * f, f * f * f - 128 * f * f};
  std::array<int, 4> w;
  for (size_t a = 0; a < 4; ++a) w[a] = static_cast<int>(std::floor((n[a] + 128) / 256.0));
  w[f <= 64 ? 1 : 2] += 16384 - (w[0] + w[1] + w[2] + w[3]);
  return w;
}

/// A source with its border.
struct Bordered {
  const Vek8u* data;
  int step, channels;
  VekiSize size;
  int border;
  const Vek8u* value;

  int at(int64_t i, int64_t j, int channel) const {
    const int64_t column = std::clamp<int64_t>(i, 0, size.width - 1);
    const int64_t row = std::clamp<int64_t>(j, 0, size.height - 1);
    if (border == vekiBorderConstant && (column != i || row != j)) return value[channel];
    return data[row * step + column * channels + channel];
  }
};

inline Vek8u interpolated(const Bordered& src, int interpolation, int64_t p, int64_t q, int c) {
  if (interpolation == vekiWarpNearest) return static_cast<Vek8u>(src.at(p, q, c));
  const int64_t i = p >> 7, j = q >> 7;
  const int f = static_cast<int>(p & 127), g = static_cast<int>(q & 127);
  if (interpolation == vekiWarpLinear) {
    const int sum = (128 - f) * (128 - g) * src.at(i, j, c) + f * (128 - g) * src.at(i + 1, j, c) +
                    (128 - f) * g * src.at(i, j + 1, c) + f * g * src.at(i + 1, j + 1, c);
    return static_cast<Vek8u>((sum + 8192) >> 14);
  }
  int sum = 0;
  for (size_t b = 0; b < 4; ++b) {
    int row = 0;
    for (size_t a = 0; a < 4; ++a) {
      row +=
          cubicWeights(f)[a] * src.at(i - 1 + static_cast<int>(a), j - 1 + static_cast<int>(b), c);
    }
    sum += cubicWeights(g)[b] * ((row + 128) >> 8);
  }
  return static_cast<Vek8u>(std::clamp((sum + (1 << 19)) >> 20, 0, 255));
}

/// A position; it may not exist.
struct Position {
  bool exists;
  int64_t p, q;
};

/// The maps as integers, from coefficients that are not refused.
class AffineMap {
 public:
  static constexpr int count = 6;

  AffineMap(const Vek64f* c, int direction) {
    const Vek64f r = 1 / (c[0] * c[4] - c[1] * c[3]);
    const Vek64f b0 = c[4] * r, b1 = -(c[1] * r), b3 = -(c[3] * r), b4 = c[0] * r;
    const Vek64f inverse[] = {b0, b1, -(b0 * c[2] + b1 * c[5]), b3, b4, -(b3 * c[2] + b4 * c[5])};
    for (int i = 0; i < 6; ++i) {
      map_[i] = static_cast<int64_t>(
          std::rint(std::ldexp(direction == vekiWarpForward ? inverse[i] : c[i], 32)));
    }
  }
  Position at(int64_t x, int64_t y, int interpolation) const {
    const int shift = interpolation == vekiWarpNearest ? 32 : 25;
    const int64_t half = int64_t{1} << (shift - 1);
    return {true, (map_[0] * x + map_[1] * y + map_[2] + half) >> shift,
            (map_[3] * x + map_[4] * y + map_[5] + half) >> shift};
  }

 private:
  int64_t map_[6];
};

class PerspectiveMap {
 public:
  static constexpr int count = 9;

  PerspectiveMap(const Vek64f* c, int direction) {
    const auto minor = [c](int a, int b, int d, int e) { return c[a] * c[b] - c[d] * c[e]; };
    Vek64f b[] = {minor(4, 8, 5, 7), minor(2, 7, 1, 8), minor(1, 5, 2, 4),
                  minor(5, 6, 3, 8), minor(0, 8, 2, 6), minor(2, 3, 0, 5),
                  minor(3, 7, 4, 6), minor(1, 6, 0, 7), minor(0, 4, 1, 3)};
    if (direction == vekiWarpInverse) std::copy_n(c, 9, b);
    Vek64f most = 0;
    for (int i = 0; i < 9; i += 3) {
      most = std::max(most, (std::fabs(b[i]) + std::fabs(b[i + 1])) * 32768 + std::fabs(b[i + 2]));
    }
    int e;
    std::frexp(most, &e);
    for (int i = 0; i < 9; ++i) {
      map_[i] = static_cast<int64_t>(std::rint(std::ldexp(b[i], 51 - e)));
    }
  }
  Position at(int64_t x, int64_t y, int interpolation) const {
    const auto sum = [&](int i) { return (map_[i] * x + map_[i + 1] * y + map_[i + 2]) >> 8; };
    const int64_t scale = interpolation == vekiWarpNearest ? 2 : 256, z = sum(6);
    if (z == 0) return {false, 0, 0};
    const auto quotient = [&](int64_t numerator) {
      const int64_t n = z < 0 ? -numerator : numerator, d = 2 * (z < 0 ? -z : z);
      const int64_t floor = n >= 0 ? n / d : -((-n + d - 1) / d);
      return std::clamp<int64_t>(floor, -(1 << 30), 1 << 30);
    };
    return {true, quotient(scale * sum(0) + z), quotient(scale * sum(3) + z)};
  }

 private:
  int64_t map_[9];
};

template <class Map>
void warped(const Bordered& src, Vek8u* pDst, int dstStep, VekiRect dstRect, const Map& map,
            int interpolation) {
  const int unit = interpolation == vekiWarpNearest ? 1 : 128;
  for (int y = 0; y < dstRect.height; ++y) {
    for (int x = 0; x < dstRect.width; ++x) {
      Vek8u* const pixel = pDst + ptrdiff_t{y} * dstStep + ptrdiff_t{x} * src.channels;
      const auto [exists, p, q] = map.at(dstRect.x + x, dstRect.y + y, interpolation);
      const bool within = exists && p >= 0 && p <= unit * (src.size.width - 1) && q >= 0 &&
                          q <= unit * (src.size.height - 1);
      if (src.border == vekiBorderTransparent && !within) continue;
      for (int c = 0; c < src.channels; ++c) {
        pixel[c] = exists                             ? interpolated(src, interpolation, p, q, c)
                   : src.border == vekiBorderConstant ? src.value[c]
                                                      : src.data[c];
      }
    }
  }
}

/// borderValue is a byte with one channel, else a pointer.
template <int channels, class Map, class BorderValue>
void warp(const Vek8u* pSrc, int srcStep, VekiSize srcSize, Vek8u* pDst, int dstStep,
          VekiRect dstRect, const Vek64f* pCoeffs, int direction, int interpolation, int border,
          BorderValue borderValue) {
  Vek64f c[Map::count];
  std::copy_n(reinterpret_cast<const Vek8u*>(pCoeffs), sizeof c, reinterpret_cast<Vek8u*>(c));
  const Vek8u* value;
  if constexpr (channels == 1) {
    value = &borderValue;
  } else {
    value = borderValue;
  }
  warped({pSrc, srcStep, channels, srcSize, border, value}, pDst, dstStep, dstRect,
         Map(c, direction), interpolation);
}

}  // namespace vek::test::definition
