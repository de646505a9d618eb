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
  static constexpr int bytes = count;
  const Vek8u* data;

  const Vek8u* at(ptrdiff_t x) const { return data + x / pixels * count; }
};
template <int count, int pixels = 1>
struct Out {
  Vek8u* data;

  Vek8u* at(ptrdiff_t x) const { return data + x / pixels * count; }
};

/// A full block's worth of bytes that starts with `valid` bytes of a row and ends in zeros.
template <size_t size>
struct PaddedBlock {
  alignas(64) Vek8u data[size] = {};

  PaddedBlock(const Vek8u* src, ptrdiff_t valid) { memcpy(data, src, static_cast<size_t>(valid)); }
};

/// The copy that a stream's last, shorter block is worked on; finish() writes back what belongs to
/// the row. A group of pixels that the row begins counts whole.
template <int block, class Stream>
struct LastBlock;

template <int block, int count, int pixels>
struct LastBlock<block, In<count, pixels>> : PaddedBlock<block / pixels * count> {
  LastBlock(In<count, pixels> in, ptrdiff_t x, ptrdiff_t rest)
      : PaddedBlock<block / pixels * count>(in.at(x), (rest + pixels - 1) / pixels * count) {}
  void finish() const {}
};

template <int block, int count, int pixels>
struct LastBlock<block, Out<count, pixels>> {
  alignas(64) Vek8u data[block / pixels * count];
  Vek8u* dst;
  ptrdiff_t valid;

  LastBlock(Out<count, pixels> out, ptrdiff_t x, ptrdiff_t rest)
      : dst(out.at(x)), valid((rest + pixels - 1) / pixels * count) {}
  void finish() const { memcpy(dst, data, static_cast<size_t>(valid)); }
};

/// Runs body(pointers...) on successive blocks of exactly `block` pixels of the streams. The last,
/// shorter block runs on copies, so that a body never sees a partial block and no byte outside the
/// row is touched. In place is fine as long as the body loads its block before it stores. The body
/// is inlined into the loop however long it is, and once: the last block is a call of its own.
template <int block, class Body, class... Streams>
[[gnu::noinline, gnu::flatten]] void forEachBlock(ptrdiff_t n, Body body, Streams... streams) {
  ptrdiff_t x = 0;
  for (; x + block <= n; x += block) body(streams.at(x)...);
  if (x == n) return;
  const auto runLast = [&](auto&&... last) {
    forEachBlock<block>(block, body, Streams{last.data}...);
    (last.finish(), ...);
  };
  runLast(LastBlock<block, Streams>(streams, x, n - x)...);
}

/// Runs body(i) for blocks of `size` elements that cover 0 .. n - 1, n >= size; the last one may
/// overlap its neighbour. For kernels whose destination is not their source: what is written twice
/// is the same both times.
template <class Body>
void forEachOverlappingBlock(ptrdiff_t n, ptrdiff_t size, Body body) {
  for (ptrdiff_t i = 0; i + size < n; i += size) body(i);
  body(n - size);
}

}  // namespace
}  // namespace vek::VEK_LEVEL
