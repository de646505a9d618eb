// Lanes for kernels of three-channel pixels: bytes, and 16-bit or 32-bit parts of them.
#pragma once

#include "core/kernel/interleave.h"
#include "core/kernel/lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

struct PixelWords {
  V16s c0, c1, c2;
};

struct PixelLanes {
  V32s c0, c1, c2;
};

/// Bytes from results (0..255 each) for the even and the odd ones.
inline V8u joinBytes(V16s even, V16s odd) {
  return hn::BitCast(u8, hn::Or(even, hn::ShiftLeft<8>(odd)));
}

/// Runs fn(PixelWords) -> PixelWords on every pixel of a row.
template <class Fn>
void convertPixelWords(const Vek8u* src, Vek8u* dst, ptrdiff_t n, Fn fn) {
  const auto body = [&fn](Vek8u* out, const Vek8u* in) {
    const Channels v = loadChannels(in);
    const PixelWords even =
        fn(PixelWords{evenBytes(s16, v.c0), evenBytes(s16, v.c1), evenBytes(s16, v.c2)});
    const PixelWords odd =
        fn(PixelWords{oddBytes(s16, v.c0), oddBytes(s16, v.c1), oddBytes(s16, v.c2)});
    storeChannels(
        {joinBytes(even.c0, odd.c0), joinBytes(even.c1, odd.c1), joinBytes(even.c2, odd.c2)}, out);
  };
  copiedBlocks<vectorBytes>(n, body, Out<3>{dst}, In<3>{src});
}

/// Every fourth byte of v, beginning with byte `phase`: the pixels of one phase. Going by phases
/// needs no byte shuffles, and merge() puts the results back in order.
template <int phase>
V32s phaseOf(V8u v) {
  const hn::RebindToUnsigned<decltype(s32)> unsignedLanes;
  const auto words = hn::BitCast(unsignedLanes, v);
  return hn::BitCast(s32, hn::And(hn::ShiftRight<8 * phase>(words), hn::Set(unsignedLanes, 0xFF)));
}

/// Adds results (0..255 each) of one phase to the bytes gathered so far.
template <int phase>
V8u merge(V8u gathered, V32s results) {
  return hn::Or(gathered, hn::BitCast(u8, hn::ShiftLeft<8 * phase>(results)));
}

/// Calls phase.operator()<0>() to <3>().
template <class Phase>
void forEachPhase(Phase phase) {
  phase.template operator()<0>();
  phase.template operator()<1>();
  phase.template operator()<2>();
  phase.template operator()<3>();
}

/// 1 / d to 21 bits or better, from an approximation of at least 11 bits and one step of Newton's.
inline V32f reciprocal(V32f d) {
#if HWY_ARCH_X86
  const V32f x = hn::ApproximateReciprocal(d);
  return hn::Mul(x, hn::NegMulAdd(d, x, hn::Set(f32, 2.0f)));
#else
  return hn::Div(hn::Set(f32, 1.0f), d);
#endif
}

inline V32f toFloat(V32s v) {
  return hn::ConvertTo(f32, v);
}

inline V32s times(V32s v, Vek32s factor) {
  return hn::Mul(v, hn::Set(s32, factor));
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
