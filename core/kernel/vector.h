// Hand-written vectors: Highway in static-dispatch form, under the level's compiler flags, and the
// row driver that owns tails. VEK_HAVE_HIGHWAY is 0 when the headers are absent; a simd/ source
// then falls back to the plain loop of its family, compiled for the level.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <string.h>

#if VEK_HAVE_HIGHWAY
#define HWY_IS_DEBUG_BUILD 0  // otherwise its assertions want its library
#include <hwy/highway.h>
#endif

namespace vek::VEK_LEVEL {
namespace {

#if VEK_HAVE_HIGHWAY
namespace hn = hwy::HWY_NAMESPACE;
#endif

/// A stream of a row kernel: `count` bytes for every `pixels` pixels.
template <int count, int pixels = 1>
struct In {
  const Vek8u* data;
};
template <int count, int pixels = 1>
struct Out {
  Vek8u* data;
};

/// A full block's worth of bytes that starts with `valid` bytes of a row and ends in zeros.
template <size_t size>
struct PaddedBlock {
  alignas(64) Vek8u data[size] = {};

  PaddedBlock(const Vek8u* src, ptrdiff_t valid) { memcpy(data, src, static_cast<size_t>(valid)); }
};

/// Runs body(dst, src...) on successive blocks of exactly `block` pixels. The last, shorter block
/// runs on copies, so that a body never sees a partial block and no byte outside the row is
/// touched. In place is fine as long as the body loads its block before it stores.
template <int block, class Body, int outCount, int outPixels, int... inCount, int... inPixels>
void forEachBlock(ptrdiff_t n, Body body, Out<outCount, outPixels> out,
                  In<inCount, inPixels>... in) {
  ptrdiff_t x = 0;
  for (; x + block <= n; x += block) {
    body(out.data + x * outCount / outPixels, in.data + x * inCount / inPixels...);
  }
  const ptrdiff_t rest = n - x;
  if (rest == 0) return;
  alignas(64) Vek8u last[block * outCount / outPixels];
  body(last, PaddedBlock<block * inCount / inPixels>(in.data + x * inCount / inPixels,
                                                     (rest * inCount + inPixels - 1) / inPixels)
                 .data...);
  memcpy(out.data + x * outCount / outPixels, last,
         static_cast<size_t>((rest * outCount + outPixels - 1) / outPixels));
}

/// Runs body(i) for blocks of `size` elements that cover 0 .. n - 1, n >= size; the last one may
/// overlap its neighbour. For kernels that do not work in place.
template <class Body>
void forEachOverlappingBlock(ptrdiff_t n, ptrdiff_t size, Body body) {
  for (ptrdiff_t i = 0; i + size < n; i += size) body(i);
  body(n - size);
}

}  // namespace
}  // namespace vek::VEK_LEVEL
