#include "image/color/ycbcr_rows.h"

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

#include "core/kernel/pixel_format.h"
#include "image/color/ycbcr_matrices.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

using Bytes = hn::ScalableTag<Vek8u>;
using Words = hn::ScalableTag<Vek16s>;
using VBytes = hn::Vec<Bytes>;
using VWords = hn::Vec<Words>;
constexpr Bytes bytes;
constexpr Words words;
constexpr hn::Rebind<Vek8u, Words> halfBytes;
constexpr hn::RebindToUnsigned<Words> uwords;
constexpr hn::RepartitionToWide<Words> ints;
using VInts = hn::Vec<decltype(ints)>;
using VUwords = hn::Vec<decltype(uwords)>;
constexpr int block = static_cast<int>(hn::MaxLanes(bytes));

/// One sample of the even and of the odd pixels of a block, one per 16-bit lane.
struct Pairs {
  VWords even, odd;
};

/// The three samples of a block. Chroma that pixels share is the same vector in both halves, and
/// what is computed from it is computed once.
struct Pixels {
  Pairs first, second, third;
};

VWords word(Vek32s value) {
  return hn::Set(words, static_cast<Vek16s>(value));
}

Pairs split(VBytes v) {
  const VUwords both = hn::BitCast(uwords, v);
  return {hn::BitCast(words, hn::And(both, hn::Set(uwords, 0xFF))),
          hn::BitCast(words, hn::ShiftRight<8>(both))};
}

/// Bytes of two words in 0..255: `low` before `high`.
VWords join(VWords low, VWords high) {
  return hn::Or(low, hn::ShiftLeft<8>(high));
}

VBytes joinBytes(Pairs v) {
  return hn::BitCast(bytes, join(v.even, v.odd));
}

void storeBytes(Pairs v, Vek8u* dst) {
  hn::StoreU(joinBytes(v), bytes, dst);
}

void storeHalf(VWords v, Vek8u* dst) {
  hn::StoreU(hn::DemoteTo(halfBytes, v), halfBytes, dst);
}

Pairs loadShared(const Vek8u* src) {
  const VWords v = hn::PromoteTo(words, hn::LoadU(halfBytes, src));
  return {v, v};
}

Pixels loadRgb(const Vek8u* src) {
  VBytes a, b, c;
  hn::LoadInterleaved3(bytes, src, a, b, c);
  return {split(a), split(b), split(c)};
}

/// acc + v * factor
template <Vek32s factor>
VWords plusTimes(VWords acc, VWords v) {
  if constexpr (factor == 0) return acc;
  if constexpr (factor == 1) return hn::Add(acc, v);
  return hn::Add(acc, hn::Mul(v, word(factor)));
}

/// Whether output k of the matrix needs no clamping.
template <const Matrix& m, int k>
constexpr bool inRange() {
  Vek32s low = m.offset[k], high = m.offset[k];
  for (int i = 0; i < 3; ++i) {
    const Vek32s at0 = m.factor[k][i] * -m.centre[i];
    const Vek32s at255 = m.factor[k][i] * (255 - m.centre[i]);
    low += at0 < at255 ? at0 : at255;
    high += at0 < at255 ? at255 : at0;
  }
  return low >= 0 && high < 256 << 10;
}

template <int bits>
VWords clampTo(VWords v) {
  return hn::Min(hn::Max(v, hn::Zero(words)), word((1 << bits) - 1));
}

/// Output k of the matrix, reduced to `bits` bits. Each factor is split as w = 16 h + l with 0 <= l
/// < 16, and floor((16 H + L) / 2^n) = (H + floor(L / 16)) >> (n - 4). L is at most 45 * 255 + 15.
/// H leaves 16 bits only upwards, for blue from YCbCr or YUV (74 * 239 + 129 * 127 = 34069), and
/// saturates far above what every field clamps to.
template <const Matrix& m, int k, int bits = 8>
VWords component(VWords a, VWords b, VWords c) {
  constexpr Vek32s offset = m.offset[k];
  constexpr const Vek32s(&f)[3] = m.factor[k];
  a = hn::Sub(a, word(m.centre[0]));
  b = hn::Sub(b, word(m.centre[1]));
  c = hn::Sub(c, word(m.centre[2]));
  const VWords restHigh = plusTimes<(f[2] >> 4)>(plusTimes<(f[1] >> 4)>(word(offset >> 4), b), c);
  const VWords restLow = plusTimes<(f[2] & 15)>(plusTimes<(f[1] & 15)>(word(offset & 15), b), c);
  VWords value;
  if constexpr (f[0] == 1024) {
    const VWords rest = hn::ShiftRight<6>(hn::Add(restHigh, hn::ShiftRight<4>(restLow)));
    value = hn::ShiftRight<8 - bits>(hn::Add(a, rest));
  } else {
    const VWords high = hn::SaturatedAdd(hn::Mul(a, word(f[0] >> 4)), restHigh);
    const VWords low = hn::ShiftRight<4>(plusTimes<(f[0] & 15)>(restLow, a));
    value = hn::ShiftRight<14 - bits>(hn::SaturatedAdd(high, low));
  }
  return inRange<m, k>() ? value : clampTo<bits>(value);
}

