#include "image/color/ycbcr_rows.h"

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

#include "core/kernel/pixel_format.h"
#include "image/color/dot_lanes.h"
#include "image/color/ycbcr_matrices.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::Rebind<Vek8u, hn::ScalableTag<Vek16s>> halfByteLanes;

VWord word(Vek32s value) {
  return wordConstant(static_cast<Vek16s>(value));
}

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

  template <const Matrix& m>
  static Channels convert(const Vek8u* src) {
    const Channels v = TwistLanes<10>(combinations<m>, 0).packed(loadPairs(src));
    return {inOrder(v.c0), inOrder(v.c1), inOrder(v.c2)};
  }
};

struct Planes444 {
  using Chroma = In<1>;

  template <const Matrix& m>
  static Channels convert(const Vek8u* y, const Vek8u* u, const Vek8u* v) {
    const VBytes luma = hn::LoadU(byteLanes, y), second = hn::LoadU(byteLanes, u),
                 third = hn::LoadU(byteLanes, v), zero = hn::Zero(byteLanes);
    const auto words = [zero](VBytes bytes, bool upper) {
      return hn::BitCast(wordLanes, upper ? hn::InterleaveUpper(byteLanes, bytes, zero)
                                          : hn::InterleaveLower(byteLanes, bytes, zero));
    };
    const auto pairs = [&](bool upper, bool upperWords) {
      const VBytes first = upper ? hn::InterleaveUpper(byteLanes, luma, second)
                                 : hn::InterleaveLower(byteLanes, luma, second);
      const VWord rest = words(third, upper), none = hn::Zero(wordLanes);
      return PixelPairs{words(first, upperWords), upperWords
                                                      ? hn::InterleaveUpper(wordLanes, rest, none)
                                                      : hn::InterleaveLower(wordLanes, rest, none)};
    };
    return TwistLanes<10>(combinations<m>, 0)
        .packed({{pairs(false, false), pairs(false, true), pairs(true, false), pairs(true, true)}});
  }
};

// Where pixel pairs share chroma: 16-bit sums of luma and of a chroma part that is computed once.
// Luma's factor is weight << drop, so floor((factor * y + c) / 2^10) is
// (weight * y + floor(c / 2^drop)) >> (10 - drop), exactly.

template <const Matrix& m>
struct SharedChroma {
  static constexpr Vek32s factor = m.factor[0][0];
  static_assert(factor == 1192 || factor == 1024);
  static constexpr int drop = factor == 1192 ? 3 : 10;
  static constexpr Vek32s weight = factor >> drop;
  /// What the luma part is too large by for 16 bits; the chroma parts have it.
  static constexpr Vek32s bias = weight * 255 > 32767 ? weight * 255 - 32767 : 0;

  /// (b, r) in each 32-bit lane, those of the lower and the upper halves of the 128-bit lanes.
  VWord lower, upper;

  SharedChroma(VWord b, VWord r)
      : lower(hn::InterleaveLower(wordLanes, b, r)), upper(hn::InterleaveUpper(wordLanes, b, r)) {}

  template <Vek32s bFactor, Vek32s rFactor, Vek32s offset>
  VWord part() const {
    const VWord factors = twoWords(bFactor, rFactor);
    const VInt start = constant(offset - bFactor * 128 - rFactor * 128);
    return packWords(hn::ShiftRight<drop>(plusDot(start, lower, factors)),
                     hn::ShiftRight<drop>(plusDot(start, upper, factors)));
  }

  /// Output k for the luma parts of the even and the odd pixels. 129 * b + 37995 can leave 16 bits
  /// upwards, so blue's chroma is added in two halves of the same sign: a sum that saturates is
  /// far above 255 and stays there.
  template <int k>
  VBytes component(VWord even, VWord odd) const {
    constexpr Vek32s offset = m.offset[k] - factor * m.centre[0] + (bias << drop);
    constexpr Vek32s bFactor = m.factor[k][1], rFactor = m.factor[k][2];
    constexpr bool halves = (bFactor * 128 >> drop) + bias > 32767;
    if constexpr (halves) {
      constexpr Vek32s half = bFactor / 2 >> drop << drop;
      const VWord first = part<half, 0, 0>();
      even = hn::SaturatedAdd(even, first);
      odd = hn::SaturatedAdd(odd, first);
      return joined(even, odd, part<bFactor - half, rFactor, offset>());
    } else {
      return joined(even, odd, part<bFactor, rFactor, offset>());
    }
  }

  static VBytes joined(VWord even, VWord odd, VWord chroma) {
    return alternateHalves(packBytes(hn::ShiftRight<10 - drop>(hn::SaturatedAdd(even, chroma)),
                                     hn::ShiftRight<10 - drop>(hn::SaturatedAdd(odd, chroma))));
  }

  static VWord lumaPart(VWord y) {
    return bias == 0 ? y : hn::Sub(hn::Mul(y, word(weight)), word(bias));
  }
};

template <const Matrix& m>
Channels convertShared(VWord evenLuma, VWord oddLuma, VWord b, VWord r) {
  const SharedChroma<m> chroma(b, r);
  const VWord even = chroma.lumaPart(evenLuma), odd = chroma.lumaPart(oddLuma);
  return {chroma.template component<0>(even, odd), chroma.template component<1>(even, odd),
          chroma.template component<2>(even, odd)};
}

struct Planes422 {
  using Chroma = In<1, 2>;

