#include <string.h>

#include "core/assert.h"
#include "core/color/convert_planes_lanes.h"
#include "image/color/combination_lanes.h"
#include "image/color/neon_combination.h"
#include "image/color/ycbcr_kernels.h"
#include "image/color/ycbcr_matrices.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

// Where each pixel has samples of its own, the sums of their products are exact in 32 bits.

/// Output k of a matrix, with the centres in the offset.
template <const Matrix& m, int k>
constexpr Combination combination = {{m.factor[k][0], m.factor[k][1], m.factor[k][2]},
                                     m.offset[k] - m.factor[k][0] * m.centre[0] -
                                         m.factor[k][1] * m.centre[1] -
                                         m.factor[k][2] * m.centre[2]};

template <const Matrix& m, int k>
V32s output(const PixelPairs& p) {
  return combined<combination<m, k>, 10>(p);
}

/// Output k of a block, clamped to 0..255.
template <const Matrix& m, int k>
V8u packedOutput(const BlockPairs& p) {
  return packClamped(packClamped(output<m, k>(p.group[0]), output<m, k>(p.group[1])),
                     packClamped(output<m, k>(p.group[2]), output<m, k>(p.group[3])));
}

template <const Matrix& m>
Channels packedOutputs(const BlockPairs& p) {
  return {packedOutput<m, 0>(p), packedOutput<m, 1>(p), packedOutput<m, 2>(p)};
}

struct Interleaved444 {
  using Stream = In<3>;
};

#if HWY_ARCH_ARM

struct Interleaved422 {
  using Stream = In<4, 2>;

  template <const Matrix& m, class Format>
  static void convert(const Vek8u*& src, Vek8u*& dst) {
    uint8x8x4_t v = vld4_u8(src);  // Y0, Cb, Y1, Cr
    src += 32;
    NeonSums<m>(v.val[1], v.val[3]).template storePairs<Format>({v.val[0], v.val[2]}, dst);
  }
};

#else

struct Interleaved422 {
  using Stream = In<4, 2>;

  /// Converts a block, which is two vectors of groups. For 16-bit pixels each 128-bit block of the sums
  /// may hold pixels of both halves of the destination; else the 128-bit blocks are put in order
  /// first.
  template <const Matrix& m, class Format>
  static void convert(const Vek8u* src, Vek8u* dst) {
    using S = Sums<m, Format>;
    constexpr bool byHalves = Format::bytes == 2;
    const V8u first = hn::LoadU(u8, src), second = hn::LoadU(u8, src + vectorBytes);
    const V64u a =
        hn::BitCast(u64, leftThenRight(byHalves ? first : even128BitBlocks(first, second)));
    const V64u b =
        hn::BitCast(u64, leftThenRight(byHalves ? second : odd128BitBlocks(first, second)));
    const V8u left = hn::BitCast(u8, hn::InterleaveLower(u64, a, b));   // Y0 and Cb
    const V8u right = hn::BitCast(u8, hn::InterleaveUpper(u64, a, b));  // Y1 and Cr
    const S sums(oddChroma(left), oddChroma(right));
    S::template store<Format, byHalves>(S::template luma<false>(left),
                                        S::template luma<false>(right), sums, sums, dst);
  }

 private:
  /// In each 128-bit block, Y0 and Cb of its four groups, then their Y1 and Cr.
  static V8u leftThenRight(V8u v) {
    alignas(16) static constexpr Vek8u order[16] = {0, 1, 4, 5, 8,  9,  12, 13,
                                                    2, 3, 6, 7, 10, 11, 14, 15};
    return hn::TableLookupBytes(v, hn::LoadDup128(u8, order));
  }

  /// The 128-bit blocks at even places of a, then of b; and those at odd places.
  static V8u even128BitBlocks(V8u a, [[maybe_unused]] V8u b) {
#if defined(__AVX512BW__)
    return V8u{_mm512_shuffle_i64x2(a.raw, b.raw, 0x88)};
#elif defined(__AVX2__)
    return V8u{_mm256_permute2x128_si256(a.raw, b.raw, 0x20)};
#else
    return a;
#endif
  }
  static V8u odd128BitBlocks([[maybe_unused]] V8u a, V8u b) {
#if defined(__AVX512BW__)
    return V8u{_mm512_shuffle_i64x2(a.raw, b.raw, 0xDD)};
#elif defined(__AVX2__)
    return V8u{_mm256_permute2x128_si256(a.raw, b.raw, 0x31)};
#else
    return b;
#endif
  }
};