template <const Matrix& m, int k, int bits = 8>
Pairs component(const Pixels& p) {
  return {component<m, k, bits>(p.first.even, p.second.even, p.third.even),
          component<m, k, bits>(p.first.odd, p.second.odd, p.third.odd)};
}

/// a0 * b0 + a1 * b1 of the two words in each 32-bit lane.
VInts dot(VWords a, VWords b) {
#if HWY_ARCH_X86
  VInts unused = hn::Zero(ints);
  return hn::ReorderWidenMulAccumulate(ints, a, b, hn::Zero(ints), unused);
#else
  const VInts a2 = hn::BitCast(ints, a), b2 = hn::BitCast(ints, b);
  const VInts low =
      hn::Mul(hn::ShiftRight<16>(hn::ShiftLeft<16>(a2)), hn::ShiftRight<16>(hn::ShiftLeft<16>(b2)));
  return hn::Add(low, hn::Mul(hn::ShiftRight<16>(a2), hn::ShiftRight<16>(b2)));
#endif
}

VWords twoWords(Vek32s first, Vek32s second) {
  return hn::BitCast(words, hn::Set(ints, (first & 0xFFFF) | second * 65536));
}

/// The first two samples side by side in 32-bit lanes, and the third beside a constant.
struct SideBySide {
  VWords firstTwo[2], third[2];
};

/// Offsets ride along as the product of a constant word with one that fits 16 bits.
template <const Matrix& m>
constexpr Vek32s offsetUnit =
    m.offset[0] % 512 == 0 && m.offset[1] % 512 == 0 && m.offset[2] % 512 == 0 ? 512 : 1;

template <const Matrix& m>
SideBySide sideBySide(VWords a, VWords b, VWords c) {
  const VWords unit = word(offsetUnit<m>);
  a = hn::Sub(a, word(m.centre[0]));
  b = hn::Sub(b, word(m.centre[1]));
  c = hn::Sub(c, word(m.centre[2]));
  return {{hn::InterleaveLower(words, a, b), hn::InterleaveUpper(words, a, b)},
          {hn::InterleaveLower(words, c, unit), hn::InterleaveUpper(words, c, unit)}};
}

template <const Matrix& m, int k>
VWords component(const SideBySide& p) {
  constexpr const Vek32s(&f)[3] = m.factor[k];
  const VWords firstTwo = twoWords(f[0], f[1]);
  const VWords third = twoWords(f[2], m.offset[k] / offsetUnit<m>);
  const VInts low = hn::Add(dot(p.firstTwo[0], firstTwo), dot(p.third[0], third));
  const VInts high = hn::Add(dot(p.firstTwo[1], firstTwo), dot(p.third[1], third));
  const VWords value =
      hn::ReorderDemote2To(words, hn::ShiftRight<10>(low), hn::ShiftRight<10>(high));
  return inRange<m, k>() ? value : clampTo<8>(value);
}

/// All outputs with 8 bits: with a sample of each kind for every pixel and all factors at work,
/// exact 32-bit sums take fewer instructions than split factors.
template <const Matrix& m>
Pixels transform(const Pixels& p) {
  const SideBySide even = sideBySide<m>(p.first.even, p.second.even, p.third.even);
  const SideBySide odd = sideBySide<m>(p.first.odd, p.second.odd, p.third.odd);
  return {{component<m, 0>(even), component<m, 0>(odd)},
          {component<m, 1>(even), component<m, 1>(odd)},
          {component<m, 2>(even), component<m, 2>(odd)}};
}

template <class Format>
VWords packWord(VWords r, VWords g, VWords b) {
  return hn::Or(hn::Or(hn::ShiftLeft<Format::rPos>(r), hn::ShiftLeft<Format::gPos>(g)),
                hn::ShiftLeft<Format::bPos>(b));
}

template <const Matrix& m, class Format>
Pixels outputs(const Pixels& p) {
  return {component<m, 0, Format::rBits>(p), component<m, 1, Format::gBits>(p),
          component<m, 2, Format::bBits>(p)};
}

