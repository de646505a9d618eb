#include "image/color/ycbcr_rows.h"

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

#include "core/kernel/chroma_sums.h"
#include "image/color/dot_lanes.h"
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

template <const Matrix& m>
constexpr Combination combinations[3] = {combination<m, 0>, combination<m, 1>, combination<m, 2>};

struct Interleaved444 {
  using Stream = In<3>;
};

// Where chroma is shared or lies in planes.

struct Planes444 {
  using Chroma = In<1>;

  template <class Sums, class Format>
  static void convert(const Vek8u* y, const Vek8u* u, const Vek8u* v, Vek8u* dst) {
    const VBytes luma = hn::LoadU(byteLanes, y), b = hn::LoadU(byteLanes, u),
                 r = hn::LoadU(byteLanes, v);
    Sums::template store<Format>(Sums::template luma<false>(luma), Sums::template luma<true>(luma),
                                 Sums(evenWordBytes(b), evenWordBytes(r)),
                                 Sums(oddWordBytes(b), oddWordBytes(r)), dst);
  }
};

struct Planes422 {
  using Chroma = In<1, 2>;

  template <class Sums, class Format>
  static void convert(const Vek8u* y, const Vek8u* u, const Vek8u* v, Vek8u* dst) {
    const VBytes luma = hn::LoadU(byteLanes, y);
    const Sums sums(loadWordBytes(u), loadWordBytes(v));
    Sums::template store<Format>(Sums::template luma<false>(luma), Sums::template luma<true>(luma),
                                 sums, sums, dst);
  }
};

struct Interleaved422 {
  using Stream = In<4, 2>;

  template <class Sums, class Format>
  static void convert(const Vek8u* src, Vek8u* dst) {
    VWord left, right;  // Y0 and Cb, Y1 and Cr
    hn::LoadInterleaved2(wordLanes, reinterpret_cast<const Vek16s*>(src), left, right);
    const VBytes l = hn::BitCast(byteLanes, left), r = hn::BitCast(byteLanes, right);
    const Sums sums(oddWordBytes(l), oddWordBytes(r));
    Sums::template store<Format>(Sums::template luma<false>(l), Sums::template luma<false>(r), sums,
                                 sums, dst);
  }
};

template <class Source, const Matrix& m, class Format>
void fromPlanes(ptrdiff_t n, const Vek8u* y, const Vek8u* u, const Vek8u* v, Vek8u* dst) {
  using Chroma = typename Source::Chroma;
  const auto body = [](Vek8u* out, const Vek8u* a, const Vek8u* b, const Vek8u* c) {
    Source::template convert<Sums<m, Format>, Format>(a, b, c, out);
  };
  forEachBlock<pixelBlock>(n, body, Out<Format::bytes>{dst}, In<1>{y}, Chroma{u}, Chroma{v});
}

template <class Source, const Matrix& m, class Format>
void fromInterleaved(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  if constexpr (Source::Stream::bytes == Format::bytes) {  // three
    const TwistLanes<10> matrix(combinations<m>, 0);
    convertPixelPairs(src, dst, n, [&](const PixelPairs& p) { return matrix.of(p); });
  } else if constexpr (Source::Stream::bytes == 3) {
    const TwistLanes<10> matrix(combinations<m>, 0);
    const auto body = [&](Vek8u* out, const Vek8u* in) {
      const Channels v = matrix.packed(loadPairs(in));
      hn::StoreInterleaved2(inOrder(packedByte<0, Format>(v)), inOrder(packedByte<1, Format>(v)),
                            byteLanes, out);
    };
    forEachBlock<pixelBlock>(n, body, Out<2>{dst}, In<3>{src});
  } else {
    const auto body = [](Vek8u* out, const Vek8u* in) {
      Source::template convert<Sums<m, Format>, Format>(in, out);
    };
    forEachBlock<pixelBlock>(n, body, Out<Format::bytes>{dst}, typename Source::Stream{src});
  }
}

template <const Matrix& m>
void toPlanes444(ptrdiff_t n, const Vek8u* src, Vek8u* y, Vek8u* u, Vek8u* v) {
  const TwistLanes<10> matrix(combinations<m>, 0);
  const auto body = [&](const Vek8u* in, Vek8u* a, Vek8u* b, Vek8u* c) {
    const Channels outputs = matrix.packed(loadPairs(in));
    hn::StoreU(inOrder(outputs.c0), byteLanes, a);
    hn::StoreU(inOrder(outputs.c1), byteLanes, b);
    hn::StoreU(inOrder(outputs.c2), byteLanes, c);
  };
  forEachBlock<pixelBlock>(n, body, In<3>{src}, Out<1>{y}, Out<1>{u}, Out<1>{v});
}

// Spaces to reduce chroma in: one byte of each pixel, and two values of averaged pixels.

template <const Matrix& m, int k>
CombinationLanes<10> row() {
  return CombinationLanes<10>(combination<m, k>, 0);
}

