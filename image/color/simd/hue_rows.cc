#include "image/color/hue_rows.h"

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

#include "image/color/pixel_lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// floor(n / d * factor + add), for |n| <= d <= 255 and values that are multiples of 1 / (2 d). The
/// computed one is off by less than 1/1024, which is added: it then truncates to the exact floor.
inline VInt floorOfRatio(VFloat n, VFloat reciprocal, float factor, float add) {
  return hn::ConvertTo(intLanes, hn::MulAdd(hn::Mul(n, reciprocal), hn::Set(floatLanes, factor),
                                            hn::Set(floatLanes, add + 1.0f / 1024)));
}

/// What both forward conversions need of a pixel, and the pairs of components whose difference is
/// the position in the sector. `hue` is what the sector adds.
struct HueBytes {
  VBytes most, least, range, ahead, behind, hue;

  explicit HueBytes(const Channels& rgb)
      : most(hn::Max(rgb.c0, hn::Max(rgb.c1, rgb.c2))),
        least(hn::Min(rgb.c0, hn::Min(rgb.c1, rgb.c2))),
        range(hn::Sub(most, least)) {
    const auto isRed = hn::Eq(most, rgb.c0), isGreen = hn::Eq(most, rgb.c1);
    ahead = hn::IfThenElse(isRed, rgb.c1, hn::IfThenElse(isGreen, rgb.c2, rgb.c0));
    behind = hn::IfThenElse(isRed, rgb.c2, hn::IfThenElse(isGreen, rgb.c0, rgb.c1));
    const auto set = [](Vek8u value) { return hn::Set(byteLanes, value); };
    const VBytes wrapped = hn::IfThenElse(hn::Eq(hn::Max(ahead, behind), ahead), set(0), set(255));
    hue = hn::IfThenElse(isRed, wrapped, hn::IfThenElse(isGreen, set(85), set(170)));
  }
};

/// Sets `hue` of a block of pixels, 255 / 6 * (ahead - behind) / range from the sector's start, and
/// `saturation`, 255 * range / allowed, both rounded half up. The position in the sector is within
/// 43 of 0 and is computed 64 too large.
inline void hueAndSaturation(const HueBytes& p, VBytes allowed, VBytes& hue, VBytes& saturation) {
  const VBytes one = hn::Set(byteLanes, 1);
  const VBytes rangeDivisor = hn::Max(p.range, one), allowedDivisor = hn::Max(allowed, one);
  VBytes position = hn::Zero(byteLanes);
  saturation = position;
  forEachPhase([&]<int phase>() {
    const VFloat range = toFloat(phaseOf<phase>(p.range));
    const VFloat difference = toFloat(hn::Sub(phaseOf<phase>(p.ahead), phaseOf<phase>(p.behind)));
    const VFloat perRange = reciprocal(toFloat(phaseOf<phase>(rangeDivisor)));
    const VFloat perAllowed = reciprocal(toFloat(phaseOf<phase>(allowedDivisor)));
    position = merge<phase>(position, floorOfRatio(difference, perRange, 42.5f, 64.5f));
    saturation = merge<phase>(saturation, floorOfRatio(range, perAllowed, 255.0f, 0.5f));
  });
  hue = hn::Add(p.hue, hn::Sub(position, hn::Set(byteLanes, 64)));
}

void lineRGBToHSV_8u_C3R(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  const auto body = [](Vek8u* out, const Vek8u* in) {
    const HueBytes p(loadChannels(in));
    Channels hsv;
    hueAndSaturation(p, p.most, hsv.c0, hsv.c1);
    hsv.c2 = p.most;
    storeChannels(hsv, out);
  };
  forEachBlock<pixelBlock>(n, body, Out<3>{dst}, In<3>{src});
}

/// The largest range is the sum of the extremes, or 510 less the sum where that is smaller; the one
/// that is not saturates at 255.
void lineRGBToHLS_8u_C3R(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  const auto body = [](Vek8u* out, const Vek8u* in) {
    const HueBytes p(loadChannels(in));
    const VBytes allowed = hn::Min(hn::SaturatedAdd(p.most, p.least),
                                   hn::SaturatedAdd(hn::Not(p.most), hn::Not(p.least)));
    Channels hls;
    hueAndSaturation(p, allowed, hls.c0, hls.c2);
    hls.c1 = hn::AverageRound(p.most, p.least);
    storeChannels(hls, out);
  };
  forEachBlock<pixelBlock>(n, body, Out<3>{dst}, In<3>{src});
}

constexpr hn::RebindToUnsigned<decltype(wordLanes)> unsignedWords;
using VUnsigned = hn::Vec<decltype(unsignedWords)>;

template <class V>
V toSixteenBits(V parts) {
  return hn::Add(parts, hn::ShiftRight<7>(parts));
}

inline VUnsigned asUnsigned(VWord v) {
  return hn::BitCast(unsignedWords, v);
}

