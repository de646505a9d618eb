#include "image/color/luv_rows.h"

#include "core/kernel/byte_table.h"

#if VEK_HAVE_HIGHWAY

#include "image/color/dot_lanes.h"
#include "image/color/luv_math.h"
#include "image/color/model_tables.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

#if VEK_HAVE_BYTE_TABLE

// An index is the low byte of a 32-bit lane; its other bytes find entry 0 of a table, which is 0.

/// The low or the high bytes of the luminances.
constexpr Table<Vek8u, 256> luminanceBytes(int shift) {
  Table<Vek8u, 256> bytes = {};
  for (int i = 0; i < 256; ++i) bytes.at[i] = static_cast<Vek8u>(luminance.at[i] >> shift & 0xFF);
  return bytes;
}
constexpr Table<Vek8u, 256> lowLuminance = luminanceBytes(0);
constexpr Table<Vek8u, 256> highLuminance = luminanceBytes(8);

struct LightnessTable {
  ByteTable bytes{lightness.at};

  VInt at(VInt index) const { return VInt{bytes.at(index.raw)}; }
};

struct LuminanceTable {
  ByteTable low{lowLuminance.at}, high{highLuminance.at};

  VInt at(VInt index) const {
    return hn::Or(VInt{low.at(index.raw)}, hn::ShiftLeft<8>(VInt{high.at(index.raw)}));
  }
};

#else

/// The lightness table widened for gathers.
constexpr Table<Vek32s, 256> wideLightness = [] {
  Table<Vek32s, 256> table = {};
  for (int i = 0; i < 256; ++i) table.at[i] = lightness.at[i];
  return table;
}();

struct LightnessTable {
  VInt at(VInt index) const { return hn::GatherIndex(intLanes, wideLightness.at, index); }
};

struct LuminanceTable {
  VInt at(VInt index) const { return hn::GatherIndex(intLanes, luminance.at, index); }
};

#endif

constexpr Combination combination(const Vek32s* weights) {
  return {{weights[0], weights[1], weights[2]}, 0};
}

/// D's weights take more than 16 bits: theirs above and below bit 8.
constexpr Combination highD = {{toD[0] >> 8, toD[1] >> 8, toD[2] >> 8}, 0};
constexpr Combination lowD = {{toD[0] & 255, toD[1] & 255, toD[2] & 255}, 0};

/// floor(n / d) from an estimate that is too small by less than 1; n is given modulo 2^32, which is
/// enough to see whether the rest reaches d.
inline VInt mendQuotient(VInt q, VInt n, VInt d) {
  const VInt rest = hn::Sub(n, hn::Mul(q, d));
  return hn::Sub(q, hn::ShiftRight<31>(hn::Sub(hn::Sub(d, constant(1)), rest)));
}

/// n * 2^shift / d for n >= 0, d >= 1; n * 2^shift may exceed 32 bits, the quotient stays below
/// 2^14. The float one is off by less than 1/50, so 1/50 less is not above it.
template <int shift>
VInt scaledQuotient(VInt n, VInt d, VFloat reciprocal) {
  const VFloat factor = hn::Mul(reciprocal, hn::Set(floatLanes, static_cast<float>(1 << shift)));
  const VFloat estimate = hn::MulAdd(toFloat(n), factor, hn::Set(floatLanes, -0.02f));
  return mendQuotient(truncated(estimate), hn::ShiftLeft<shift>(n), d);
}

