// Stores of three-channel pixels of which the even and the odd ones come in vectors of their own.
#pragma once

#include "core/kernel/interleave.h"
#include "core/kernel/lanes.h"
#include "core/kernel/unroll.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

#if defined(__AVX512VBMI__)

/// For each lane of storeThirds(), where its pixel's sample lies in two vectors, of the even and of the odd
/// pixels of two blocks; `half` is the block.
template <int channel, int half>
constexpr ByteOrder alternatePixelOf = [] {
  ByteOrder order = {};
  for (int i = 0; i < 64; ++i) {
    order.at[(3 * i + channel) % 64] = static_cast<Vek8u>(i % 2 * 64 + half * 32 + i / 2);
  }
  return order;
}();

/// Stores two blocks of pixels, `even` and `odd` ones alternately.
inline void storeAlternatePixels(const Channels& even, const Channels& odd, Vek8u* dst) {
  unrolled<2>([&](auto half) {
    const auto joined = [](const ByteOrder& order, V8u a, V8u b) {
      return _mm512_permutex2var_epi8(a.raw, _mm512_load_si512(order.at), b.raw);
    };
    storeThirds(joined(alternatePixelOf<0, half>, even.c0, odd.c0),
                joined(alternatePixelOf<1, half>, even.c1, odd.c1),
                joined(alternatePixelOf<2, half>, even.c2, odd.c2), dst + 192 * half.value);
  });
}

#else

#if HWY_ARCH_X86

// Byte 3 i + c of the 48 bytes of sixteen pixels is channel c of pixel i: lane (3 i + c) % 16 of one of the
// three vectors in memory. No two samples of a channel share a lane, so that one shuffle of each channel
// and two blends for each vector are all it takes.

/// For each lane the pixel whose sample is in it.
template <int channel>
constexpr ShuffleOrder pixelOfLane = [] {
  ShuffleOrder order = {};
  for (int i = 0; i < 16; ++i) order.at[(3 * i + channel) % 16] = static_cast<Vek8u>(i);
  return order;
}();

/// 0xFF in every third lane from `phase` on.
template <int phase>
constexpr ShuffleOrder thirdOf16Lanes = [] {
  ShuffleOrder flags = {};
  for (int i = phase; i < 16; i += 3) flags.at[i] = 0xFF;
  return flags;
}();

/// Stores sixteen pixels of each 128-bit block of the channels, the blocks 96 bytes apart.
HWY_INLINE void storeEverySecondSixteen(V8u c0, V8u c1, V8u c2, Vek8u* dst) {
  const auto isFirst = hn::MaskFromVec(hn::LoadDup128(u8, thirdOf16Lanes<0>.at));
  const auto isSecond = hn::MaskFromVec(hn::LoadDup128(u8, thirdOf16Lanes<1>.at));
  const V8u x = shuffled(pixelOfLane<0>, c0), y = shuffled(pixelOfLane<1>, c1),
            z = shuffled(pixelOfLane<2>, c2);
  const auto store = [&](V8u first, V8u second, V8u third, Vek8u* to) {
    const V8u bytes = hn::IfThenElse(isFirst, first, hn::IfThenElse(isSecond, second, third));
    if constexpr (vectorBytes == 16) {
      hn::StoreU(bytes, u8, to);
    } else {
      const hn::Half<decltype(u8)> half;
      hn::StoreU(hn::LowerHalf(half, bytes), half, to);
      hn::StoreU(hn::UpperHalf(half, bytes), half, to + 96);
    }
  };
  store(x, y, z, dst);
  store(y, z, x, dst + 16);
  store(z, x, y, dst + 32);
}

#else

inline void storeEverySecondSixteen(V8u c0, V8u c1, V8u c2, Vek8u* dst) {
  static_assert(vectorBytes == 16);
  storeChannels({c0, c1, c2}, dst);
}

#endif

/// Stores two blocks of pixels, `even` and `odd` ones alternately. Joining the lower halves of their 128-bit
/// blocks gives every second sixteen pixels, joining the upper ones those between them.
HWY_INLINE void storeAlternatePixels(const Channels& even, const Channels& odd, Vek8u* dst) {
  storeEverySecondSixteen(hn::InterleaveLower(u8, even.c0, odd.c0),
                          hn::InterleaveLower(u8, even.c1, odd.c1),
                          hn::InterleaveLower(u8, even.c2, odd.c2), dst);
  storeEverySecondSixteen(hn::InterleaveUpper(u8, even.c0, odd.c0),
                          hn::InterleaveUpper(u8, even.c1, odd.c1),
                          hn::InterleaveUpper(u8, even.c2, odd.c2), dst + 48);
}

#endif

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