struct ReducedYcbcr {
  static CombinationLanes<10> luma() { return row<RGB_YCbCr_Q10_C2, 0>(); }
  static VInt second(const PixelPairs& rgb) { return row<RGB_YCbCr_Q10_C2, 1>().of(rgb); }
  static VInt third(const PixelPairs& rgb) { return row<RGB_YCbCr_Q10_C2, 2>().of(rgb); }
};

struct ReducedYuv {
  static CombinationLanes<10> luma() { return row<RGB_YUV_Q10_C2, 0>(); }
  static VInt second(const PixelPairs& rgb) {
    return difference<uFactor>(hn::BitCast(intLanes, rgb.c2), rgb);
  }
  static VInt third(const PixelPairs& rgb) {
    return difference<vFactor>(hn::And(hn::BitCast(intLanes, rgb.c01), constant(0xFFFF)), rgb);
  }

 private:
  template <Vek32s factor>
  static VInt difference(VInt v, const PixelPairs& rgb) {
    const VInt d = hn::Sub(v, luma().of(rgb));
    return hn::ShiftRight<10>(
        plusDot(constant(chromaZero), hn::BitCast(wordLanes, d), twoWords(factor, 0)));
  }
};

template <class Space>
void storeLuma(const BlockPairs& p, Vek8u* dst) {
  hn::StoreU(inOrder(Space::luma().packed(p)), byteLanes, dst);
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
                      average(evenInts(a.c2, b.c2), oddInts(a.c2, b.c2))};
  };
  return {{half(p.group[0], p.group[1]), half(p.group[2], p.group[3])}};
}

/// The rounded averages of the pairs of one row, and of the 2 x 2 blocks of two.
Averages average(const BlockPairs& row) {
  return averagePairs(
      row, [](VWord a, VWord b) { return hn::ShiftRight<1>(hn::Add(hn::Add(a, b), wordOf(1))); });
}

Averages average(const BlockPairs& top, const BlockPairs& bottom) {
  BlockPairs sums;
  for (int g = 0; g < 4; ++g) {
    sums.group[g] = {hn::Add(top.group[g].c01, bottom.group[g].c01),
                     hn::Add(top.group[g].c2, bottom.group[g].c2)};
  }
  return averagePairs(
      sums, [](VWord a, VWord b) { return hn::ShiftRight<2>(hn::Add(hn::Add(a, b), wordOf(2))); });
}

/// In each 128-bit lane eight bytes of the second and eight of the third value.
template <class Space>
VBytes packedChroma(const Averages& p) {
  return packClamped(packWords(Space::second(p.half[0]), Space::second(p.half[1])),
                     packWords(Space::third(p.half[0]), Space::third(p.half[1])));
}

template <class Space>
void storeChroma(const Averages& p, Vek8u* second, Vek8u* third) {
  const hn::Half<decltype(byteLanes)> half;
  const VBytes both = halvesInOrder(packedChroma<Space>(p));
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
    const VBytes chroma = alternateHalves(packedChroma<Space>(average(p)));
    hn::StoreInterleaved2(inOrder(Space::luma().packed(p)), inOrder(chroma), byteLanes, out);
  };
  const ptrdiff_t even = n & ~ptrdiff_t{1};
  forEachBlock<pixelBlock>(even, body, In<3>{src}, Out<4, 2>{dst});
  if (even == n) return;
  const LonePair last(src + 3 * even);
  forEachBlock<pixelBlock>(2, body, In<3>{last.rgb}, Out<4, 2>{dst + 2 * even});
}

template <class Space>
void toPlanes422(ptrdiff_t n, const Vek8u* src, Vek8u* y, Vek8u* u, Vek8u* v) {
  const auto body = [](const Vek8u* in, Vek8u* luma, Vek8u* second, Vek8u* third) {
    const BlockPairs p = loadPairs(in);
    storeLuma<Space>(p, luma);
    storeChroma<Space>(average(p), second, third);
  };
  const ptrdiff_t even = n & ~ptrdiff_t{1};
  forEachBlock<pixelBlock>(even, body, In<3>{src}, Out<1>{y}, Out<1, 2>{u}, Out<1, 2>{v});
  if (even == n) return;
  const LonePair last(src + 3 * even);
  Vek8u luma[2];
  forEachBlock<pixelBlock>(2, body, In<3>{last.rgb}, Out<1>{luma}, Out<1, 2>{u + even / 2},
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
  forEachBlock<pixelBlock>(even, body, In<3>{top}, In<3>{bottom}, Out<1>{yTop}, Out<1>{yBottom},
                           Out<1, 2>{u}, Out<1, 2>{v});
  if (even == n) return;
  const LonePair lastTop(top + 3 * even), lastBottom(bottom + 3 * even);
  Vek8u upperLuma[2], lowerLuma[2];
  forEachBlock<pixelBlock>(2, body, In<3>{lastTop.rgb}, In<3>{lastBottom.rgb}, Out<1>{upperLuma},
                           Out<1>{lowerLuma}, Out<1, 2>{u + even / 2}, Out<1, 2>{v + even / 2});
  yTop[even] = upperLuma[0];
  yBottom[even] = lowerLuma[0];
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

#include "image/color/ycbcr_body.h"

#endif

#include "image/color/ycbcr_row_tables.h"
