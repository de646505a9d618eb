// Highway in static-dispatch form under the level's compiler flags, and the one vocabulary of lanes:
// u8 is the tag of a full vector of unsigned bytes and V8u that vector, s16 and V16s those of signed
// 16-bit lanes, and so on.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <stdint.h>

#define HWY_IS_DEBUG_BUILD 0  // otherwise its assertions want its library
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();

#if HWY_ARCH_WASM
// Highway 1.0.3 looks bytes up one by one, since engines before 2021 had a fault there. Its own functions,
// such as StoreInterleaved3, take these, too, which are the more constrained ones.
namespace hwy::HWY_NAMESPACE {

template <typename T, size_t n, typename Index, size_t count>
requires true HWY_API Vec128<Index, count> TableLookupBytes(const Vec128<T, n> bytes,
                                                            const Vec128<Index, count> from) {
  return Vec128<Index, count>{wasm_i8x16_swizzle(bytes.raw, from.raw)};
}

template <typename T, size_t n, typename Index, size_t count>
requires true HWY_API Vec128<Index, count> TableLookupBytesOr0(const Vec128<T, n> bytes,
                                                               const Vec128<Index, count> from) {
  return Vec128<Index, count>{wasm_i8x16_swizzle(bytes.raw, from.raw)};
}

}  // namespace hwy::HWY_NAMESPACE
#endif