#endif

/// `Format` is a packed format, or Rgb24 for the three outputs in order, whatever they are.
template <class Source, const Matrix& m, class Format>
void convertInterleaved(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  if constexpr (Source::Stream::bytes == Format::bytes) {  // three
    convertPixelPairs(n, src, dst, [](const PixelPairs& p) {
      return PixelLanes{output<m, 0>(p), output<m, 1>(p), output<m, 2>(p)};
    });
  } else if constexpr (Source::Stream::bytes == 3) {
    const auto body = [](Vek8u* out, const Vek8u* in) {
      const Channels v = packedOutputs<m>(loadPairs(in));
      hn::StoreInterleaved2(inOrder(packedByte<0, Format>(v)), inOrder(packedByte<1, Format>(v)),
                            u8, out);
    };
    copiedBlocks<vectorBytes>(n, body, Out<2>{dst}, In<3>{src});
  } else {
    const Advancing body{
        [](Vek8u*& out, const Vek8u*& in) { Source::template convert<m, Format>(in, out); }};
    copiedBlocks<vectorBytes>(n, body, Out<Format::bytes>{dst}, typename Source::Stream{src});
  }
}

#if HWY_ARCH_ARM

/// 630 R - 527 G - 102 B is 8 (79 R - 66 G - 13 B) - 2 R + G + 2 B. A clamp follows the sum, so it may
/// saturate where 128 is added.
inline uint8x8_t clampedV(const HalfChannels& rgb) {
  const uint8x8_t red = rgb.c0, green = rgb.c1, blue = rgb.c2;
  constexpr const auto& factor = rgbToYuv.factor[2];
  static_assert(factor[0] == 630 && factor[1] == -527 && factor[2] == -102);
  uint16x8_t sum = vmull_u8(red, vdup_n_u8(79));
  sum = vmlsl_u8(vmlsl_u8(sum, green, vdup_n_u8(66)), blue, vdup_n_u8(13));
  const uint16x8_t rest = vsubw_u8(vaddl_u8(vshr_n_u8(green, 1), blue), red);
  const int16x8_t all = vsraq_n_s16(vreinterpretq_s16_u16(sum), vreinterpretq_s16_u16(rest), 2);
  return vqshrun_n_s16(vqaddq_s16(all, vdupq_n_s16(128 << 7)), 7);
}

/// Stores the three outputs of a block.
template <const Matrix& m>
void storeOutputs(const Vek8u*& src, Vek8u*& a, Vek8u*& b, Vek8u*& c) {
  static_assert(&m == &rgbToYuv);
  Channels v = loadPixels(src);
  HalvesOfBytes y = NeonCombination<combination<m, 0>>::of(v);
  storeInOrder(y.lower, y.upper, a);
  HalvesOfBytes second = NeonCombination<combination<m, 1>>::of(v);
  storeInOrder(second.lower, second.upper, b);
  storeInOrder(clampedV(lowerHalf(v)), clampedV(upperHalf(v)), c);
}

#else

template <const Matrix& m>
void storeOutputs(const Vek8u* src, Vek8u* a, Vek8u* b, Vek8u* c) {
  const Channels v = packedOutputs<m>(loadPairs(src));
  hn::StoreU(inOrder(v.c0), u8, a);
  hn::StoreU(inOrder(v.c1), u8, b);
  hn::StoreU(inOrder(v.c2), u8, c);
}

#endif

template <const Matrix& m>
void toPlanes444(ptrdiff_t n, const Vek8u* rgb, Vek8u* y, Vek8u* u, Vek8u* v) {
  VEK_ASSERT(n >= 1);
  const Advancing body{
      [](const Vek8u*& in, Vek8u*& a, Vek8u*& b, Vek8u*& c) { storeOutputs<m>(in, a, b, c); }};
  copiedBlocks<vectorBytes>(n, body, In<3>{rgb}, Out<1>{y}, Out<1>{u}, Out<1>{v});
}

// Where pixels share chroma: luma() of every pixel of a block, and chroma() of averaged pixels, the
// second and the third value, as bytes or in 16-bit lanes that are clamped to bytes later.

#if HWY_ARCH_ARM

using RgbBlock = Channels;

inline RgbBlock loadRgb(const Vek8u*& src) {
  return loadPixels(src);
}

