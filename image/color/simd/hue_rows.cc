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

constexpr int fullSquared = 255 * 255;

/// n / 255^2 rounded to nearest, for 0 <= n <= 255^3. With half added n stays below 2^24, so it is
/// exact in float; the product is off by far less than one, which the rest then tells.
inline VInt scaleDown(VInt n) {
  const VInt rounded = hn::Add(n, constant(fullSquared / 2));
  const VInt q = hn::ConvertTo(intLanes, hn::Mul(hn::ConvertTo(floatLanes, rounded),
                                                 hn::Set(floatLanes, 1.0f / fullSquared)));
  return mendQuotient(q, rounded, constant(fullSquared));
}

/// (turned + shift) modulo one turn, both parts at most a turn.
inline VInt wrap(VInt turned, int shift, int turn) {
  const VInt k = hn::Add(turned, constant(shift));
  const VInt less = hn::Sub(k, constant(turn));
  return hn::IfThenElse(hn::Lt(less, constant(0)), k, less);
}

template <int shift>
VInt hsvChannel(VInt hue6, VInt saturation, VInt value) {
  const VInt k = wrap(hue6, 255 * shift, 6 * 255);
  const VInt slope = hn::Min(k, hn::Sub(constant(4 * 255), k));
  const VInt weight = clampToByte(slope);
  return scaleDown(hn::Mul(value, hn::Sub(constant(fullSquared), hn::Mul(saturation, weight))));
}

void lineHSVToRGB_8u_C3R(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  convertPixels(src, dst, n, [](const PixelLanes& hsv) {
    const VInt hue6 = wrap(times(hsv.c0, 6), 0, 6 * 255);
    return PixelLanes{hsvChannel<5>(hue6, hsv.c1, hsv.c2), hsvChannel<3>(hue6, hsv.c1, hsv.c2),
                      hsvChannel<1>(hue6, hsv.c1, hsv.c2)};
  });
}

template <int shift>
VInt hlsChannel(VInt hue12, VInt light, VInt reach) {
  const VInt k = wrap(hue12, 255 * shift, 12 * 255);
  const VInt slope = hn::Min(hn::Sub(k, constant(3 * 255)), hn::Sub(constant(9 * 255), k));
  const VInt weight = hn::Max(constant(-255), hn::Min(constant(255), slope));
  return scaleDown(hn::Sub(light, hn::Mul(reach, weight)));
}

void lineHLSToRGB_8u_C3R(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  convertPixels(src, dst, n, [](const PixelLanes& hls) {
    const VInt hue12 = wrap(times(hls.c0, 12), 0, 12 * 255);
    const VInt reach = hn::Mul(hls.c2, hn::Min(hls.c1, hn::Sub(constant(255), hls.c1)));
    const VInt light = times(hls.c1, fullSquared);
    return PixelLanes{hlsChannel<0>(hue12, light, reach), hlsChannel<8>(hue12, light, reach),
                      hlsChannel<4>(hue12, light, reach)};
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