  template <const Matrix& m>
  static Channels convert(const Vek8u* y, const Vek8u* u, const Vek8u* v) {
    const VBytes luma = hn::LoadU(byteLanes, y);
    return convertShared<m>(evenBytes(luma), oddBytes(luma),
                            hn::PromoteTo(wordLanes, hn::LoadU(halfByteLanes, u)),
                            hn::PromoteTo(wordLanes, hn::LoadU(halfByteLanes, v)));
  }
};

struct Interleaved422 {
  using Stream = In<4, 2>;

  template <const Matrix& m>
  static Channels convert(const Vek8u* src) {
    VWord left, right;  // Y0 and Cb, Y1 and Cr
    hn::LoadInterleaved2(wordLanes, reinterpret_cast<const Vek16s*>(src), left, right);
    const VBytes l = hn::BitCast(byteLanes, left), r = hn::BitCast(byteLanes, right);
    return convertShared<m>(evenBytes(l), evenBytes(r), oddBytes(l), oddBytes(r));
  }
};

/// Each byte shifted, and what does not belong to the field `mask` cleared.
template <int left>
VBytes shiftedField(VBytes v, int mask) {
  const hn::RebindToUnsigned<decltype(wordLanes)> lanes;
  const auto words = hn::BitCast(lanes, v);
  VBytes shifted = v;
  if constexpr (left > 0) shifted = hn::BitCast(byteLanes, hn::ShiftLeft<left>(words));
  if constexpr (left < 0) shifted = hn::BitCast(byteLanes, hn::ShiftRight<-left>(words));
  return hn::And(shifted, hn::Set(byteLanes, static_cast<Vek8u>(mask)));
}

/// The bits that a component's field has in the low (byte 0) or the high byte (1) of a pixel: the
/// top `bits` bits of v at bit `position` of the word.
template <int byte, int bits, int position>
VBytes fieldByte(VBytes v) {
  constexpr int mask = ((1 << bits) - 1) << position >> 8 * byte & 0xFF;
  if constexpr (mask == 0) return hn::Zero(byteLanes);
  return shiftedField<position - 8 * byte - (8 - bits)>(v, mask);
}

template <int byte, class Format>
VBytes packedByte(const Channels& v) {
  return hn::Or(hn::Or(fieldByte<byte, Format::rBits, Format::rPos>(v.c0),
                       fieldByte<byte, Format::gBits, Format::gPos>(v.c1)),
                fieldByte<byte, Format::bBits, Format::bPos>(v.c2));
}

/// A field keeps the top bits of its component: what remains of the clamped byte is the same as
/// reducing the sum to the field and clamping that.
template <class Format>
void store(const Channels& v, Vek8u* dst) {
  if constexpr (Format::bytes == 2) {
    hn::StoreInterleaved2(packedByte<0, Format>(v), packedByte<1, Format>(v), byteLanes, dst);
  } else {
    storeChannels(v, dst);
  }
}

template <class Source, const Matrix& m, class Format>
void fromPlanes(ptrdiff_t n, const Vek8u* y, const Vek8u* u, const Vek8u* v, Vek8u* dst) {
  using Chroma = typename Source::Chroma;
  const auto body = [](Vek8u* out, const Vek8u* a, const Vek8u* b, const Vek8u* c) {
    store<Format>(Source::template convert<m>(a, b, c), out);
  };
  forEachBlock<pixelBlock>(n, body, Out<Format::bytes>{dst}, In<1>{y}, Chroma{u}, Chroma{v});
}

template <class Source, const Matrix& m, class Format>
void fromInterleaved(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  const auto body = [](Vek8u* out, const Vek8u* in) {
    if constexpr (Source::Stream::bytes == Format::bytes) {  // three
      TwistLanes<10>(combinations<m>, 0).store(loadPairs(in), out);
    } else {
      store<Format>(Source::template convert<m>(in), out);
    }
  };
  forEachBlock<pixelBlock>(n, body, Out<Format::bytes>{dst}, typename Source::Stream{src});
}

template <const Matrix& m>
void toPlanes444(ptrdiff_t n, const Vek8u* src, Vek8u* y, Vek8u* u, Vek8u* v) {
  const auto body = [](const Vek8u* in, Vek8u* a, Vek8u* b, Vek8u* c) {
    const Channels outputs = Interleaved444::convert<m>(in);
    hn::StoreU(outputs.c0, byteLanes, a);
    hn::StoreU(outputs.c1, byteLanes, b);
    hn::StoreU(outputs.c2, byteLanes, c);
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
      row, [](VWord a, VWord b) { return hn::ShiftRight<1>(hn::Add(hn::Add(a, b), word(1))); });
}

Averages average(const BlockPairs& top, const BlockPairs& bottom) {
  BlockPairs sums;
  for (int g = 0; g < 4; ++g) {
    sums.group[g] = {hn::Add(top.group[g].c01, bottom.group[g].c01),
                     hn::Add(top.group[g].c2, bottom.group[g].c2)};
  }
  return averagePairs(
      sums, [](VWord a, VWord b) { return hn::ShiftRight<2>(hn::Add(hn::Add(a, b), word(2))); });
}

/// In each 128-bit lane eight bytes of the second and eight of the third value.
template <class Space>
VBytes packedChroma(const Averages& p) {
  return packBytes(packWords(Space::second(p.half[0]), Space::second(p.half[1])),
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
