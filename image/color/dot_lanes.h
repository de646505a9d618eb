// Linear combinations of a pixel's channels as dot products of 16-bit words: each 32-bit lane works
// on one pixel. A block of pixels is four vectors, in an order that suits loads and stores.
#pragma once

#include "core/kernel/lanes.h"
#include "image/color/pixel_lanes.h"
#include "image/color/twist_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// One pixel in each 32-bit lane: its first two channels as words, and the third one with the first.
struct PixelPairs {
  V16s c01, c20;
};

/// A block as it is loaded, and any value computed from each of its pixels.
struct BlockPairs {
  PixelPairs group[4];
};

/// The even 32-bit lanes of a, then those of b, in each 128-bit lane; and the odd ones.
inline V16s evenInts(V16s a, V16s b) {
#if defined(__AVX512BW__)
  return V16s{_mm512_castps_si512(
      _mm512_shuffle_ps(_mm512_castsi512_ps(a.raw), _mm512_castsi512_ps(b.raw), 0x88))};
#elif defined(__AVX2__)
  return V16s{_mm256_castps_si256(
      _mm256_shuffle_ps(_mm256_castsi256_ps(a.raw), _mm256_castsi256_ps(b.raw), 0x88))};
#else
  return hn::BitCast(s16, hn::ConcatEven(s32, hn::BitCast(s32, b), hn::BitCast(s32, a)));
#endif
}
inline V16s oddInts(V16s a, V16s b) {
#if defined(__AVX512BW__)
  return V16s{_mm512_castps_si512(
      _mm512_shuffle_ps(_mm512_castsi512_ps(a.raw), _mm512_castsi512_ps(b.raw), 0xDD))};
#elif defined(__AVX2__)
  return V16s{_mm256_castps_si256(
      _mm256_shuffle_ps(_mm256_castsi256_ps(a.raw), _mm256_castsi256_ps(b.raw), 0xDD))};
#else
  return hn::BitCast(s16, hn::ConcatOdd(s32, hn::BitCast(s32, b), hn::BitCast(s32, a)));
#endif
}

#if defined(__AVX512VBMI__)

// Group g is pixels 16 g .. 16 g + 15, in order. Their 48 bytes are loaded as the lower end of a
// vector, or as the upper one in odd groups, so that no load leaves the block.

template <int first, int second, bool odd>
constexpr ByteOrder channelsOfGroup = [] {
  ByteOrder order = {};
  for (int i = 0; i < 16; ++i) {
    order.at[4 * i] = static_cast<Vek8u>(3 * i + first + (odd ? 16 : 0));
    order.at[4 * i + 2] = static_cast<Vek8u>(3 * i + second + (odd ? 16 : 0));
  }
  return order;
}();

template <bool odd>
PixelPairs groupOf(const Vek8u* src) {
  const __m512i v = _mm512_loadu_si512(src - (odd ? 16 : 0));
  const auto channels = [v](const ByteOrder& order) {
    return V16s{_mm512_maskz_permutexvar_epi8(0x5555555555555555, _mm512_load_si512(order.at), v)};
  };
  return {channels(channelsOfGroup<0, 1, odd>), channels(channelsOfGroup<2, 0, odd>)};
}

inline BlockPairs loadPairs(const Vek8u* src) {
  return {{groupOf<false>(src), groupOf<true>(src + 48), groupOf<false>(src + 96),
           groupOf<true>(src + 144)}};
}

/// For each lane of storeThirds() where its pixel's sample lies when groups are packed.
template <int channel>
constexpr ByteOrder packedPixelOf = [] {
  ByteOrder order = {};
  for (int i = 0; i < 64; ++i) {
    order.at[(3 * i + channel) % 64] = static_cast<Vek8u>(i / 4 % 4 * 16 + i / 16 * 4 + i % 4);
  }
  return order;
}();

