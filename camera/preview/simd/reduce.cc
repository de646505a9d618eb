// The reductions in vectors.
#include "camera/preview/reduce_body.h"
#include "camera/preview/reduce_kernels.h"
#include "camera/preview/simd/neon_pick.h"
#include "core/kernel/blocks.h"
#include "core/kernel/lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

#if HWY_ARCH_ARM

/// (sum + 4) >> 2 modulo 256.
V8u quarters(uint16x8_t lower, uint16x8_t upper) {
  const uint8x16_t floors = vcombine_u8(vshrn_n_u16(lower, 2), vshrn_n_u16(upper, 2));
  return V8u{vaddq_u8(floors, vdupq_n_u8(1))};
}

/// The policy of overlapping blocks, by a loop whose loads move their pointers on.
void sumNeighbours(const Vek8u* top, const Vek8u* bottom, ptrdiff_t n, Vek8u* dst) {
  if (n < vectorBytes) return sumBlocks<2>(top, bottom, n, dst);
  const auto sumVector = [&] {
    const auto next = [](const Vek8u*& from) {
      from += vectorBytes;
      return vld1q_u8(from - vectorBytes);
    };
    uint16x8_t lower = vpaddlq_u8(next(top));
    uint16x8_t upper = vpaddlq_u8(next(top));
    lower = vpadalq_u8(lower, next(bottom));
    upper = vpadalq_u8(upper, next(bottom));
    hn::StoreU(quarters(lower, upper), u8, dst);
    dst += vectorBytes;
  };
  for (; n > vectorBytes; n -= vectorBytes) sumVector();
  const ptrdiff_t back = vectorBytes - n;
  top -= 2 * back;
  bottom -= 2 * back;
  dst -= back;
  sumVector();
}

/// The first two of four samples. As in neon_pick.h the last vectors end with the last sample that
/// counts, which is the last of its four then.
void sumMiddles(const Vek8u* __restrict top, const Vek8u* __restrict bottom, ptrdiff_t n,
                Vek8u* __restrict dst) {
  if (n <= vectorBytes) return sumBlocks<4>(top, bottom, n, dst);
  const auto sums = [](uint8x16_t a, uint8x16_t b, uint8x16_t c, uint8x16_t d) {
    const auto half = [](uint8x8_t a8, uint8x8_t b8, uint8x8_t c8, uint8x8_t d8) {
      return vaddw_u8(vaddw_u8(vaddl_u8(a8, b8), c8), d8);
    };
    return quarters(half(vget_low_u8(a), vget_low_u8(b), vget_low_u8(c), vget_low_u8(d)),
                    half(vget_high_u8(a), vget_high_u8(b), vget_high_u8(c), vget_high_u8(d)));
  };
  ptrdiff_t i = 0;
  for (; i + vectorBytes < n; i += vectorBytes) {
    const uint8x16x4_t a = vld4q_u8(top + 4 * i), b = vld4q_u8(bottom + 4 * i);
    hn::StoreU(sums(a.val[0], a.val[1], b.val[0], b.val[1]), u8, dst + i);
  }
  i = n - vectorBytes;
  const uint8x16x4_t a = vld4q_u8(top + 4 * i - 2), b = vld4q_u8(bottom + 4 * i - 2);
  hn::StoreU(sums(a.val[2], a.val[3], b.val[2], b.val[3]), u8, dst + i);
}

/// A pixel in each lane, with the chroma of its own block alone.
struct Pixels {
  uint8x16_t y, cb, cr;
};

/// The averages of two vectors' neighbours, those of `lower` first.
uint8x16_t averageNeighbours(uint8x16_t lower, uint8x16_t upper) {
  const uint8x16x2_t pairs = vuzpq_u8(lower, upper);
  return vrhaddq_u8(pairs.val[0], pairs.val[1]);
}

/// The groups of one row, reduced until `width` of them have become one.
template <int width>
Pixels averageGroups(const Vek8u* src) {
  if constexpr (width == 1) {
    const uint8x16x4_t v = vld4q_u8(src);  // Cb, Y0, Cr, Y1
    return {vrhaddq_u8(v.val[1], v.val[3]), v.val[0], v.val[2]};
  } else {
    const Pixels lower = averageGroups<width / 2>(src);
    const Pixels upper = averageGroups<width / 2>(src + width / 2 * 4 * vectorBytes);
    return {averageNeighbours(lower.y, upper.y), averageNeighbours(lower.cb, upper.cb),
            averageNeighbours(lower.cr, upper.cr)};
  }
}

/// A pixel in each lane of y; the chroma of a pair in each lane, Cb before Cr.
struct PairedPixels {
  uint8x16_t y, chroma;
};

template <int factor, int rows>
PairedPixels averageRows(const Vek8u* src, ptrdiff_t step) {
  if constexpr (rows == 1) {
    const Pixels p = averageGroups<factor / 2>(src);
    return {p.y, averageNeighbours(p.cb, p.cr)};
  } else {
    const auto upper = averageRows<factor, rows / 2>(src, step);
    const auto lower = averageRows<factor, rows / 2>(src + rows / 2 * step, step);
    return {vrhaddq_u8(upper.y, lower.y), vrhaddq_u8(upper.chroma, lower.chroma)};
  }
}

/// The pixels of as many groups as a vector has bytes.
template <int factor>
void averageVector(const Vek8u* src, ptrdiff_t step, Vek8u* y, Vek8u* cb, Vek8u* cr) {
  const PairedPixels pixels = averageRows<factor, factor>(src, step);
  vst1q_u8(y, pixels.y);
  vst1_u8(cb, vget_low_u8(pixels.chroma));
  vst1_u8(cr, vget_high_u8(pixels.chroma));
}

constexpr ptrdiff_t pixelsPerVector = vectorBytes;

#else

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

#elif HWY_ARCH_ARM

template <int stride>
void pickUpToFour(const Vek8u* src, ptrdiff_t n, Vek8u* dst) {
  if (n <= vectorBytes) return pick<stride>(src, n, dst);
  pickSeparated<stride>(src, n, dst);
}

constexpr auto pickPairs = pickUpToFour<2>;
constexpr auto pickGroups = pickUpToFour<4>;
constexpr auto pickPairsOfGroups = pick<8>;

#else

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
