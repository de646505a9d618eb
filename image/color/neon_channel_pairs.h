// NEON's form of channel_pairs.h. It has products of separate vectors whose sums have lanes of twice the
// width, and loads that separate the channels, so that nothing needs to be paired. Empty elsewhere.
#pragma once

#include "core/kernel/interleave.h"
#include "core/kernel/lanes.h"
#include "core/kernel/unroll.h"

#if HWY_ARCH_ARM

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::Half<decltype(s16)> halfOfS16;
using V16sHalf = hn::Vec<decltype(halfOfS16)>;

/// Four pixels.
struct PixelPairs {
  V16sHalf c0, c1, c2;
};

/// Two weights, each in every lane.
struct WeightPair {
  V16sHalf first, second;
};

inline WeightPair weightPair(Vek32s first, Vek32s second) {
  return {hn::Set(halfOfS16, static_cast<Vek16s>(first)),
          hn::Set(halfOfS16, static_cast<Vek16s>(second))};
}

inline V32s plusProducts(V32s acc, V16sHalf a, V16sHalf weight) {
  return V32s{vmlal_s16(acc.raw, a.raw, weight.raw)};
}
inline V32s plusFirstTwo(V32s acc, const PixelPairs& p, const WeightPair& w) {
  return plusProducts(plusProducts(acc, p.c0, w.first), p.c1, w.second);
}
inline V32s plusThird(V32s acc, const PixelPairs& p, const WeightPair& w) {
  return plusProducts(acc, p.c2, w.first);
}
inline V32s plusThirdAndFirst(V32s acc, const PixelPairs& p, const WeightPair& w) {
  return plusProducts(plusThird(acc, p, w), p.c0, w.second);
}

inline V32s firstChannel(const PixelPairs& p) {
  return hn::PromoteTo(s32, p.c0);
}

struct BlockPairs {
  PixelPairs group[4];
};

/// op(of c0, of the same of b) and so on.
template <class Op>
PixelPairs onChannels(const PixelPairs& a, const PixelPairs& b, Op op) {
  return {op(a.c0, b.c0), op(a.c1, b.c1), op(a.c2, b.c2)};
}

inline V16sHalf evenPixels(V16sHalf a, V16sHalf b) {
  return hn::ConcatEven(halfOfS16, b, a);
}
inline V16sHalf oddPixels(V16sHalf a, V16sHalf b) {
  return hn::ConcatOdd(halfOfS16, b, a);
}

// Group g is pixels 4 g .. 4 g + 3.

inline BlockPairs loadPairs(const Vek8u* src) {
  const Channels v = loadChannels(src);
  BlockPairs pairs;
  const auto widen = [&](V8u bytes, V16sHalf PixelPairs::*channel) {
    const V16s lower = hn::PromoteTo(s16, hn::LowerHalf(halfU8, bytes));
    const V16s upper = hn::PromoteTo(s16, hn::UpperHalf(halfU8, bytes));
    pairs.group[0].*channel = hn::LowerHalf(halfOfS16, lower);
    pairs.group[1].*channel = hn::UpperHalf(halfOfS16, lower);
    pairs.group[2].*channel = hn::LowerHalf(halfOfS16, upper);
    pairs.group[3].*channel = hn::UpperHalf(halfOfS16, upper);
  };
  widen(v.c0, &PixelPairs::c0);
  widen(v.c1, &PixelPairs::c1);
  widen(v.c2, &PixelPairs::c2);
  return pairs;
}

/// Runs fn(PixelPairs) -> PixelLanes on a block; the results are clamped to 0..255.
template <class Fn>
void convertPairs(const Vek8u* src, Vek8u* dst, Fn fn) {
  const BlockPairs pairs = loadPairs(src);
  V16s c0[2], c1[2], c2[2];
  unrolled<2>([&](auto half) {
    constexpr int i = half.value;
    const PixelLanes a = fn(pairs.group[2 * i]), b = fn(pairs.group[2 * i + 1]);
    c0[i] = packClamped(a.c0, b.c0);
    c1[i] = packClamped(a.c1, b.c1);
    c2[i] = packClamped(a.c2, b.c2);
  });
  storeChannels({packClamped(c0[0], c0[1]), packClamped(c1[0], c1[1]), packClamped(c2[0], c2[1])},
                dst);
}

inline V8u inOrder(V8u v) {
  return v;
}

inline V8u firstThenSecond(V8u v) {
  const hn::Half<decltype(u8)> half;
  const auto lower = hn::LowerHalf(half, v), upper = hn::UpperHalf(half, v);
  return hn::Combine(u8, hn::ConcatOdd(half, upper, lower), hn::ConcatEven(half, upper, lower));
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