/// Runs fn(PixelPairs) -> PixelLanes on a block; the results are clamped to 0..255. Whole vectors
/// are worth more than fewer instructions: 48 bytes at a time take longer where memory is the bound.
template <class Fn>
void convertBlock(const Vek8u* src, Vek8u* dst, Fn fn) {
  const BlockPairs pairs = loadPairs(src);
  const PixelLanes a = fn(pairs.group[0]), b = fn(pairs.group[1]);
  const PixelLanes c = fn(pairs.group[2]), d = fn(pairs.group[3]);
  const auto packed = [&](V32s PixelLanes::*channel) {
    return packClamped(packClamped(a.*channel, b.*channel), packClamped(c.*channel, d.*channel))
        .raw;
  };
  storeThirds(permuted(packedPixelOf<0>, packed(&PixelLanes::c0)),
              permuted(packedPixelOf<1>, packed(&PixelLanes::c1)),
              permuted(packedPixelOf<2>, packed(&PixelLanes::c2)), dst);
}

/// One channel of a block, from packed values of its groups.
inline V8u inOrder(V8u v) {
  alignas(64) static constexpr Vek32s transposed[16] = {0, 4, 8,  12, 1, 5, 9,  13,
                                                        2, 6, 10, 14, 3, 7, 11, 15};
  return V8u{_mm512_permutexvar_epi32(_mm512_load_si512(transposed), v.raw)};
}

/// Two values of each pixel pair, side by side, as they come from groups: all of the first, then all
/// of the second one.
inline V8u firstThenSecond(V8u v) {
  static constexpr ByteOrder order = [] {
    ByteOrder o = {};
    for (int i = 0; i < 64; ++i) {
      const int pair = i % 32;
      o.at[i] = static_cast<Vek8u>(pair % 8 / 2 * 16 + pair / 8 * 4 + pair % 2 * 2 + i / 32);
    }
    return o;
  }();
  return V8u{permuted(order, v.raw)};
}

#else

// Group g has in 128-bit lane k the pixels 16 k + 4 g .. 16 k + 4 g + 3.

template <int first, int second, int g>
constexpr LaneOrder channelsOfGroup = [] {
  LaneOrder order = {};
  for (Vek8u& at : order.at) at = noByte;
  for (int i = 0; i < 4; ++i) {
    order.at[4 * i] = static_cast<Vek8u>(3 * i + first + (g == 3 ? 4 : 0));
    order.at[4 * i + 2] = static_cast<Vek8u>(3 * i + second + (g == 3 ? 4 : 0));
  }
  return order;
}();

/// 16 bytes for each lane, 48 bytes apart.
template <class D>
hn::Vec<D> loadLanes(D d, const Vek8u* src) {
  if constexpr (hn::MaxLanes(D()) == 16) {
    return hn::LoadU(d, src);
  } else {
    const hn::Half<D> half;
    return hn::Combine(d, hn::LoadU(half, src + 48), hn::LoadU(half, src));
  }
}

/// The 12 bytes of four pixels in each lane; those of the last group are loaded from 4 bytes
/// before, so that no load leaves the block.
template <int g>
PixelPairs groupOf(const Vek8u* src) {
  const V8u v = loadLanes(u8, src + 12 * g - (g == 3 ? 4 : 0));
  return {hn::BitCast(s16, shuffled(channelsOfGroup<0, 1, g>, v)),
          hn::BitCast(s16, shuffled(channelsOfGroup<2, 0, g>, v))};
}

inline BlockPairs loadPairs(const Vek8u* src) {
  return {{groupOf<0>(src), groupOf<1>(src), groupOf<2>(src), groupOf<3>(src)}};
}

/// Byte 3 i + c of a lane's four pixels, which come with the first channel of all four, the second
/// one, then the third one (even groups) or another group's and the third one. Bytes from 4 g on
/// lie four places higher, where they meet the bytes of the next group when both are shifted
/// together.
template <int g>
constexpr LaneOrder interleavedGroup = [] {
  LaneOrder order = {};
  for (int i = 0; i < 4; ++i) {
    for (int c = 0; c < 3; ++c) {
      const int at = 3 * i + c;
      order.at[at < 4 * g ? at : at + 4] = static_cast<Vek8u>((c < 2 ? 4 * c
                                                               : g % 2 == 0 ? 8
                                                                            : 12) +
                                                              i);
    }
  }
  return order;
}();

