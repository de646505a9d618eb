#include <algorithm>

#include "core/color/pixel_store.h"
#include "core/kernel/blocks.h"
#include "core/kernel/interleave.h"
#include "core/kernel/neon_pixels.h"
#include "image/dither/dither_kernels.h"
#include "image/dither/level_lanes.h"
#include "image/dither/thresholds.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// The bytes at even and at odd places, in the high halves of the lanes.
inline V16u evenHigh(V8u v) {
  return hn::ShiftLeft<8>(hn::BitCast(u16, v));
}
inline V16u oddHigh(V8u v) {
  return hn::And(hn::BitCast(u16, v), hn::Set(u16, 0xFF00));
}

/// What is added in a row to the samples at even and at odd places.
struct RowOffsets {
  V16u even, odd;
};

/// The same for all rows of the matrix, for blocks that begin at its column x.
class Offsets {
 public:
  Offsets(const Index& index, int x) {
    for (int y = 0; y < matrixSize; ++y) {
      for (int i = 0; i < matrixSize; ++i) {
        even_[y][i] = index.offset(thresholds.at[y][(x + 2 * i) & 7]);
        odd_[y][i] = index.offset(thresholds.at[y][(x + 2 * i + 1) & 7]);
      }
    }
  }
  RowOffsets row(int y) const {
    return {hn::LoadDup128(u16, even_[y]), hn::LoadDup128(u16, odd_[y])};
  }

 private:
  alignas(16) Vek16u even_[matrixSize][matrixSize], odd_[matrixSize][matrixSize];
};

// ---- Ordered dithering. Each destination has a body, for each row of the matrix, for a block of
// vectorBytes pixels.

template <int channels, int dstBytes, int dstPixels, class BodyOfRow>
void forEachRow(const Picture& picture, VekiPoint origin, BodyOfRow bodyOfRow) {
  VEK_ASSERT(picture.width >= 1 && picture.height >= 1);
  for (int y = 0; y < picture.height; ++y) {
    const auto body = bodyOfRow((y + (origin.y & 7)) & 7);
    copiedBlocks<vectorBytes>(picture.width, body, In<channels>{picture.src + y * picture.srcStep},
                              Out<dstBytes, dstPixels>{picture.dst + y * picture.dstStep});
  }
}

template <class Levels>
void orderBytesTo(const Picture& picture, const Levels& levels, const Index& index,
                  VekiPoint origin) {
  const V16u a = hn::Set(u16, index.a);
  const Offsets all(index, origin.x & 7);
  forEachRow<1, 1, 1>(picture, origin, [&](int row) {
    const RowOffsets offsets = all.row(row);
    return [=](const Vek8u* src, Vek8u* dst) {
      const V8u v = hn::LoadU(u8, src);
      hn::StoreU(levels.greyBytes(scaledIndex(evenHigh(v), offsets.even, a),
                                  scaledIndex(oddHigh(v), offsets.odd, a)),
                 u8, dst);
    };
  });
}

void orderBytes(const Picture& picture, int levels, VekiPoint origin) {
  VEK_ASSERT(levels >= 2 && levels <= 256);
  const Index index(levels);
  if (levels <= 16) return orderBytesTo(picture, FewLevels(levels), index, origin);
  orderBytesTo(picture, ManyLevels(levels), index, origin);
}

/// With two levels, a sample is white if v + t >= 255.
void orderBits1(const Picture& picture, int, VekiPoint origin) {
  // Bit masks have the first lane in the lowest bit: lanes are reversed in groups of eight.
  alignas(16) Vek8u least[matrixSize][16], reversed[16];
  for (int i = 0; i < 16; ++i) {
    reversed[i] = static_cast<Vek8u>(i ^ 7);
    for (int y = 0; y < matrixSize; ++y) {
      least[y][i] = static_cast<Vek8u>(255 - thresholds.at[y][((origin.x & 7) + (i ^ 7)) & 7]);
    }
  }
  const V8u order = hn::LoadDup128(u8, reversed);
  forEachRow<1, 1, 8>(picture, origin, [&](int row) {
    const V8u leasts = hn::LoadDup128(u8, least[row]);
    return [=](const Vek8u* src, Vek8u* dst) {
      const V8u v = hn::TableLookupBytes(hn::LoadU(u8, src), order);
      hn::StoreMaskBits(u8, hn::Eq(hn::Max(v, leasts), v), dst);
    };
  });
}

/// Four or two samples to a byte.
template <int bits>
void orderBits(const Picture& picture, int, VekiPoint origin) {
  static constexpr Index index(1 << bits);
  const Offsets all(index, origin.x & 7);
  forEachRow<1, 1, 8 / bits>(picture, origin, [&](int row) {
    const RowOffsets offsets = all.row(row);
    return [=](const Vek8u* src, Vek8u* dst) {
      const V16u a = hn::Set(u16, index.a);
      const V8u v = hn::LoadU(u8, src);
      const V16u even = hn::ShiftRight<8>(scaledIndex(evenHigh(v), offsets.even, a));
      const V16u odd = hn::ShiftRight<8>(scaledIndex(oddHigh(v), offsets.odd, a));
      const V16s pairs = hn::BitCast(s16, hn::Or(hn::ShiftLeft<bits>(even), odd));
      if constexpr (bits == 4) {
        hn::StoreU(hn::DemoteTo(halfU8, pairs), halfU8, dst);
      } else {
        const V32s fours = plusDot(hn::Zero(s32), pairs, pairOfFactors(16, 1));
        constexpr hn::Rebind<Vek8u, decltype(s32)> quarterU8;
        hn::StoreU(hn::DemoteTo(quarterU8, fours), quarterU8, dst);
      }
    };
  });
}

