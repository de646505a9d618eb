// Linear combinations of a pixel's channels as dot products of 16-bit lanes.
#pragma once

#include "core/assert.h"
#include "image/color/channel_pairs.h"
#include "image/color/combination.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// A combination ready for dot products: its weights in pairs, and the rounding term in the offset.
template <int shift>
struct CombinationLanes {
  WeightPair w01, w2;
  V32s offset;

  explicit CombinationLanes(const Combination& c, Vek32s rounding = 1 << (shift - 1))
      : w01(weightPair(c.weight[0], c.weight[1])),
        w2(weightPair(c.weight[2], 0)),
        offset(hn::Set(s32, c.offset + rounding)) {
    VEK_ASSERT(fits16Bits(c));
  }

  V32s of(const PixelPairs& p) const {
    return hn::ShiftRight<shift>(plusThird(plusFirstTwo(offset, p, w01), p, w2));
  }

  /// The results of a block, packed by groups and clamped to 0..255.
  V8u packed(const BlockPairs& p) const {
    return packClamped(packClamped(of(p.group[0]), of(p.group[1])),
                       packClamped(of(p.group[2]), of(p.group[3])));
  }
};

/// Three combinations, which are the channels of the pixels that come out.
template <int shift>
struct TwistLanes {
  CombinationLanes<shift> x, y, z;

  explicit TwistLanes(const Combination* channels)
      : x(channels[0]), y(channels[1]), z(channels[2]) {}
  PixelLanes of(const PixelPairs& p) const { return {x.of(p), y.of(p), z.of(p)}; }
};

/// A combination that is known when it is compiled: one dot product is enough if the second or the
/// third channel has no weight.
template <const Combination& c, int shift>
V32s combined(const PixelPairs& p) {
  static_assert(fits16Bits(c));
  const V32s start = hn::Set(s32, c.offset);
  if constexpr (c.weight[1] == 0) {
    return hn::ShiftRight<shift>(plusThirdAndFirst(start, p, weightPair(c.weight[2], c.weight[0])));
  } else {
    const V32s sum = plusFirstTwo(start, p, weightPair(c.weight[0], c.weight[1]));
    return hn::ShiftRight<shift>(c.weight[2] == 0 ? sum
                                                  : plusThird(sum, p, weightPair(c.weight[2], 0)));
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
