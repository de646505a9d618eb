// Loads and stores of three-channel pixels, with one vector for each channel. A block is as many
// pixels as a vector has bytes, so it takes three vectors in memory.
#pragma once

#include "core/kernel/lanes.h"
#include "core/kernel/unroll.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// The three channels of a block.
struct Channels {
  V8u c0, c1, c2;
};

/// The three channels of a pixel in each 32-bit lane.
struct PixelLanes {
  V32s c0, c1, c2;
};

#if defined(__AVX512VBMI__)

// Sample i of channel c is byte 3 i + c of the block: it sits in lane (3 i + c) % 64 of one of the
// three vectors in memory. No two samples of a channel share a lane, so two blends collect the 64
// samples of a channel in one vector, and one permutation puts them in order. Channel 0, for
// example, has pixel 0 in lane 0 of the first vector, pixel 22 in lane 2 of the second one and pixel
// 43 in lane 1 of the third one.

/// The lane that each byte of a permutation's result comes from.
struct ByteOrder {
  alignas(64) Vek8u at[64];
};

/// For each pixel, the lane in which its sample of a channel is collected.
template <int channel>
constexpr ByteOrder collectedAt = [] {
  ByteOrder order = {};
  for (int i = 0; i < 64; ++i) order.at[i] = static_cast<Vek8u>((3 * i + channel) % 64);
  return order;
}();

/// The inverse: for each lane, the pixel whose sample is collected in it.
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

/// The channels of three vectors that follow each other in memory. The samples of a channel are in
/// the lanes in which they are collected, not in order.
inline Channels separated(V8u first, V8u second, V8u third) {
  const __m512i a = first.raw, b = second.raw, c = third.raw;
  return {V8u{blendThirds(a, c, b)}, V8u{blendThirds(b, a, c)}, V8u{blendThirds(c, b, a)}};
}

inline Channels loadChannels(const Vek8u* src) {
  const Channels v =
      separated(hn::LoadU(u8, src), hn::LoadU(u8, src + 64), hn::LoadU(u8, src + 128));
  return {V8u{permuted(collectedAt<0>, v.c0.raw)}, V8u{permuted(collectedAt<1>, v.c1.raw)},
          V8u{permuted(collectedAt<2>, v.c2.raw)}};
}

/// Stores three channels whose samples are in the lanes in which they would be collected.
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

// A vector is one or two 128-bit blocks. Bytes move within them only: block k holds pixels 16 k to
// 16 k + 15, which take 48 bytes in memory.

/// The byte of its 128-bit block that each byte of a shuffle's result comes from, or noByte for 0.
struct ShuffleOrder {
  alignas(16) Vek8u at[16];
};

constexpr Vek8u noByte = 0x80;

inline V8u shuffled(const ShuffleOrder& order, V8u v) {
  return hn::TableLookupBytesOr0(v, hn::LoadDup128(u8, order.at));
}

/// Stores the 128-bit blocks of v `distance` bytes apart.
inline void store128BitBlocks(V8u v, Vek8u* dst, ptrdiff_t distance = 48) {
  if constexpr (vectorBytes == 16) {
    hn::StoreU(v, u8, dst);
  } else {
    const hn::Half<decltype(u8)> half;
    hn::StoreU(hn::LowerHalf(half, v), half, dst);
    hn::StoreU(hn::UpperHalf(half, v), half, dst + distance);
  }
}

/// 0xFF in the lanes phase, phase + 3, phase + 6 and so on, and 0 in the others.
template <int phase>
V8u thirdOfLanes() {
  static constexpr auto flags = [] {
    struct {
      alignas(32) Vek8u at[32];
    } table = {};
    for (int i = phase; i < 32; i += 3) table.at[i] = 0xFF;
    return table;
  }();
  static_assert(vectorBytes <= 32);
  return hn::Load(u8, flags.at);
}

/// Lanes 0, 3, ... of a, lanes 1, 4, ... of b, lanes 2, 5, ... of c.
inline V8u blendThirds(V8u a, V8u b, V8u c) {
  const auto isFirst = hn::MaskFromVec(thirdOfLanes<0>());
  const auto isSecond = hn::MaskFromVec(thirdOfLanes<1>());
  return hn::IfThenElse(isFirst, a, hn::IfThenElse(isSecond, b, c));
}

