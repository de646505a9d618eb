#include "core/kernel/blocks.h"
#include "image/color/hue_kernels.h"
#include "image/color/pixel_lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// floor(n / d * factor + add), for |n| <= d <= 255 and values that are multiples of 1 / (2 d). The
/// computed one is off by less than 1/1024, which is added: it then truncates to the exact floor.
inline V32s floorOfRatio(V32f n, V32f reciprocal, float factor, float add) {
  return truncated(
      hn::MulAdd(hn::Mul(n, reciprocal), hn::Set(f32, factor), hn::Set(f32, add + 1.0f / 1024)));
}

/// What both forward conversions need of a pixel, and the pairs of components whose difference is
/// the position in the sector. `hue` is what the sector adds.
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
  forEachPhase([&]<int phase>() {
    const V32f range = toFloat(phaseOf<phase>(p.range));
    const V32f difference = toFloat(hn::Sub(phaseOf<phase>(p.ahead), phaseOf<phase>(p.behind)));
    const V32f perRange = reciprocal(hn::Max(range, hn::Set(f32, 1.0f)));
    const V32f perAllowed = reciprocal(toFloat(phaseOf<phase>(divisor)));
    position = merge<phase>(position, floorOfRatio(difference, perRange, 42.5f, 64.5f));
    saturation = merge<phase>(saturation, floorOfRatio(range, perAllowed, 255.0f, 0.5f));
  });
  hue = hn::Add(p.hue, hn::Sub(position, hn::Set(u8, 64)));
}

void lineRGBToHSV_8u_C3R(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  const auto body = [](Vek8u* out, const Vek8u* in) {
    const HueBytes p(loadChannels(in));
    Channels hsv;
    hueAndSaturation(p, p.most, hsv.c0, hsv.c1);
    hsv.c2 = p.most;
    storeChannels(hsv, out);
  };
  copiedBlocks<vectorBytes>(n, body, Out<3>{dst}, In<3>{src});
}

/// The largest range is the sum of the extremes, or 510 less the sum where that is smaller; the one
/// that is not saturates at 255.
void lineRGBToHLS_8u_C3R(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  const auto body = [](Vek8u* out, const Vek8u* in) {
    const HueBytes p(loadChannels(in));
    const V8u allowed = hn::Min(hn::SaturatedAdd(p.most, p.least),
                                hn::SaturatedAdd(hn::Not(p.most), hn::Not(p.least)));
    Channels hls;
    hueAndSaturation(p, allowed, hls.c0, hls.c2);
    hls.c1 = hn::AverageRound(p.most, p.least);
    storeChannels(hls, out);
  };
  copiedBlocks<vectorBytes>(n, body, Out<3>{dst}, In<3>{src});
}

template <class V>
V toSixteenBits(V parts) {
  return hn::Add(parts, hn::ShiftRight<7>(parts));
}

inline V16u asUnsigned(V16s v) {
  return hn::BitCast(u16, v);
}

/// How far a hue is from `centre`.
inline V16s distance(V16s hue, int centre) {
  return hn::Abs(hn::Sub(hue, hn::Set(s16, static_cast<Vek16s>(centre))));
}

/// The channels' weights are trapezia over the turn of 6 * 255 units: red's is 0 at both ends,
/// those of green and blue are full there, so that a whole turn needs no wrapping.
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

/// (share * value + 32768) >> 16 in the high byte, from value << 8.
template <int channel>
V16u hsvChannel(V16s hue6, V16u saturation, V16u value8) {
  const V16u lost = hn::Mul(saturation, hsvWeight<channel>(hue6));
  const V16u share = hn::Sub(hn::Set(u16, 255 * 255), lost);
  return hn::Add(hn::MulHigh(toSixteenBits(share), value8), hn::Set(u16, 128));
}

void lineHSVToRGB_8u_C3R(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  const auto body = [](Vek8u* out, const Vek8u* in) {
    const Channels hsv = loadChannels(in);
    const V16s six = hn::Set(s16, 6);
    const V16s evenHue = hn::Mul(evenBytes(s16, hsv.c0), six),
               oddHue = hn::Mul(oddBytes(s16, hsv.c0), six);
    const V16u evenSaturation = asUnsigned(evenBytes(s16, hsv.c1)),
               oddSaturation = asUnsigned(oddBytes(s16, hsv.c1));
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
  };
  copiedBlocks<vectorBytes>(n, body, Out<3>{dst}, In<3>{src});
}

/// (a b + 32768) >> 16: the high half of the product and the top bit of the low half.
inline V16s roundedHighProduct(V16s a, V16s b) {
  const V16u low = asUnsigned(hn::Mul(a, b));
  return hn::Add(hn::MulHigh(a, b), hn::BitCast(s16, hn::ShiftRight<15>(low)));
}

/// As hsvWeight(), over a turn of 12 * 255 units, between -255 and 255.
template <int channel>
V16s hlsWeight(V16s hue12) {
  const V16s half = hn::Set(s16, 3 * 255);
  const V16s slope = channel == 0 ? hn::Sub(half, distance(hue12, 6 * 255))
                                  : hn::Sub(distance(hue12, 4 * channel * 255), half);
  return hn::Max(hn::Set(s16, -255), hn::Min(slope, hn::Set(s16, 255)));
}

void lineHLSToRGB_8u_C3R(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  convertPixelWords(src, dst, n, [](const PixelWords& hls) {
    const V16s hue12 = hn::Mul(hls.c0, hn::Set(s16, 12));
    const V16s room = hn::Min(hls.c1, hn::Sub(hn::Set(s16, 255), hls.c1));
    const V16s reach = toSixteenBits(hn::Mul(hls.c2, room));  // at most 32638
    const auto channel = [&](V16s weight) {
      return hn::Sub(hls.c1, roundedHighProduct(reach, weight));
    };
    return PixelWords{channel(hlsWeight<0>(hue12)), channel(hlsWeight<1>(hue12)),
                      channel(hlsWeight<2>(hue12))};
  });
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr HueKernels hueKernels = {lineRGBToHLS_8u_C3R, lineHLSToRGB_8u_C3R, lineRGBToHSV_8u_C3R,
                                   lineHSVToRGB_8u_C3R};

}  // namespace vek::VEK_LEVEL