template <class Format>
void store(const Pixels& p, Vek8u* dst) {
  if constexpr (Format::bytes == 2) {
    hn::StoreInterleaved2(packWord<Format>(p.first.even, p.second.even, p.third.even),
                          packWord<Format>(p.first.odd, p.second.odd, p.third.odd), words,
                          reinterpret_cast<Vek16s*>(dst));
  } else {
    hn::StoreInterleaved3(joinBytes(p.first), joinBytes(p.second), joinBytes(p.third), bytes, dst);
  }
}

/// Whether transform() is the faster way: 8-bit outputs, no shared chroma, and a luma factor other
/// than 1.
template <class Source, const Matrix& m, class Format>
constexpr bool wide = Format::bytes == 3 && !Source::shared && m.factor[0][0] != 1024;

template <class Source, const Matrix& m, class Format>
void convertBlock(const Pixels& p, Vek8u* dst) {
  if constexpr (wide<Source, m, Format>) {
    store<Format>(transform<m>(p), dst);
  } else {
    store<Format>(outputs<m, Format>(p), dst);
  }
}

struct Planes444 {
  static constexpr bool shared = false;
  using Chroma = In<1>;

  static Pixels load(const Vek8u* y, const Vek8u* u, const Vek8u* v) {
    return {split(hn::LoadU(bytes, y)), split(hn::LoadU(bytes, u)), split(hn::LoadU(bytes, v))};
  }
};

struct Planes422 {
  static constexpr bool shared = true;
  using Chroma = In<1, 2>;

  static Pixels load(const Vek8u* y, const Vek8u* u, const Vek8u* v) {
    return {split(hn::LoadU(bytes, y)), loadShared(u), loadShared(v)};
  }
};

struct Interleaved444 {
  static constexpr bool shared = false;
  using Stream = In<3>;

  static Pixels load(const Vek8u* src) { return loadRgb(src); }
};

struct Interleaved422 {
  static constexpr bool shared = true;
  using Stream = In<4, 2>;

  static Pixels load(const Vek8u* src) {
    VWords left, right;  // Y0 and Cb, Y1 and Cr
    hn::LoadInterleaved2(words, reinterpret_cast<const Vek16s*>(src), left, right);
    const Pairs l = split(hn::BitCast(bytes, left)), r = split(hn::BitCast(bytes, right));
    return {{l.even, r.even}, {l.odd, l.odd}, {r.odd, r.odd}};
  }
};

template <class Source, const Matrix& m, class Format>
void fromPlanes(ptrdiff_t n, const Vek8u* y, const Vek8u* u, const Vek8u* v, Vek8u* dst) {
  using Chroma = typename Source::Chroma;
  const auto body = [](Vek8u* out, const Vek8u* a, const Vek8u* b, const Vek8u* c) {
    convertBlock<Source, m, Format>(Source::load(a, b, c), out);
  };
  forEachBlock<block>(n, body, Out<Format::bytes>{dst}, In<1>{y}, Chroma{u}, Chroma{v});
}

template <class Source, const Matrix& m, class Format>
void fromInterleaved(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  const auto body = [](Vek8u* out, const Vek8u* in) {
    convertBlock<Source, m, Format>(Source::load(in), out);
  };
  forEachBlock<block>(n, body, Out<Format::bytes>{dst}, typename Source::Stream{src});
}

template <const Matrix& m>
void toPlanes444(ptrdiff_t n, const Vek8u* src, Vek8u* y, Vek8u* u, Vek8u* v) {
  const auto body = [](const Vek8u* in, Vek8u* a, Vek8u* b, Vek8u* c) {
    const Pixels p = transform<m>(loadRgb(in));
    storeBytes(p.first, a);
    storeBytes(p.second, b);
    storeBytes(p.third, c);
  };
  forEachBlock<block>(n, body, In<3>{src}, Out<1>{y}, Out<1>{u}, Out<1>{v});
}

// Spaces to reduce chroma in.

struct Rgb {
  VWords r, g, b;
};

struct ReducedYcbcr {
  static constexpr const Matrix& matrix = RGB_YCbCr_Q10_C2;

  static VWords second(Rgb p) { return component<matrix, 1>(p.r, p.g, p.b); }
  static VWords third(Rgb p) { return component<matrix, 2>(p.r, p.g, p.b); }
};

struct ReducedYuv {
  static constexpr const Matrix& matrix = RGB_YUV_Q10_C2;

  static VWords second(Rgb p) { return difference<uFactor>(hn::Sub(p.b, luma(p))); }
  static VWords third(Rgb p) { return difference<vFactor>(hn::Sub(p.r, luma(p))); }

 private:
  static VWords luma(Rgb p) { return component<matrix, 0>(p.r, p.g, p.b); }

