// The reductions in vectors.
#include "camera/preview/reduce_body.h"
#include "camera/preview/reduce_kernels.h"
#include "camera/preview/simd/neon_reduce.h"
#include "core/kernel/blocks.h"
#include "core/kernel/lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

#if !HWY_ARCH_ARM

/// The low bytes of the lanes, those of `lower` first.
V8u lowBytes(V16u lower, V16u upper) {
  return hn::ConcatEven(u8, hn::BitCast(u8, upper), hn::BitCast(u8, lower));
}

/// Block sums of neighbours; a sum is at most (4 * 255 + 4) >> 2 = 256, of which the low byte counts.
void sumNeighbours(const Vek8u* __restrict top, const Vek8u* __restrict bottom, ptrdiff_t n,
                   Vek8u* __restrict dst) {
  if (n < vectorBytes) return sumBlocks<2>(top, bottom, n, dst);
  const V8u ones = hn::Set(u8, 1);
  overlappingBlocks(n, vectorBytes, [&](ptrdiff_t i) {
    const auto sums = [&](ptrdiff_t x) {
      const V16s sum = hn::Add(sumOfPairs(hn::LoadU(u8, top + x), ones),
                               sumOfPairs(hn::LoadU(u8, bottom + x), ones));
      return hn::ShiftRight<2>(hn::Add(hn::BitCast(u16, sum), hn::Set(u16, 4)));
    };
    hn::StoreU(lowBytes(sums(2 * i), sums(2 * i + vectorBytes)), u8, dst + i);
  });
}

// A group Cb, Y0, Cr, Y1 is a lane of 32 bits. Both chroma samples and the average of the luma stay
// in their bytes of it (0, 2 and 1) until the block is one pixel.

constexpr ptrdiff_t groupsPerVector = vectorBytes / 4;

/// Stores the first byte of each lane.
void storeFirstBytes(V32u v, Vek8u* dst) {
#if defined(__AVX512F__)
  _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm512_cvtepi32_epi8(v.raw));
#else
  constexpr hn::Rebind<Vek8u, decltype(u32)> firsts;
  hn::StoreU(hn::TruncateTo(firsts, v), firsts, dst);
#endif
}

void storeFirstBytes(V64u v, Vek8u* dst) {
#if defined(__AVX512F__)
  _mm_storel_epi64(reinterpret_cast<__m128i*>(dst), _mm512_cvtepi64_epi8(v.raw));
#else
  constexpr hn::Rebind<Vek8u, decltype(u64)> firsts;
  hn::StoreU(hn::TruncateTo(firsts, v), firsts, dst);
#endif
}

V32u averageBytes(V32u a, V32u b) {
  return hn::BitCast(u32, hn::AverageRound(hn::BitCast(u8, a), hn::BitCast(u8, b)));
}

/// The even groups' averages with their right neighbours; the odd lanes are not used.
V32u averageNeighbours(V32u v) {
  return averageBytes(v, hn::BitCast(u32, hn::ShiftRight<32>(hn::BitCast(u64, v))));
}

/// The groups of one row, reduced until `width` of them have become one.
template <int width>
V32u averageGroups(const Vek8u* src) {
  if constexpr (width == 1) {
    const V32u v = hn::BitCast(u32, hn::LoadU(u8, src));
    const V32u luma = averageBytes(v, hn::ShiftRight<16>(v));
    return hn::IfVecThenElse(hn::Set(u32, 0xFF00), luma, v);
  } else {
    const V32u lower = averageGroups<width / 2>(src);
    const V32u upper = averageGroups<width / 2>(src + width / 2 * vectorBytes);
    return hn::ConcatEven(u32, averageNeighbours(upper), averageNeighbours(lower));
  }
}

/// A vector of pixels from `rows` rows: all lanes hold their luma in byte 1, even lanes the chroma of
/// a pair of pixels in bytes 0 and 2.
template <int factor, int rows>
V32u averageRows(const Vek8u* src, ptrdiff_t step) {
  if constexpr (rows == 1) {
    const V32u pixels = averageGroups<factor / 2>(src);
    return hn::IfVecThenElse(hn::Set(u32, 0xFF00), pixels, averageNeighbours(pixels));
  } else {
    return averageBytes(averageRows<factor, rows / 2>(src, step),
                        averageRows<factor, rows / 2>(src + rows / 2 * step, step));
  }
}

