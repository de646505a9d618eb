#include "core/assert.h"
#include "core/kernel/blocks.h"
#include "core/kernel/interleave.h"
#include "core/kernel/unroll.h"
#include "image/color/hue_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// Converts a row with body(pixels of the destination, pixels of the source), block by block.
template <class Body>
void convertBlocks(ptrdiff_t n, const Vek8u* src, Vek8u* dst, Body body) {
  VEK_ASSERT(n >= 1);
  copiedBlocks<vectorBytes>(n, body, Out<3>{dst}, In<3>{src});
}

/// Every fourth byte of v, beginning with byte `phase`: the pixels of one phase in 32-bit lanes. This
/// needs no byte shuffles, and merged() puts the results back in order.
template <int phase>
V32s pixelsOfPhase(V8u v) {
  const V32u quarter = hn::ShiftRight<8 * phase>(hn::BitCast(u32, v));
  return hn::BitCast(s32, hn::And(quarter, hn::Set(u32, 0xFF)));
}

/// Adds results (0..255 each) of one phase to the bytes gathered so far.
template <int phase>
V8u merged(V8u gathered, V32s results) {
  return hn::Or(gathered, hn::BitCast(u8, hn::ShiftLeft<8 * phase>(results)));
}

/// floor(n / d * factor + add) from 1 / d, for |n| <= d <= 255 and values that are multiples of 1 / (2
/// d). The computed value is off by less than 1/1024. That much is added, so that it truncates to the
/// exact floor.
inline V32s floorOfRatio(V32f n, V32f perD, float factor, float add) {
  return truncated(
      hn::MulAdd(hn::Mul(n, perD), hn::Set(f32, factor), hn::Set(f32, add + 1.0f / 1024)));
}

/// What both forward conversions need of a pixel. The position in the sector is ahead - behind, in
/// units of 1/range; `hue` is what the sector adds to it.
struct HueBytes {
  V8u most, least, range, ahead, behind, hue;

  explicit HueBytes(const Channels& rgb)
      : most(hn::Max(rgb.c0, hn::Max(rgb.c1, rgb.c2))),
        least(hn::Min(rgb.c0, hn::Min(rgb.c1, rgb.c2))),
        range(hn::Sub(most, least)) {
    const auto isRed = hn::Eq(most, rgb.c0), isGreen = hn::Eq(most, rgb.c1);
    ahead = hn::IfThenElse(isRed, rgb.c1, hn::IfThenElse(isGreen, rgb.c2, rgb.c0));
    behind = hn::IfThenElse(isRed, rgb.c2, hn::IfThenElse(isGreen, rgb.c0, rgb.c1));
    const auto set = [](Vek8u value) { return hn::Set(u8, value); };
    const V8u wrapped = hn::IfThenElse(hn::Eq(hn::Max(ahead, behind), ahead), set(0), set(255));
    hue = hn::IfThenElse(isRed, wrapped, hn::IfThenElse(isGreen, set(85), set(170)));
  }
};

/// Sets `hue` of a block of pixels, 255 / 6 * (ahead - behind) / range from the sector's start, and
/// `saturation`, 255 * range / allowed, both rounded half up. The position in the sector is within
/// 43 of 0 and is computed 64 too large.
inline void hueAndSaturation(const HueBytes& p, V8u allowed, V8u& hue, V8u& saturation) {
  const V8u divisor = hn::Max(allowed, hn::Set(u8, 1));
  V8u position = hn::Zero(u8);
  saturation = position;
  unrolled<4>([&](auto phase) {
    const V32f range = toFloat(pixelsOfPhase<phase>(p.range));
    const V32f difference =
        toFloat(hn::Sub(pixelsOfPhase<phase>(p.ahead), pixelsOfPhase<phase>(p.behind)));
    const V32f perRange = reciprocal(hn::Max(range, hn::Set(f32, 1.0f)));
    const V32f perAllowed = reciprocal(toFloat(pixelsOfPhase<phase>(divisor)));
    position = merged<phase>(position, floorOfRatio(difference, perRange, 42.5f, 64.5f));
    saturation = merged<phase>(saturation, floorOfRatio(range, perAllowed, 255.0f, 0.5f));
  });
  hue = hn::Add(p.hue, hn::Sub(position, hn::Set(u8, 64)));
}

void rgbToHsv(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  convertBlocks(n, src, dst, [](Vek8u* out, const Vek8u* in) {
    const HueBytes p(loadChannels(in));
    Channels hsv;
    hueAndSaturation(p, p.most, hsv.c0, hsv.c1);
    hsv.c2 = p.most;
    storeChannels(hsv, out);
  });
}

/// The largest range that the lightness allows is the sum of the extremes or 510 less the sum,
/// whichever is smaller. The other one may saturate at 255.
void rgbToHls(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  convertBlocks(n, src, dst, [](Vek8u* out, const Vek8u* in) {
    const HueBytes p(loadChannels(in));
    const V8u allowed = hn::Min(hn::SaturatedAdd(p.most, p.least),
                                hn::SaturatedAdd(hn::Not(p.most), hn::Not(p.least)));
    Channels hls;
    hueAndSaturation(p, allowed, hls.c0, hls.c2);
    hls.c1 = hn::AverageRound(p.most, p.least);
    storeChannels(hls, out);
  });
}

