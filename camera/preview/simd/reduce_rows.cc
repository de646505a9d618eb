#include "camera/preview/reduce_body.h"
#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::ScalableTag<Vek8u> bytes;
constexpr hn::Repartition<Vek16u, decltype(bytes)> words;
using Bytes = hn::Vec<decltype(bytes)>;
using Words = hn::Vec<decltype(words)>;
constexpr ptrdiff_t lanes = static_cast<ptrdiff_t>(hn::MaxLanes(bytes));

Words evenBytes(Bytes v) {
  return hn::And(hn::BitCast(words, v), hn::Set(words, 0xFF));
}

Words oddBytes(Bytes v) {
  return hn::ShiftRight<8>(hn::BitCast(words, v));
}

/// The low bytes of the lanes.
Bytes narrow(Words low, Words high) {
  return hn::ConcatEven(bytes, hn::BitCast(bytes, high), hn::BitCast(bytes, low));
}

/// Rounded averages of neighbouring bytes.
Bytes averageNeighbours(Bytes low, Bytes high) {
  return narrow(hn::AverageRound(evenBytes(low), oddBytes(low)),
                hn::AverageRound(evenBytes(high), oddBytes(high)));
}

void sumBlocksVectors(const Vek8u* __restrict top, const Vek8u* __restrict bottom, ptrdiff_t stride,
                      ptrdiff_t n, Vek8u* __restrict dst) {
  if (stride != 2 || n < lanes) return sumBlocks(top, bottom, stride, n, dst);
  forEachOverlappingBlock(n, lanes, [&](ptrdiff_t i) {
    const auto sums = [&](ptrdiff_t x) {
      const Bytes upper = hn::LoadU(bytes, top + x), lower = hn::LoadU(bytes, bottom + x);
      const Words sum = hn::Add(hn::Add(evenBytes(upper), oddBytes(upper)),
                                hn::Add(evenBytes(lower), oddBytes(lower)));
      return hn::ShiftRight<2>(hn::Add(sum, hn::Set(words, 4)));
    };
    hn::StoreU(narrow(sums(2 * i), sums(2 * i + lanes)), bytes, dst + i);
  });
}

void splitPairsVectors(const Vek8u* __restrict src, ptrdiff_t n, Vek8u* __restrict y,
                       Vek8u* __restrict cb, Vek8u* __restrict cr) {
  if (n < lanes) return splitPairs(src, n, y, cb, cr);
  forEachOverlappingBlock(n, lanes, [&](ptrdiff_t i) {
    const Vek8u* at = src + 4 * i;
    const Bytes v0 = hn::LoadU(bytes, at), v1 = hn::LoadU(bytes, at + lanes);
    const Bytes v2 = hn::LoadU(bytes, at + 2 * lanes), v3 = hn::LoadU(bytes, at + 3 * lanes);
    hn::StoreU(averageNeighbours(hn::ConcatOdd(bytes, v1, v0), hn::ConcatOdd(bytes, v3, v2)), bytes,
               y + i);
    const Bytes chroma0 = hn::ConcatEven(bytes, v1, v0), chroma1 = hn::ConcatEven(bytes, v3, v2);
    hn::StoreU(hn::ConcatEven(bytes, chroma1, chroma0), bytes, cb + i);
    hn::StoreU(hn::ConcatOdd(bytes, chroma1, chroma0), bytes, cr + i);
  });
}

void halveVectors(const Vek8u* __restrict src, ptrdiff_t n, Vek8u* __restrict dst) {
  if (n / 2 < lanes) return halve(src, n, dst);
  forEachOverlappingBlock(n / 2, lanes, [&](ptrdiff_t i) {
    hn::StoreU(
        averageNeighbours(hn::LoadU(bytes, src + 2 * i), hn::LoadU(bytes, src + 2 * i + lanes)),
        bytes, dst + i);
  });
  if (n % 2 != 0) dst[n / 2] = src[n - 1];
}

}  // namespace

constexpr ReduceRows reduceRows = {pick, sumBlocksVectors, splitPairsVectors, halveVectors,
                                   average};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

namespace vek::VEK_LEVEL {

constexpr ReduceRows reduceRows = {pick, sumBlocks, splitPairs, halve, average};

}  // namespace vek::VEK_LEVEL

#endif