void RGB_LUV_8u_C3(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  const CombinationLanes<0> x(combination(toX), 0), y(combination(toY), 0), upperD(highD, 0),
      lowerD(lowD, 0);
  const LightnessTable table;
  // Not constants to the compiler, which would make such products into shifts and additions.
  const VInt gainU = constant(uGain), gainV = constant(vGain);
  convertPixelPairs(src, dst, n, [&](const PixelPairs& rgb) {
    const VInt luma = y.of(rgb);
    const VInt light = table.at(hn::ShiftRight<15>(luma));
    const VInt d = hn::Max(hn::Add(hn::ShiftLeft<8>(upperD.of(rgb)), lowerD.of(rgb)), constant(1));
    const VFloat perD = reciprocal(toFloat(d));
    const VInt u = scaledQuotient<16>(x.of(rgb), d, perD);
    const VInt v = scaledQuotient<14>(hn::Add(hn::ShiftLeft<3>(luma), luma), d, perD);
    const auto timesLight = [light](VInt distance) {  // both fit 16 bits
      return plusDot(constant(0), hn::BitCast(wordLanes, light), hn::BitCast(wordLanes, distance));
    };
    const VInt uDistance = hn::Mul(timesLight(hn::Sub(u, constant(whiteU))), gainU);
    const VInt vDistance = hn::Mul(timesLight(hn::Sub(v, constant(whiteV))), gainV);
    return PixelLanes{light, hn::ShiftRight<uShift>(hn::Add(uDistance, constant(uBase))),
                      hn::ShiftRight<vShift>(hn::Add(vDistance, constant(vBase)))};
  });
}

/// n y / (4 b), truncated and bounded to mostXZ: the float quotient, off by less than 1/10, is
/// bounded first, just above, so that it stays exact enough for the mending step wherever the bound
/// does not decide.
inline VInt proportion(VInt n, VInt y, VFloat yPerB4, VInt b4) {
  const VInt size = hn::Abs(n);
  const VFloat estimate = hn::Min(hn::MulAdd(toFloat(size), yPerB4, hn::Set(floatLanes, -0.1f)),
                                  hn::Set(floatLanes, static_cast<float>(mostXZ + 2)));
  const VInt q = mendQuotient(truncated(estimate), hn::Mul(size, y), b4);
  const VInt bounded = hn::Min(q, constant(mostXZ));
  const VInt negative = hn::ShiftRight<31>(n);  // -1 or 0
  return hn::Sub(hn::Xor(bounded, negative), negative);
}

void LUV_RGB_8u_C3(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  const CombinationLanes<0> fromU({{aWhite, aGain, 0}, aBase}, 0),
      fromV({{bWhite, 0, bGain}, bBase}, 0);
  const LuminanceTable table;
  // Not constants to the compiler, as above.
  const VInt xFactors[3] = {constant(toRgb[0][0]), constant(toRgb[1][0]), constant(toRgb[2][0])};
  const VInt zFactors[3] = {constant(toRgb[0][2]), constant(toRgb[1][2]), constant(toRgb[2][2])};
  convertPixelPairs(src, dst, n, [&](const PixelPairs& luv) {
    const VInt light = hn::And(hn::BitCast(intLanes, luv.c01), constant(0xFF));
    const VInt a = fromU.of(luv);
    const VInt b = hn::Max(fromV.of(luv), constant(1));
    const VInt b4 = hn::ShiftLeft<2>(b);
    const VInt y = table.at(light);
    const VFloat yPerB4 = hn::Mul(toFloat(y), reciprocal(toFloat(b4)));
    static_assert(zGain % 32 == 0);
    const VInt zLight = hn::ShiftLeft<5>(plusDot(constant(0), luv.c01, twoWords(zGain / 32, 0)));
    const VInt zPart = hn::Sub(zLight, hn::Add(times(a, 3), times(b, 20)));
    const VInt x = proportion(times(a, 9), y, yPerB4, b4);
    const VInt z = proportion(zPart, y, yPerB4, b4);
    const auto channel = [&](int k) {
      const VInt yShare = plusDot(constant(1 << (rgbShift - 1)), hn::BitCast(wordLanes, y),
                                  twoWords(toRgb[k][1], 0));  // 14 bits by 14
      const VInt sum = hn::Add(hn::Add(hn::Mul(x, xFactors[k]), yShare), hn::Mul(z, zFactors[k]));
      return hn::ShiftRight<rgbShift>(sum);
    };
    return PixelLanes{channel(0), channel(1), channel(2)};
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