/// The channels of three vectors that follow each other in memory, each in an order of its own: in a
/// vector every third lane belongs to a channel, and these lanes differ from vector to vector.
inline Channels separated(V8u first, V8u second, V8u third) {
  if constexpr (vectorBytes % 3 == 1) {
    return {blendThirds(first, third, second), blendThirds(second, first, third),
            blendThirds(third, second, first)};
  } else {
    return {blendThirds(first, second, third), blendThirds(third, first, second),
            blendThirds(second, third, first)};
  }
}

#if HWY_ARCH_X86

// Byte 3 i + c of the 48 bytes of sixteen pixels is channel c of pixel i: lane (3 i + c) % 16 of one of the
// three vectors in memory. No two samples of a channel share a lane, so that one shuffle and two blends
// for each vector are all it takes.

/// 0xFF in every third lane from `phase` on.
template <int phase>
constexpr ShuffleOrder thirdOf16Lanes = [] {
  ShuffleOrder flags = {};
  for (int i = phase; i < 16; i += 3) flags.at[i] = 0xFF;
  return flags;
}();

/// Lanes 0, 3, ... of each 128 bits of a, lanes 1, 4, ... of b, lanes 2, 5, ... of c.
HWY_INLINE V8u blendThirdsOf16(V8u a, V8u b, V8u c) {
  const auto isFirst = hn::MaskFromVec(hn::LoadDup128(u8, thirdOf16Lanes<0>.at));
  const auto isSecond = hn::MaskFromVec(hn::LoadDup128(u8, thirdOf16Lanes<1>.at));
  return hn::IfThenElse(isFirst, a, hn::IfThenElse(isSecond, b, c));
}

/// For each pixel the lane in which its sample of a channel is.
template <int channel>
constexpr ShuffleOrder laneOfPixel = [] {
  ShuffleOrder order = {};
  for (int i = 0; i < 16; ++i) order.at[i] = static_cast<Vek8u>((3 * i + channel) % 16);
  return order;
}();

inline Channels loadChannels(const Vek8u* src) {
  const auto load = [src](int i) {
    if constexpr (vectorBytes == 16) {
      return hn::LoadU(u8, src + 16 * i);
    } else {
      const hn::Half<decltype(u8)> half;
      return hn::Combine(u8, hn::LoadU(half, src + 48 + 16 * i), hn::LoadU(half, src + 16 * i));
    }
  };
  const V8u a = load(0), b = load(1), c = load(2);
  return {shuffled(laneOfPixel<0>, blendThirdsOf16(a, c, b)),
          shuffled(laneOfPixel<1>, blendThirdsOf16(b, a, c)),
          shuffled(laneOfPixel<2>, blendThirdsOf16(c, b, a))};
}

/// For each lane the pixel whose sample is in it. A block holds its 16 pixels in order, or (evenFirst)
/// the eight even ones before the eight odd ones.
template <int channel, bool evenFirst>
constexpr ShuffleOrder pixelOfLane = [] {
  ShuffleOrder order = {};
  for (int i = 0; i < 16; ++i) {
    const int at = evenFirst ? i % 2 * 8 + i / 2 : i;
    order.at[(3 * i + channel) % 16] = static_cast<Vek8u>(at);
  }
  return order;
}();

/// Stores sixteen pixels of each 128-bit block of the channels, the blocks `distance` bytes apart.
template <bool evenFirst = false>
HWY_INLINE void storeChannels(const Channels& v, Vek8u* dst, ptrdiff_t distance = 48) {
  const V8u x = shuffled(pixelOfLane<0, evenFirst>, v.c0);
  const V8u y = shuffled(pixelOfLane<1, evenFirst>, v.c1);
  const V8u z = shuffled(pixelOfLane<2, evenFirst>, v.c2);
  store128BitBlocks(blendThirdsOf16(x, y, z), dst, distance);
  store128BitBlocks(blendThirdsOf16(y, z, x), dst + 16, distance);
  store128BitBlocks(blendThirdsOf16(z, x, y), dst + 32, distance);
}

#else

inline Channels loadChannels(const Vek8u* src) {
  Channels v;
  hn::LoadInterleaved3(u8, src, v.c0, v.c1, v.c2);
  return v;
}

/// A vector has one block.
inline void storeChannels(const Channels& v, Vek8u* dst, ptrdiff_t = 48) {
  static_assert(vectorBytes == 16);
  hn::StoreInterleaved3(v.c0, v.c1, v.c2, u8, dst);
}

#endif

#endif

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
