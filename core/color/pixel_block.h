// Pixels channel by channel, in arrays of a fixed size. Portable kernels take interleaved pixels apart
// into them and put their results together from them: compilers make vectors of arithmetic between
// arrays, but not of loops that step by three bytes, and know that no store to an image changes them.
// The loops are functions of their own, as many kernels consist of the same ones.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "core/assert.h"

namespace vek::portable {
namespace {

constexpr ptrdiff_t blockPixels = 256;

/// `channel[c][i]` is channel c of pixel i.
struct PixelBlock {
  alignas(16) Vek8u channel[3][blockPixels];

#if defined(__clang_analyzer__)
  // It does not see that loops over n or n / 2 pixels write all that is read.
  PixelBlock() : channel() {}
#endif
};

/// Calls body(x, count) for the blocks of n pixels.
template <class Body>
void forEachBlock(ptrdiff_t n, Body body) {
  for (ptrdiff_t x = 0; x < n; x += blockPixels) {
    body(x, n - x < blockPixels ? n - x : blockPixels);
  }
}

/// Each sample serves two of n pixels, the last one perhaps one.
[[gnu::noinline, maybe_unused]] void repeat(const Vek8u* __restrict samples, ptrdiff_t n,
                                            Vek8u* __restrict to) {
  VEK_ASSERT(n <= blockPixels);
  for (ptrdiff_t i = 0; i < n / 2; ++i) to[2 * i] = to[2 * i + 1] = samples[i];
  to[n - 1] = samples[(n - 1) / 2];
}

#if defined(__SSE2__)

// What compilers do not find by themselves: steps of three bytes in vectors of a baseline that has no
// byte permutation. It takes a fifth of the time of loops over bytes.

constexpr ptrdiff_t vectorPixels = 16;

/// Rounds that put the upper 24 of the 48 bytes between the lower ones, which moves byte p to 2 p modulo
/// 47. After four of them byte 3 i + c has come to 16 c + i.
template <int rounds>
inline void shufflePixels(__m128i& a, __m128i& b, __m128i& c) {
  // A shuffle, other than a shift, leaves its operand as it is.
  const auto upperHalf = [](__m128i v) { return _mm_shuffle_epi32(v, _MM_SHUFFLE(3, 2, 3, 2)); };
  for (int round = 0; round < rounds; ++round) {
    const __m128i lower = _mm_unpacklo_epi8(a, upperHalf(b));
    const __m128i middle = _mm_unpacklo_epi8(upperHalf(a), c);
    c = _mm_unpacklo_epi8(b, upperHalf(c));
    a = lower;
    b = middle;
  }
}

/// Sixteen pixels.
inline void separateVectors(const Vek8u* pixels, Vek8u* c0, Vek8u* c1, Vek8u* c2) {
  const auto load = [&](int i) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels + 16 * i));
  };
  const auto store = [](__m128i v, Vek8u* to) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), v);
  };
  __m128i a = load(0), b = load(1), c = load(2);
  shufflePixels<4>(a, b, c);
  store(a, c0);
  store(b, c1);
  store(c, c2);
}

/// Sixteen pixels. Four pixels are words of four bytes first, then six bytes in each half of a
/// vector, then twelve bytes.
inline void joinVectors(const Vek8u* c0, const Vek8u* c1, const Vek8u* c2, Vek8u* pixels) {
  const auto load = [](const Vek8u* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
  };
  const auto store = [&](int i, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels + 16 * i), v);
  };
  const auto twelveBytes = [](__m128i words) {
    const __m128i even = _mm_and_si128(words, _mm_set1_epi64x(0xFFFFFF));
    const __m128i odd = _mm_and_si128(_mm_srli_epi64(words, 8), _mm_set1_epi64x(0xFFFFFF000000));
    const __m128i six = _mm_or_si128(even, odd);
    const __m128i upper = _mm_srli_si128(_mm_unpackhi_epi64(_mm_setzero_si128(), six), 2);
    return _mm_or_si128(_mm_move_epi64(six), upper);
  };
  const __m128i zero = _mm_setzero_si128(), first = load(c0), second = load(c1), third = load(c2);
  const __m128i lowPairs = _mm_unpacklo_epi8(first, second);
  const __m128i highPairs = _mm_unpackhi_epi8(first, second);
  const __m128i lowThirds = _mm_unpacklo_epi8(third, zero);
  const __m128i highThirds = _mm_unpackhi_epi8(third, zero);
  const __m128i p0 = twelveBytes(_mm_unpacklo_epi16(lowPairs, lowThirds));
  const __m128i p4 = twelveBytes(_mm_unpackhi_epi16(lowPairs, lowThirds));
  const __m128i p8 = twelveBytes(_mm_unpacklo_epi16(highPairs, highThirds));
  const __m128i p12 = twelveBytes(_mm_unpackhi_epi16(highPairs, highThirds));
  store(0, _mm_or_si128(p0, _mm_slli_si128(p4, 12)));
  store(1, _mm_or_si128(_mm_srli_si128(p4, 4), _mm_slli_si128(p8, 8)));
  store(2, _mm_or_si128(_mm_srli_si128(p8, 8), _mm_slli_si128(p12, 4)));
}

#endif

[[gnu::noinline, maybe_unused]] void separate(const Vek8u* __restrict pixels, ptrdiff_t n,
                                              PixelBlock& __restrict to) {
  VEK_ASSERT(n >= 1 && n <= blockPixels);
  ptrdiff_t i = 0;
#if defined(__SSE2__)
  for (; i <= n - vectorPixels; i += vectorPixels) {
    separateVectors(pixels + 3 * i, to.channel[0] + i, to.channel[1] + i, to.channel[2] + i);
  }
#endif
  for (; i < n; ++i) {
    for (int c = 0; c < 3; ++c) to.channel[c][i] = pixels[3 * i + c];
  }
}

[[gnu::noinline, maybe_unused]] void join(const PixelBlock& from, ptrdiff_t n,
                                          Vek8u* __restrict pixels) {
  VEK_ASSERT(n >= 1 && n <= blockPixels);
  ptrdiff_t i = 0;
#if defined(__SSE2__)
  for (; i <= n - vectorPixels; i += vectorPixels) {
    joinVectors(from.channel[0] + i, from.channel[1] + i, from.channel[2] + i, pixels + 3 * i);
  }
#endif
  for (; i < n; ++i) {
    for (int c = 0; c < 3; ++c) pixels[3 * i + c] = from.channel[c][i];
  }
}

}  // namespace
}  // namespace vek::portable