/// Runs fn(PixelPairs) -> PixelLanes on a block; the results are clamped to 0..255.
template <class Fn>
void convertBlock(const Vek8u* src, Vek8u* dst, Fn fn) {
  V8u lanes[4];
  const auto convertTwo = [&]<int g>() {
    const PixelLanes a = fn(groupOf<g>(src)), b = fn(groupOf<g + 1>(src));
    const V16s third = packClamped(a.c2, b.c2);
    lanes[g] = shuffled(interleavedGroup<g>, packClamped(packClamped(a.c0, a.c1), third));
    lanes[g + 1] = shuffled(interleavedGroup<g + 1>, packClamped(packClamped(b.c0, b.c1), third));
  };
  convertTwo.template operator()<0>();
  convertTwo.template operator()<2>();
  storeLanes(hn::CombineShiftRightBytes<4>(u8, lanes[1], lanes[0]), dst);
  storeLanes(hn::CombineShiftRightBytes<8>(u8, lanes[2], lanes[1]), dst + 16);
  storeLanes(hn::CombineShiftRightBytes<12>(u8, lanes[3], lanes[2]), dst + 32);
}

inline V8u inOrder(V8u v) {
  return v;
}

inline V8u firstThenSecond(V8u v) {
  alignas(16) static constexpr Vek8u order[16] = {0, 2, 4, 6, 8, 10, 12, 14,
                                                  1, 3, 5, 7, 9, 11, 13, 15};
  const V8u halves = hn::TableLookupBytes(v, hn::LoadDup128(u8, order));
#if defined(__AVX2__)
  return V8u{_mm256_permute4x64_epi64(halves.raw, 0xD8)};
#else
  return halves;
#endif
}

#endif

/// A combination ready for dot products: its weights as pairs, rounding within the offset.
template <int shift>
struct CombinationLanes {
  V16s w01, w2;
  V32s offset;

  explicit CombinationLanes(const Combination& c, Vek32s rounding = 1 << (shift - 1))
      : w01(pairOfFactors(c.weight[0], c.weight[1])),
        w2(pairOfFactors(c.weight[2], 0)),
        offset(hn::Set(s32, c.offset + rounding)) {}

  V32s of(const PixelPairs& p) const {
    return hn::ShiftRight<shift>(plusDot(plusDot(offset, p.c01, w01), p.c20, w2));
  }

  /// Of the groups of a block, clamped to 0..255.
  V8u packed(const BlockPairs& p) const {
    return packClamped(packClamped(of(p.group[0]), of(p.group[1])),
                       packClamped(of(p.group[2]), of(p.group[3])));
  }
};

/// Three combinations, the channels of other pixels.
template <int shift>
struct TwistLanes {
  CombinationLanes<shift> x, y, z;

  explicit TwistLanes(const Combination* channels)
      : x(channels[0]), y(channels[1]), z(channels[2]) {}
  PixelLanes of(const PixelPairs& p) const { return {x.of(p), y.of(p), z.of(p)}; }
};

/// A combination that is known, of two or three channels.
template <const Combination& c, int shift>
V32s combined(const PixelPairs& p) {
  const V32s start = hn::Set(s32, c.offset);
  if constexpr (c.weight[1] == 0) {
    return hn::ShiftRight<shift>(plusDot(start, p.c20, pairOfFactors(c.weight[2], c.weight[0])));
  } else {
    const V32s sum = plusDot(start, p.c01, pairOfFactors(c.weight[0], c.weight[1]));
    return hn::ShiftRight<shift>(
        c.weight[2] == 0 ? sum : plusDot(sum, p.c20, pairOfFactors(c.weight[2], 0)));
  }
}

/// Runs fn(PixelPairs) -> PixelLanes on every pixel of a row; the results are clamped to 0..255.
template <class Fn>
void convertPixelPairs(const Vek8u* src, Vek8u* dst, ptrdiff_t n, Fn fn) {
  const auto body = [&fn](Vek8u* out, const Vek8u* in) { convertBlock(in, out, fn); };
  copiedBlocks<vectorBytes>(n, body, Out<3>{dst}, In<3>{src});
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
