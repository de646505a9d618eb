// A shape is rotated and scaled: its centroid and axes turn with it, its Hu moments stay.
#include <cmath>
#include <cstdio>
#include <memory>
#include <vek/image.h>

#include "picture.h"

namespace gallery {
namespace {

constexpr int side = 192;

/// A white letter F on black.
Grey letter() {
  Grey shape(side, side);
  const int bars[][4] = {{70, 46, 18, 100}, {70, 46, 60, 18}, {70, 86, 44, 18}};
  for (const auto& [x, y, width, height] : bars) {
    for (int row = y; row < y + height; ++row) {
      for (int column = x; column < x + width; ++column) shape.at(column, row) = 255;
    }
  }
  return shape;
}

/// About the middle of the image.
Grey rotated(const Grey& shape, double degrees, double scale) {
  const double c = scale * std::cos(degrees * M_PI / 180),
               s = scale * std::sin(degrees * M_PI / 180);
  const double middle = (side - 1) / 2.0;
  const double coeffs[6] = {c,  s, middle - c * middle - s * middle,
                            -s, c, middle + s * middle - c * middle};
  Grey result(side, side);
  check(vekiAffineWarp_8u_C1R(shape.samples.data(), side, shape.size(), result.samples.data(), side,
                              {0, 0, side, side}, coeffs, vekiWarpForward, vekiWarpCubic,
                              vekiBorderConstant, 0));
  return result;
}

struct Release {
  void operator()(VekiMomentState* state) const { vekiFree_Moments_8u(state); }
};

}  // namespace

Picture momentsPicture() {
  VekiMomentState* made = nullptr;
  check(vekiInitAlloc_Moments_8u(&made));
  const std::unique_ptr<VekiMomentState, Release> state(made);
  const Grey shape = letter();
  const double angles[] = {0, 25, 90, 155, 210};
  const double scales[] = {1, 1.2, 0.7, 1, 0.85};
  Picture result(5 * side + 4 * 8, side);
  std::printf("   angle  scale   Hu moments, as log10 of their magnitudes\n");
  for (int i = 0; i < 5; ++i) {
    const Grey image = rotated(shape, angles[i], scales[i]);
    double spatial[10], central[10], hu[7];
    check(vekiMoments_8u_C1R(image.samples.data(), side, image.size(), state.get()));
    check(vekiSpatialMoments_64f(state.get(), 0, {0, 0}, spatial));
    check(vekiCentralMoments_64f(state.get(), 0, central));
    check(vekiHuMoments_64f(state.get(), 0, hu));
    std::printf("%8.0f %6.2f  ", angles[i], scales[i]);
    for (double h : hu) std::printf(" %7.3f", std::log10(std::abs(h)));
    std::printf("\n");

    // In the order 00, 10, 01, 20, 11, 02 ...
    const double x = spatial[1] / spatial[0], y = spatial[2] / spatial[0];
    const double axis = 0.5 * std::atan2(2 * central[4], central[3] - central[5]);
    const double dx = 60 * std::cos(axis), dy = 60 * std::sin(axis);
    Picture tile = image.picture();
    tile.line(x - dx, y - dy, x + dx, y + dy, {255, 80, 60});
    tile.line(x + dy / 3, y - dx / 3, x - dy / 3, y + dx / 3, {80, 160, 255});
    result.paste(tile, i * (side + 8), 0);
  }
  return result;
}

}  // namespace gallery
