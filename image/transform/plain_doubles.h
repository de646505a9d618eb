// Transforms of two rows or columns at a time, where there are no wider vectors of doubles.
#pragma once

#include <string.h>

#include "image/transform/real_fft_body.h"

namespace vek::VEK_LEVEL {
namespace {

/// Two doubles, which most processors have vectors for.
struct PlainDoubles {
  static constexpr int count = 2, vectors = 2;
  static constexpr bool clampsLow = false;
  using Vector [[gnu::vector_size(16)]] = Vek64f;

  static Vector load(const Vek64f* from) {
    Vector v;
    memcpy(&v, __builtin_assume_aligned(from, sizeof v), sizeof v);
    return v;
  }
  static void store(Vector v, Vek64f* to) {
    memcpy(__builtin_assume_aligned(to, sizeof v), &v, sizeof v);
  }
  static Vector set(Vek64f value) { return Vector{value, value}; }
  static Vector add(Vector a, Vector b) { return a + b; }
  static Vector subtract(Vector a, Vector b) { return a - b; }
  static Vector multiply(Vector a, Vector b) { return a * b; }
  static Vector lower(Vector a, Vector b) { return a < b ? a : b; }
  static Vector higher(Vector a, Vector b) { return a > b ? a : b; }
  static void transpose(Vector (&rows)[2]) {
    const Vector first = {rows[0][0], rows[1][0]}, second = {rows[0][1], rows[1][1]};
    rows[0] = first;
    rows[1] = second;
  }

  template <class Sample>
  static Vector fromSamples(const Sample* from) {
    return Vector{static_cast<Vek64f>(from[0]), static_cast<Vek64f>(from[1])};
  }
  template <class Sample>
  static void storeSamples(Vector v, Sample* to) {
    for (int i = 0; i < count; ++i) to[i] = static_cast<Sample>(nearest(v[i]));
  }
  static Complex<PlainDoubles> loadPairs(const Vek8u* from) {
    Vek32s pairs[4];
    memcpy(pairs, from, sizeof pairs);
    return {Vector{static_cast<Vek64f>(pairs[0]), static_cast<Vek64f>(pairs[2])},
            Vector{static_cast<Vek64f>(pairs[1]), static_cast<Vek64f>(pairs[3])}};
  }
  static void storePairs(Vector re, Vector im, Vek8u* to) {
    const Vek32s pairs[4] = {nearest(re[0]), nearest(im[0]), nearest(re[1]), nearest(im[1])};
    memcpy(to, pairs, sizeof pairs);
  }

  static constexpr bool shufflesTiles = false;

 private:
  /// The nearest integer, halves to even, of a number that fits 32 bits: 1.5 * 2^52 more than it has
  /// no bits for a fraction, and ends in the 32 bits of the integer.
  static Vek32s nearest(Vek64f v) {
    const Vek64f rounded = v + 6755399441055744.0;
    Vek64s bits;
    memcpy(&bits, &rounded, sizeof bits);
    return static_cast<Vek32s>(bits & 0xFFFFFFFF);
  }
};

}  // namespace
}  // namespace vek::VEK_LEVEL
