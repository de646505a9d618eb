// Neighbours in a row, from vectors of it that are in registers.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/assert.h"
#include "core/kernel/lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// The vector of bytes that begins `distance` (1 .. 15) bytes after `v` does; `next` is the vector
/// that follows `v` in the row.
template <int distance>
V8u further(V8u v, V8u next) {
#if defined(__AVX512BW__)
  return V8u{_mm512_alignr_epi8(_mm512_alignr_epi64(next.raw, v.raw, 2), v.raw, distance)};
#elif defined(__AVX2__)
  return V8u{_mm256_alignr_epi8(_mm256_permute2x128_si256(v.raw, next.raw, 0x21), v.raw, distance)};
#else
  return hn::CombineShiftRightBytes<distance>(u8, next, v);
#endif
}

/// Windows of three columns, `pixelBytes` apart, along a row of `n` >= vectorBytes destination
/// bytes. rows.columns(x) computes what a window needs of each of the columns x .. x + vectorBytes
/// - 1, once; rows.store(first, second, third, x) stores the results of the windows that begin
/// there. The destination is not the source.
///
/// This is not one of the policies of blocks.h because each step takes over the columns of the one
/// before. The step needs the columns of the next vector whole, which the row's last ones are not:
/// the rest is computed from three loads each, the last vector overlapping its neighbour.
template <int pixelBytes, class Rows>
void forWindowsOf3(const Rows& rows, ptrdiff_t n) {
  VEK_ASSERT(n >= vectorBytes);
  auto now = rows.columns(0);
  ptrdiff_t x = 0;
  for (; x + 2 * vectorBytes <= n + 2 * pixelBytes; x += vectorBytes) {
    const auto next = rows.columns(x + vectorBytes);
    rows.store(now, further<pixelBytes>(now, next), further<2 * pixelBytes>(now, next), x);
    now = next;
  }
  for (; x < n; x += vectorBytes) {
    if (n - x < vectorBytes) x = n - vectorBytes;
    rows.store(rows.columns(x), rows.columns(x + pixelBytes), rows.columns(x + 2 * pixelBytes), x);
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
