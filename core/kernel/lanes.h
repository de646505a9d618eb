// Lanes of bytes, words and 32-bit integers, and dot products of words.
#pragma once

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::ScalableTag<Vek8u> byteLanes;
constexpr hn::ScalableTag<Vek16s> wordLanes;
constexpr hn::ScalableTag<Vek32s> intLanes;
using VBytes = hn::Vec<hn::ScalableTag<Vek8u>>;
using VWord = hn::Vec<hn::ScalableTag<Vek16s>>;
using VInt = hn::Vec<hn::ScalableTag<Vek32s>>;
constexpr int pixelBlock = static_cast<int>(hn::MaxLanes(byteLanes));

inline VWord wordConstant(Vek16s value) {
  return hn::Set(wordLanes, value);
}

inline VInt constant(Vek32s value) {
  return hn::Set(intLanes, value);
}

inline VWord evenBytes(VBytes v) {
  return hn::And(hn::BitCast(wordLanes, v), wordConstant(0xFF));
}

inline VWord oddBytes(VBytes v) {
  const hn::RebindToUnsigned<decltype(wordLanes)> unsignedLanes;
  return hn::BitCast(wordLanes, hn::ShiftRight<8>(hn::BitCast(unsignedLanes, v)));
}

/// acc + a0 * b0 + a1 * b1 of the two words in each 32-bit lane.
inline VInt plusDot(VInt acc, VWord a, VWord b) {
#if defined(__AVX512VNNI__)
  return VInt{_mm512_dpwssd_epi32(acc.raw, a.raw, b.raw)};
#elif HWY_ARCH_X86
  VInt unused = hn::Zero(intLanes);
  return hn::ReorderWidenMulAccumulate(intLanes, a, b, acc, unused);
#else
  const VInt a2 = hn::BitCast(intLanes, a), b2 = hn::BitCast(intLanes, b);
  const VInt low =
      hn::Mul(hn::ShiftRight<16>(hn::ShiftLeft<16>(a2)), hn::ShiftRight<16>(hn::ShiftLeft<16>(b2)));
  return hn::Add(acc, hn::Add(low, hn::Mul(hn::ShiftRight<16>(a2), hn::ShiftRight<16>(b2))));
#endif
}

/// Weights for plusDot().
inline VWord twoWords(Vek32s first, Vek32s second) {
  return hn::BitCast(wordLanes, constant((first & 0xFFFF) | second * 65536));
}

/// In each 128-bit lane the words of a, then those of b, saturated.
inline VWord packWords(VInt a, VInt b) {
  return hn::ReorderDemote2To(wordLanes, a, b);
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
