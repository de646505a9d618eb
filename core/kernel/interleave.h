// Three-channel pixels between memory and one vector for each channel.
#pragma once

#include "core/kernel/blocks.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// One channel each of as many pixels as a vector has bytes.
struct Channels {
  using V = hn::Vec<hn::ScalableTag<Vek8u>>;
  V c0, c1, c2;
};

#if defined(__AVX512VBMI__)

// Of the three vectors in memory every third byte belongs to a channel, at another phase in each:
// two blends collect the 64 samples of a channel, and one permutation puts them in order. Sample i
// of channel c is byte 3 i + c of the block, so it sits in lane (3 i + c) % 64.

struct ByteOrder {
  alignas(64) Vek8u at[64];
};

/// For each pixel the lane that its sample of a channel is collected in.
template <int channel>
constexpr ByteOrder collectedAt = [] {
  ByteOrder order = {};
  for (int i = 0; i < 64; ++i) order.at[i] = static_cast<Vek8u>((3 * i + channel) % 64);
  return order;
}();

/// The inverse: for each lane the pixel whose sample is collected in it.
template <int channel>
constexpr ByteOrder pixelOf = [] {
  ByteOrder order = {};
  for (int i = 0; i < 64; ++i) order.at[(3 * i + channel) % 64] = static_cast<Vek8u>(i);
  return order;
}();

constexpr __mmask64 everyThird = 0x9249249249249249;  // lanes 0, 3, ..., 63

/// Lanes 0, 3, ... of a, lanes 1, 4, ... of b, lanes 2, 5, ... of c.
inline __m512i blendThirds(__m512i a, __m512i b, __m512i c) {
  return _mm512_mask_mov_epi8(_mm512_mask_mov_epi8(c, everyThird, a), everyThird << 1, b);
}

inline __m512i permuted(const ByteOrder& order, __m512i v) {
  return _mm512_permutexvar_epi8(_mm512_load_si512(order.at), v);
}

/// The channels of three vectors that follow each other in memory, in the order of collection.
inline Channels separated(Channels::V first, Channels::V second, Channels::V third) {
  const __m512i a = first.raw, b = second.raw, c = third.raw;
  return {Channels::V{blendThirds(a, c, b)}, Channels::V{blendThirds(b, a, c)},
          Channels::V{blendThirds(c, b, a)}};
}

inline Channels loadChannels(const Vek8u* src) {
  const hn::ScalableTag<Vek8u> d;
  const Channels v = separated(hn::LoadU(d, src), hn::LoadU(d, src + 64), hn::LoadU(d, src + 128));
  return {Channels::V{permuted(collectedAt<0>, v.c0.raw)},
          Channels::V{permuted(collectedAt<1>, v.c1.raw)},
          Channels::V{permuted(collectedAt<2>, v.c2.raw)}};
}

/// Stores channels whose samples are in the lanes that they were collected in.
inline void storeThirds(__m512i x, __m512i y, __m512i z, Vek8u* dst) {
  _mm512_storeu_si512(dst, blendThirds(x, y, z));
  _mm512_storeu_si512(dst + 64, blendThirds(y, z, x));
  _mm512_storeu_si512(dst + 128, blendThirds(z, x, y));
}

inline void storeChannels(const Channels& v, Vek8u* dst) {
  storeThirds(permuted(pixelOf<0>, v.c0.raw), permuted(pixelOf<1>, v.c1.raw),
              permuted(pixelOf<2>, v.c2.raw), dst);
}

#else

struct LaneOrder {
  alignas(16) Vek8u at[16];
};

constexpr Vek8u noByte = 0x80;

inline Channels::V shuffled(const LaneOrder& order, Channels::V v) {
  return hn::TableLookupBytesOr0(v, hn::LoadDup128(hn::ScalableTag<Vek8u>(), order.at));
}

/// 16 bytes of each lane, 48 bytes apart.
inline void storeLanes(Channels::V v, Vek8u* dst) {
  const hn::ScalableTag<Vek8u> d;
  if constexpr (hn::MaxLanes(d) == 16) {
    hn::StoreU(v, d, dst);
  } else {
    const hn::Half<decltype(d)> half;
    hn::StoreU(hn::LowerHalf(half, v), half, dst);
    hn::StoreU(hn::UpperHalf(half, v), half, dst + 48);
  }
}

/// Of 0xFF in lanes that are `phase` more than a multiple of 3, else 0.
template <int phase>
Channels::V thirdOfLanes() {
  const hn::ScalableTag<Vek8u> d;
  static constexpr auto flags = [] {
    struct {
      alignas(32) Vek8u at[32];
    } table = {};
    for (int i = phase; i < 32; i += 3) table.at[i] = 0xFF;
    return table;
  }();
  static_assert(hn::MaxLanes(d) <= 32);
  return hn::Load(d, flags.at);
}

/// Lanes 0, 3, ... of a, lanes 1, 4, ... of b, lanes 2, 5, ... of c.
inline Channels::V blendThirds(Channels::V a, Channels::V b, Channels::V c) {
  const auto isFirst = hn::MaskFromVec(thirdOfLanes<0>());
  const auto isSecond = hn::MaskFromVec(thirdOfLanes<1>());
  return hn::IfThenElse(isFirst, a, hn::IfThenElse(isSecond, b, c));
}

/// The channels of three vectors that follow each other in memory, each in an order of its own.
inline Channels separated(Channels::V first, Channels::V second, Channels::V third) {
  if constexpr (hn::MaxLanes(hn::ScalableTag<Vek8u>()) % 3 == 1) {
    return {blendThirds(first, third, second), blendThirds(second, first, third),
            blendThirds(third, second, first)};
  } else {
    return {blendThirds(first, second, third), blendThirds(third, first, second),
            blendThirds(second, third, first)};
  }
}

inline Channels loadChannels(const Vek8u* src) {
  Channels v;
  hn::LoadInterleaved3(hn::ScalableTag<Vek8u>(), src, v.c0, v.c1, v.c2);
  return v;
}

#if defined(__AVX2__)

/// For 16 of the 48 bytes that a 128-bit lane's pixels take, from byte 16 * third on, where a channel's
/// samples lie in its lane; no byte where another channel's belong. Pixel i's sample is at lane i, or
/// the even pixels' come before the odd ones'.
template <int channel, int third, bool evenFirst>
constexpr LaneOrder thirdOfPixels = [] {
  LaneOrder order = {};
  for (int j = 0; j < 16; ++j) {
    const int pixel = (16 * third + j) / 3;
    const int at = evenFirst ? pixel % 2 * 8 + pixel / 2 : pixel;
    order.at[j] = (16 * third + j) % 3 == channel ? static_cast<Vek8u>(at) : noByte;
  }
  return order;
}();

template <bool evenFirst = false>
void storeChannels(const Channels& v, Vek8u* dst) {
  const auto storeThird = [&]<int third>() {
    storeLanes(hn::Or(hn::Or(shuffled(thirdOfPixels<0, third, evenFirst>, v.c0),
                             shuffled(thirdOfPixels<1, third, evenFirst>, v.c1)),
                      shuffled(thirdOfPixels<2, third, evenFirst>, v.c2)),
               dst + 16 * third);
  };
  storeThird.template operator()<0>();
  storeThird.template operator()<1>();
  storeThird.template operator()<2>();
}

#else

inline void storeChannels(const Channels& v, Vek8u* dst) {
  hn::StoreInterleaved3(v.c0, v.c1, v.c2, hn::ScalableTag<Vek8u>(), dst);
}

#endif

#endif

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