  /// factor * d >> 10 is the high half of (64 * factor) * d; a 64-fold factor of 32768 or more is
  /// 65536 less as a signed word, which takes d from the high half.
  template <Vek32s factor>
  static VWords difference(VWords d) {
    constexpr bool wraps = 64 * factor > 32767;
    VWords v = hn::MulHigh(d, word(64 * factor - (wraps ? 65536 : 0)));
    if constexpr (wraps) v = hn::Add(v, d);
    return clampTo<8>(hn::Add(v, word(128)));
  }
};

VWords sum(Pairs p) {
  return hn::Add(p.even, p.odd);
}

/// The rounded averages of the pairs of one row, of the blocks of two.
Rgb average(const Pixels& p) {
  const VWords half = word(1);
  return {hn::ShiftRight<1>(hn::Add(sum(p.first), half)),
          hn::ShiftRight<1>(hn::Add(sum(p.second), half)),
          hn::ShiftRight<1>(hn::Add(sum(p.third), half))};
}

Rgb average(const Pixels& top, const Pixels& bottom) {
  const auto mean = [](Pairs a, Pairs b) {
    return hn::ShiftRight<2>(hn::Add(hn::Add(sum(a), sum(b)), word(2)));
  };
  return {mean(top.first, bottom.first), mean(top.second, bottom.second),
          mean(top.third, bottom.third)};
}

/// A last pixel without a partner, as a pair: averages then give the pixel itself.
struct LonePair {
  Vek8u rgb[6];

  explicit LonePair(const Vek8u* p) : rgb{p[0], p[1], p[2], p[0], p[1], p[2]} {}
};

template <class Space>
void toInterleaved422(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  const auto body = [](const Vek8u* in, Vek8u* out) {
    const Pixels p = loadRgb(in);
    const Pairs luma = component<Space::matrix, 0>(p);
    const Rgb shared = average(p);
    hn::StoreInterleaved2(join(luma.even, Space::second(shared)),
                          join(luma.odd, Space::third(shared)), words,
                          reinterpret_cast<Vek16s*>(out));
  };
  const ptrdiff_t even = n & ~ptrdiff_t{1};
  forEachBlock<block>(even, body, In<3>{src}, Out<4, 2>{dst});
  if (even == n) return;
  const LonePair last(src + 3 * even);
  forEachBlock<block>(2, body, In<3>{last.rgb}, Out<4, 2>{dst + 2 * even});
}

template <class Space>
void toPlanes422(ptrdiff_t n, const Vek8u* src, Vek8u* y, Vek8u* u, Vek8u* v) {
  const auto body = [](const Vek8u* in, Vek8u* luma, Vek8u* second, Vek8u* third) {
    const Pixels p = loadRgb(in);
    storeBytes(component<Space::matrix, 0>(p), luma);
    const Rgb shared = average(p);
    storeHalf(Space::second(shared), second);
    storeHalf(Space::third(shared), third);
  };
  const ptrdiff_t even = n & ~ptrdiff_t{1};
  forEachBlock<block>(even, body, In<3>{src}, Out<1>{y}, Out<1, 2>{u}, Out<1, 2>{v});
  if (even == n) return;
  const LonePair last(src + 3 * even);
  Vek8u luma[2];
  forEachBlock<block>(2, body, In<3>{last.rgb}, Out<1>{luma}, Out<1, 2>{u + even / 2},
                      Out<1, 2>{v + even / 2});
  y[even] = luma[0];
}

template <class Space>
void toPlanes420(ptrdiff_t n, const Vek8u* top, const Vek8u* bottom, Vek8u* yTop, Vek8u* yBottom,
                 Vek8u* u, Vek8u* v) {
  const auto body = [](const Vek8u* upper, const Vek8u* lower, Vek8u* upperLuma, Vek8u* lowerLuma,
                       Vek8u* second, Vek8u* third) {
    const Pixels a = loadRgb(upper), b = loadRgb(lower);
    storeBytes(component<Space::matrix, 0>(a), upperLuma);
    storeBytes(component<Space::matrix, 0>(b), lowerLuma);
    const Rgb shared = average(a, b);
    storeHalf(Space::second(shared), second);
    storeHalf(Space::third(shared), third);
  };
  const ptrdiff_t even = n & ~ptrdiff_t{1};
  forEachBlock<block>(even, body, In<3>{top}, In<3>{bottom}, Out<1>{yTop}, Out<1>{yBottom},
                      Out<1, 2>{u}, Out<1, 2>{v});
  if (even == n) return;
  const LonePair lastTop(top + 3 * even), lastBottom(bottom + 3 * even);
  Vek8u upperLuma[2], lowerLuma[2];
  forEachBlock<block>(2, body, In<3>{lastTop.rgb}, In<3>{lastBottom.rgb}, Out<1>{upperLuma},
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
