#include "image/color/twist_rows.h"

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

#include "image/color/pixel_lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// A pixel as two pairs of 16-bit words: (c0, c1) and (c2, 0).
struct WordPairs {
  VWord c01, c2zero;
};

inline VWord pair(VInt even, VInt odd) {
  return hn::BitCast(wordLanes, hn::Or(even, hn::ShiftLeft<16>(odd)));
}

/// `sum` is added at the end: where the products of a pair lie in between is up to the processor.
inline VInt dotPairs(VWord a, VWord b, VInt sum) {
  VInt sum1 = hn::Zero(intLanes);
  const VInt sum0 = hn::ReorderWidenMulAccumulate(intLanes, a, b, hn::Zero(intLanes), sum1);
  return hn::Add(sum, hn::RearrangeToOddPlusEven(sum0, sum1));
}

/// A combination ready for dot products: its weights as pairs, rounding within the offset.
template <int shift>
struct CombinationLanes {
  VWord w01, w2;
  VInt offset;

  explicit CombinationLanes(const Combination& c)
      : w01(pair(constant(c.weight[0] & 0xFFFF), constant(c.weight[1]))),
        w2(pair(constant(c.weight[2] & 0xFFFF), constant(0))),
        offset(constant(c.offset + (1 << (shift - 1)))) {}

  VInt of(const WordPairs& p) const {
    const VInt sum = dotPairs(p.c2zero, w2, dotPairs(p.c01, w01, offset));
    return clampToByte(hn::ShiftRight<shift>(sum));
  }
};

inline WordPairs pairsOf(VInt c0, VInt c1, VInt c2) {
  return {pair(c0, c1), hn::BitCast(wordLanes, c2)};
}

void twist(const Vek8u* src, Vek8u* dst, ptrdiff_t n, const Combination* channels) {
  const CombinationLanes<10> x(channels[0]), y(channels[1]), z(channels[2]);
  convertPixels(src, dst, n, [&](const PixelLanes& p) {
    const WordPairs pairs = pairsOf(p.c0, p.c1, p.c2);
    return PixelLanes{x.of(pairs), y.of(pairs), z.of(pairs)};
  });
}

void grayQ14(const Vek8u* src, Vek8u* dst, ptrdiff_t n, const Combination& c) {
  const CombinationLanes<14> weights(c);
  const auto body = [&](Vek8u* out, const Vek8u* in) {
    const Channels v = loadChannels(in);
    VBytes result = hn::Zero(byteLanes);
    const auto phase = [&]<int p>() {
      result = merge<p>(result,
                        weights.of(pairsOf(phaseOf<p>(v.c0), phaseOf<p>(v.c1), phaseOf<p>(v.c2))));
    };
    phase.template operator()<0>();
    phase.template operator()<1>();
    phase.template operator()<2>();
    phase.template operator()<3>();
    hn::StoreU(result, byteLanes, out);
  };
  forEachBlock<pixelBlock>(n, body, Out<1>{dst}, In<3>{src});
}

/// The weights are split as 8 h + l: 306 = 8 * 38 + 2, 601 = 8 * 75 + 1, 117 = 8 * 14 + 5, and the
/// sum is (H + ((L + 512) >> 3)) >> 7. Everything stays within 32704, so 16-bit lanes are exact.
inline VWord lumaOf(VWord r, VWord g, VWord b) {
  const auto times = [](VWord v, Vek16s factor) { return hn::Mul(v, wordConstant(factor)); };
  const VWord high = hn::Add(hn::Add(times(r, 38), times(g, 75)), times(b, 14));
  const VWord low = hn::Add(hn::Add(hn::Add(r, r), g), hn::Add(times(b, 5), wordConstant(512)));
  return hn::ShiftRight<7>(hn::Add(high, hn::ShiftRight<3>(low)));
}

void lumaRow(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  const auto body = [](Vek8u* out, const Vek8u* in) {
    const Channels v = loadChannels(in);
    const VWord even = lumaOf(evenBytes(v.c0), evenBytes(v.c1), evenBytes(v.c2));
    const VWord odd = lumaOf(oddBytes(v.c0), oddBytes(v.c1), oddBytes(v.c2));
    hn::StoreU(joinBytes(even, odd), byteLanes, out);
  };
  forEachBlock<pixelBlock>(n, body, Out<1>{dst}, In<3>{src});
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr TwistRows twistRows = {lumaRow, grayQ14, twist};

}  // namespace vek::VEK_LEVEL

#else

#include "image/color/twist_body.h"

namespace vek::VEK_LEVEL {

constexpr TwistRows twistRows = {lumaRow, grayQ14<Vek32s>, twist<Vek32s>};

}  // namespace vek::VEK_LEVEL

#endif
