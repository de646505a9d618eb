// Three-channel pixels as pairs of channels in 16-bit lanes, for dot products: each 32-bit lane works
// on one pixel. A block is as many pixels as a vector has bytes. It is loaded as four groups, whose
// pixels are in an order that suits loads and stores. NEON has its own form (neon_channel_pairs.h).
#pragma once

#include "core/kernel/blocks.h"
#include "core/kernel/interleave.h"
#include "core/kernel/lanes.h"
#include "image/color/neon_channel_pairs.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

#if !HWY_ARCH_ARM

/// One pixel in each 32-bit lane: its first and second channel, and its third and first one.
struct PixelPairs {
  V16s c01, c20;
};

using WeightPair = V16s;

inline WeightPair weightPair(Vek32s first, Vek32s second) {
  return pairOfFactors(first, second);
}

/// acc plus the products of the first two channels and their weights.
inline V32s plusFirstTwo(V32s acc, const PixelPairs& p, WeightPair w) {
  return plusDot(acc, p.c01, w);
}
/// The same of the third channel; the second weight is 0.
inline V32s plusThird(V32s acc, const PixelPairs& p, WeightPair w) {
  return plusDot(acc, p.c20, w);
}
inline V32s plusThirdAndFirst(V32s acc, const PixelPairs& p, WeightPair w) {
  return plusDot(acc, p.c20, w);
}

/// Of pixels whose channels are bytes.
inline V32s firstChannel(const PixelPairs& p) {
  return hn::And(hn::BitCast(s32, p.c01), hn::Set(s32, 0xFF));
}

struct BlockPairs {
  PixelPairs group[4];
};

/// op of what a and b have of the same channels.
template <class Op>
PixelPairs onChannels(const PixelPairs& a, const PixelPairs& b, Op op) {
  return {op(a.c01, b.c01), op(a.c20, b.c20)};
}

/// The even 32-bit lanes of a, then those of b, within each 128-bit block; and the odd ones.
inline V16s evenPixels(V16s a, V16s b) {
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
inline V16s oddPixels(V16s a, V16s b) {
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
// vector, or as the upper end in odd groups, so that no load leaves the block.

/// Where two channels of each pixel lie in the 64 loaded bytes.
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

/// For each lane of storeThirds(), where its pixel's sample lies after the groups are packed.
template <int channel>
constexpr ByteOrder packedPixelOf = [] {
  ByteOrder order = {};
  for (int i = 0; i < 64; ++i) {
    order.at[(3 * i + channel) % 64] = static_cast<Vek8u>(i / 4 % 4 * 16 + i / 16 * 4 + i % 4);
  }
  return order;
}();

/// Runs fn(PixelPairs) -> PixelLanes on a block; the results are clamped to 0..255. Storing 48 bytes
/// at a time would take fewer instructions, but is slower where memory is the bound.
template <class Fn>
void convertPairs(const Vek8u* src, Vek8u* dst, Fn fn) {
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

/// Puts the values of a block in the order of its pixels, after those of its groups were packed.
inline V8u inOrder(V8u v) {
  alignas(64) static constexpr Vek32s transposed[16] = {0, 4, 8,  12, 1, 5, 9,  13,
                                                        2, 6, 10, 14, 3, 7, 11, 15};
  return V8u{_mm512_permutexvar_epi32(_mm512_load_si512(transposed), v.raw)};
}

/// Each pair of pixels has two values side by side, and the pairs are in the order of packed groups:
/// all first values in the order of the pixels, then all second ones.
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

// Group g has in 128-bit block k the pixels 16 k + 4 g .. 16 k + 4 g + 3.

/// Where two channels of each pixel lie in the 16 loaded bytes.
template <int first, int second, int g>
constexpr ShuffleOrder channelsOfGroup = [] {
  ShuffleOrder order = {};
  for (Vek8u& at : order.at) at = noByte;
  for (int i = 0; i < 4; ++i) {
    order.at[4 * i] = static_cast<Vek8u>(3 * i + first + (g == 3 ? 4 : 0));
    order.at[4 * i + 2] = static_cast<Vek8u>(3 * i + second + (g == 3 ? 4 : 0));
  }
  return order;
}();

/// Loads 16 bytes for each 128-bit block, 48 bytes apart.
inline V8u load128BitBlocks(const Vek8u* src) {
  if constexpr (vectorBytes == 16) {
    return hn::LoadU(u8, src);
  } else {
    const hn::Half<decltype(u8)> half;
    return hn::Combine(u8, hn::LoadU(half, src + 48), hn::LoadU(half, src));
  }
}

/// Four pixels, which take 12 bytes, in each 128-bit block. Those of the last group are loaded with
/// the 4 bytes before them, so that no load leaves the block of pixels.
template <int g>
PixelPairs groupOf(const Vek8u* src) {
  const V8u v = load128BitBlocks(src + 12 * g - (g == 3 ? 4 : 0));
  return {hn::BitCast(s16, shuffled(channelsOfGroup<0, 1, g>, v)),
          hn::BitCast(s16, shuffled(channelsOfGroup<2, 0, g>, v))};
}

inline BlockPairs loadPairs(const Vek8u* src) {
  return {{groupOf<0>(src), groupOf<1>(src), groupOf<2>(src), groupOf<3>(src)}};
}

/// Interleaves four pixels of each 128-bit block: channel c of pixel i becomes byte 3 i + c of 12. The
/// block holds four samples of the first channel, four of the second one, then those of the third
/// one, with another group's before them in odd groups. Three stores take the bytes of four groups:
/// the first 4 g of the 12 end the 16 bytes that the group before began and come first; the others
/// begin the next 16 and are the upper end of the block. One shift joins the two ends.
template <int g>
constexpr ShuffleOrder interleavedGroup = [] {
  ShuffleOrder order = {};
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
void convertPairs(const Vek8u* src, Vek8u* dst, Fn fn) {
  V8u groups[4];
  const auto convertTwo = [&]<int g>() {
    const PixelLanes a = fn(groupOf<g>(src)), b = fn(groupOf<g + 1>(src));
    const V16s third = packClamped(a.c2, b.c2);
    groups[g] = shuffled(interleavedGroup<g>, packClamped(packClamped(a.c0, a.c1), third));
    groups[g + 1] = shuffled(interleavedGroup<g + 1>, packClamped(packClamped(b.c0, b.c1), third));
  };
  convertTwo.template operator()<0>();
  convertTwo.template operator()<2>();
  store128BitBlocks(hn::CombineShiftRightBytes<4>(u8, groups[1], groups[0]), dst);
  store128BitBlocks(hn::CombineShiftRightBytes<8>(u8, groups[2], groups[1]), dst + 16);
  store128BitBlocks(hn::CombineShiftRightBytes<12>(u8, groups[3], groups[2]), dst + 32);
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

#endif  // of AVX-512

#endif  // of all but NEON

/// Runs fn(PixelPairs) -> PixelLanes on every pixel of a row; the results are clamped to 0..255.
template <class Fn>
void convertPixelPairs(ptrdiff_t n, const Vek8u* src, Vek8u* dst, Fn fn) {
  const auto body = [&fn](Vek8u* out, const Vek8u* in) { convertPairs(in, out, fn); };
  copiedBlocks<vectorBytes>(n, body, Out<3>{dst}, In<3>{src});
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
