// What the peers of the transforms share.
#pragma once

#include "vek/vek.h"

namespace vek::bench {

/// The largest image that has a Fourier transform and fits `size`: what ours are measured with.
inline VekiSize fourierSize(VekiSize size) {
  const auto side = [](int most) {
    int power = 1;
    while (power < 1024 && 2 * power <= most) power *= 2;
    return power;
  };
  return {side(size.width), side(size.height)};
}

/// Ours by the types of their samples.
inline constexpr const char *forwardTransforms[] = {"vekiRealFFTFwd_8u32s_C1RSfs",
                                                    "vekiRealFFTFwd_32s_C1RSfs"},
                            *inverseTransforms[] = {"vekiRealFFTInv_32s8u_C1RSfs",
                                                    "vekiRealFFTInv_32s_C1RSfs"};

}  // namespace vek::bench
