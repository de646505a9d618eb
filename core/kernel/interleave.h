// Three-channel pixels between memory and one vector for each channel.
#pragma once

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

#if defined(__AVX512VBMI__)
#include <immintrin.h>
#endif

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

inline Channels loadChannels(const Vek8u* src) {
  const __m512i a = _mm512_loadu_si512(src), b = _mm512_loadu_si512(src + 64),
                c = _mm512_loadu_si512(src + 128);
  return {Channels::V{permuted(collectedAt<0>, blendThirds(a, c, b))},
          Channels::V{permuted(collectedAt<1>, blendThirds(b, a, c))},
          Channels::V{permuted(collectedAt<2>, blendThirds(c, b, a))}};
}

inline void storeChannels(const Channels& v, Vek8u* dst) {
  const __m512i x = permuted(pixelOf<0>, v.c0.raw), y = permuted(pixelOf<1>, v.c1.raw),
                z = permuted(pixelOf<2>, v.c2.raw);
  _mm512_storeu_si512(dst, blendThirds(x, y, z));
  _mm512_storeu_si512(dst + 64, blendThirds(y, z, x));
  _mm512_storeu_si512(dst + 128, blendThirds(z, x, y));
}

#else

inline Channels loadChannels(const Vek8u* src) {
  Channels v;
  hn::LoadInterleaved3(hn::ScalableTag<Vek8u>(), src, v.c0, v.c1, v.c2);
  return v;
}

inline void storeChannels(const Channels& v, Vek8u* dst) {
  hn::StoreInterleaved3(v.c0, v.c1, v.c2, hn::ScalableTag<Vek8u>(), dst);
}

#endif

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
