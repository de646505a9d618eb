#include "core/color/convert_planes_lanes.h"
#include "image/color/dot_lanes.h"
#include "image/color/ycbcr_kernels.h"
#include "image/color/ycbcr_matrices.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

// Where each pixel has samples of its own: exact 32-bit sums of their products.

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

struct Interleaved422 {
  using Stream = In<4, 2>;

  /// 16-bit pixels need no more than the order within 128-bit blocks.
  template <class Sums, class Format>
  static void convert(const Vek8u* src, Vek8u* dst) {
    constexpr bool byBlocks = Format::bytes == 2;
    const V8u first = hn::LoadU(u8, src), second = hn::LoadU(u8, src + vectorBytes);
    const V8u a = grouped(byBlocks ? first : evenBlocks(first, second)),
              b = grouped(byBlocks ? second : oddBlocks(first, second));
    const hn::Repartition<Vek64s, decltype(u8)> halves;
    const V8u left = hn::BitCast(  // Y0 and Cb
        u8, hn::InterleaveLower(halves, hn::BitCast(halves, a), hn::BitCast(halves, b)));
    const V8u right = hn::BitCast(  // Y1 and Cr
        u8, hn::InterleaveUpper(halves, hn::BitCast(halves, a), hn::BitCast(halves, b)));
    const Sums sums(oddWordBytes(left), oddWordBytes(right));
    Sums::template store<Format, byBlocks>(Sums::template luma<false>(left),
                                           Sums::template luma<false>(right), sums, sums, dst);
  }

 private:
  /// In each 128-bit block the words at even places, then those at odd ones.
  static V8u grouped(V8u v) {
    alignas(16) static constexpr Vek8u order[16] = {0, 1, 4, 5, 8,  9,  12, 13,
                                                    2, 3, 6, 7, 10, 11, 14, 15};
    return hn::TableLookupBytes(v, hn::LoadDup128(u8, order));
  }

  /// Of the 128-bit blocks of two vectors those at even places, and those at odd ones.
  static V8u evenBlocks(V8u a, [[maybe_unused]] V8u b) {
#if defined(__AVX512BW__)
    return V8u{_mm512_shuffle_i64x2(a.raw, b.raw, 0x88)};
#elif defined(__AVX2__)
    return V8u{_mm256_permute2x128_si256(a.raw, b.raw, 0x20)};
#else
    return a;
#endif
  }
  static V8u oddBlocks([[maybe_unused]] V8u a, V8u b) {
#if defined(__AVX512BW__)
    return V8u{_mm512_shuffle_i64x2(a.raw, b.raw, 0xDD)};
#elif defined(__AVX2__)
    return V8u{_mm256_permute2x128_si256(a.raw, b.raw, 0x31)};
#else
    return b;
#endif
  }
};

