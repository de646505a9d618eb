// Lanes for kernels of three-channel pixels: bytes, and 16-bit or 32-bit parts of them.
#pragma once

#include "core/kernel/interleave.h"
#include "core/kernel/lanes.h"
#include "core/kernel/truncated.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::ScalableTag<float> floatLanes;
using VFloat = hn::Vec<hn::ScalableTag<float>>;

struct PixelWords {
  VWord c0, c1, c2;
};

struct PixelLanes {
  VInt c0, c1, c2;
};

/// Bytes from results (0..255 each) for the even and the odd ones.
inline VBytes joinBytes(VWord even, VWord odd) {
  return hn::BitCast(byteLanes, hn::Or(even, hn::ShiftLeft<8>(odd)));
}

/// Runs fn(PixelWords) -> PixelWords on every pixel of a row.
template <class Fn>
void convertPixelWords(const Vek8u* src, Vek8u* dst, ptrdiff_t n, Fn fn) {
  const auto body = [&fn](Vek8u* out, const Vek8u* in) {
    const Channels v = loadChannels(in);
    const PixelWords even = fn(PixelWords{evenBytes(v.c0), evenBytes(v.c1), evenBytes(v.c2)});
    const PixelWords odd = fn(PixelWords{oddBytes(v.c0), oddBytes(v.c1), oddBytes(v.c2)});
    storeChannels(
        {joinBytes(even.c0, odd.c0), joinBytes(even.c1, odd.c1), joinBytes(even.c2, odd.c2)}, out);
  };
  forEachBlock<pixelBlock>(n, body, Out<3>{dst}, In<3>{src});
}

/// Every fourth byte of v, beginning with byte `phase`: the pixels of one phase. Going by phases
/// needs no byte shuffles, and merge() puts the results back in order.
template <int phase>
VInt phaseOf(VBytes v) {
  const hn::RebindToUnsigned<decltype(intLanes)> unsignedLanes;
  const auto words = hn::BitCast(unsignedLanes, v);
  return hn::BitCast(intLanes,
                     hn::And(hn::ShiftRight<8 * phase>(words), hn::Set(unsignedLanes, 0xFF)));
}

/// Adds results (0..255 each) of one phase to the bytes gathered so far.
template <int phase>
VBytes merge(VBytes gathered, VInt results) {
  return hn::Or(gathered, hn::BitCast(byteLanes, hn::ShiftLeft<8 * phase>(results)));
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
inline VFloat reciprocal(VFloat d) {
#if HWY_ARCH_X86
  const VFloat x = hn::ApproximateReciprocal(d);
  return hn::Mul(x, hn::NegMulAdd(d, x, hn::Set(floatLanes, 2.0f)));
#else
  return hn::Div(hn::Set(floatLanes, 1.0f), d);
#endif
}

inline VFloat toFloat(VInt v) {
  return hn::ConvertTo(floatLanes, v);
}

inline VInt times(VInt v, Vek32s factor) {
  return hn::Mul(v, constant(factor));
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
