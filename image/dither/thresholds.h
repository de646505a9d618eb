// The matrix of ordered dithering.
// Compiled into kernels of every level, so everything sits in the level's own namespace.
#pragma once

#include "vek/vek.h"

namespace vek::VEK_LEVEL {
namespace {

constexpr int matrixSize = 8;

/// What is added to a sample times (levels - 1) before it is divided by 255.
struct Thresholds {
  Vek8u at[matrixSize][matrixSize];
};

/// Bayer's matrix of 0 .. 63, scaled to 1 .. 253: T = 255 (2 M + 1) / 128, truncated. The bits of M are
/// those of the coordinates in reverse, so that neighbours differ most: two bits of it for each bit b
/// of (x, y), the highest ones for b = 0.
constexpr Thresholds thresholds = [] {
  Thresholds t = {};
  for (int y = 0; y < matrixSize; ++y) {
    for (int x = 0; x < matrixSize; ++x) {
      int m = 0;
      for (int b = 0; b < 3; ++b) {
        const int bitX = x >> b & 1, bitY = y >> b & 1;
        m = 4 * m + 2 * (bitX ^ bitY) + bitY;
      }
      t.at[y][x] = static_cast<Vek8u>(255 * (2 * m + 1) / 128);
    }
  }
  return t;
}();

}  // namespace
}  // namespace vek::VEK_LEVEL