struct SharedYcbcr {
  static HalvesOfBytes luma(const Channels& rgb) {
    return NeonCombination<combination<rgbToYcbcr, 0>>::of(rgb);
  }
  static uint8x8x2_t chroma(const HalfChannels& rgb) {
    return {{NeonCombination<combination<rgbToYcbcr, 1>>::of(rgb),
             NeonCombination<combination<rgbToYcbcr, 2>>::of(rgb)}};
  }
};

struct SharedYuv {
  static HalvesOfBytes luma(const Channels& rgb) {
    return NeonCombination<combination<rgbToYuv, 0>>::of(rgb);
  }
  /// From B - Y and R - Y. U needs no clamp: it is 2 .. 253.
  static uint8x8x2_t chroma(const HalfChannels& rgb) {
    static_assert(uFactor % 4 == 0 && 32 * vFactor < 32768);
    const uint8x8_t y = NeonCombination<combination<rgbToYuv, 0>>::of(rgb);
    const uint8x8_t factor = vdup_n_u8(uFactor / 4);
    const uint16x8_t u = vmlsl_u8(vmull_u8(rgb.c2, factor), y, factor);
    const int16x8_t red = vreinterpretq_s16_u16(vsubl_u8(rgb.c0, y));
    const int16x8_t v = vqdmulhq_s16(red, vdupq_n_s16(32 * vFactor));  // which doubles the product
    return {{vaddhn_u16(u, vdupq_n_u16(0x8000)), vqmovun_s16(vaddq_s16(v, vdupq_n_s16(128)))}};
  }
};

template <class Space>
void storeLuma(const RgbBlock& p, Vek8u*& dst) {
  HalvesOfBytes y = Space::luma(p);
  storeInOrder(y.lower, y.upper, dst);
}

using Averages = HalfChannels;

/// The rounded averages of the pairs of one row.
Averages average(const RgbBlock& row) {
  const auto mean = [](V8u v) { return vrshrn_n_u16(vpaddlq_u8(v.raw), 1); };
  return {mean(row.c0), mean(row.c1), mean(row.c2)};
}

/// The rounded averages of the 2 x 2 blocks of two rows.
Averages average(const RgbBlock& top, const RgbBlock& bottom) {
  const auto mean = [](V8u a, V8u b) {
    return vrshrn_n_u16(vpadalq_u8(vpaddlq_u8(a.raw), b.raw), 2);
  };
  return {mean(top.c0, bottom.c0), mean(top.c1, bottom.c1), mean(top.c2, bottom.c2)};
}

/// Stores a block as groups Y0, Cb, Y1, Cr.
template <class Space>
void storeGroups(const RgbBlock& p, Vek8u*& dst) {
  HalvesOfBytes y = Space::luma(p);
  uint8x8x2_t chroma = Space::chroma(average(p)), both = vzip_u8(chroma.val[0], chroma.val[1]);
  storeAlternately(y, HalvesOfBytes{both.val[0], both.val[1]}, dst);
}

template <class Space>
void storeChroma(const Averages& p, Vek8u*& second, Vek8u*& third) {
  uint8x8x2_t chroma = Space::chroma(p);
  storeEight(chroma.val[0], second);
  storeEight(chroma.val[1], third);
}

#else

using RgbBlock = BlockPairs;

inline RgbBlock loadRgb(const Vek8u* src) {
  return loadPairs(src);
}

struct SharedYcbcr {
  static V8u luma(const BlockPairs& rgb) { return packedOutput<rgbToYcbcr, 0>(rgb); }
  static V16s chroma(const PixelPairs& rgb) {
    const V32s second = output<rgbToYcbcr, 1>(rgb), third = output<rgbToYcbcr, 2>(rgb);
    return hn::BitCast(s16, hn::OrAnd(hn::ShiftLeft<16>(third), second, hn::Set(s32, 0xFFFF)));
  }
};

struct SharedYuv {
  static V8u luma(const BlockPairs& rgb) { return packedOutput<rgbToYuv, 0>(rgb); }
  /// From d = B - Y and d = R - Y: factor * d >> 10 is the upper half of 32 factor * 2 d, whose factors
  /// fit 16 bits.
  static V16s chroma(const PixelPairs& rgb) {
    alignas(16) static constexpr Vek8u twice[16] = {0, 1, 0, 1, 4,  5,  4,  5,
                                                    8, 9, 8, 9, 12, 13, 12, 13};
    const V8u y =
        hn::TableLookupBytes(hn::BitCast(u8, output<rgbToYuv, 0>(rgb)), hn::LoadDup128(u8, twice));
    const V16s d = hn::Sub(rgb.c20, hn::BitCast(s16, y));
    const V16s products = hn::MulHigh(hn::Add(d, d), pairOfFactors(uFactor * 32, vFactor * 32));
    return hn::Add(products, hn::Set(s16, 128));
  }
};

