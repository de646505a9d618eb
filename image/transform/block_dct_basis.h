// What the cosine transform of 8 x 8 blocks multiplies by.
#pragma once

#include "vek/vek.h"

namespace vek {

/// Entry [u][x] is 2^14 c cos((2 x + 1) u pi / 16), c = 1 for u = 0 and sqrt(2) otherwise, rounded. Even
/// rows are symmetric and odd ones antisymmetric, which halves the products.
inline constexpr Vek16s dctBasis[8][8] = {
    {16384, 16384, 16384, 16384, 16384, 16384, 16384, 16384},
    {22725, 19266, 12873, 4520, -4520, -12873, -19266, -22725},
    {21407, 8867, -8867, -21407, -21407, -8867, 8867, 21407},
    {19266, -4520, -22725, -12873, 12873, 22725, 4520, -19266},
    {16384, -16384, -16384, 16384, 16384, -16384, -16384, 16384},
    {12873, -22725, 4520, 19266, -19266, -4520, 22725, -12873},
    {8867, -21407, 21407, -8867, -8867, 21407, -21407, 8867},
    {4520, -12873, 19266, -22725, 22725, -19266, 12873, -4520},
};

}  // namespace vek