namespace vek::VEK_LEVEL {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr hn::ScalableTag<Vek8u> u8;
constexpr hn::ScalableTag<int8_t> s8;
constexpr hn::ScalableTag<Vek16u> u16;
constexpr hn::ScalableTag<Vek16s> s16;
constexpr hn::ScalableTag<Vek32u> u32;
constexpr hn::ScalableTag<Vek32s> s32;
constexpr hn::ScalableTag<uint64_t> u64;
constexpr hn::ScalableTag<float> f32;

using V8u = hn::Vec<decltype(u8)>;
using V8s = hn::Vec<decltype(s8)>;
using V16u = hn::Vec<decltype(u16)>;
using V16s = hn::Vec<decltype(s16)>;
using V32u = hn::Vec<decltype(u32)>;
using V32s = hn::Vec<decltype(s32)>;
using V64u = hn::Vec<decltype(u64)>;
using V32f = hn::Vec<decltype(f32)>;

#if HWY_HAVE_FLOAT64  // else doubles are calculated one by one
constexpr hn::ScalableTag<double> f64;
using V64f = hn::Vec<decltype(f64)>;
#endif

/// As many bytes as a vector has 16-bit lanes, and as many 16-bit lanes as it has 32-bit ones.
constexpr hn::Rebind<Vek8u, decltype(u16)> halfU8;
constexpr hn::Rebind<Vek16u, decltype(u32)> halfU16;
constexpr hn::Rebind<Vek16s, decltype(s32)> halfS16;

constexpr int vectorBytes = static_cast<int>(hn::MaxLanes(u8));

/// `value`, which is cast to the type of the lanes, in every lane.
template <class D>
hn::Vec<D> filled(D d, Vek32s value) {
  return hn::Set(d, static_cast<hn::TFromD<D>>(value));
}

// ---- Bytes in 16-bit lanes, signed or unsigned as the tag d says.

template <class D>
hn::Vec<D> evenBytes(D d, V8u v) {
  return hn::And(hn::BitCast(d, v), hn::Set(d, 0xFF));
}

template <class D>
hn::Vec<D> oddBytes(D d, V8u v) {
  return hn::BitCast(d, hn::ShiftRight<8>(hn::BitCast(u16, v)));
}

/// The inverse; every lane is at most 255.
inline V8u joinBytes(V16u even, V16u odd) {
  return hn::BitCast(u8, hn::Or(even, hn::ShiftLeft<8>(odd)));
}

/// The high bytes of the lanes.
inline V8u joinHighBytes(V16u even, V16u odd) {
  return hn::BitCast(u8, hn::Or(hn::ShiftRight<8>(even), hn::And(odd, hn::Set(u16, 0xFF00))));
}

/// Each even byte times its coefficient (a signed byte) plus the odd byte after it times its own.
/// The sums must stay within 16 bits.
inline V16s sumOfPairs(V8u v, V8u coefficients) {
#if defined(__AVX512BW__)
  return V16s{_mm512_maddubs_epi16(v.raw, coefficients.raw)};
#elif defined(__AVX2__)
  return V16s{_mm256_maddubs_epi16(v.raw, coefficients.raw)};
#elif HWY_ARCH_X86
  return V16s{_mm_maddubs_epi16(v.raw, coefficients.raw)};
#else
  const V16s signedPairs = hn::BitCast(s16, coefficients);
  return hn::Add(hn::Mul(evenBytes(s16, v), hn::ShiftRight<8>(hn::ShiftLeft<8>(signedPairs))),
                 hn::Mul(oddBytes(s16, v), hn::ShiftRight<8>(signedPairs)));
#endif
}

// ---- Packing, within each 128 bits of a vector: what InterleaveLower and InterleaveUpper put in two
// vectors comes back in the order of the original.

/// Clamped to 0 .. 255.
inline V8u packClamped(V16s lower, V16s upper) {
#if defined(__AVX512BW__)
  return V8u{_mm512_packus_epi16(lower.raw, upper.raw)};
#elif defined(__AVX2__)
  return V8u{_mm256_packus_epi16(lower.raw, upper.raw)};
#elif HWY_ARCH_X86
  return V8u{_mm_packus_epi16(lower.raw, upper.raw)};
#elif HWY_ARCH_WASM
  return V8u{wasm_u8x16_narrow_i16x8(lower.raw, upper.raw)};
#else
  static_assert(vectorBytes == 16);
  return hn::Combine(u8, hn::DemoteTo(halfU8, upper), hn::DemoteTo(halfU8, lower));
#endif
}

/// Clamped to 16 signed bits.
inline V16s packClamped(V32s lower, V32s upper) {
#if HWY_ARCH_ARM_V7  // where Highway 1.0.3 exchanges the halves of the result
  return hn::Combine(s16, hn::DemoteTo(halfS16, upper), hn::DemoteTo(halfS16, lower));
#else
  return hn::ReorderDemote2To(s16, lower, upper);
#endif
}

// ---- Dot products of 16-bit lanes.

/// acc + a0 * b0 + a1 * b1 of the two 16-bit lanes in each 32-bit lane.
inline V32s plusDot(V32s acc, V16s a, V16s b) {
#if defined(__AVX512VNNI__)
  return V32s{_mm512_dpwssd_epi32(acc.raw, a.raw, b.raw)};
#elif HWY_ARCH_X86
  V32s unused = hn::Zero(s32);
  return hn::ReorderWidenMulAccumulate(s32, a, b, acc, unused);
#elif HWY_ARCH_WASM
  return hn::Add(acc, V32s{wasm_i32x4_dot_i16x8(a.raw, b.raw)});
#else
  const V32s a2 = hn::BitCast(s32, a), b2 = hn::BitCast(s32, b);
  const V32s low =
      hn::Mul(hn::ShiftRight<16>(hn::ShiftLeft<16>(a2)), hn::ShiftRight<16>(hn::ShiftLeft<16>(b2)));
  return hn::Add(acc, hn::Add(low, hn::Mul(hn::ShiftRight<16>(a2), hn::ShiftRight<16>(b2))));
#endif
}

/// Two 16-bit factors for plusDot(), in every 32-bit lane.
inline V16s pairOfFactors(Vek32s first, Vek32s second) {
  return hn::BitCast(s16, hn::Set(s32, (first & 0xFFFF) | second * 65536));
}

// ---- Floats.

inline V32f toFloat(V32s v) {
  return hn::ConvertTo(f32, v);
}

/// 1 / d to 21 bits or better: an approximation of at least 11 bits, and one step of Newton's.
inline V32f reciprocal(V32f d) {
#if HWY_ARCH_X86
  const V32f x = hn::ApproximateReciprocal(d);
  return hn::Mul(x, hn::NegMulAdd(d, x, hn::Set(f32, 2.0f)));
#else
  return hn::Div(hn::Set(f32, 1.0f), d);
#endif
}

/// v without its fraction, for values that fit 32 bits: Highway's conversion also handles those that
/// do not, which takes longer.
inline V32s truncated(V32f v) {
#if defined(__AVX512F__)
  return V32s{_mm512_cvttps_epi32(v.raw)};
#elif defined(__AVX2__)
  return V32s{_mm256_cvttps_epi32(v.raw)};
#elif HWY_ARCH_X86
  return V32s{_mm_cvttps_epi32(v.raw)};
#else
  return hn::ConvertTo(s32, v);
#endif
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