template <class Space>
void storeLuma(const BlockPairs& p, Vek8u* dst) {
  hn::StoreU(inOrder(Space::luma(p)), u8, dst);
}

/// The averaged pixels of a block, those of its groups 0 and 1, and those of its groups 2 and 3.
struct Averages {
  PixelPairs half[2];
};

/// Averages each even pixel and the odd one after it by mean(even, odd), channel by channel.
template <class Mean>
Averages averagePairs(const BlockPairs& p, Mean mean) {
  const auto both = [mean](const PixelPairs& a, const PixelPairs& b) {
    return onChannels(a, b,
                      [mean](auto x, auto y) { return mean(evenPixels(x, y), oddPixels(x, y)); });
  };
  return {{both(p.group[0], p.group[1]), both(p.group[2], p.group[3])}};
}

/// The rounded averages of the pairs of one row.
Averages average(const RgbBlock& row) {
  return averagePairs(row, [](auto a, auto b) {
    constexpr hn::DFromV<decltype(a)> d;
    constexpr hn::RebindToUnsigned<decltype(d)> unsignedLanes;
    return hn::BitCast(
        d, hn::AverageRound(hn::BitCast(unsignedLanes, a), hn::BitCast(unsignedLanes, b)));
  });
}

/// The rounded averages of the 2 x 2 blocks of two rows: (s + 2) >> 2 of a sum s is the rounding
/// product of s and 2^13, whose unit is 2^15.
Averages average(const RgbBlock& top, const RgbBlock& bottom) {
  BlockPairs sums;
  for (int g = 0; g < 4; ++g) {
    sums.group[g] =
        onChannels(top.group[g], bottom.group[g], [](auto a, auto b) { return hn::Add(a, b); });
  }
  return averagePairs(sums, [](auto a, auto b) {
    return hn::MulFixedPoint15(hn::Add(a, b), hn::Set(hn::DFromV<decltype(a)>(), 1 << 13));
  });
}

/// The chroma of a block, two bytes for each pair.
template <class Space>
V8u packedChroma(const Averages& p) {
  return packClamped(Space::chroma(p.half[0]), Space::chroma(p.half[1]));
}

template <class Space>
void storeGroups(const RgbBlock& p, Vek8u* dst) {
  const V8u chroma = packedChroma<Space>(average(p));
  hn::StoreInterleaved2(inOrder(Space::luma(p)), inOrder(chroma), u8, dst);
}

template <class Space>
void storeChroma(const Averages& p, Vek8u* second, Vek8u* third) {
  const hn::Half<decltype(u8)> half;
  const V8u both = firstThenSecond(packedChroma<Space>(p));
  hn::StoreU(hn::LowerHalf(half, both), half, second);
  hn::StoreU(hn::UpperHalf(half, both), half, third);
}

#endif

/// A row of RGB whose pixels share chroma in pairs.
struct PairedRgb {
  const Vek8u* data;

  const Vek8u* at(ptrdiff_t x) const { return data + 3 * x; }
};

/// A last pixel without a partner is its own in the copy: the averages are then those of the pixels
/// that exist.
template <int block>
struct LastBlock<block, PairedRgb> : PaddedBlock<3 * block> {
  LastBlock(PairedRgb row, ptrdiff_t x, ptrdiff_t rest)
      : PaddedBlock<3 * block>(row.at(x), 3 * rest) {
    static_assert(block % 2 == 0);
    if (rest % 2 != 0) memcpy(this->data + 3 * rest, row.at(x + rest - 1), 3);
  }
  void finish() const {}
};

template <class Space>
void toInterleaved422(ptrdiff_t n, const Vek8u* rgb, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  const Advancing body{[](const Vek8u*& in, Vek8u*& out) { storeGroups<Space>(loadRgb(in), out); }};
  copiedBlocks<vectorBytes>(n, body, PairedRgb{rgb}, Out<4, 2>{dst});
}

