#include "image/color/luv_rows.h"

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

#include "image/color/luv_math.h"
#include "image/color/model_tables.h"
#include "image/color/pixel_lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// The lightness table widened for gathers.
constexpr Table<Vek32s, 256> wideLightness = [] {
  Table<Vek32s, 256> table = {};
  for (int i = 0; i < 256; ++i) table.at[i] = lightness.at[i];
  return table;
}();

inline VInt lookUp(const Table<Vek32s, 256>& table, VInt index) {
  return hn::GatherIndex(intLanes, table.at, index);
}

inline VInt dot(const Vek32s* weights, const PixelLanes& p) {
  return hn::Add(hn::Add(times(p.c0, weights[0]), times(p.c1, weights[1])),
                 times(p.c2, weights[2]));
}

/// n * 2^shift / d for n >= 0, d >= 1; n * 2^shift may exceed 32 bits, the quotient stays below
/// 2^14.
template <int shift>
VInt scaledQuotient(VInt n, VInt d) {
  const VFloat scaled = hn::Mul(toFloat(n), hn::Set(floatLanes, static_cast<float>(1 << shift)));
  const VFloat estimate = hn::Div(scaled, toFloat(d));
  return mendQuotient(hn::ConvertTo(intLanes, estimate), hn::ShiftLeft<shift>(n), d);
}

void RGB_LUV_8u_C3(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  convertPixels(src, dst, n, [](const PixelLanes& rgb) {
    const VInt y = dot(toY, rgb);
    const VInt light = lookUp(wideLightness, hn::ShiftRight<15>(y));
    const VInt d = hn::Max(dot(toD, rgb), constant(1));
    const VInt u = scaledQuotient<16>(dot(toX, rgb), d);
    const VInt v = scaledQuotient<14>(times(y, 9), d);
    const VInt uDistance = hn::Mul(light, hn::Sub(u, constant(whiteU)));
    const VInt vDistance = hn::Mul(light, hn::Sub(v, constant(whiteV)));
    return PixelLanes{light,
                      hn::ShiftRight<uShift>(hn::Add(times(uDistance, uGain), constant(uBase))),
                      hn::ShiftRight<vShift>(hn::Add(times(vDistance, vGain), constant(vBase)))};
  });
}

/// n y / (4 b), truncated and bounded to mostXZ: the float quotient is bounded first, just above,
/// so that it stays exact enough for the mending step wherever the bound does not decide.
inline VInt proportion(VInt n, VInt y, VInt b4, VFloat reciprocal) {
  const VInt size = hn::Abs(n);
  const VFloat estimate = hn::Min(hn::Mul(hn::Mul(toFloat(size), toFloat(y)), reciprocal),
                                  hn::Set(floatLanes, static_cast<float>(mostXZ + 2)));
  const VInt q = mendQuotient(hn::ConvertTo(intLanes, estimate), hn::Mul(size, y), b4);
  const VInt bounded = hn::Min(q, constant(mostXZ));
  return hn::IfThenElse(hn::Lt(n, constant(0)), hn::Neg(bounded), bounded);
}

void LUV_RGB_8u_C3(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  convertPixels(src, dst, n, [](const PixelLanes& luv) {
    const VInt a = hn::Add(hn::Add(times(luv.c0, aWhite), times(luv.c1, aGain)), constant(aBase));
    const VInt signedB =
        hn::Add(hn::Add(times(luv.c0, bWhite), times(luv.c2, bGain)), constant(bBase));
    const VInt b = hn::Max(signedB, constant(1));
    const VInt b4 = hn::ShiftLeft<2>(b);
    const VFloat reciprocal = hn::Div(hn::Set(floatLanes, 1.0f), toFloat(b4));
    const VInt y = lookUp(luminance, luv.c0);
    const VInt zPart = hn::Sub(times(luv.c0, zGain), hn::Add(times(a, 3), times(b, 20)));
    const VInt x = proportion(times(a, 9), y, b4, reciprocal);
    const VInt z = proportion(zPart, y, b4, reciprocal);
    const auto channel = [&](const Vek32s* row) {
      const VInt sum = hn::Add(hn::Add(times(x, row[0]), times(y, row[1])),
                               hn::Add(times(z, row[2]), constant(1 << (rgbShift - 1))));
      return clampToByte(hn::ShiftRight<rgbShift>(sum));
    };
    return PixelLanes{channel(toRgb[0]), channel(toRgb[1]), channel(toRgb[2])};
  });
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

#include "image/color/luv_body.h"

#endif

namespace vek::VEK_LEVEL {

constexpr LuvRows luvRows = {RGB_LUV_8u_C3, LUV_RGB_8u_C3};

}  // namespace vek::VEK_LEVEL
