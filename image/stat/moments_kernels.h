// The kernels that sum moments.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// m_pq is the sum of x^p y^q I(x, y).
template <class T>
struct MomentsOf {
  T m00, m10, m01, m20, m11, m02, m30, m21, m12, m03;
};

/// Sides of the largest tile that a kernel sums: moments of third order stay below 255 * 2^50, those of
/// a row below 2^40.
inline constexpr int momentTile = 1024;

/// Stores the moments of each channel of a tile, whose first pixel is (0, 0); 1 <= width, height <=
/// momentTile.
using SumMoments = void (*)(const Vek8u* src, ptrdiff_t srcStep, int width, int height,
                            MomentsOf<Vek64s>* moments);

struct MomentKernels {
  SumMoments c1, c3;
};

VEK_KERNEL_TABLE(MomentKernels, momentKernels)

}  // namespace vek
