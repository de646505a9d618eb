// Vector lanes of the pointwise kernels: an operator takes vectors and returns a vector. The phase of
// repeating patterns is kept here.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <string.h>

#include "core/kernel/blocks.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

struct VectorLanes {
  using Sample = V8u;

  /// A row of an image. next<which>(x) is its vector at x; `which` is 0, 1, 2, 0, ... for successive
  /// ones.
  struct Samples {
    const Vek8u* data;

    V8u at(ptrdiff_t x) const { return hn::LoadU(u8, data + x); }
    V8u padded(ptrdiff_t n) const { return hn::Load(u8, PaddedBlock<vectorBytes>(data, n).data); }
    template <int which>
    V8u next(ptrdiff_t x) const {
      return at(x);
    }
    Samples from(ptrdiff_t) const { return *this; }
  };

  /// The bytes of a Pattern. Three vectors hold a whole number of its pixels, so they serve a whole
  /// row.
  struct Repeated {
    const Vek8u* pattern;

    struct Three {
      V8u vector[3];
      template <int which>
      V8u next(ptrdiff_t) const {
        return vector[which];
      }
    };

    V8u at(ptrdiff_t x) const { return hn::LoadU(u8, pattern + x % 3); }
    V8u padded(ptrdiff_t) const { return at(0); }
    Three from(ptrdiff_t x) const {
      return {{at(x), at(x + vectorBytes), at(x + 2 * vectorBytes)}};
    }
  };

  /// dst[i] = op(sources at i...) for the n samples of a row. A source may be the destination.
  template <class Operator, class... Source>
  static void mapRow(ptrdiff_t n, Operator op, Vek8u* dst, Source... source) {
    if (n < vectorBytes) {
      alignas(64) Vek8u result[vectorBytes];
      hn::Store(op(source.padded(n)...), u8, result);
      memcpy(dst, result, static_cast<size_t>(n));
      return;
    }
    overlappingBlocksInPlace(
        n, dst, [&](ptrdiff_t x) { return op(source.at(x)...); },
        [&](ptrdiff_t x, ptrdiff_t last) { mapAligned(x, last, op, dst, source.from(x)...); });
  }

 private:
  /// The vectors at x, x + vectorBytes, ... until `last` is reached or passed.
  template <class Operator, class... Source>
  static void mapAligned(ptrdiff_t x, ptrdiff_t last, Operator op, Vek8u* dst, Source... source) {
    constexpr ptrdiff_t vector = vectorBytes;
    for (; x + 2 * vector <= last; x += 3 * vector) {
      hn::Store(op(source.template next<0>(x)...), u8, dst + x);
      hn::Store(op(source.template next<1>(x + vector)...), u8, dst + x + vector);
      hn::Store(op(source.template next<2>(x + 2 * vector)...), u8, dst + x + 2 * vector);
    }
    if (x < last) hn::Store(op(source.template next<0>(x)...), u8, dst + x);
    x += vector;
    if (x < last) hn::Store(op(source.template next<1>(x)...), u8, dst + x);
  }
};

/// Logical shifts of each byte, amount 0..15.
inline V8u shiftBytesRight(V8u v, int amount) {
  const V16u shifted = hn::ShiftRightSame(hn::BitCast(u16, v), amount);
  return hn::And(hn::BitCast(u8, shifted), hn::Set(u8, static_cast<Vek8u>(0xFF >> amount)));
}
inline V8u shiftBytesLeft(V8u v, int amount) {
  const V16u shifted = hn::ShiftLeftSame(hn::BitCast(u16, v), amount);
  return hn::And(hn::BitCast(u8, shifted),
                 hn::Set(u8, static_cast<Vek8u>((0xFF << amount) & 0xFF)));
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