constexpr auto sumMiddles = sumBlocks<4>;

template <int factor>
void averageVector(const Vek8u* src, ptrdiff_t step, Vek8u* y, Vek8u* cb, Vek8u* cr) {
  const V32u pixels = averageRows<factor, factor>(src, step);
  const V64u pairs = hn::BitCast(u64, pixels);
  storeFirstBytes(hn::ShiftRight<8>(pixels), y);
  storeFirstBytes(pairs, cb);
  storeFirstBytes(hn::ShiftRight<16>(pairs), cr);
}

constexpr ptrdiff_t pixelsPerVector = groupsPerVector;

#endif

/// The vectors overlap in pairs of pixels. A last pixel without a second one has chroma of fewer
/// samples, and comes from the portable kernel.
template <int factor, ReduceKernels::AverageBlocks ReduceKernels::*plain>
void averageBlocks(Plane<const Vek8u> src, ptrdiff_t n, Vek8u* __restrict y, Vek8u* __restrict cb,
                   Vek8u* __restrict cr) {
  const ptrdiff_t even = n & ~ptrdiff_t{1};
  if (even < pixelsPerVector) return (portable::reduceKernels.*plain)(src, n, y, cb, cr);
  overlappingBlocks(even, pixelsPerVector, [&](ptrdiff_t i) {
    averageVector<factor>(src.data + 2 * factor * i, src.step, y + i, cb + i / 2, cr + i / 2);
  });
  if (even != n) {
    (portable::reduceKernels.*plain)({src.data + 2 * factor * even, src.step}, 1, y + even,
                                     cb + even / 2, cr + even / 2);
  }
}

#if defined(__AVX512F__)

/// Picks the first byte of each lane. No policy serves because the last vector, too, ends with the
/// last sample that is picked, not with its lane: it is loaded so that the samples end their lanes.
template <class D>
void pickLanes(D d, const Vek8u* __restrict src, ptrdiff_t n, Vek8u* __restrict dst) {
  constexpr ptrdiff_t count = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
  constexpr ptrdiff_t stride = vectorBytes / count;
  if (n <= count) return pick<stride>(src, n, dst);
  for (ptrdiff_t i = 0; i + count < n; i += count) {
    storeFirstBytes(hn::BitCast(d, hn::LoadU(u8, src + i * stride)), dst + i);
  }
  const V8u last = hn::LoadU(u8, src + (n - count) * stride - (stride - 1));
  storeFirstBytes(hn::ShiftRight<8 * (stride - 1)>(hn::BitCast(d, last)), dst + n - count);
}

void pickGroups(const Vek8u* src, ptrdiff_t n, Vek8u* dst) {
  pickLanes(u32, src, n, dst);
}

void pickPairsOfGroups(const Vek8u* src, ptrdiff_t n, Vek8u* dst) {
  pickLanes(u64, src, n, dst);
}

constexpr auto pickPairs = pick<2>;

#elif !HWY_ARCH_ARM

constexpr auto pickPairs = pick<2>;
constexpr auto pickGroups = pick<4>;
constexpr auto pickPairsOfGroups = pick<8>;

#endif

}  // namespace

constexpr ReduceKernels reduceKernels = {
    .pick2 = pickPairs,
    .pick4 = pickGroups,
    .pick8 = pickPairsOfGroups,
    .pick16 = pick<16>,
    .pick32 = pick<32>,
    .sumBlocks2 = sumNeighbours,
    .sumBlocks4 = sumMiddles,
    .averageBlocks2 = averageBlocks<2, &ReduceKernels::averageBlocks2>,
    .averageBlocks4 = averageBlocks<4, &ReduceKernels::averageBlocks4>,
    .averageBlocks8 = averageBlocks<8, &ReduceKernels::averageBlocks8>,
};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
