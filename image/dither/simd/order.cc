#include "core/color/pixel_store.h"
#include "core/kernel/blocks.h"
#include "core/kernel/interleave.h"
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
struct Offsets {
  V16u even, odd;
};

/// Blocks begin at multiples of the matrix's size.
inline Offsets offsetsOf(const Index& index, const Vek8u (&row)[matrixSize], int x) {
  alignas(16) Vek16u even[8], odd[8];
  for (int i = 0; i < 8; ++i) {
    even[i] = index.offset(row[(x + 2 * i) & 7]);
    odd[i] = index.offset(row[(x + 2 * i + 1) & 7]);
  }
  return {hn::LoadDup128(u16, even), hn::LoadDup128(u16, odd)};
}

// ---- Ordered dithering. Each destination has a body for a block of vectorBytes pixels.

template <int channels, int dstBytes, int dstPixels, class BodyOfRow>
void forEachRow(const Picture& picture, VekiPoint origin, BodyOfRow bodyOfRow) {
  VEK_ASSERT(picture.width >= 1 && picture.height >= 1);
  for (int y = 0; y < picture.height; ++y) {
    const auto body = bodyOfRow(thresholds.at[(y + (origin.y & 7)) & 7], origin.x & 7);
    copiedBlocks<vectorBytes>(picture.width, body, In<channels>{picture.src + y * picture.srcStep},
                              Out<dstBytes, dstPixels>{picture.dst + y * picture.dstStep});
  }
}

template <class Levels>
void orderBytesTo(const Picture& picture, const Levels& levels, const Index& index,
                  VekiPoint origin) {
  const V16u a = hn::Set(u16, index.a);
  forEachRow<1, 1, 1>(picture, origin, [=](const Vek8u(&row)[matrixSize], int x) {
    const Offsets offsets = offsetsOf(index, row, x);
    return [=](const Vek8u* src, Vek8u* dst) {
      const V8u v = hn::LoadU(u8, src);
      const V16u even = hn::ShiftRightSame(scaledIndex(evenHigh(v), offsets.even, a), index.shift);
      const V16u odd = hn::ShiftRightSame(scaledIndex(oddHigh(v), offsets.odd, a), index.shift);
      hn::StoreU(levels.grey(even, odd), u8, dst);
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
  forEachRow<1, 1, 8>(picture, origin, [=](const Vek8u(&row)[matrixSize], int x) {
    // Bit masks have the first lane in the lowest bit: lanes are reversed in groups of eight.
    alignas(16) Vek8u least[16], reversed[16];
    for (int i = 0; i < 16; ++i) {
      least[i] = static_cast<Vek8u>(255 - row[(x + 7 - i % 8) & 7]);
      reversed[i] = static_cast<Vek8u>(i ^ 7);
    }
    const V8u leasts = hn::LoadDup128(u8, least), order = hn::LoadDup128(u8, reversed);
    return [=](const Vek8u* src, Vek8u* dst) {
      const V8u v = hn::TableLookupBytes(hn::LoadU(u8, src), order);
      hn::StoreMaskBits(u8, hn::Eq(hn::Max(v, leasts), v), dst);
    };
  });
}

/// Four or two samples to a byte.
template <int bits>
void orderBits(const Picture& picture, int, VekiPoint origin) {
  constexpr Index index(1 << bits);
  forEachRow<1, 1, 8 / bits>(picture, origin, [=](const Vek8u(&row)[matrixSize], int x) {
    const Offsets offsets = offsetsOf(index, row, x);
    return [=](const Vek8u* src, Vek8u* dst) {
      const V16u a = hn::Set(u16, index.a);
      const V8u v = hn::LoadU(u8, src);
      const V16u even = hn::ShiftRight<index.shift>(scaledIndex(evenHigh(v), offsets.even, a));
      const V16u odd = hn::ShiftRight<index.shift>(scaledIndex(oddHigh(v), offsets.odd, a));
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

/// A field of a 16-bit pixel.
template <int bits, int position>
struct Field {
  static constexpr Index index = Index(1 << bits);

  Offsets offsets;

  Field(const Vek8u (&row)[matrixSize], int x) : offsets(offsetsOf(index, row, x)) {}
  V16u even(V8u v) const { return placed(scaledIndex(evenHigh(v), offsets.even, factor())); }
  V16u odd(V8u v) const { return placed(scaledIndex(oddHigh(v), offsets.odd, factor())); }

 private:
  static V16u factor() { return hn::Set(u16, index.a); }
  static V16u placed(V16u scaled) {
    constexpr int left = position - index.shift;
    const V16u moved =
        hn::ShiftRight < left < 0 ? -left : 0 > (hn::ShiftLeft < left < 0 ? 0 : left > (scaled));
    if constexpr (position == 0) return moved;  // nothing is left above it
    return hn::And(moved, hn::Set(u16, ((1 << bits) - 1) << position));
  }
};

template <class Format>
void orderPixels(const Picture& picture, int, VekiPoint origin) {
  forEachRow<3, 2, 1>(picture, origin, [=](const Vek8u(&row)[matrixSize], int x) {
    const Field<Format::rBits, Format::rPos> first(row, x);
    const Field<Format::gBits, Format::gPos> second(row, x);
    const Field<Format::bBits, Format::bPos> third(row, x);
    return [=](const Vek8u* src, Vek8u* dst) {
      const Channels v = loadChannels(src);
      const V16u even = hn::Or(hn::Or(first.even(v.c0), second.even(v.c1)), third.even(v.c2));
      const V16u odd = hn::Or(hn::Or(first.odd(v.c0), second.odd(v.c1)), third.odd(v.c2));
      storeAlternately(hn::BitCast(s16, even), hn::BitCast(s16, odd), dst);
    };
  });
}

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
