// Stores of red, green and blue bytes as pixels of two or three bytes.
#pragma once

#include "core/color/pixel_format.h"
#include "core/kernel/interleave.h"
#include "core/kernel/lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// One component's field in the low (byte 0) or the high byte (byte 1) of a 16-bit pixel. The field is
/// `bits` bits from bit `position` of the pixel on, and holds the top bits of the component.
template <int byte, int bits, int position>
struct FieldByte {
  /// Which bits of the byte belong to the field.
  static constexpr int mask = ((1 << bits) - 1) << position >> 8 * byte & 0xFF;

  /// Moves the bits of every component to their places. Bits beside the field's are undefined.
  static V16s of(V8u v) {
    constexpr int left = position - 8 * byte - (8 - bits);
    const V16u words = hn::BitCast(u16, v);
    return hn::BitCast(s16, left > 0   ? hn::ShiftLeft<(left > 0 ? left : 0)>(words)
                            : left < 0 ? hn::ShiftRight<(left < 0 ? -left : 0)>(words)
                                       : words);
  }
};

/// The bits of `yes` where the mask has ones, and those of `no` elsewhere.
inline V16s bitsFrom(V16s mask, V16s yes, V16s no) {
#if defined(__AVX512F__)
  return hn::IfVecThenElse(mask, yes, no);
#else
  return hn::Or(hn::And(mask, yes), hn::AndNot(mask, no));
#endif
}

/// `mask` in every byte.
inline V16s byteMask(int mask) {
  return filled(s16, mask * 0x101);
}

/// The low (byte 0) or the high bytes (byte 1) of 16-bit pixels from bytes of red, green and blue.
/// A byte holds the field of red or of blue (`Other`), and a part of green's unless the format keeps
/// four bits each: above the other field in the low byte, below it in the high one.
template <int byte, class Format>
V8u packedByte(const Channels& rgb) {
  using Green = FieldByte<byte, Format::gBits, Format::gPos>;
  constexpr bool isRed = (Format::rPos < Format::bPos) == (byte == 0);
  using Other =
      FieldByte<byte, isRed ? Format::rBits : Format::bBits, isRed ? Format::rPos : Format::bPos>;
  const V16s other = Other::of(isRed ? rgb.c0 : rgb.c2), green = Green::of(rgb.c1);
  V16s all = other;
  if constexpr (Green::mask != 0) all = bitsFrom(byteMask(Other::mask), other, green);
  constexpr int mask = Green::mask | Other::mask;
  return hn::BitCast(u8, mask == 0xFF ? all : hn::And(all, byteMask(mask)));
}

/// Stores the 16-bit lanes of both vectors alternately.
inline void storeAlternately(V16s even, V16s odd, Vek8u* dst) {
#if defined(__AVX512F__)
  alignas(64) static constexpr Vek64s low[8] = {0, 1, 8, 9, 2, 3, 10, 11};
  alignas(64) static constexpr Vek64s high[8] = {4, 5, 12, 13, 6, 7, 14, 15};
  const __m512i lower = _mm512_unpacklo_epi16(even.raw, odd.raw);
  const __m512i upper = _mm512_unpackhi_epi16(even.raw, odd.raw);
  _mm512_storeu_si512(dst, _mm512_permutex2var_epi64(lower, _mm512_load_si512(low), upper));
  _mm512_storeu_si512(dst + 64, _mm512_permutex2var_epi64(lower, _mm512_load_si512(high), upper));
#else
  hn::StoreInterleaved2(even, odd, s16, reinterpret_cast<Vek16s*>(dst));
#endif
}

/// In each 128-bit block the bytes of its lower and its upper half alternately.
inline V8u alternatelyFromHalves(V8u v) {
  alignas(16) static constexpr Vek8u order[16] = {0, 8,  1, 9,  2, 10, 3, 11,
                                                  4, 12, 5, 13, 6, 14, 7, 15};
  return hn::TableLookupBytes(v, hn::LoadDup128(u8, order));
}

#if defined(__AVX512VBMI__)
/// For each lane of storeThirds(), where its pixel's sample lies if the eight even pixels of each
/// 128-bit block come before the odd ones.
template <int channel>
constexpr ByteOrder evenFirstPixelOf = [] {
  ByteOrder order = {};
  for (int i = 0; i < 64; ++i) {
    order.at[(3 * i + channel) % 64] = static_cast<Vek8u>(i / 16 * 16 + i % 2 * 8 + i % 16 / 2);
  }
  return order;
}();
#endif

/// Stores a block of pixels. Each 128-bit block of a channel holds eight even pixels, then the eight
/// odd ones between them: packing 16-bit lanes of even and of odd pixels gives this order.
template <class Format>
void storeEvenFirst(const Channels& rgb, Vek8u* dst) {
  if constexpr (Format::bytes == 2) {
    const V8u low = packedByte<0, Format>(rgb), high = packedByte<1, Format>(rgb);
    storeAlternately(hn::BitCast(s16, hn::InterleaveLower(u8, low, high)),
                     hn::BitCast(s16, hn::InterleaveUpper(u8, low, high)), dst);
  } else {
    static_assert(Format::gPos == 1);
    const V8u first = Format::rPos == 0 ? rgb.c0 : rgb.c2;
    const V8u third = Format::rPos == 0 ? rgb.c2 : rgb.c0;
#if defined(__AVX512VBMI__)
    storeThirds(permuted(evenFirstPixelOf<0>, first.raw), permuted(evenFirstPixelOf<1>, rgb.c1.raw),
                permuted(evenFirstPixelOf<2>, third.raw), dst);
#elif HWY_ARCH_X86
    storeChannels<true>({first, rgb.c1, third}, dst);
#else
    storeChannels(
        {alternatelyFromHalves(first), alternatelyFromHalves(rgb.c1), alternatelyFromHalves(third)},
        dst);
#endif
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
