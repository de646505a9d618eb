// The hue models in integers, pixel by pixel.
#include <stdint.h>

#include "core/assert.h"
#include "core/color/pixel_block.h"
#include "image/color/hue_kernels.h"

namespace vek::portable {
namespace {

/// 2^26 / d rounded up beyond it, and 0 for d = 0.
constexpr auto reciprocals = [] {
  struct {
    Vek32u at[512];
  } table = {};
  for (Vek32u d = 1; d < 512; ++d) table.at[d] = (1u << 26) / d + 1;
  return table;
}();

/// floor(n / d) for 0 <= n <= 256 d and d <= 511, and 0 for d = 0. The reciprocal is too large by at
/// most 1, and the product by at most n / 2^26, which is less than 1 / d.
Vek8u quotient(Vek32u n, Vek32u d) {
  VEK_ASSERT(d <= 511 && n <= 256 * d);
  return static_cast<Vek8u>(uint64_t{n} * reciprocals.at[d] >> 26);
}

/// What both forward conversions need of a block of pixels.
struct HueParts {
  alignas(16) Vek8u most[blockPixels], least[blockPixels];
  alignas(16) Vek16u numerator[blockPixels];
};

/// The hue has six sectors of 60 degrees, counted from red. Within a sector it is the difference of
/// the other two components over the range. With the numerator N in units of 1/range, 0 <= N < 6
/// range, the hue is 255 N / (6 range) = 85 N / (2 range), rounded.
void takeParts(const PixelBlock& rgb, ptrdiff_t n, HueParts& __restrict parts) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Vek8u r = rgb.channel[0][i], g = rgb.channel[1][i], b = rgb.channel[2][i];
    const Vek8u highest = r > g ? r : g, lowest = r < g ? r : g;
    parts.most[i] = highest > b ? highest : b;
    parts.least[i] = lowest < b ? lowest : b;
  }
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Vek16s r = rgb.channel[0][i], g = rgb.channel[1][i], b = rgb.channel[2][i];
    const Vek16s most = parts.most[i];
    const Vek16s range = static_cast<Vek16s>(most - parts.least[i]);
    const Vek16s fromBlue = static_cast<Vek16s>(r - g + 4 * range);
    const Vek16s fromGreen = static_cast<Vek16s>(b - r + 2 * range);
    const Vek16s fromRed = static_cast<Vek16s>(g - b);
    const Vek16s numerator = most == r ? fromRed : most == g ? fromGreen : fromBlue;
    const Vek16s turn = static_cast<Vek16s>(numerator < 0 ? 6 * range : 0);
    parts.numerator[i] = static_cast<Vek16u>(numerator + turn);
  }
}

Vek8u hueOf(const HueParts& parts, ptrdiff_t i) {
  const Vek32u range = static_cast<Vek32u>(parts.most[i] - parts.least[i]);
  return quotient(85u * parts.numerator[i] + range, 2 * range);
}

/// Calls convert(in, n, out) for the blocks of a row.
template <class Convert>
void convertBlocks(ptrdiff_t n, const Vek8u* src, Vek8u* dst, Convert convert) {
  VEK_ASSERT(n >= 1);
  forEachBlock(n, [&](ptrdiff_t x, ptrdiff_t count) {
    PixelBlock in, out;
    separate(src + 3 * x, count, in);
    convert(in, count, out);
    join(out, count, dst + 3 * x);
  });
}

void rgbToHsv(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  convertBlocks(n, src, dst, [](const PixelBlock& rgb, ptrdiff_t count, PixelBlock& hsv) {
    HueParts parts;
    takeParts(rgb, count, parts);
    for (ptrdiff_t i = 0; i < count; ++i) {
      const Vek32u most = parts.most[i], range = most - parts.least[i];
      hsv.channel[0][i] = hueOf(parts, i);
      hsv.channel[1][i] = quotient(255 * range + most / 2, most);
      hsv.channel[2][i] = parts.most[i];
    }
  });
}