/// From parts of 255^2 to parts of 65536, as the portable kernels have it.
template <class V>
V toSixteenBits(V parts) {
  return hn::Add(parts, hn::ShiftRight<7>(parts));
}

inline V16u asUnsigned(V16s v) {
  return hn::BitCast(u16, v);
}

/// How far a hue is from `centre`.
inline V16s distance(V16s hue, int centre) {
  return hn::Abs(hn::Sub(hue, filled(s16, centre)));
}

/// How far below the value a channel lies, 0..255: a trapezium over the turn of 6 * 255 units. Red's is
/// 0 at both ends and those of green and blue are full there, so that no hue has to be wrapped.
template <int channel>
V16u hsvWeight(V16s hue6) {
  const V16u full = hn::Set(u16, 255);
  if constexpr (channel == 0) {
    const V16u slope = hn::SaturatedSub(hn::Set(u16, 2 * 255), asUnsigned(distance(hue6, 3 * 255)));
    return hn::Min(slope, full);
  } else {
    const V16u slope = hn::SaturatedSub(asUnsigned(distance(hue6, 2 * channel * 255)), full);
    return hn::Min(slope, full);
  }
}

/// The high byte of each lane is (share * value + 32768) >> 16; `value8` is value << 8.
template <int channel>
V16u hsvChannel(V16s hue6, V16u saturation, V16u value8) {
  const V16u lost = hn::Mul(saturation, hsvWeight<channel>(hue6));
  const V16u share = hn::Sub(hn::Set(u16, 255 * 255), lost);
  return hn::Add(hn::MulHigh(toSixteenBits(share), value8), hn::Set(u16, 128));
}

void hsvToRgb(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  convertBlocks(n, src, dst, [](Vek8u* out, const Vek8u* in) {
    const Channels hsv = loadChannels(in);
    const V16s six = hn::Set(s16, 6);
    const V16s evenHue = hn::Mul(evenBytes(s16, hsv.c0), six),
               oddHue = hn::Mul(oddBytes(s16, hsv.c0), six);
    const V16u evenSaturation = evenBytes(u16, hsv.c1), oddSaturation = oddBytes(u16, hsv.c1);
    const V16u values = hn::BitCast(u16, hsv.c2);
    const V16u evenValue8 = hn::ShiftLeft<8>(values),
               oddValue8 = hn::And(values, hn::Set(u16, 0xFF00));
    const auto channel = [&]<int c>() {
      return joinHighBytes(hsvChannel<c>(evenHue, evenSaturation, evenValue8),
                           hsvChannel<c>(oddHue, oddSaturation, oddValue8));
    };
    storeChannels({channel.template operator()<0>(), channel.template operator()<1>(),
                   channel.template operator()<2>()},
                  out);
  });
}

/// (a b + 32768) >> 16: the high half of the product and the top bit of the low half.
inline V16s roundedHighProduct(V16s a, V16s b) {
  const V16u low = asUnsigned(hn::Mul(a, b));
  return hn::Add(hn::MulHigh(a, b), hn::BitCast(s16, hn::ShiftRight<15>(low)));
}

/// How far a channel lies below (positive) or above the lightness, -255..255, over a turn of 12 * 255
/// units.
template <int channel>
V16s hlsWeight(V16s hue12) {
  const V16s quarterTurn = hn::Set(s16, 3 * 255);
  const V16s slope = channel == 0 ? hn::Sub(quarterTurn, distance(hue12, 6 * 255))
                                  : hn::Sub(distance(hue12, 4 * channel * 255), quarterTurn);
  return hn::Max(hn::Set(s16, -255), hn::Min(slope, hn::Set(s16, 255)));
}

/// A pixel in each 16-bit lane.
struct Pixels16 {
  V16s c0, c1, c2;
};

inline Pixels16 hlsPixelsToRgb(const Pixels16& hls) {
  const V16s hue12 = hn::Mul(hls.c0, hn::Set(s16, 12));
  const V16s room = hn::Min(hls.c1, hn::Sub(hn::Set(s16, 255), hls.c1));
  const V16s reach = toSixteenBits(hn::Mul(hls.c2, room));  // at most 32638
  const auto channel = [&](V16s weight) {
    return hn::Sub(hls.c1, roundedHighProduct(reach, weight));
  };
  return {channel(hlsWeight<0>(hue12)), channel(hlsWeight<1>(hue12)), channel(hlsWeight<2>(hue12))};
}

void hlsToRgb(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  convertBlocks(n, src, dst, [](Vek8u* out, const Vek8u* in) {
    const Channels hls = loadChannels(in);
    const Pixels16 even =
        hlsPixelsToRgb({evenBytes(s16, hls.c0), evenBytes(s16, hls.c1), evenBytes(s16, hls.c2)});
    const Pixels16 odd =
        hlsPixelsToRgb({oddBytes(s16, hls.c0), oddBytes(s16, hls.c1), oddBytes(s16, hls.c2)});
    const auto joined = [](V16s a, V16s b) { return joinBytes(asUnsigned(a), asUnsigned(b)); };
    storeChannels({joined(even.c0, odd.c0), joined(even.c1, odd.c1), joined(even.c2, odd.c2)}, out);
  });
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr HueKernels hueKernels = {
    .rgbToHls = rgbToHls, .hlsToRgb = hlsToRgb, .rgbToHsv = rgbToHsv, .hsvToRgb = hsvToRgb};

}  // namespace vek::VEK_LEVEL
