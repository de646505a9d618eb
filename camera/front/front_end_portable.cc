#include <stdint.h>
#include <string.h>

#include "camera/front/front_end_kernels.h"
#include "core/assert.h"
#include "core/kernel/words.h"

namespace vek::portable {
namespace {

// Samples are moved to the top of 16 bits, S = s << (16 - bits), and so are the black levels. With D =
// max(S - B, 0) and h the upper half of the 32-bit product D * gain,
//
//   (d * gain + 2^(bits + 1)) >> (bits + 2) = (D * gain + 2^17) >> 18 = (h + 2) >> 2,
//
// since the lower half is less than 1 in units of h. Everything then stays in 16-bit lanes.

/// Samples that are worked on at once; whole groups of any format.
constexpr ptrdiff_t run = 256;

/// Samples in the innermost loop, which compilers make a vector of. The two colors alternate in it.
constexpr ptrdiff_t lanes = 8;

/// A group of 10-bit samples in a word. The bytes 0 to 3 are moved to the tops of its quarters; the product
/// puts two bits of byte 4 at bits 6 and 7 of each, and nothing overlaps: it is the sum of the byte << 6,
/// << 20, << 34 and << 48.
[[maybe_unused]] inline uint64_t unpackTenBits(const Vek8u* group) {
  uint64_t high = loadWord<Vek32u>(group);
  high = (high | high << 16) & 0x0000FFFF0000FFFF;
  high = (high | high << 8) & 0x00FF00FF00FF00FF;
  return high << 8 | (group[4] * uint64_t{0x0001000400100040} & 0x00C000C000C000C0);
}

/// The samples of `count` groups.
template <int format>
[[gnu::noinline]] void unpack(const Vek8u* __restrict src, ptrdiff_t count, int bits,
                              Vek16u* __restrict to) {
  constexpr RawGroups groups = rawGroups[format];
  for (ptrdiff_t i = 0; i < count; ++i) {
    const Vek8u* const group = src + i * groups.bytes;
    Vek16u* const out = to + i * groups.samples;
    const auto put = [&](int k, unsigned top) { out[k] = static_cast<Vek16u>(top); };
    if constexpr (format == vekiRaw8) {
      put(0, group[0] * 256u);
    } else if constexpr (format == vekiRawPlain16) {
      put(0, (group[0] + group[1] * 256u) << (16 - bits));
    } else if constexpr (format == vekiRawCsi2_10 && hasWords) {
      storeWord(unpackTenBits(group), reinterpret_cast<Vek8u*>(out));
    } else if constexpr (format == vekiRawCsi2_10) {
      const unsigned low = group[4];
      put(0, group[0] * 256u + (low << 6 & 0xC0));
      put(1, group[1] * 256u + (low << 4 & 0xC0));
      put(2, group[2] * 256u + (low << 2 & 0xC0));
      put(3, group[3] * 256u + (low & 0xC0));
    } else if constexpr (format == vekiRawCsi2_12) {
      const unsigned low = group[2];
      put(0, group[0] * 256u + (low << 4 & 0xF0));
      put(1, group[1] * 256u + (low & 0xF0));
    } else {
      const unsigned low = group[4] + group[5] * 256u + group[6] * 65536u;
      put(0, group[0] * 256u + (low << 2 & 0xFC));
      put(1, group[1] * 256u + (low >> 4 & 0xFC));
      put(2, group[2] * 256u + (low >> 10 & 0xFC));
      put(3, group[3] * 256u + (low >> 16 & 0xFC));
    }
  }
}

/// Black levels and gains of `lanes` samples.
struct Correction {
  Vek16u black[lanes], gain[lanes];

  /// `swapped` where the first of them is of the second color. A level that no sample exceeds stays one.
  Correction(const RawCorrection& c, int swapped) {
    for (int i = 0; i < lanes; ++i) {
      const Vek32u level = Vek32u{c.black[(i + swapped) % 2]} << (16 - c.bits);
      black[i] = static_cast<Vek16u>(level < 65535 ? level : 65535);
      gain[i] = c.gain[(i + swapped) % 2];
    }
  }
};

/// In place; n is a multiple of `lanes`.
[[gnu::noinline]] void correct(Vek16u* samples, ptrdiff_t n, const Correction& correction) {
  const Correction c = correction;
  for (ptrdiff_t i = 0; i < n; i += lanes) {
    for (int k = 0; k < lanes; ++k) {
      const Vek16u s = samples[i + k];
      const auto d = static_cast<Vek16u>(s > c.black[k] ? s - c.black[k] : 0);
      const auto high = static_cast<Vek16u>(Vek32u{d} * c.gain[k] >> 16);
      // 4090 already gives 1023, so that 4092 is as good as any larger one.
      const auto twoMore = static_cast<Vek16u>((high < 4092 ? high : 4092) + 2);
      samples[i + k] = static_cast<Vek16u>(twoMore >> 2);
    }
  }
}

template <int format>
void convertRow(const Vek8u* src, int first, ptrdiff_t n, const RawCorrection& correction,
                Vek16u* dst) {
  constexpr RawGroups groups = rawGroups[format];
  VEK_ASSERT(0 <= first && first < groups.samples && n >= 1);
  const Correction lanesOf(correction, first % 2);
  alignas(16) Vek16u samples[run] = {};
  while (n > 0) {
    const ptrdiff_t count = n < run - first ? n : run - first;
    unpack<format>(src, (first + count + groups.samples - 1) / groups.samples, correction.bits,
                   samples);
    correct(samples, (first + count + lanes - 1) / lanes * lanes, lanesOf);
    memcpy(dst, samples + first, 2 * static_cast<size_t>(count));
    src += run / groups.samples * groups.bytes;
    dst += count, n -= count;
    first = 0;
  }
}

}  // namespace

constexpr FrontEndKernels frontEndKernels = {
    .rows = {convertRow<vekiRaw8>, convertRow<vekiRawPlain16>, convertRow<vekiRawCsi2_10>,
             convertRow<vekiRawCsi2_12>, convertRow<vekiRawCsi2_14>}};

}  // namespace vek::portable