template <class Space>
void toPlanes422(ptrdiff_t n, const Vek8u* rgb, Vek8u* y, Vek8u* u, Vek8u* v) {
  VEK_ASSERT(n >= 1);
  const Advancing body{[](const Vek8u*& in, Vek8u*& luma, Vek8u*& second, Vek8u*& third) {
    RgbBlock p = loadRgb(in);
    storeLuma<Space>(p, luma);
    storeChroma<Space>(average(p), second, third);
  }};
  copiedBlocks<vectorBytes>(n, body, PairedRgb{rgb}, Out<1>{y}, Out<1, 2>{u}, Out<1, 2>{v});
}

template <class Space>
void toPlanes420(ptrdiff_t n, const Vek8u* top, const Vek8u* bottom, Vek8u* yTop, Vek8u* yBottom,
                 Vek8u* u, Vek8u* v) {
  VEK_ASSERT(n >= 1);
  const Advancing body{[](const Vek8u*& upper, const Vek8u*& lower, Vek8u*& upperLuma,
                          Vek8u*& lowerLuma, Vek8u*& second, Vek8u*& third) {
    RgbBlock a = loadRgb(upper), b = loadRgb(lower);
    storeLuma<Space>(a, upperLuma);
    storeLuma<Space>(b, lowerLuma);
    storeChroma<Space>(average(a, b), second, third);
  }};
  copiedBlocks<vectorBytes>(n, body, PairedRgb{top}, PairedRgb{bottom}, Out<1>{yTop},
                            Out<1>{yBottom}, Out<1, 2>{u}, Out<1, 2>{v});
}

template <int pixels, const Matrix& m>
constexpr PackedFormats<ConvertPlanes> planesToPacked = {
    .rgb565 = convertPlanes<pixels, m, Rgb565>,
    .rgb555 = convertPlanes<pixels, m, Rgb555>,
    .rgb444 = convertPlanes<pixels, m, Rgb444>,
    .bgr565 = convertPlanes<pixels, m, Bgr565>,
    .bgr555 = convertPlanes<pixels, m, Bgr555>,
    .bgr444 = convertPlanes<pixels, m, Bgr444>};

template <class Source, const Matrix& m>
constexpr PackedFormats<ConvertRow> interleavedToPacked = {
    .rgb565 = convertInterleaved<Source, m, Rgb565>,
    .rgb555 = convertInterleaved<Source, m, Rgb555>,
    .rgb444 = convertInterleaved<Source, m, Rgb444>,
    .bgr565 = convertInterleaved<Source, m, Bgr565>,
    .bgr555 = convertInterleaved<Source, m, Bgr555>,
    .bgr444 = convertInterleaved<Source, m, Bgr444>};

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr YcbcrPackedKernels ycbcrPackedKernels = {
    .ycbcr420 = planesToPacked<2, ycbcrToRgb>,
    .yuv420 = planesToPacked<2, yuvToRgb>,
    .ycbcr444 = planesToPacked<1, ycbcrToRgb>,
    .ycbcrInterleaved422 = interleavedToPacked<Interleaved422, ycbcrToRgb>,
    .ycbcrInterleaved444 = interleavedToPacked<Interleaved444, ycbcrToRgb>,
};

constexpr YcbcrRgbKernels ycbcrRgbKernels = {
    .rgbToYcbcr444 = convertInterleaved<Interleaved444, rgbToYcbcr, Rgb24>,
    .ycbcr444ToRgb = convertInterleaved<Interleaved444, ycbcrToRgbRounded, Rgb24>,
    .rgbToYcbcr422 = toInterleaved422<SharedYcbcr>,
    .ycbcr422ToRgb = convertInterleaved<Interleaved422, ycbcrToRgb, Rgb24>,
    .rgbToYuv444 = convertInterleaved<Interleaved444, rgbToYuv, Rgb24>,
    .yuv444ToRgb = convertInterleaved<Interleaved444, yuvToRgbRounded, Rgb24>,
    .rgbToYuv422 = toInterleaved422<SharedYuv>,
    .yuv422ToRgb = convertInterleaved<Interleaved422, yuvToRgb, Rgb24>,
    .rgbToYuv444Planes = toPlanes444<rgbToYuv>,
    .rgbToYuv422Planes = toPlanes422<SharedYuv>,
    .rgbToYuv420Planes = toPlanes420<SharedYuv>,
    .yuv444PlanesToRgb = convertPlanes<1, yuvToRgbRounded, Rgb24>,
    .yuvSharedPlanesToRgb = convertPlanes<2, yuvToRgb, Rgb24>,
};

}  // namespace vek::VEK_LEVEL
