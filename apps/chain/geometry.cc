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

Picture affine(Call& call) {
  const Size size = call.size();
  const double angle = call.number(0) * std::numbers::pi / 180, scale = call.number(1);
  const double cosine = scale * std::cos(angle), sine = scale * std::sin(angle);
  const double shear = call.number(2);
  // First sheared, then turned and scaled; rows go downward, so that this turns clockwise.
  const double a = cosine, b = cosine * shear - sine, c = sine, d = sine * shear + cosine;
  const double x = (size.width - 1) / 2., y = (size.height - 1) / 2.;
  return warp(call.picture, size, vek::AffineMap{a, b, x - a * x - b * y, c, d, y - c * x - d * y},
              vek::WarpDirection::forward, call.word<vek::Interpolation>(3),
              call.word<vek::WarpBorder>(4), &call, 5);
}

Picture perspective(Call& call) {
  double x[4], y[4];
  for (size_t i = 0; i < 4; ++i) x[i] = call.pair(i).width, y[i] = call.pair(i).height;
  // The map from the unit square to the corners: (a u + b v + c) / (g u + h v + 1) and likewise.
  const double dx1 = x[1] - x[2], dx2 = x[3] - x[2], sx = x[0] - x[1] + x[2] - x[3];
  const double dy1 = y[1] - y[2], dy2 = y[3] - y[2], sy = y[0] - y[1] + y[2] - y[3];
  const double area = dx1 * dy2 - dx2 * dy1;
  if (area == 0) throw Refusal("three of the corners lie on one line");
  const double g = (sx * dy2 - dx2 * sy) / area, h = (dx1 * sy - sx * dy1) / area;
  const Size size = call.size();
  const double u = 1. / std::max(1, size.width - 1), v = 1. / std::max(1, size.height - 1);
  const vek::PerspectiveMap map = {(x[1] - x[0] + g * x[1]) * u,
                                   (x[3] - x[0] + h * x[3]) * v,
                                   x[0],
                                   (y[1] - y[0] + g * y[1]) * u,
                                   (y[3] - y[0] + h * y[3]) * v,
                                   y[0],
                                   g * u,
                                   h * v,
                                   1};
  const bool isProjected = call.integer(4) == 1;
  return warp(call.picture, size, map,
              isProjected ? vek::WarpDirection::forward : vek::WarpDirection::inverse,
              call.word<vek::Interpolation>(5), vek::WarpBorder::constant);
}

}  // namespace chain