#if HWY_ARCH_ARM

// In products of bytes: with s = (levels - 1) << (8 - bits) and T = (t + 1) << (8 - bits), the index (v
// (levels - 1) + t) / 255 is in the top bits of x + (x >> 8), x = v s + T. Tried for every v and every t
// of fields of 4, 5 and 6 bits; all of it fits 16 bits.

/// What is added in each row of the matrix to eight pixels from column x on.
template <int bits>
class FieldOffsets {
 public:
  explicit FieldOffsets(int x) {
    for (int y = 0; y < matrixSize; ++y) {
      for (int i = 0; i < matrixSize; ++i) {
        at_[y][i] = static_cast<Vek16u>((thresholds.at[y][(x + i) & 7] + 1) << (8 - bits));
      }
    }
  }
  uint16x8_t row(int y) const { return vld1q_u16(at_[y]); }

 private:
  Vek16u at_[matrixSize][matrixSize];
};

/// The index in the top bits of each lane.
template <int bits>
uint16x8_t topIndex(uint8x8_t v, uint16x8_t offset) {
  const uint8x8_t factor = vdup_n_u8(((1 << bits) - 1) << (8 - bits));
  const uint16x8_t x = vaddq_u16(vmull_u8(v, factor), offset);
  return vsraq_n_u16(x, x, 8);
}

/// A field's index is moved down to its place, and the bits above it stay what they were.
template <class Format>
void orderPixels(const Picture& picture, int, VekiPoint origin) {
  static_assert(Format::rBits == Format::bBits);
  const FieldOffsets<Format::rBits> outer(origin.x & 7);
  const FieldOffsets<Format::gBits> inner(origin.x & 7);
  forEachRow<3, 2, 1>(picture, origin, [&](int row) {
    const uint16x8_t outerOffset = outer.row(row), innerOffset = inner.row(row);
    return Advancing{[=](const Vek8u*& src, Vek8u*& dst) {
      const auto pixels = [=](uint8x8_t red, uint8x8_t green, uint8x8_t blue) {
        constexpr int unused = 16 - 2 * Format::rBits - Format::gBits;
        const uint16x8_t high = topIndex<Format::rBits>(red, outerOffset);
        uint16x8_t word = unused == 0 ? high : vshrq_n_u16(high, unused == 0 ? 1 : unused);
        word = vsriq_n_u16(word, topIndex<Format::gBits>(green, innerOffset),
                           16 - Format::gPos - Format::gBits);
        return vsriq_n_u16(word, topIndex<Format::bBits>(blue, outerOffset), 16 - Format::bBits);
      };
      static_assert(Format::bPos == 0);
      Channels v = loadPixels(src);
      const uint16x8_t lower =
          pixels(vget_low_u8(v.c0.raw), vget_low_u8(v.c1.raw), vget_low_u8(v.c2.raw));
      const uint16x8_t upper =
          pixels(vget_high_u8(v.c0.raw), vget_high_u8(v.c1.raw), vget_high_u8(v.c2.raw));
      storeInOrder(vreinterpretq_u8_u16(lower), vreinterpretq_u8_u16(upper), dst);
    }};
  });
}

#else

/// A field of a 16-bit pixel; those of high bits come out of the multiplication where they belong.
template <int bits, int position>
struct Field {
  static constexpr int shift = std::max(position, 8);
  static constexpr Index index = Index(1 << bits, shift);

  RowOffsets offsets;

  V16u even(V8u v) const { return placed(scaledIndex(evenHigh(v), offsets.even, factor())); }
  V16u odd(V8u v) const { return placed(scaledIndex(oddHigh(v), offsets.odd, factor())); }

 private:
  static V16u factor() { return hn::Set(u16, index.a); }
  static V16u placed(V16u scaled) {
    const V16u moved = hn::ShiftRight<shift - position>(scaled);
    if constexpr (position == 0) return moved;  // nothing is left above it
    return hn::And(moved, hn::Set(u16, ((1 << bits) - 1) << position));
  }
};

template <class Format>
void orderPixels(const Picture& picture, int, VekiPoint origin) {
  using First = Field<Format::rBits, Format::rPos>;
  using Second = Field<Format::gBits, Format::gPos>;
  using Third = Field<Format::bBits, Format::bPos>;
  const int x = origin.x & 7;
  const Offsets ofFirst(First::index, x), ofSecond(Second::index, x), ofThird(Third::index, x);
  forEachRow<3, 2, 1>(picture, origin, [&](int row) {
    const First first = {ofFirst.row(row)};
    const Second second = {ofSecond.row(row)};
    const Third third = {ofThird.row(row)};
    return [=](const Vek8u* src, Vek8u* dst) {
      const Channels v = loadChannels(src);
      const V16u even = hn::Or(hn::Or(first.even(v.c0), second.even(v.c1)), third.even(v.c2));
      const V16u odd = hn::Or(hn::Or(first.odd(v.c0), second.odd(v.c1)), third.odd(v.c2));
      storeAlternately(hn::BitCast(s16, even), hn::BitCast(s16, odd), dst);
    };
  });
}

#endif

}  // namespace

constexpr DitherKernels orderKernels = {.bytes = orderBytes,
                                        .oneBit = orderBits1,
                                        .twoBits = orderBits<2>,
                                        .fourBits = orderBits<4>,
                                        .rgb565 = orderPixels<Rgb565>,
                                        .rgb555 = orderPixels<Rgb555>,
                                        .rgb444 = orderPixels<Rgb444>};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
