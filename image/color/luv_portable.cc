// CIE LUV in integers, pixel by pixel.
#include "core/assert.h"
#include "image/color/luv_constants.h"
#include "image/color/luv_kernels.h"
#include "image/color/model_tables.h"

namespace vek::portable {
namespace {

Vek32s dot(const Vek32s* weights, const Vek8u* pixel) {
  return weights[0] * pixel[0] + weights[1] * pixel[1] + weights[2] * pixel[2];
}

void rgbToLuv(ptrdiff_t n, const Vek8u* __restrict src, Vek8u* __restrict dst) {
  VEK_ASSERT(n >= 1);
  for (ptrdiff_t i = 0; i < 3 * n; i += 3) {
    const Vek32s y = dot(toY, src + i);
    const Vek32s light = lightness.at[y >> 15];
    const Vek32s sum = dot(toD, src + i);
    const Vek64s d = sum > 0 ? sum : 1;  // 0 only for black, whose lightness is 0
    const Vek32s u = static_cast<Vek32s>((Vek64s{dot(toX, src + i)} << 16) / d);
    const Vek32s v = static_cast<Vek32s>((Vek64s{9} * y << 14) / d);
    dst[i] = static_cast<Vek8u>(light);
    dst[i + 1] = static_cast<Vek8u>((light * (u - whiteU) * uGain + uBase) >> uShift);
    dst[i + 2] = static_cast<Vek8u>((light * (v - whiteV) * vGain + vBase) >> vShift);
  }
}

/// n y / (4 b), truncated toward 0 and bounded to -mostXZ .. mostXZ.
Vek32s proportion(Vek64s n, Vek32s y, Vek32s b) {
  VEK_ASSERT(b >= 1);
  const Vek64s q = (n < 0 ? -n : n) * y / (Vek64s{4} * b);
  const Vek32s bounded = q < mostXZ ? static_cast<Vek32s>(q) : mostXZ;
  return n < 0 ? -bounded : bounded;
}

void luvToRgb(ptrdiff_t n, const Vek8u* __restrict src, Vek8u* __restrict dst) {
  VEK_ASSERT(n >= 1);
  for (ptrdiff_t i = 0; i < 3 * n; i += 3) {
    const Vek32s light = src[i];
    const Vek32s a = aWhite * light + aGain * src[i + 1] + aBase;
    const Vek32s signedB = bWhite * light + bGain * src[i + 2] + bBase;
    const Vek32s b = signedB > 0 ? signedB : 1;  // no colour has v' <= 0
    const Vek32s y = luminance.at[light];
    const Vek32s x = proportion(9 * a, y, b);
    const Vek32s z = proportion(zGain * light - 3 * a - 20 * b, y, b);
    for (int c = 0; c < 3; ++c) {
      const Vek32s value =
          (toRgb[c][0] * x + toRgb[c][1] * y + toRgb[c][2] * z + (1 << (rgbShift - 1))) >> rgbShift;
      dst[i + c] = static_cast<Vek8u>(value < 0 ? 0 : value > 255 ? 255 : value);
    }
  }
}

}  // namespace

constexpr LuvKernels luvKernels = {.rgbToLuv = rgbToLuv, .luvToRgb = luvToRgb};

}  // namespace vek::portable
