#include "camera/preview/reduce_body.h"
#include "core/kernel/blocks.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::ScalableTag<Vek8u> bytes;
constexpr hn::Repartition<Vek16u, decltype(bytes)> words;
using Bytes = hn::Vec<decltype(bytes)>;
using Words = hn::Vec<decltype(words)>;
constexpr ptrdiff_t lanes = static_cast<ptrdiff_t>(hn::MaxLanes(bytes));

/// Sums of neighbouring bytes.
Words sumNeighbours(Bytes v) {
  return hn::BitCast(words, sumOfPairs(v, hn::Set(bytes, 1)));
}

/// The low bytes of the lanes.
Bytes narrow(Words low, Words high) {
  return hn::ConcatEven(bytes, hn::BitCast(bytes, high), hn::BitCast(bytes, low));
}

void sumBlocksVectors(const Vek8u* __restrict top, const Vek8u* __restrict bottom, ptrdiff_t stride,
                      ptrdiff_t n, Vek8u* __restrict dst) {
  if (stride != 2 || n < lanes) return sumBlocks(top, bottom, stride, n, dst);
  overlappingBlocks(n, lanes, [&](ptrdiff_t i) {
    const auto sums = [&](ptrdiff_t x) {
      const Words sum = hn::Add(sumNeighbours(hn::LoadU(bytes, top + x)),
                                sumNeighbours(hn::LoadU(bytes, bottom + x)));
      return hn::ShiftRight<2>(hn::Add(sum, hn::Set(words, 4)));
    };
    hn::StoreU(narrow(sums(2 * i), sums(2 * i + lanes)), bytes, dst + i);
  });
}

// A group Cb, Y0, Cr, Y1 is a lane of 32 bits. Both chroma samples and the average of the luma stay
// in their bytes of it until the block is one pixel.

constexpr hn::Repartition<Vek32u, decltype(bytes)> groups;
constexpr hn::Repartition<uint64_t, decltype(bytes)> groupPairs;
using Groups = hn::Vec<decltype(groups)>;
constexpr ptrdiff_t groupLanes = lanes / 4;

/// Stores the first byte of each lane.
void storeFirsts(Groups v, Vek8u* dst) {
#if defined(__AVX512F__)
  _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm512_cvtepi32_epi8(v.raw));
#else
  constexpr hn::Rebind<Vek8u, decltype(groups)> firsts;
  hn::StoreU(hn::TruncateTo(firsts, v), firsts, dst);
#endif
}

void storeFirsts(hn::Vec<decltype(groupPairs)> v, Vek8u* dst) {
#if defined(__AVX512F__)
  _mm_storel_epi64(reinterpret_cast<__m128i*>(dst), _mm512_cvtepi64_epi8(v.raw));
#else
  constexpr hn::Rebind<Vek8u, decltype(groupPairs)> firsts;
  hn::StoreU(hn::TruncateTo(firsts, v), firsts, dst);
#endif
}

Groups averageBytes(Groups a, Groups b) {
  return hn::BitCast(groups, hn::AverageRound(hn::BitCast(bytes, a), hn::BitCast(bytes, b)));
}

/// The even lanes' averages with their neighbours.
Groups averageNeighbours(Groups v) {
  return averageBytes(v, hn::BitCast(groups, hn::ShiftRight<32>(hn::BitCast(groupPairs, v))));
}

/// One row of the blocks of a vector of pixels; `width` source groups make one.
template <int width>
Groups averageGroups(const Vek8u* src) {
  if constexpr (width == 1) {
    const Groups v = hn::BitCast(groups, hn::LoadU(bytes, src));
    const Groups luma = averageBytes(v, hn::ShiftRight<16>(v));
    return hn::IfVecThenElse(hn::Set(groups, 0xFF00), luma, v);
  } else {
    const Groups low = averageGroups<width / 2>(src);
    const Groups high = averageGroups<width / 2>(src + width / 2 * lanes);
    return hn::ConcatEven(groups, averageNeighbours(high), averageNeighbours(low));
  }
}

/// Even lanes have the chroma of a pair of pixels, all lanes their luma.
template <int factor, int rows>
Groups averageRows(const Vek8u* src, ptrdiff_t step) {
  if constexpr (rows == 1) {
    const Groups pixels = averageGroups<factor / 2>(src);
    return hn::IfVecThenElse(hn::Set(groups, 0xFF00), pixels, averageNeighbours(pixels));
  } else {
    return averageBytes(averageRows<factor, rows / 2>(src, step),
                        averageRows<factor, rows / 2>(src + rows / 2 * step, step));
  }
}

template <int factor>
void averageBlocksVectors(Plane<const Vek8u> src, ptrdiff_t n, Vek8u* __restrict y,
                          Vek8u* __restrict cb, Vek8u* __restrict cr) {
  const ptrdiff_t even = n & ~ptrdiff_t{1};
  if (even < groupLanes) return averageBlocks<factor>(src, n, y, cb, cr);
  overlappingBlocks(even, groupLanes, [&](ptrdiff_t i) {
    const Groups pixels = averageRows<factor, factor>(src.data + 2 * factor * i, src.step);
    const auto pairs = hn::BitCast(groupPairs, pixels);
    storeFirsts(hn::ShiftRight<8>(pixels), y + i);
    storeFirsts(pairs, cb + i / 2);
    storeFirsts(hn::ShiftRight<16>(pairs), cr + i / 2);
  });
  if (even != n) {
    averageBlocks<factor>({src.data + 2 * factor * even, src.step}, 1, y + even, cb + even / 2,
                          cr + even / 2);
  }
}

#if defined(__AVX512F__)

/// Samples that begin their lanes; the lanes of the last ones, which would reach beyond the row, end
/// in them instead.
template <class Lanes>
void pickLanes(Lanes, const Vek8u* __restrict src, ptrdiff_t n, Vek8u* __restrict dst) {
  constexpr ptrdiff_t count = static_cast<ptrdiff_t>(hn::MaxLanes(Lanes()));
  constexpr ptrdiff_t stride = lanes / count;
  if (n <= count) return pick(src, stride, n, dst);
  for (ptrdiff_t i = 0; i + count < n; i += count) {
    storeFirsts(hn::BitCast(Lanes(), hn::LoadU(bytes, src + i * stride)), dst + i);
  }
  const auto last = hn::LoadU(bytes, src + (n - count) * stride - (stride - 1));
  storeFirsts(hn::ShiftRight<8 * (stride - 1)>(hn::BitCast(Lanes(), last)), dst + n - count);
}

void pickVectors(const Vek8u* src, ptrdiff_t stride, ptrdiff_t n, Vek8u* dst) {
  if (stride == 4) return pickLanes(groups, src, n, dst);
  if (stride == 8) return pickLanes(groupPairs, src, n, dst);
  pick(src, stride, n, dst);
}

#else

constexpr auto pickVectors = pick;

#endif

}  // namespace

constexpr ReduceKernels reduceKernels = {pickVectors, sumBlocksVectors, averageBlocksVectors<2>,
                                         averageBlocksVectors<4>, averageBlocksVectors<8>};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