/// How far a hue is from `centre`.
inline VWord distance(VWord hue, int centre) {
  return hn::Abs(hn::Sub(hue, wordConstant(static_cast<Vek16s>(centre))));
}

/// The channels' weights are trapezia over the turn of 6 * 255 units: red's is 0 at both ends,
/// those of green and blue are full there, so that a whole turn needs no wrapping.
template <int channel>
VUnsigned hsvWeight(VWord hue6) {
  const VUnsigned full = hn::Set(unsignedWords, 255);
  if constexpr (channel == 0) {
    const VUnsigned slope =
        hn::SaturatedSub(hn::Set(unsignedWords, 2 * 255), asUnsigned(distance(hue6, 3 * 255)));
    return hn::Min(slope, full);
  } else {
    const VUnsigned slope = hn::SaturatedSub(asUnsigned(distance(hue6, 2 * channel * 255)), full);
    return hn::Min(slope, full);
  }
}

/// (share * value + 32768) >> 16 in the high byte, from value << 8.
template <int channel>
VUnsigned hsvChannel(VWord hue6, VUnsigned saturation, VUnsigned value8) {
  const VUnsigned lost = hn::Mul(saturation, hsvWeight<channel>(hue6));
  const VUnsigned share = hn::Sub(hn::Set(unsignedWords, 255 * 255), lost);
  return hn::Add(hn::MulHigh(toSixteenBits(share), value8), hn::Set(unsignedWords, 128));
}

inline VBytes joinHighBytes(VUnsigned even, VUnsigned odd) {
  return hn::BitCast(byteLanes,
                     hn::Or(hn::ShiftRight<8>(even), hn::And(odd, hn::Set(unsignedWords, 0xFF00))));
}

void lineHSVToRGB_8u_C3R(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  const auto body = [](Vek8u* out, const Vek8u* in) {
    const Channels hsv = loadChannels(in);
    const VWord six = wordConstant(6);
    const VWord evenHue = hn::Mul(evenBytes(hsv.c0), six), oddHue = hn::Mul(oddBytes(hsv.c0), six);
    const VUnsigned evenSaturation = asUnsigned(evenBytes(hsv.c1)),
                    oddSaturation = asUnsigned(oddBytes(hsv.c1));
    const VUnsigned values = hn::BitCast(unsignedWords, hsv.c2);
    const VUnsigned evenValue8 = hn::ShiftLeft<8>(values),
                    oddValue8 = hn::And(values, hn::Set(unsignedWords, 0xFF00));
    const auto channel = [&]<int c>() {
      return joinHighBytes(hsvChannel<c>(evenHue, evenSaturation, evenValue8),
                           hsvChannel<c>(oddHue, oddSaturation, oddValue8));
    };
    storeChannels({channel.template operator()<0>(), channel.template operator()<1>(),
                   channel.template operator()<2>()},
                  out);
  };
  forEachBlock<pixelBlock>(n, body, Out<3>{dst}, In<3>{src});
}

/// (a b + 32768) >> 16: the high half of the product and the top bit of the low half.
inline VWord roundedHighProduct(VWord a, VWord b) {
  const VUnsigned low = asUnsigned(hn::Mul(a, b));
  return hn::Add(hn::MulHigh(a, b), hn::BitCast(wordLanes, hn::ShiftRight<15>(low)));
}

/// As hsvWeight(), over a turn of 12 * 255 units, between -255 and 255.
template <int channel>
VWord hlsWeight(VWord hue12) {
  const VWord half = wordConstant(3 * 255);
  const VWord slope = channel == 0 ? hn::Sub(half, distance(hue12, 6 * 255))
                                   : hn::Sub(distance(hue12, 4 * channel * 255), half);
  return hn::Max(wordConstant(-255), hn::Min(slope, wordConstant(255)));
}

void lineHLSToRGB_8u_C3R(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  convertPixelWords(src, dst, n, [](const PixelWords& hls) {
    const VWord hue12 = hn::Mul(hls.c0, wordConstant(12));
    const VWord room = hn::Min(hls.c1, hn::Sub(wordConstant(255), hls.c1));
    const VWord reach = toSixteenBits(hn::Mul(hls.c2, room));  // at most 32638
    const auto channel = [&](VWord weight) {
      return hn::Sub(hls.c1, roundedHighProduct(reach, weight));
    };
    return PixelWords{channel(hlsWeight<0>(hue12)), channel(hlsWeight<1>(hue12)),
                      channel(hlsWeight<2>(hue12))};
  });
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

#include "image/color/hue_body.h"

#endif

namespace vek::VEK_LEVEL {

constexpr HueRows hueRows = {lineRGBToHLS_8u_C3R, lineHLSToRGB_8u_C3R, lineRGBToHSV_8u_C3R,
                             lineHSVToRGB_8u_C3R};

}  // namespace vek::VEK_LEVEL
