// The row driver of the hand-written pointwise kernels: operators that take vectors and return a
// vector. It owns alignment, tails and the phase of repeating patterns.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "core/kernel/blocks.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::ScalableTag<Vek8u> bytes;
constexpr hn::Repartition<Vek16u, decltype(bytes)> words;
using Sample = hn::Vec<decltype(bytes)>;
using Words = hn::Vec<decltype(words)>;
constexpr ptrdiff_t lanes = static_cast<ptrdiff_t>(hn::MaxLanes(bytes));

/// A row of an image.
struct Samples {
  const Vek8u* data;

  Sample at(ptrdiff_t x) const { return hn::LoadU(bytes, data + x); }
  Sample padded(ptrdiff_t n) const {
    return hn::Load(bytes, PaddedBlock<static_cast<size_t>(lanes)>(data, n).data);
  }
  /// The vectors from x on; `which` is 0, 1, 2, 0, ... for successive ones.
  template <int which>
  Sample next(ptrdiff_t x) const {
    return at(x);
  }
  Samples from(ptrdiff_t) const { return *this; }
};

/// A Pattern. Three vectors hold a whole number of its pixels, so they serve a whole row.
struct Repeated {
  const Vek8u* pattern;

  struct Three {
    Sample vector[3];
    template <int which>
    Sample next(ptrdiff_t) const {
      return vector[which];
    }
  };

  Sample at(ptrdiff_t x) const { return hn::LoadU(bytes, pattern + x % 3); }
  Sample padded(ptrdiff_t) const { return at(0); }
  Three from(ptrdiff_t x) const { return {{at(x), at(x + lanes), at(x + 2 * lanes)}}; }
};

/// Vectors at x, x + lanes, ... until `last` is reached or passed.
template <class Operator, class... Source>
void mapAligned(ptrdiff_t x, ptrdiff_t last, Operator op, Vek8u* dst, Source... source) {
  for (; x + 2 * lanes <= last; x += 3 * lanes) {
    hn::Store(op(source.template next<0>(x)...), bytes, dst + x);
    hn::Store(op(source.template next<1>(x + lanes)...), bytes, dst + x + lanes);
    hn::Store(op(source.template next<2>(x + 2 * lanes)...), bytes, dst + x + 2 * lanes);
  }
  if (x < last) hn::Store(op(source.template next<0>(x)...), bytes, dst + x);
  x += lanes;
  if (x < last) hn::Store(op(source.template next<1>(x)...), bytes, dst + x);
}

/// dst[i] = op(sources at i...) for the n samples of a row. The first and the last vector may
/// overlap the aligned ones between them; they are computed before and stored after those, which
/// is what makes it right in place.
template <class Operator, class... Source>
void mapRow(ptrdiff_t n, Operator op, Vek8u* dst, Source... source) {
  if (n < lanes) {
    alignas(64) Vek8u result[lanes];
    hn::Store(op(source.padded(n)...), bytes, result);
    memcpy(dst, result, static_cast<size_t>(n));
    return;
  }
  const ptrdiff_t last = n - lanes;
  const Sample firstResult = op(source.at(0)...);
  const Sample lastResult = op(source.at(last)...);
  const ptrdiff_t aligned = lanes - static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(dst) %
                                                           static_cast<uintptr_t>(lanes));
  if (aligned < last) mapAligned(aligned, last, op, dst, source.from(aligned)...);
  hn::StoreU(firstResult, bytes, dst);
  hn::StoreU(lastResult, bytes, dst + last);
}

/// The even and the odd samples of a vector, one in each 16-bit lane.
inline Words evenSamples(Sample v) {
  return hn::And(hn::BitCast(words, v), hn::Set(words, 0xFF));
}
inline Words oddSamples(Sample v) {
  return hn::ShiftRight<8>(hn::BitCast(words, v));
}

/// The inverse; every lane is at most 255.
inline Sample joinSamples(Words even, Words odd) {
  return hn::BitCast(bytes, hn::Or(even, hn::ShiftLeft<8>(odd)));
}

/// Logical shifts of each sample, amount 0..15.
inline Sample shiftRight(Sample v, int amount) {
  const Words shifted = hn::ShiftRightSame(hn::BitCast(words, v), amount);
  return hn::And(hn::BitCast(bytes, shifted), hn::Set(bytes, static_cast<Vek8u>(0xFF >> amount)));
}
inline Sample shiftLeft(Sample v, int amount) {
  const Words shifted = hn::ShiftLeftSame(hn::BitCast(words, v), amount);
  return hn::And(hn::BitCast(bytes, shifted),
                 hn::Set(bytes, static_cast<Vek8u>((0xFF << amount) & 0xFF)));
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