/// Lightness is half the sum of the extremes. Saturation is the range over the largest range that
/// this lightness allows, which is the sum, or 510 less the sum in the lighter half.
void rgbToHls(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  convertBlocks(n, src, dst, [](const PixelBlock& rgb, ptrdiff_t count, PixelBlock& hls) {
    HueParts parts;
    takeParts(rgb, count, parts);
    for (ptrdiff_t i = 0; i < count; ++i) {
      const Vek32u most = parts.most[i], least = parts.least[i], sum = most + least;
      const Vek32u allowed = sum < 255 ? sum : 510 - sum;
      hls.channel[0][i] = hueOf(parts, i);
      hls.channel[1][i] = static_cast<Vek8u>((sum + 1) >> 1);
      hls.channel[2][i] = quotient(255 * (most - least) + allowed / 2, allowed);
    }
  });
}

/// a b / 65536 rounded to nearest, halves up.
Vek32s roundedHighProduct(Vek32s a, Vek32s b) {
  return (a * b + 32768) >> 16;
}

/// From parts of 255^2 to parts of 65536. The result is too small by less than 5 parts in 100000:
/// 65025 becomes 65533, which still gives 255 for 255.
Vek16u toSixteenBits(Vek16u parts) {
  return static_cast<Vek16u>(parts + (parts >> 7));
}

Vek16s lesser(Vek16s a, Vek16s b) {
  return a < b ? a : b;
}
Vek16s greater(Vek16s a, Vek16s b) {
  return a > b ? a : b;
}

/// How far below the value a channel lies, 0..255: a trapezium over the turn of 6 * 255 units. The
/// channel's hue is `shift` sixths of a turn back.
Vek16s hsvWeight(Vek8u hue, int shift) {
  constexpr int turn = 6 * 255;
  const Vek16s sum = static_cast<Vek16s>(6 * hue + 255 * shift);
  const Vek16s k = static_cast<Vek16s>(sum >= turn ? sum - turn : sum);
  return greater(0, lesser(255, lesser(k, static_cast<Vek16s>(4 * 255 - k))));
}

void hsvToRgb(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  convertBlocks(n, src, dst, [](const PixelBlock& hsv, ptrdiff_t count, PixelBlock& rgb) {
    constexpr int shifts[3] = {5, 3, 1};
    for (int c = 0; c < 3; ++c) {
      const int shift = shifts[c];
      Vek8u* __restrict const out = rgb.channel[c];
      for (ptrdiff_t i = 0; i < count; ++i) {
        const Vek16u below =
            static_cast<Vek16u>(hsv.channel[1][i] * hsvWeight(hsv.channel[0][i], shift));
        const Vek16u share = toSixteenBits(static_cast<Vek16u>(255 * 255 - below));
        out[i] = static_cast<Vek8u>((Vek32u{share} * hsv.channel[2][i] + 32768) >> 16);
      }
    }
  });
}

/// How far a channel lies below (positive) or above the lightness, -255..255, over a turn of 12 * 255
/// units.
Vek16s hlsWeight(Vek8u hue, int shift) {
  constexpr int turn = 12 * 255;
  const Vek16s sum = static_cast<Vek16s>(12 * hue + 255 * shift);
  const Vek16s k = static_cast<Vek16s>(sum >= turn ? sum - turn : sum);
  const Vek16s rising = static_cast<Vek16s>(k - 3 * 255);
  return greater(-255, lesser(255, lesser(rising, static_cast<Vek16s>(9 * 255 - k))));
}

void hlsToRgb(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  convertBlocks(n, src, dst, [](const PixelBlock& hls, ptrdiff_t count, PixelBlock& rgb) {
    constexpr int shifts[3] = {0, 8, 4};
    for (int c = 0; c < 3; ++c) {
      const int shift = shifts[c];
      Vek8u* __restrict const out = rgb.channel[c];
      for (ptrdiff_t i = 0; i < count; ++i) {
        const Vek16s light = hls.channel[1][i];
        const Vek16s room = lesser(light, static_cast<Vek16s>(255 - light));
        const Vek16u parts = static_cast<Vek16u>(hls.channel[2][i] * room);
        // At most 255 * 127 and what is added to it, which signed lanes hold.
        const Vek16s reach = static_cast<Vek16s>(toSixteenBits(parts));
        const Vek16s weight = hlsWeight(hls.channel[0][i], shift);
        out[i] = static_cast<Vek8u>(light - roundedHighProduct(reach, weight));
      }
    }
  });
}

}  // namespace

constexpr HueKernels hueKernels = {
    .rgbToHls = rgbToHls, .hlsToRgb = hlsToRgb, .rgbToHsv = rgbToHsv, .hsvToRgb = hsvToRgb};

}  // namespace vek::portable
