#include "image/color/ycbcr_rows.h"

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

#include "core/kernel/pixel_format.h"
#include "image/color/pixel_lanes.h"
#include "image/color/ycbcr_matrices.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::Rebind<Vek8u, hn::ScalableTag<Vek16s>> halfByteLanes;

/// The samples of a block, those of its even and of its odd pixels. Chroma that pixels share is the
/// same vector in both, and what is computed from it is computed once.
struct Block {
  PixelWords even, odd;
};

VWord word(Vek32s value) {
  return wordConstant(static_cast<Vek16s>(value));
}

Block split(VBytes a, VBytes b, VBytes c) {
  return {{evenBytes(a), evenBytes(b), evenBytes(c)}, {oddBytes(a), oddBytes(b), oddBytes(c)}};
}

Block loadTriples(const Vek8u* src) {
  const Channels v = loadChannels(src);
  return split(v.c0, v.c1, v.c2);
}

void storeBytes(VWord even, VWord odd, Vek8u* dst) {
  hn::StoreU(joinBytes(even, odd), byteLanes, dst);
}

void storeHalf(VWord v, Vek8u* dst) {
  hn::StoreU(hn::DemoteTo(halfByteLanes, v), halfByteLanes, dst);
}

/// Two streams of words, one word of each in turn.
void storeWords(VWord first, VWord second, Vek8u* dst) {
  hn::StoreInterleaved2(first, second, wordLanes, reinterpret_cast<Vek16s*>(dst));
}

template <int bits>
VWord clampTo(VWord v) {
  return hn::Min(hn::Max(v, word(0)), word((1 << bits) - 1));
}

template <const Matrix& m>
PixelWords centre(PixelWords p) {
  return {hn::Sub(p.c0, word(m.centre[0])), hn::Sub(p.c1, word(m.centre[1])),
          hn::Sub(p.c2, word(m.centre[2]))};
}

/// acc + v * factor
template <Vek32s factor>
VWord plusTimes(VWord acc, VWord v) {
  if constexpr (factor == 0) return acc;
  if constexpr (factor == 1) return hn::Add(acc, v);
  return hn::Add(acc, hn::Mul(v, word(factor)));
}

/// Output k of an inverse matrix, reduced to `bits` bits. Each factor is split as w = 16 h + l with
/// 0
/// <= l < 16, and floor((16 H + L) / 2^n) = (H + floor(L / 16)) >> (n - 4). |L| is at most 8 * 239
/// + 30 * 128 + 15. H leaves 16 bits only upwards, for blue from YCbCr (74 * 239 + 129 * 127 =
/// 34069), and saturates far above what every field clamps to.
template <const Matrix& m, int k, int bits>
VWord component(PixelWords sample) {
  constexpr Vek32s offset = m.offset[k];
  constexpr const Vek32s(&f)[3] = m.factor[k];
  const PixelWords p = centre<m>(sample);
  const VWord restHigh =
      plusTimes<(f[2] >> 4)>(plusTimes<(f[1] >> 4)>(word(offset >> 4), p.c1), p.c2);
  const VWord restLow =
      plusTimes<(f[2] & 15)>(plusTimes<(f[1] & 15)>(word(offset & 15), p.c1), p.c2);
  VWord value;
  if constexpr (f[0] == 1024) {
    const VWord rest = hn::ShiftRight<6>(hn::Add(restHigh, hn::ShiftRight<4>(restLow)));
    value = hn::ShiftRight<8 - bits>(hn::Add(p.c0, rest));
  } else {
    const VWord high = hn::SaturatedAdd(hn::Mul(p.c0, word(f[0] >> 4)), restHigh);
    const VWord low = hn::ShiftRight<4>(plusTimes<(f[0] & 15)>(restLow, p.c0));
    value = hn::ShiftRight<14 - bits>(hn::SaturatedAdd(high, low));
  }
  return clampTo<bits>(value);
}

/// a0 * b0 + a1 * b1 of the two words in each 32-bit lane.
VInt dot(VWord a, VWord b) {
#if HWY_ARCH_X86
  VInt unused = constant(0);
  return hn::ReorderWidenMulAccumulate(intLanes, a, b, constant(0), unused);
#else
  const VInt a2 = hn::BitCast(intLanes, a), b2 = hn::BitCast(intLanes, b);
  const VInt low =
      hn::Mul(hn::ShiftRight<16>(hn::ShiftLeft<16>(a2)), hn::ShiftRight<16>(hn::ShiftLeft<16>(b2)));
  return hn::Add(low, hn::Mul(hn::ShiftRight<16>(a2), hn::ShiftRight<16>(b2)));
#endif
}

VWord twoWords(Vek32s first, Vek32s second) {
  return hn::BitCast(wordLanes, constant((first & 0xFFFF) | second * 65536));
}

/// The first two samples side by side in 32-bit lanes, and the third beside a constant.
struct SideBySide {
  VWord firstTwo[2], third[2];
};

