// Operations that move pixels, all through the library's warps: quarter turns are exact there, too.
#include <algorithm>
#include <numbers>

#include "chain/larger.h"

namespace chain {
namespace {

using vek::Size;

template <class Map>
Picture warp(const Picture& picture, Size size, const Map& map, vek::WarpDirection direction,
             vek::Interpolation interpolation, vek::WarpBorder border, const Call* values = nullptr,
             size_t valueAt = 0) {
  return toNew(picture, size, [&](auto src, auto dst) {
    constexpr int n = viewChannels(dst);
    const vek::Value<Vek8u, n> outside =
        values == nullptr ? vek::Value<Vek8u, n>{} : values->value<n>(valueAt);
    vek::warp<n>(src, dst, map, direction, interpolation, border, outside);
  });
}

/// The sine of 0..45 degrees, or the cosine, by their series.
double series(double degrees, bool isSine) {
  const double x = degrees * (std::numbers::pi / 180), square = x * x;
  double sum = 1;
  for (int n = isSine ? 18 : 17; n > 0; n -= 2) sum = 1 - sum * square / (n * (n + 1));
  return isSine ? x * sum : sum;
}

/// Exact at quarter turns, and the same on every machine: the functions of C libraries are not.
double sineOf(double degrees) {
  double d = std::fmod(degrees, 360);
  if (d < 0) d += 360;
  const double sign = d < 180 ? 1 : -1;
  if (d >= 180) d -= 180;
  if (d > 90) d = 180 - d;
  return sign * (d <= 45 ? series(d, true) : series(90 - d, false));
}

/// Every pixel of the result is one of the picture's.
Picture moved(const Call& call, Size size, const vek::AffineMap& from) {
  return warp(call.picture, size, from, vek::WarpDirection::inverse, vek::Interpolation::nearest,
              vek::WarpBorder::replicate);
}

}  // namespace

Picture rotated(Call& call) {
  const Size size = call.size();
  const double right = size.width - 1, bottom = size.height - 1;
  switch (call.integer(0)) {
    case 0:
      return moved(call, {size.height, size.width}, {0, 1, 0, -1, 0, bottom});
    case 1:
      return moved(call, size, {-1, 0, right, 0, -1, bottom});
    default:
      return moved(call, {size.height, size.width}, {0, -1, right, 1, 0, 0});
  }
}

Picture transposed(Call& call) {
  return moved(call, {call.size().height, call.size().width}, {0, 1, 0, 1, 0, 0});
}

Picture resized(Call& call) {
  const Size from = call.size(), to = call.pair(0);
  const double x = double(from.width) / to.width, y = double(from.height) / to.height;
  // The outer edges of both pictures coincide; pixel centres are at whole numbers.
  return warp(call.picture, to, vek::AffineMap{x, 0, (x - 1) / 2, 0, y, (y - 1) / 2},
              vek::WarpDirection::inverse, call.word<vek::Interpolation>(1),
              vek::WarpBorder::replicate);
}

AffineParts affineParts(double angle, double scale, double shear) {
  const double cosine = scale * sineOf(angle + 90), sine = scale * sineOf(angle);
  // First sheared, then turned and scaled; rows go downward, so that this turns clockwise.
  return {cosine, cosine * shear - sine, sine, sine * shear + cosine};
}

Picture affine(Call& call) {
  const Size size = call.size();
  const auto [a, b, c, d] = affineParts(call.number(0), call.number(1), call.number(2));
  const double x = (size.width - 1) / 2., y = (size.height - 1) / 2.;
  return warp(call.picture, size, vek::AffineMap{a, b, x - a * x - b * y, c, d, y - c * x - d * y},
              vek::WarpDirection::forward, call.word<vek::Interpolation>(3),
              call.word<vek::WarpBorder>(4), &call, 5);
}

PerspectiveParts perspectiveParts(const std::array<double, 4>& x, const std::array<double, 4>& y) {
  // The map from the unit square to the corners: (a u + b v + c) / (g u + h v + 1) and likewise.
  const double dx1 = x[1] - x[2], dx2 = x[3] - x[2], sx = x[0] - x[1] + x[2] - x[3];
  const double dy1 = y[1] - y[2], dy2 = y[3] - y[2], sy = y[0] - y[1] + y[2] - y[3];
  const double area = dx1 * dy2 - dx2 * dy1;
  if (area == 0) throw Refusal("three of the corners lie on one line");
  const double g = (sx * dy2 - dx2 * sy) / area, h = (dx1 * sy - sx * dy1) / area;
  return {x[1] - x[0] + g * x[1],
          x[3] - x[0] + h * x[3],
          x[0],
          y[1] - y[0] + g * y[1],
          y[3] - y[0] + h * y[3],
          y[0],
          g,
          h};
}

Picture perspective(Call& call) {
  std::array<double, 4> x, y;
  for (size_t i = 0; i < 4; ++i) x[i] = call.pair(i).width, y[i] = call.pair(i).height;
  const auto [a, b, c, d, e, f, g, h] = perspectiveParts(x, y);
  const Size size = call.size();
  const double u = 1. / std::max(1, size.width - 1), v = 1. / std::max(1, size.height - 1);
  const vek::PerspectiveMap map = {a * u, b * v, c, d * u, e * v, f, g * u, h * v, 1};
  const bool isProjected = call.integer(4) == 1;
  return warp(call.picture, size, map,
              isProjected ? vek::WarpDirection::forward : vek::WarpDirection::inverse,
              call.word<vek::Interpolation>(5), vek::WarpBorder::constant);
}

}  // namespace chain