template <class Source, const Matrix& m, class Format>
void fromInterleaved(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  if constexpr (Source::Stream::bytes == Format::bytes) {  // three
    convertPixelPairs(src, dst, n, [](const PixelPairs& p) {
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
    const auto body = [](Vek8u* out, const Vek8u* in) {
      Source::template convert<Sums<m, Format>, Format>(in, out);
    };
    copiedBlocks<vectorBytes>(n, body, Out<Format::bytes>{dst}, typename Source::Stream{src});
  }
}

template <const Matrix& m>
void toPlanes444(ptrdiff_t n, const Vek8u* src, Vek8u* y, Vek8u* u, Vek8u* v) {
  const auto body = [](const Vek8u* in, Vek8u* a, Vek8u* b, Vek8u* c) {
    const Channels outputs = packedOutputs<m>(loadPairs(in));
    hn::StoreU(inOrder(outputs.c0), u8, a);
    hn::StoreU(inOrder(outputs.c1), u8, b);
    hn::StoreU(inOrder(outputs.c2), u8, c);
  };
  copiedBlocks<vectorBytes>(n, body, In<3>{src}, Out<1>{y}, Out<1>{u}, Out<1>{v});
}

// Spaces to reduce chroma in: one byte of each pixel of a block, and of averaged pixels two words
// (second and third value) that are clamped to bytes later.

struct ReducedYcbcr {
  static V8u luma(const BlockPairs& rgb) { return packedOutput<RGB_YCbCr_Q10_C2, 0>(rgb); }
  static V16s chroma(const PixelPairs& rgb) {
    const V32s second = output<RGB_YCbCr_Q10_C2, 1>(rgb), third = output<RGB_YCbCr_Q10_C2, 2>(rgb);
    return hn::BitCast(s16, hn::OrAnd(hn::ShiftLeft<16>(third), second, hn::Set(s32, 0xFFFF)));
  }
};

struct ReducedYuv {
  static V8u luma(const BlockPairs& rgb) { return packedOutput<RGB_YUV_Q10_C2, 0>(rgb); }
  /// From B - Y and R - Y.
  static V16s chroma(const PixelPairs& rgb) {
    alignas(16) static constexpr Vek8u twice[16] = {0, 1, 0, 1, 4,  5,  4,  5,
                                                    8, 9, 8, 9, 12, 13, 12, 13};
    const V8u y = hn::TableLookupBytes(hn::BitCast(u8, output<RGB_YUV_Q10_C2, 0>(rgb)),
                                       hn::LoadDup128(u8, twice));
    const V16s d = hn::Sub(rgb.c20, hn::BitCast(s16, y));
    const V16s products = hn::MulHigh(hn::Add(d, d), pairOfFactors(uFactor * 32, vFactor * 32));
    return hn::Add(products, wordOf(128));
  }
};

template <class Space>
void storeLuma(const BlockPairs& p, Vek8u* dst) {
  hn::StoreU(inOrder(Space::luma(p)), u8, dst);
}

/// The averaged pixel pairs of a block, those of its groups 0 and 1, 2 and 3.
struct Averages {
  PixelPairs half[2];
};

/// average(words of the even pixels, words of the odd pixels)
template <class Average>
Averages averagePairs(const BlockPairs& p, Average average) {
  const auto half = [average](const PixelPairs& a, const PixelPairs& b) {
    return PixelPairs{average(evenInts(a.c01, b.c01), oddInts(a.c01, b.c01)),
                      average(evenInts(a.c20, b.c20), oddInts(a.c20, b.c20))};
  };
  return {{half(p.group[0], p.group[1]), half(p.group[2], p.group[3])}};
}

/// The rounded averages of the pairs of one row, and of the 2 x 2 blocks of two.
Averages average(const BlockPairs& row) {
  return averagePairs(row, [](V16s a, V16s b) {
    return hn::BitCast(s16, hn::AverageRound(hn::BitCast(u16, a), hn::BitCast(u16, b)));
  });
}

Averages average(const BlockPairs& top, const BlockPairs& bottom) {
  BlockPairs sums;
  for (int g = 0; g < 4; ++g) {
    sums.group[g] = {hn::Add(top.group[g].c01, bottom.group[g].c01),
                     hn::Add(top.group[g].c20, bottom.group[g].c20)};
  }
  return averagePairs(
      sums, [](V16s a, V16s b) { return hn::MulFixedPoint15(hn::Add(a, b), wordOf(1 << 13)); });
}

/// The chroma of a block, two bytes for each pair.
template <class Space>
V8u packedChroma(const Averages& p) {
  return packClamped(Space::chroma(p.half[0]), Space::chroma(p.half[1]));
}

template <class Space>
void storeChroma(const Averages& p, Vek8u* second, Vek8u* third) {
  const hn::Half<decltype(u8)> half;
  const V8u both = firstThenSecond(packedChroma<Space>(p));
  hn::StoreU(hn::LowerHalf(half, both), half, second);
  hn::StoreU(hn::UpperHalf(half, both), half, third);
}

/// A last pixel without a partner, as a pair: averages then give the pixel itself.
struct LonePair {
  Vek8u rgb[6];

  explicit LonePair(const Vek8u* p) : rgb{p[0], p[1], p[2], p[0], p[1], p[2]} {}
};

template <class Space>
void toInterleaved422(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  const auto body = [](const Vek8u* in, Vek8u* out) {
    const BlockPairs p = loadPairs(in);
    const V8u chroma = packedChroma<Space>(average(p));
    hn::StoreInterleaved2(inOrder(Space::luma(p)), inOrder(chroma), u8, out);
  };
  const ptrdiff_t even = n & ~ptrdiff_t{1};
  copiedBlocks<vectorBytes>(even, body, In<3>{src}, Out<4, 2>{dst});
  if (even == n) return;
  const LonePair last(src + 3 * even);
  copiedBlocks<vectorBytes>(2, body, In<3>{last.rgb}, Out<4, 2>{dst + 2 * even});
}

template <class Space>
void toPlanes422(ptrdiff_t n, const Vek8u* src, Vek8u* y, Vek8u* u, Vek8u* v) {
  const auto body = [](const Vek8u* in, Vek8u* luma, Vek8u* second, Vek8u* third) {
    const BlockPairs p = loadPairs(in);
    storeLuma<Space>(p, luma);
    storeChroma<Space>(average(p), second, third);
  };
  const ptrdiff_t even = n & ~ptrdiff_t{1};
  copiedBlocks<vectorBytes>(even, body, In<3>{src}, Out<1>{y}, Out<1, 2>{u}, Out<1, 2>{v});
  if (even == n) return;
  const LonePair last(src + 3 * even);
  Vek8u luma[2];
  copiedBlocks<vectorBytes>(2, body, In<3>{last.rgb}, Out<1>{luma}, Out<1, 2>{u + even / 2},
                            Out<1, 2>{v + even / 2});
  y[even] = luma[0];
}

template <class Space>
void toPlanes420(ptrdiff_t n, const Vek8u* top, const Vek8u* bottom, Vek8u* yTop, Vek8u* yBottom,
                 Vek8u* u, Vek8u* v) {
  const auto body = [](const Vek8u* upper, const Vek8u* lower, Vek8u* upperLuma, Vek8u* lowerLuma,
                       Vek8u* second, Vek8u* third) {
    const BlockPairs a = loadPairs(upper), b = loadPairs(lower);
    storeLuma<Space>(a, upperLuma);
    storeLuma<Space>(b, lowerLuma);
    storeChroma<Space>(average(a, b), second, third);
  };
  const ptrdiff_t even = n & ~ptrdiff_t{1};
  copiedBlocks<vectorBytes>(even, body, In<3>{top}, In<3>{bottom}, Out<1>{yTop}, Out<1>{yBottom},
                            Out<1, 2>{u}, Out<1, 2>{v});
  if (even == n) return;
  const LonePair lastTop(top + 3 * even), lastBottom(bottom + 3 * even);
  Vek8u upperLuma[2], lowerLuma[2];
  copiedBlocks<vectorBytes>(2, body, In<3>{lastTop.rgb}, In<3>{lastBottom.rgb}, Out<1>{upperLuma},
                            Out<1>{lowerLuma}, Out<1, 2>{u + even / 2}, Out<1, 2>{v + even / 2});
  yTop[even] = upperLuma[0];
  yBottom[even] = lowerLuma[0];
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#include "image/color/ycbcr_table.h"
