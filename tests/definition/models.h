// What the conversions to and from other colour models write, pixel by pixel.
#pragma once

#include "vek/vek.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "tests/campaign/case.h"

namespace vek::test::definition {

using Pixel = std::array<int, 3>;

/// An image of pixels that `model` makes of a pixel and of what follows the region.
template <int channels, class Model, class... More>
Call pixels(VekStatus (*)(const Vek8u*, int, Vek8u*, int, VekiSize, More...), Model model) {
  return [=](const Value* v) {
    const auto* src = as<const Vek8u*>(v[0]);
    auto* dst = as<Vek8u*>(v[2]);
    const ptrdiff_t srcStep = as<int>(v[1]), dstStep = as<int>(v[3]);
    const auto roi = as<VekiSize>(v[4]);
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
      for (ptrdiff_t x = 0; x < roi.width; ++x) {
        const Vek8u* p = src + y * srcStep + 3 * x;
        const Pixel result = model(Pixel{p[0], p[1], p[2]}, as<More>(v[5])...);
        std::copy_n(result.begin(), channels, dst + y * dstStep + channels * x);
      }
    }
    return VekStatus{-1};
  };
}

inline int clampByte(int64_t v) {
  return static_cast<int>(std::clamp<int64_t>(v, 0, 255));
}
inline int nearest(double v) {
  return clampByte(static_cast<int64_t>(std::floor(v + 0.5 + 1e-9)));
}

inline Pixel twisted(Pixel p, const Vek32s (*m)[4]) {
  Pixel out;
  for (int k = 0; k < 3; ++k) {
    int64_t sum = (m[k][3] >> 4) + 512;
    for (int c = 0; c < 3; ++c) sum += int64_t{m[k][c] >> 4} * p[c];
    out[k] = clampByte(sum >> 10);
  }
  return out;
}

/// A twist by a constant matrix.
template <const Vek32s (&matrix)[3][4]>
Pixel twistedBy(Pixel p) {
  return twisted(p, matrix);
}

inline constexpr Vek32s toXyz[3][4] = {
    {6758, 5859, 2956, 0}, {3484, 11717, 1182, 0}, {317, 1953, 15569, 0}};
inline constexpr Vek32s fromXyz[3][4] = {
    {53092, -25185, -8168, 0}, {-15880, 30736, 681, 0}, {912, -3343, 17323, 0}};
inline constexpr Vek32s toYcc[3][4] = {
    {3494, 6860, 1332, 0}, {-2140, -4201, 6342, 2555904}, {6109, -5116, -994, 2244608}};
inline constexpr Vek32s fromYcc[3][4] = {
    {22256, 0, 29843, -4088553}, {22256, -7050, -15190, 3180809}, {22256, 36338, 0, -5668739}};

inline Pixel gray(Pixel p) {
  return {(306 * p[0] + 601 * p[1] + 117 * p[2] + 512) >> 10};
}

inline Pixel weighted(Pixel p, const Vek32s* w) {
  const int64_t sum = int64_t{w[0]} * p[0] + int64_t{w[1]} * p[1] + int64_t{w[2]} * p[2];
  return {clampByte((sum + 8192) >> 14)};
}

inline double hueOf(double r, double g, double b) {
  const double most = std::max({r, g, b}), range = most - std::min({r, g, b});
  if (range == 0) return 0;
  const double sixths = most == r   ? (g - b) / range
                        : most == g ? 2 + (b - r) / range
                                    : 4 + (r - g) / range;
  return (sixths < 0 ? sixths + 6 : sixths) * 255 / 6;
}

inline Pixel hsv(Pixel p) {
  const auto [least, most] = std::minmax({p[0], p[1], p[2]});
  return {nearest(hueOf(p[0], p[1], p[2])), most == 0 ? 0 : nearest(255.0 * (most - least) / most),
          most};
}

inline Pixel hls(Pixel p) {
  const auto [least, most] = std::minmax({p[0], p[1], p[2]});
  const int sum = most + least;
  return {nearest(hueOf(p[0], p[1], p[2])), nearest(sum / 2.0),
          most == least ? 0 : nearest(255.0 * (most - least) / std::min(sum, 510 - sum))};
}

}  // namespace vek::test::definition
