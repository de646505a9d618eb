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

/// Stores two blocks of pixels, `even` and `odd` ones alternately. Joining the lower halves of their 128-bit
/// blocks gives every second sixteen pixels, joining the upper ones those between them.
HWY_INLINE void storeAlternatePixels(const Channels& even, const Channels& odd, Vek8u* dst) {
  constexpr ptrdiff_t sixteen = 48, distance = 2 * sixteen;
  storeChannels({hn::InterleaveLower(u8, even.c0, odd.c0), hn::InterleaveLower(u8, even.c1, odd.c1),
                 hn::InterleaveLower(u8, even.c2, odd.c2)},
                dst, distance);
  storeChannels({hn::InterleaveUpper(u8, even.c0, odd.c0), hn::InterleaveUpper(u8, even.c1, odd.c1),
                 hn::InterleaveUpper(u8, even.c2, odd.c2)},
                dst + sixteen, distance);
}

#endif

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
