// Indices and grey values of levels in 16-bit lanes, without a division.
#pragma once

#include "core/assert.h"
#include "core/kernel/lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// (v steps + t) / 255 for bytes v and t in one multiplication. With v in the high byte of a lane and
/// b = 256 t / steps + 1, it is (256 v + b) a >> 16 + shift, where a is steps 2^(8 + shift) / 255
/// rounded up. The sum and a are limited to 16 bits, which changes no index. Tried for every number of
/// levels, every v and every t that is used, with a shift of 8, which leaves the index in the high
/// byte; the larger ones of fields of 16-bit pixels are tried for their numbers of levels.
struct Index {
  int steps;
  Vek16u a;

  constexpr explicit Index(int levels, int shift = 8) : steps(levels - 1), a(0) {
    const int factor = ((steps << (8 + shift)) + 254) / 255;
    a = static_cast<Vek16u>(factor < 0xFFFF ? factor : 0xFFFF);
  }
  constexpr Vek16u offset(int t) const { return static_cast<Vek16u>(256 * t / steps + 1); }
};

/// The indices times 2^shift, and some fraction below; v has its bytes in the high halves of the lanes.
inline V16u scaledIndex(V16u v, V16u offset, V16u a) {
  return hn::MulHigh(hn::SaturatedAdd(v, offset), a);
}

/// The grey value of index k is (255 k + steps / 2) / steps: of at most 16 bits, divided by a number
/// that does not change. With shift = floor(log2(steps)), the reciprocal 2^(16 + shift) / steps is
/// rounded up unless that is more than 2^shift / steps too much; then it is rounded down and 1 is
/// added to the dividend.
struct GreyValue {
  int shift;
  Vek16u reciprocal, offset;

  constexpr explicit GreyValue(int levels) : shift(0), reciprocal(0), offset(0) {
    const int steps = levels - 1;
    while (steps >> (shift + 1) != 0) ++shift;
    if (steps == 1 << shift) --shift;
    const unsigned power = 1u << (16 + shift), divisor = static_cast<unsigned>(steps);
    const unsigned up = (power + divisor - 1) / divisor;
    const bool roundsUp = up * divisor - power <= 1u << shift;
    reciprocal = static_cast<Vek16u>(roundsUp ? up : power / divisor);
    offset = static_cast<Vek16u>(steps / 2 + (roundsUp ? 0 : 1));
  }
};

/// nearest() has the indices of the levels next to bytes, grey() the values of indices.
class NearestIndex {
 public:
  explicit NearestIndex(const Index& index)
      : a_(hn::Set(u16, index.a)), offset_(hn::Set(u16, index.offset(127))) {}
  V16u nearest(V16u v) const {
    return hn::ShiftRight<8>(scaledIndex(hn::ShiftLeft<8>(v), offset_, a_));
  }

 private:
  V16u a_, offset_;
};

/// Up to 16, whose grey values fit a shuffle.
class FewLevels : public NearestIndex {
 public:
  explicit FewLevels(int levels) : NearestIndex(Index(levels)), values_(hn::Zero(u8)) {
    VEK_ASSERT(levels >= 2 && levels <= 16);
    alignas(16) Vek8u values[16] = {};
    for (int k = 0; k < levels; ++k) {
      values[k] = static_cast<Vek8u>((510 * k + levels - 1) / (2 * (levels - 1)));
    }
    values_ = hn::LoadDup128(u8, values);
  }
  /// The high bytes are index 0, black.
  V16u grey(V16u k) const { return hn::BitCast(u16, values(hn::BitCast(u8, k))); }
  /// Of indices in the high bytes, as the even and the odd bytes of a vector.
  V8u greyBytes(V16u even, V16u odd) const { return values(joinHighBytes(even, odd)); }

 private:
  V8u values(V8u k) const { return hn::TableLookupBytes(values_, k); }

  V8u values_;
};

class ManyLevels : public NearestIndex {
 public:
  explicit ManyLevels(int levels) : ManyLevels(Index(levels), GreyValue(levels)) {
    VEK_ASSERT(levels > 16 && levels <= 256);
  }
  V16u grey(V16u k) const {
    const V16u dividend = hn::Add(hn::Sub(hn::ShiftLeft<8>(k), k), offset_);
    return hn::ShiftRightSame(hn::MulHigh(dividend, reciprocal_), shift_);
  }
  V8u greyBytes(V16u even, V16u odd) const {
    return joinBytes(grey(hn::ShiftRight<8>(even)), grey(hn::ShiftRight<8>(odd)));
  }

 private:
  ManyLevels(const Index& index, const GreyValue& grey)
      : NearestIndex(index),
        reciprocal_(hn::Set(u16, grey.reciprocal)),
        offset_(hn::Set(u16, grey.offset)),
        shift_(grey.shift) {}

  V16u reciprocal_, offset_;
  int shift_;
};

/// The levels of a field of 4, 5 or 6 bits.
template <int bits>
struct FieldLevels : NearestIndex {
  FieldLevels() : NearestIndex(Index(1 << bits)) {}
  V16u grey(V16u k) const {
    if constexpr (bits == 4) return hn::Or(hn::ShiftLeft<4>(k), k);
    const auto factor = static_cast<Vek16u>(bits == 5 ? 527 : 259);
    const auto offset = static_cast<Vek16u>(bits == 5 ? 23 : 33);
    return hn::ShiftRight<6>(hn::Add(hn::Mul(k, hn::Set(u16, factor)), hn::Set(u16, offset)));
  }
};

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
