// Row kernels that combine the three channels of a pixel linearly. Source and destination do not
// overlap; a row has n >= 1 pixels.
#pragma once

#include "core/level.h"
#include "image/color/combination.h"
#include "image/color/convert_row.h"

namespace vek {

/// Three bytes a pixel to one, Q14, rounded half up.
using GrayRow = void (*)(ptrdiff_t n, const Vek8u* src, Vek8u* dst, const Combination& gray);
/// Three bytes a pixel to three, Q10, rounded half up; combination k of three gives channel k.
using TwistRow = void (*)(ptrdiff_t n, const Vek8u* src, Vek8u* dst, const Combination* channels);

struct TwistKernels {
  ConvertRow luma;    ///< as grayQ14, but Q10 with lumaWeights
  GrayRow grayQ14;    ///< for a combination that fits16Bits()
  TwistRow twistQ10;  ///< for combinations that all fit
};

VEK_KERNEL_TABLE(TwistKernels, twistKernels)

namespace portable {

// The same for any weights, summed in 64 bits. Such weights are rare: no level has a faster form.
void wideGrayQ14(ptrdiff_t n, const Vek8u* src, Vek8u* dst, const Combination& weights);
void wideTwistQ10(ptrdiff_t n, const Vek8u* src, Vek8u* dst, const Combination* channels);

}  // namespace portable

}  // namespace vek
