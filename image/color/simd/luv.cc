#include "core/assert.h"
#include "core/kernel/byte_table.h"
#include "image/color/combination_lanes.h"
#include "image/color/luv_constants.h"
#include "image/color/luv_kernels.h"
#include "image/color/model_tables.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

#if VEK_HAVE_BYTE_TABLE

// An index is the low byte of a 32-bit lane. The other bytes are 0 and find entry 0, which is 0 too in
// each of these tables.

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

  V32s at(V32s index) const { return V32s{bytes.at(index.raw)}; }
};

struct LuminanceTable {
  ByteTable low{lowLuminance.at}, high{highLuminance.at};

  V32s at(V32s index) const {
    return hn::Or(V32s{low.at(index.raw)}, hn::ShiftLeft<8>(V32s{high.at(index.raw)}));
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
  V32s at(V32s index) const { return hn::GatherIndex(s32, wideLightness.at, index); }
};

struct LuminanceTable {
  V32s at(V32s index) const { return hn::GatherIndex(s32, luminance.at, index); }
};

#endif

constexpr Combination combination(const Vek32s* weights) {
  return {{weights[0], weights[1], weights[2]}, 0};
}

/// D's weights take more than 16 bits: their bits from bit 8 on, and those below it.
constexpr Combination highD = {{toD[0] >> 8, toD[1] >> 8, toD[2] >> 8}, 0};
constexpr Combination lowD = {{toD[0] & 255, toD[1] & 255, toD[2] & 255}, 0};

inline V32s times(V32s v, Vek32s factor) {
  return hn::Mul(v, hn::Set(s32, factor));
}

/// floor(n / d) from an estimate q that is equal to it or 1 less. Of n the low 32 bits are enough to
/// see whether the rest reaches d.
inline V32s correctedQuotient(V32s q, V32s n, V32s d) {
  const V32s rest = hn::Sub(n, hn::Mul(q, d));
  return hn::Sub(q, hn::ShiftRight<31>(hn::Sub(hn::Sub(d, hn::Set(s32, 1)), rest)));
}

/// floor(n * 2^shift / d) for n >= 0 and d >= 1, from 1 / d. n * 2^shift may exceed 32 bits; the
/// quotient stays below 2^14. The float quotient is off by less than 1/50, so that it is not above the
/// exact one after 1/50 is subtracted.
template <int shift>
V32s scaledQuotient(V32s n, V32s d, V32f perD) {
  const V32f factor = hn::Mul(perD, hn::Set(f32, static_cast<float>(1 << shift)));
  const V32f estimate = hn::MulAdd(toFloat(n), factor, hn::Set(f32, -0.02f));
  return correctedQuotient(truncated(estimate), hn::ShiftLeft<shift>(n), d);
}

void rgbToLuv(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  const CombinationLanes<0> x(combination(toX), 0), y(combination(toY), 0), upperD(highD, 0),
      lowerD(lowD, 0);
  const LightnessTable table;
  // In registers outside the loop: of products with constants the compiler makes shifts and additions.
  const V32s gainU = hn::Set(s32, uGain), gainV = hn::Set(s32, vGain);
  convertPixelPairs(n, src, dst, [&](const PixelPairs& rgb) {
    const V32s luma = y.of(rgb);
    const V32s light = table.at(hn::ShiftRight<15>(luma));
    const V32s d =
        hn::Max(hn::Add(hn::ShiftLeft<8>(upperD.of(rgb)), lowerD.of(rgb)), hn::Set(s32, 1));
    const V32f perD = reciprocal(toFloat(d));
    const V32s u = scaledQuotient<16>(x.of(rgb), d, perD);
    const V32s v = scaledQuotient<14>(hn::Add(hn::ShiftLeft<3>(luma), luma), d, perD);
    const auto timesLight = [light](V32s distance) {  // both fit 16 bits
      return plusDot(hn::Set(s32, 0), hn::BitCast(s16, light), hn::BitCast(s16, distance));
    };
    const V32s uDistance = hn::Mul(timesLight(hn::Sub(u, hn::Set(s32, whiteU))), gainU);
    const V32s vDistance = hn::Mul(timesLight(hn::Sub(v, hn::Set(s32, whiteV))), gainV);
    return PixelLanes{light, hn::ShiftRight<uShift>(hn::Add(uDistance, hn::Set(s32, uBase))),
                      hn::ShiftRight<vShift>(hn::Add(vDistance, hn::Set(s32, vBase)))};
  });
}

/// n y / (4 b), truncated toward 0 and bounded to -mostXZ .. mostXZ. The float quotient is off by less
/// than 1/10 where it is not bounded. It is bounded first, a little above mostXZ, because larger ones
/// are not exact enough to be corrected.
inline V32s proportion(V32s n, V32s y, V32f yPerB4, V32s b4) {
  const V32s size = hn::Abs(n);
  const V32f estimate = hn::Min(hn::MulAdd(toFloat(size), yPerB4, hn::Set(f32, -0.1f)),
                                hn::Set(f32, static_cast<float>(mostXZ + 2)));
  const V32s q = correctedQuotient(truncated(estimate), hn::Mul(size, y), b4);
  const V32s bounded = hn::Min(q, hn::Set(s32, mostXZ));
  const V32s negative = hn::ShiftRight<31>(n);  // -1 or 0
  return hn::Sub(hn::Xor(bounded, negative), negative);
}

void luvToRgb(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  const CombinationLanes<0> fromU({{aWhite, aGain, 0}, aBase}, 0),
      fromV({{bWhite, 0, bGain}, bBase}, 0);
  const LuminanceTable table;
  // In registers, as above.
  const V32s xFactors[3] = {hn::Set(s32, toRgb[0][0]), hn::Set(s32, toRgb[1][0]),
                            hn::Set(s32, toRgb[2][0])};
  const V32s zFactors[3] = {hn::Set(s32, toRgb[0][2]), hn::Set(s32, toRgb[1][2]),
                            hn::Set(s32, toRgb[2][2])};
  convertPixelPairs(n, src, dst, [&](const PixelPairs& luv) {
    const V32s light = firstChannel(luv);
    const V32s a = fromU.of(luv);
    const V32s b = hn::Max(fromV.of(luv), hn::Set(s32, 1));
    const V32s b4 = hn::ShiftLeft<2>(b);
    const V32s y = table.at(light);
    const V32f yPerB4 = hn::Mul(toFloat(y), reciprocal(toFloat(b4)));
    static_assert(zGain % 32 == 0);
    const V32s zLight =
        hn::ShiftLeft<5>(plusFirstTwo(hn::Set(s32, 0), luv, weightPair(zGain / 32, 0)));
    const V32s zPart = hn::Sub(zLight, hn::Add(times(a, 3), times(b, 20)));
    const V32s x = proportion(times(a, 9), y, yPerB4, b4);
    const V32s z = proportion(zPart, y, yPerB4, b4);
    const auto channel = [&](int k) {
      const V32s yShare = plusDot(hn::Set(s32, 1 << (rgbShift - 1)), hn::BitCast(s16, y),
                                  pairOfFactors(toRgb[k][1], 0));  // 14 bits by 14
      const V32s sum = hn::Add(hn::Add(hn::Mul(x, xFactors[k]), yShare), hn::Mul(z, zFactors[k]));
      return hn::ShiftRight<rgbShift>(sum);
    };
    return PixelLanes{channel(0), channel(1), channel(2)};
  });
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr LuvKernels luvKernels = {.rgbToLuv = rgbToLuv, .luvToRgb = luvToRgb};

}  // namespace vek::VEK_LEVEL
