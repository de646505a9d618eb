// How a kernel of blocks covers a row that is not a whole number of them. There are three policies:
//
//   copiedBlocks               the rest is computed on copies: in place is fine, rows of any length
//   overlappingBlocks          the last block overlaps its neighbour: no destination is a source
//   overlappingBlocksInPlace   the same in place: the overlapping ends are computed before anything
//                              is stored
//
// A loop that owns its tail instead says why none of them serves.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "core/assert.h"
#include "core/kernel/lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

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

/// A body that moves the pointers on by a block, which ARMv7's loads and stores do for nothing. On other
/// processors it may leave them where they are.
template <class Body>
struct Advancing : Body {};
template <class Body>
Advancing(Body) -> Advancing<Body>;

template <class Body>
constexpr bool advances = false;
template <class Body>
constexpr bool advances<Advancing<Body>> = true;

template <int block, class Body, class... Streams>
void copiedBlocks(ptrdiff_t n, Body body, Streams... streams);

/// The last block of copiedBlocks(), of fewer pixels than the others.
template <int block, class Body, class... Streams>
#if HWY_ARCH_ARM_V7
[[gnu::noinline]]  // most rows have none, and its frame would cost them as much as some blocks
#endif
void lastCopiedBlock(ptrdiff_t n, Body body, Streams... streams) {
  const auto run = [&](auto&&... last) {
    copiedBlocks<block>(block, body, Streams{last.data}...);
    (last.finish(), ...);
  };
  run(LastBlock<block, Streams>(streams, 0, n)...);
}

/// Policy "copied": runs body(pointers...) on successive blocks of exactly `block` pixels of the
/// streams, the last, shorter one on copies. A body never sees a partial block, nothing outside the
/// row is touched, and a destination may be its source if the body loads its block before it stores.
/// The body is inlined into the loop however long it is, and once: the last block is a call of its
/// own.
template <int block, class Body, class... Streams>
[[gnu::noinline, gnu::flatten]]
#if HWY_ARCH_ARM_V7
// Bodies that move pointers take their addresses. These are no buffers, and checking the frame for them
// would cost each row as much as two short blocks; the frame of the last block, which has some, is checked.
__attribute__((no_stack_protector))
#endif
void copiedBlocks(ptrdiff_t n, Body body, Streams... streams) {
#if HWY_ARCH_ARM_V7
  // Loads and stores that move their pointers on take no instruction for an address.
  if constexpr (advances<Body>) {
    const auto last = static_cast<ptrdiff_t>(static_cast<size_t>(n) % block);
    const auto run = [n, &body](auto... pointers) {
      for (ptrdiff_t rest = n - block; rest >= 0; rest -= block) body(pointers...);
    };
    run(streams.data...);
    if (last != 0) lastCopiedBlock<block>(last, body, Streams{streams.at(n - last)}...);
  } else {
    for (; n >= block; n -= block) {
      body(streams.at(0)...);
      ((streams = Streams{streams.at(block)}), ...);
    }
    if (n != 0) lastCopiedBlock<block>(n, body, streams...);
  }
#else
  ptrdiff_t x = 0;
  const auto run = [&](auto... pointers) { body(pointers...); };
  for (; x + block <= n; x += block) run(streams.at(x)...);
  if (x != n) lastCopiedBlock<block>(n - x, body, Streams{streams.at(x)}...);
#endif
}

/// Policy "overlapping": runs body(i) for blocks of `size` elements that cover 0 .. n - 1, n >= size;
/// the last one may overlap its neighbour. What is written twice is the same both times, since no
/// destination is a source.
template <class Body>
void overlappingBlocks(ptrdiff_t n, ptrdiff_t size, Body body) {
  VEK_ASSERT(n >= size);
  for (ptrdiff_t i = 0; i + size < n; i += size) body(i);
  body(n - size);
}

/// Policy "overlapping in place": writes dst[0] .. dst[n - 1], n >= vectorBytes. compute(x) returns the
/// results for the vector of bytes at x; storeAligned(x, last) stores those at x, x + vectorBytes ...
/// until `last` is reached or passed, where dst + x is aligned to whole vectors. The first and the
/// last vector may overlap the aligned ones between them; they are computed before and stored after
/// those, so a source may be the destination.
template <class Compute, class StoreAligned>
void overlappingBlocksInPlace(ptrdiff_t n, Vek8u* dst, Compute compute, StoreAligned storeAligned) {
  VEK_ASSERT(n >= vectorBytes);
  const ptrdiff_t last = n - vectorBytes;
  const V8u firstResult = compute(0);
  const V8u lastResult = compute(last);
  const ptrdiff_t aligned = vectorBytes - static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(dst) %
                                                                 uintptr_t{vectorBytes});
  if (aligned < last) storeAligned(aligned, last);
  hn::StoreU(firstResult, u8, dst);
  hn::StoreU(lastResult, u8, dst + last);
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