/// Offsets ride along as the product of a constant word with one that fits 16 bits.
template <const Matrix& m>
constexpr Vek32s offsetUnit =
    m.offset[0] % 512 == 0 && m.offset[1] % 512 == 0 && m.offset[2] % 512 == 0 ? 512 : 1;

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

template <const Matrix& m, int k>
VWord component(const SideBySide& p) {
  const VWord firstTwo = twoWords(m.factor[k][0], m.factor[k][1]);
  const VWord third = twoWords(m.factor[k][2], m.offset[k] / offsetUnit<m>);
  const VInt lower = hn::Add(dot(p.firstTwo[0], firstTwo), dot(p.third[0], third));
  const VInt upper = hn::Add(dot(p.firstTwo[1], firstTwo), dot(p.third[1], third));
  const VWord value =
      hn::ReorderDemote2To(wordLanes, hn::ShiftRight<10>(lower), hn::ShiftRight<10>(upper));
  return inRange<m, k>() ? value : clampTo<8>(value);
}

/// All outputs with 8 bits. Where each pixel has samples of its own and most factors are at work,
/// exact 32-bit sums take fewer instructions than split factors.
template <const Matrix& m>
PixelWords transform(PixelWords sample) {
  const PixelWords p = centre<m>(sample);
  const VWord unit = word(offsetUnit<m>);
  const SideBySide s = {
      {hn::InterleaveLower(wordLanes, p.c0, p.c1), hn::InterleaveUpper(wordLanes, p.c0, p.c1)},
      {hn::InterleaveLower(wordLanes, p.c2, unit), hn::InterleaveUpper(wordLanes, p.c2, unit)}};
  return {component<m, 0>(s), component<m, 1>(s), component<m, 2>(s)};
}

struct Planes444 {
  using Chroma = In<1>;
  static constexpr bool shared = false;

  static Block load(const Vek8u* y, const Vek8u* u, const Vek8u* v) {
    return split(hn::LoadU(byteLanes, y), hn::LoadU(byteLanes, u), hn::LoadU(byteLanes, v));
  }
};

struct Planes422 {
  using Chroma = In<1, 2>;
  static constexpr bool shared = true;

  static Block load(const Vek8u* y, const Vek8u* u, const Vek8u* v) {
    const VBytes luma = hn::LoadU(byteLanes, y);
    const VWord b = hn::PromoteTo(wordLanes, hn::LoadU(halfByteLanes, u));
    const VWord r = hn::PromoteTo(wordLanes, hn::LoadU(halfByteLanes, v));
    return {{evenBytes(luma), b, r}, {oddBytes(luma), b, r}};
  }
};

struct Interleaved444 {
  using Stream = In<3>;
  static constexpr bool shared = false;

  static Block load(const Vek8u* src) { return loadTriples(src); }
};

struct Interleaved422 {
  using Stream = In<4, 2>;
  static constexpr bool shared = true;

  static Block load(const Vek8u* src) {
    VWord left, right;  // Y0 and Cb, Y1 and Cr
    hn::LoadInterleaved2(wordLanes, reinterpret_cast<const Vek16s*>(src), left, right);
    const VBytes l = hn::BitCast(byteLanes, left), r = hn::BitCast(byteLanes, right);
    const VWord b = oddBytes(l), v = oddBytes(r);
    return {{evenBytes(l), b, v}, {evenBytes(r), b, v}};
  }
};

template <class Format>
VWord packWord(PixelWords p) {
  return hn::Or(hn::Or(hn::ShiftLeft<Format::rPos>(p.c0), hn::ShiftLeft<Format::gPos>(p.c1)),
                hn::ShiftLeft<Format::bPos>(p.c2));
}

template <class Format>
void store(PixelWords even, PixelWords odd, Vek8u* dst) {
  if constexpr (Format::bytes == 2) {
    storeWords(packWord<Format>(even), packWord<Format>(odd), dst);
  } else {
    storeChannels(
        {joinBytes(even.c0, odd.c0), joinBytes(even.c1, odd.c1), joinBytes(even.c2, odd.c2)}, dst);
  }
}

template <class Source, const Matrix& m, class Format>
void convert(const Block& p, Vek8u* dst) {
  constexpr bool plainLuma = m.factor[0][0] == 1024;  // added as it is, not multiplied
  if constexpr (Format::bytes == 3 && !Source::shared && !plainLuma) {
    store<Format>(transform<m>(p.even), transform<m>(p.odd), dst);
  } else {
    const auto outputs = [](PixelWords q) {
      return PixelWords{component<m, 0, Format::rBits>(q), component<m, 1, Format::gBits>(q),
                        component<m, 2, Format::bBits>(q)};
    };
    store<Format>(outputs(p.even), outputs(p.odd), dst);
  }
}

