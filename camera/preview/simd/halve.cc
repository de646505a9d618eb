#include "camera/preview/halve_kernels.h"
#include "camera/preview/simd/neon_halve.h"
#include "core/kernel/blocks.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

#if !HWY_ARCH_ARM

void averageVectors(const Vek8u* a, const Vek8u* b, Vek8u* to) {
  hn::StoreU(hn::AverageRound(hn::LoadU(u8, a), hn::LoadU(u8, b)), u8, to);
}

/// The bytes at even and at odd places of two vectors that follow each other.
V8u evenBytesOf(V8u first, V8u second) {
  return hn::ConcatEven(u8, second, first);
}
V8u oddBytesOf(V8u first, V8u second) {
  return hn::ConcatOdd(u8, second, first);
}

/// Cb, Cr, Cb, Cr ... of as many pixels as a vector has bytes, and their luma in two rows.
V8u splitVectors(const Vek8u* top, const Vek8u* bottom, Vek8u* topLuma, Vek8u* bottomLuma) {
  const V8u top0 = hn::LoadU(u8, top), top1 = hn::LoadU(u8, top + vectorBytes);
  const V8u bottom0 = hn::LoadU(u8, bottom), bottom1 = hn::LoadU(u8, bottom + vectorBytes);
  hn::StoreU(oddBytesOf(top0, top1), u8, topLuma);
  hn::StoreU(oddBytesOf(bottom0, bottom1), u8, bottomLuma);
  return evenBytesOf(hn::AverageRound(top0, bottom0), hn::AverageRound(top1, bottom1));
}

/// As many groups as a vector has bytes.
void splitGroups(const Vek8u* top, const Vek8u* bottom, Vek8u* topLuma, Vek8u* bottomLuma,
                 Vek8u* cb, Vek8u* cr) {
  constexpr ptrdiff_t half = vectorBytes;
  const V8u first = splitVectors(top, bottom, topLuma, bottomLuma);
  const V8u second =
      splitVectors(top + 2 * half, bottom + 2 * half, topLuma + half, bottomLuma + half);
  hn::StoreU(evenBytesOf(first, second), u8, cb);
  hn::StoreU(oddBytesOf(first, second), u8, cr);
}

#endif

void averageRows(const Vek8u* top, const Vek8u* bottom, ptrdiff_t n, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  const Advancing body{
      [](const Vek8u*& a, const Vek8u*& b, Vek8u*& to) { averageVectors(a, b, to); }};
  copiedBlocks<vectorBytes>(n, body, In<1>{top}, In<1>{bottom}, Out<1>{dst});
}

void splitRows(const Vek8u* top, const Vek8u* bottom, ptrdiff_t n, Vek8u* topLuma,
               Vek8u* bottomLuma, Vek8u* cb, Vek8u* cr) {
  VEK_ASSERT(n >= 2 && n % 2 == 0);
  const Advancing body{[](auto&... streams) { splitGroups(streams...); }};
  copiedBlocks<2 * vectorBytes>(n, body, In<2>{top}, In<2>{bottom}, Out<1>{topLuma},
                                Out<1>{bottomLuma}, Out<1, 2>{cb}, Out<1, 2>{cr});
}

}  // namespace

constexpr HalveKernels halveKernels = {.averageRows = averageRows, .splitRows = splitRows};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
