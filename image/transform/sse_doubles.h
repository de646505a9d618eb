// Two doubles in a vector of SSE2, two vectors side by side: processors of x86-64 without wider ones.
#pragma once

#if defined(__SSE2__)
#include <emmintrin.h>
#include <string.h>

#include "image/transform/real_fft_body.h"

namespace vek::VEK_LEVEL {
namespace {

struct SseDoubles {
  static constexpr int count = 2, vectors = 2;
  /// What does not fit is converted to the lowest integer.
  static constexpr bool clampsLow = true;
  using Vector = __m128d;

  static Vector load(const Vek64f* from) { return _mm_load_pd(from); }
  static void store(Vector v, Vek64f* to) { _mm_store_pd(to, v); }
  static Vector set(Vek64f value) { return _mm_set1_pd(value); }
  static Vector add(Vector a, Vector b) { return _mm_add_pd(a, b); }
  static Vector subtract(Vector a, Vector b) { return _mm_sub_pd(a, b); }
  static Vector multiply(Vector a, Vector b) { return _mm_mul_pd(a, b); }
  static Vector lower(Vector a, Vector b) { return _mm_min_pd(a, b); }
  static Vector higher(Vector a, Vector b) { return _mm_max_pd(a, b); }
  static void transpose(Vector (&rows)[2]) {
    const Vector first = _mm_unpacklo_pd(rows[0], rows[1]);
    rows[1] = _mm_unpackhi_pd(rows[0], rows[1]);
    rows[0] = first;
  }

  static Vector fromSamples(const Vek32s* from) {
    return _mm_cvtepi32_pd(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)));
  }
  static Vector fromSamples(const Vek8u* from) {
    Vek16u both;
    memcpy(&both, from, sizeof both);
    const __m128i zero = _mm_setzero_si128(), bytes = _mm_cvtsi32_si128(both);
    return _mm_cvtepi32_pd(_mm_unpacklo_epi16(_mm_unpacklo_epi8(bytes, zero), zero));
  }
  static void storeSamples(Vector v, Vek32s* to) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_cvtpd_epi32(v));
  }
  static void storeSamples(Vector v, Vek8u* to) {
    const __m128i ints = _mm_cvtpd_epi32(v), words = _mm_packs_epi32(ints, ints);
    const auto both = static_cast<Vek16u>(_mm_cvtsi128_si32(_mm_packus_epi16(words, words)));
    memcpy(to, &both, sizeof both);
  }
  static Complex<SseDoubles> loadPairs(const Vek8u* from) {
    const __m128i pairs = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    const __m128i apart = _mm_shuffle_epi32(pairs, _MM_SHUFFLE(3, 1, 2, 0));
    return {_mm_cvtepi32_pd(apart), _mm_cvtepi32_pd(_mm_unpackhi_epi64(apart, apart))};
  }
  static void storePairs(Vector re, Vector im, Vek8u* to) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to),
                     _mm_unpacklo_epi32(_mm_cvtpd_epi32(re), _mm_cvtpd_epi32(im)));
  }

  static constexpr bool shufflesTiles = true;
  template <class Sample>
  struct Part {
    using Vector = __m128i;
    static Vector load(const Sample* from) {
      return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    }
    static void store(Vector v, Sample* to) { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), v); }
    static Vector interleaveLower(Vector a, Vector b) {
      return sizeof(Sample) == 1 ? _mm_unpacklo_epi8(a, b) : _mm_unpacklo_epi32(a, b);
    }
    static Vector interleaveUpper(Vector a, Vector b) {
      return sizeof(Sample) == 1 ? _mm_unpackhi_epi8(a, b) : _mm_unpackhi_epi32(a, b);
    }
  };
};

}  // namespace
}  // namespace vek::VEK_LEVEL

#endif
