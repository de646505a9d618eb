// The weights of cubic interpolation.
#pragma once

#include "vek/vek.h"

namespace vek::VEK_LEVEL {
namespace {

struct CubicWeights {
  Vek16s of[128][4];
};

/// Keys' cubic with a = -1/2 at f / 128 between the second and the third of four samples, in 1 / 16384:
/// rounded to nearest (halves up), and the greatest one then changed, by 1 at most, so that the sum is
/// 16384. The magnitudes of four weights sum to at most 20480.
constexpr CubicWeights cubicWeights = [] {
  CubicWeights weights = {};
  for (int f = 0; f < 128; ++f) {
    const int square = f * f, cube = f * square;
    const int numerators[4] = {-cube + 256 * square - 16384 * f, 3 * cube - 640 * square + 4194304,
                               -3 * cube + 512 * square + 16384 * f, cube - 128 * square};
    int rest = 16384;
    for (int a = 0; a < 4; ++a) {
      const int weight = (numerators[a] + 128) >> 8;
      weights.of[f][a] = static_cast<Vek16s>(weight);
      rest -= weight;
    }
    Vek16s& greatest = weights.of[f][f <= 64 ? 1 : 2];
    greatest = static_cast<Vek16s>(greatest + rest);
  }
  return weights;
}();

}  // namespace
}  // namespace vek::VEK_LEVEL
