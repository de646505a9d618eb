// The hue models in integers, pixel by pixel.
#include "core/assert.h"
#include "image/color/hue_kernels.h"
#include "image/color/model_tables.h"

namespace vek::portable {
namespace {

/// floor(n / d) for 0 <= n <= 256 d and d <= 511, and 0 for d = 0. It starts from the product with the
/// Q14 reciprocal, whose relative error of up to 1/64 leaves at most a few units to correct.
int quotient(int n, int d) {
  VEK_ASSERT(0 <= d && d <= 511 && 0 <= n && n <= 256 * d);
  if (d == 0) return 0;
  int q = n * reciprocalsQ14.at[d] >> 14;
  int rest = n - q * d;
  for (; rest < 0; rest += d) --q;
  for (; rest >= d; rest -= d) ++q;
  return q;
}

int largest(int a, int b) {
  return a > b ? a : b;
}
int smallest(int a, int b) {
  return a < b ? a : b;
}

/// What both forward conversions need of a pixel.
struct HueParts {
  int most, least, hue;
};

/// The hue has six sectors of 60 degrees, counted from red. Within a sector it is the difference of
/// the other two components over the range. With the numerator N in units of 1/range, 0 <= N < 6
/// range, the hue is 255 N / (6 range) = 85 N / (2 range), rounded.
HueParts hueOf(int r, int g, int b) {
  const int most = largest(r, largest(g, b));
  const int least = smallest(r, smallest(g, b));
  const int range = most - least;
  int numerator = most == r ? g - b : most == g ? b - r + 2 * range : r - g + 4 * range;
  if (numerator < 0) numerator += 6 * range;
  return {most, least, quotient(85 * numerator + range, 2 * range)};
}

void rgbToHsv(ptrdiff_t n, const Vek8u* __restrict src, Vek8u* __restrict dst) {
  VEK_ASSERT(n >= 1);
  for (ptrdiff_t i = 0; i < 3 * n; i += 3) {
    const HueParts p = hueOf(src[i], src[i + 1], src[i + 2]);
    dst[i] = static_cast<Vek8u>(p.hue);
    dst[i + 1] = static_cast<Vek8u>(quotient(255 * (p.most - p.least) + p.most / 2, p.most));
    dst[i + 2] = static_cast<Vek8u>(p.most);
  }
}

/// Lightness is half the sum of the extremes. Saturation is the range over the largest range that
/// this lightness allows, which is the sum, or 510 less the sum in the lighter half.
void rgbToHls(ptrdiff_t n, const Vek8u* __restrict src, Vek8u* __restrict dst) {
  VEK_ASSERT(n >= 1);
  for (ptrdiff_t i = 0; i < 3 * n; i += 3) {
    const HueParts p = hueOf(src[i], src[i + 1], src[i + 2]);
    const int sum = p.most + p.least;
    const int allowed = smallest(sum, 510 - sum);
    dst[i] = static_cast<Vek8u>(p.hue);
    dst[i + 1] = static_cast<Vek8u>((sum + 1) >> 1);
    dst[i + 2] = static_cast<Vek8u>(quotient(255 * (p.most - p.least) + allowed / 2, allowed));
  }
}

/// a b / 65536 rounded to nearest, halves up.
int roundedHighProduct(int a, int b) {
  return (a * b + 32768) >> 16;
}

/// From parts of 255^2 to parts of 65536. The result is too small by less than 5 parts in 100000:
/// 65025 becomes 65533, which still gives 255 for 255.
int toSixteenBits(int parts) {
  return parts + (parts >> 7);
}

/// How far below the value a channel lies, 0..255: a trapezium over the turn of 6 * 255 units. The
/// channel's hue is `shift` sixths of a turn back.
int hsvWeight(int hue, int shift) {
  const int k = (6 * hue + 255 * shift) % (6 * 255);
  return largest(0, smallest(255, smallest(k, 4 * 255 - k)));
}

void hsvToRgb(ptrdiff_t n, const Vek8u* __restrict src, Vek8u* __restrict dst) {
  VEK_ASSERT(n >= 1);
  constexpr int shifts[3] = {5, 3, 1};
  for (ptrdiff_t i = 0; i < 3 * n; i += 3) {
    for (int c = 0; c < 3; ++c) {
      const int share = 255 * 255 - src[i + 1] * hsvWeight(src[i], shifts[c]);
      dst[i + c] = static_cast<Vek8u>(roundedHighProduct(toSixteenBits(share), src[i + 2]));
    }
  }
}

/// How far a channel lies below (positive) or above the lightness, -255..255, over a turn of 12 * 255
/// units.
int hlsWeight(int hue, int shift) {
  const int k = (12 * hue + 255 * shift) % (12 * 255);
  return largest(-255, smallest(255, smallest(k - 3 * 255, 9 * 255 - k)));
}

void hlsToRgb(ptrdiff_t n, const Vek8u* __restrict src, Vek8u* __restrict dst) {
  VEK_ASSERT(n >= 1);
  constexpr int shifts[3] = {0, 8, 4};
  for (ptrdiff_t i = 0; i < 3 * n; i += 3) {
    const int light = src[i + 1];
    const int reach = toSixteenBits(src[i + 2] * smallest(light, 255 - light));
    for (int c = 0; c < 3; ++c) {
      dst[i + c] =
          static_cast<Vek8u>(light - roundedHighProduct(reach, hlsWeight(src[i], shifts[c])));
    }
  }
}

}  // namespace

constexpr HueKernels hueKernels = {
    .rgbToHls = rgbToHls, .hlsToRgb = hlsToRgb, .rgbToHsv = rgbToHsv, .hsvToRgb = hsvToRgb};

}  // namespace vek::portable