template <class Source, const Matrix& m, class Format>
void fromPlanes(ptrdiff_t n, const Vek8u* y, const Vek8u* u, const Vek8u* v, Vek8u* dst) {
  using Chroma = typename Source::Chroma;
  const auto body = [](Vek8u* out, const Vek8u* a, const Vek8u* b, const Vek8u* c) {
    convert<Source, m, Format>(Source::load(a, b, c), out);
  };
  forEachBlock<pixelBlock>(n, body, Out<Format::bytes>{dst}, In<1>{y}, Chroma{u}, Chroma{v});
}

template <class Source, const Matrix& m, class Format>
void fromInterleaved(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  const auto body = [](Vek8u* out, const Vek8u* in) {
    convert<Source, m, Format>(Source::load(in), out);
  };
  forEachBlock<pixelBlock>(n, body, Out<Format::bytes>{dst}, typename Source::Stream{src});
}

template <const Matrix& m>
void toPlanes444(ptrdiff_t n, const Vek8u* src, Vek8u* y, Vek8u* u, Vek8u* v) {
  const auto body = [](const Vek8u* in, Vek8u* a, Vek8u* b, Vek8u* c) {
    const Block p = loadTriples(in);
    const PixelWords even = transform<m>(p.even), odd = transform<m>(p.odd);
    storeBytes(even.c0, odd.c0, a);
    storeBytes(even.c1, odd.c1, b);
    storeBytes(even.c2, odd.c2, c);
  };
  forEachBlock<pixelBlock>(n, body, In<3>{src}, Out<1>{y}, Out<1>{u}, Out<1>{v});
}

// Spaces to reduce chroma in.

struct ReducedYcbcr {
  static VWord luma(PixelWords rgb) { return transform<RGB_YCbCr_Q10_C2>(rgb).c0; }
  static VWord second(PixelWords rgb) { return transform<RGB_YCbCr_Q10_C2>(rgb).c1; }
  static VWord third(PixelWords rgb) { return transform<RGB_YCbCr_Q10_C2>(rgb).c2; }
};

struct ReducedYuv {
  static VWord luma(PixelWords rgb) { return transform<RGB_YUV_Q10_C2>(rgb).c0; }
  static VWord second(PixelWords rgb) { return difference<uFactor>(hn::Sub(rgb.c2, luma(rgb))); }
  static VWord third(PixelWords rgb) { return difference<vFactor>(hn::Sub(rgb.c0, luma(rgb))); }

 private:
  /// factor * d >> 10 is the high half of (64 * factor) * d; a 64-fold factor of 32768 or more is
  /// 65536 less as a signed word, which takes d from the high half.
  template <Vek32s factor>
  static VWord difference(VWord d) {
    constexpr bool wraps = 64 * factor > 32767;
    VWord v = hn::MulHigh(d, word(64 * factor - (wraps ? 65536 : 0)));
    if constexpr (wraps) v = hn::Add(v, d);
    return clampTo<8>(hn::Add(v, word(128)));
  }
};

/// The rounded averages of the pairs of one row, and of the 2 x 2 blocks of two.
PixelWords average(const Block& row) {
  const auto mean = [](VWord a, VWord b) {
    return hn::ShiftRight<1>(hn::Add(hn::Add(a, b), word(1)));
  };
  return {mean(row.even.c0, row.odd.c0), mean(row.even.c1, row.odd.c1),
          mean(row.even.c2, row.odd.c2)};
}

PixelWords average(const Block& top, const Block& bottom) {
  const auto mean = [](VWord a, VWord b, VWord c, VWord d) {
    return hn::ShiftRight<2>(hn::Add(hn::Add(hn::Add(a, b), hn::Add(c, d)), word(2)));
  };
  return {mean(top.even.c0, top.odd.c0, bottom.even.c0, bottom.odd.c0),
          mean(top.even.c1, top.odd.c1, bottom.even.c1, bottom.odd.c1),
          mean(top.even.c2, top.odd.c2, bottom.even.c2, bottom.odd.c2)};
}

template <class Space>
void storeLuma(const Block& p, Vek8u* dst) {
  storeBytes(Space::luma(p.even), Space::luma(p.odd), dst);
}

template <class Space>
void storeChroma(PixelWords shared, Vek8u* second, Vek8u* third) {
  storeHalf(Space::second(shared), second);
  storeHalf(Space::third(shared), third);
}

/// A last pixel without a partner, as a pair: averages then give the pixel itself.
struct LonePair {
  Vek8u rgb[6];

  explicit LonePair(const Vek8u* p) : rgb{p[0], p[1], p[2], p[0], p[1], p[2]} {}
};

template <class Space>
void toInterleaved422(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  const auto body = [](const Vek8u* in, Vek8u* out) {
    const Block p = loadTriples(in);
    const PixelWords shared = average(p);
    storeWords(hn::Or(Space::luma(p.even), hn::ShiftLeft<8>(Space::second(shared))),
               hn::Or(Space::luma(p.odd), hn::ShiftLeft<8>(Space::third(shared))), out);
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
    const Block p = loadTriples(in);
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
    const Block a = loadTriples(upper), b = loadTriples(lower);
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
