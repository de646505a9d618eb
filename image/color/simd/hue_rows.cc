#include "image/color/hue_rows.h"

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

#include "image/color/pixel_lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

struct HueLanes {
  VInt most, least, range, hue;
};

/// n / d for values below 2^18 and quotients up to 256: the float quotient of integers below 2^24
/// cannot round up to the next integer, which is at least 1/511 away. A divisor of 0 comes with n =
/// 0.
inline VInt quotient(VInt n, VInt d) {
  const VInt divisor = hn::Max(d, constant(1));
  return hn::ConvertTo(intLanes,
                       hn::Div(hn::ConvertTo(floatLanes, n), hn::ConvertTo(floatLanes, divisor)));
}

inline HueLanes hueOf(const PixelLanes& rgb) {
  const VInt most = hn::Max(rgb.c0, hn::Max(rgb.c1, rgb.c2));
  const VInt least = hn::Min(rgb.c0, hn::Min(rgb.c1, rgb.c2));
  const VInt range = hn::Sub(most, least);
  const VInt range2 = hn::Add(range, range);
  const VInt fromRed = hn::Sub(rgb.c1, rgb.c2);
  const VInt fromGreen = hn::Add(hn::Sub(rgb.c2, rgb.c0), range2);
  const VInt fromBlue = hn::Add(hn::Sub(rgb.c0, rgb.c1), hn::Add(range2, range2));
  const VInt signedNumerator = hn::IfThenElse(
      hn::Eq(most, rgb.c0), fromRed, hn::IfThenElse(hn::Eq(most, rgb.c1), fromGreen, fromBlue));
  const VInt wrapped = hn::Add(signedNumerator, times(range, 6));
  const VInt numerator =
      hn::IfThenElse(hn::Lt(signedNumerator, constant(0)), wrapped, signedNumerator);
  return {most, least, range, quotient(hn::Add(times(numerator, 85), range), range2)};
}

/// 255 n / d rounded to nearest, halves up.
inline VInt saturation(VInt n, VInt d) {
  return quotient(hn::Add(times(n, 255), hn::ShiftRight<1>(d)), d);
}

void lineRGBToHSV_8u_C3R(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  convertPixels(src, dst, n, [](const PixelLanes& rgb) {
    const HueLanes h = hueOf(rgb);
    return PixelLanes{h.hue, saturation(h.range, h.most), h.most};
  });
}

void lineRGBToHLS_8u_C3R(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  convertPixels(src, dst, n, [](const PixelLanes& rgb) {
    const HueLanes h = hueOf(rgb);
    const VInt sum = hn::Add(h.most, h.least);
    const VInt allowed = hn::Min(sum, hn::Sub(constant(510), sum));
    return PixelLanes{h.hue, hn::ShiftRight<1>(hn::Add(sum, constant(1))),
                      saturation(h.range, allowed)};
  });
}

constexpr hn::RebindToUnsigned<decltype(wordLanes)> unsignedWords;

/// (a b + 32768) >> 16: the high half of the product and the top bit of the low half.
template <class V>
V roundedHighProduct(V a, V b) {
  const hn::DFromV<V> d;
  const auto low = hn::BitCast(unsignedWords, hn::Mul(a, b));
  return hn::Add(hn::MulHigh(a, b), hn::BitCast(d, hn::ShiftRight<15>(low)));
}

template <class V>
V toSixteenBits(V parts) {
  return hn::Add(parts, hn::ShiftRight<7>(parts));
}

/// (turned + shift) modulo one turn, both parts at most a turn.
inline VWord wrap(VWord turned, int shift, int turn) {
  const VWord k = hn::Add(turned, wordConstant(static_cast<Vek16s>(shift)));
  const VWord less = hn::Sub(k, wordConstant(static_cast<Vek16s>(turn)));
  return hn::IfThenElse(hn::Lt(less, wordConstant(0)), k, less);
}

inline VWord clampBetween(Vek16s low, VWord v, Vek16s high) {
  return hn::Max(wordConstant(low), hn::Min(v, wordConstant(high)));
}

template <int shift>
VWord hsvChannel(VWord hue6, VWord saturation, VWord value) {
  const VWord k = wrap(hue6, 255 * shift, 6 * 255);
  const VWord weight = clampBetween(0, hn::Min(k, hn::Sub(wordConstant(4 * 255), k)), 255);
  const auto lost = hn::BitCast(unsignedWords, hn::Mul(saturation, weight));
  const auto share = hn::Sub(hn::Set(unsignedWords, 255 * 255), lost);
  return hn::BitCast(wordLanes,
                     roundedHighProduct(toSixteenBits(share), hn::BitCast(unsignedWords, value)));
}

void lineHSVToRGB_8u_C3R(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  convertPixelWords(src, dst, n, [](const PixelWords& hsv) {
    const VWord hue6 = wrap(hn::Mul(hsv.c0, wordConstant(6)), 0, 6 * 255);
    return PixelWords{hsvChannel<5>(hue6, hsv.c1, hsv.c2), hsvChannel<3>(hue6, hsv.c1, hsv.c2),
                      hsvChannel<1>(hue6, hsv.c1, hsv.c2)};
  });
}

template <int shift>
VWord hlsChannel(VWord hue12, VWord light, VWord reach) {
  const VWord k = wrap(hue12, 255 * shift, 12 * 255);
  const VWord slope = hn::Min(hn::Sub(k, wordConstant(3 * 255)), hn::Sub(wordConstant(9 * 255), k));
  return hn::Sub(light, roundedHighProduct(reach, clampBetween(-255, slope, 255)));
}

void lineHLSToRGB_8u_C3R(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  convertPixelWords(src, dst, n, [](const PixelWords& hls) {
    const VWord hue12 = wrap(hn::Mul(hls.c0, wordConstant(12)), 0, 12 * 255);
    const VWord room = hn::Min(hls.c1, hn::Sub(wordConstant(255), hls.c1));
    const VWord reach = toSixteenBits(hn::Mul(hls.c2, room));  // at most 32638
    return PixelWords{hlsChannel<0>(hue12, hls.c1, reach), hlsChannel<8>(hue12, hls.c1, reach),
                      hlsChannel<4>(hue12, hls.c1, reach)};
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
