// Each 128 bits of a vector hold a row of one block, so that a vector has as many blocks as 128-bit
// parts, and blocks that are neighbours are loaded and stored together.
#include <string.h>

#include "core/assert.h"
#include "core/kernel/lanes.h"
#include "core/kernel/unroll.h"
#include "image/transform/block_dct_basis.h"
#include "image/transform/block_dct_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr int blocksAtOnce = vectorBytes / 16;

/// The 8 sums that become a row, in 128 bits each 0 .. 3 and 4 .. 7.
struct Sums {
  V32s lower, upper;
};

/// Factors of two neighbouring 16-bit lanes, for four sums.
struct FourPairs {
  alignas(16) Vek16s factors[8];

  V16s load() const { return hn::LoadDup128(s16, factors); }
};

/// The factors of basis[rows u + i][columns x, x + 1] in pair i.
constexpr FourPairs forwardPairs(int u, int x) {
  FourPairs pairs = {};
  for (int i = 0; i < 8; ++i) pairs.factors[i] = dctBasis[u + i / 2][x + i % 2];
  return pairs;
}
/// Those of basis[rows u, u + 2][column i].
constexpr FourPairs inversePairs(int u) {
  FourPairs pairs = {};
  for (int i = 0; i < 8; ++i) pairs.factors[i] = dctBasis[u + i % 2 * 2][i / 2];
  return pairs;
}

constexpr FourPairs forward01Lower = forwardPairs(0, 0), forward23Lower = forwardPairs(0, 2),
                    forward01Upper = forwardPairs(4, 0), forward23Upper = forwardPairs(4, 2);
constexpr FourPairs inverse02 = inversePairs(0), inverse46 = inversePairs(4),
                    inverse13 = inversePairs(1), inverse57 = inversePairs(5);

/// a0 * b0 + a1 * b1 + c0 * d0 + c1 * d1 of the two 16-bit lanes in each 32-bit lane.
V32s twoDots(V16s a, V16s b, V16s c, V16s d) {
#if HWY_ARCH_ARM_A64
  const int32x4_t lower = vmlal_s16(vmull_s16(vget_low_s16(a.raw), vget_low_s16(b.raw)),
                                    vget_low_s16(c.raw), vget_low_s16(d.raw));
  const int32x4_t upper = vmlal_high_s16(vmull_high_s16(a.raw, b.raw), c.raw, d.raw);
  return V32s{vpaddq_s32(lower, upper)};
#else
  return plusDot(plusDot(hn::Zero(s32), a, b), c, d);
#endif
}

/// The sums of the pass over a row's samples.
template <bool inverse>
[[gnu::always_inline]] inline Sums rowSums(V16s row) {
  if constexpr (inverse) {
    alignas(16) static constexpr Vek8u evenFirst[16] = {0, 1, 4, 5, 8,  9,  12, 13,
                                                        2, 3, 6, 7, 10, 11, 14, 15};
    const V32s pairs = hn::BitCast(
        s32, hn::TableLookupBytes(row, hn::BitCast(s16, hn::LoadDup128(u8, evenFirst))));
    const auto pair = [&](auto i) { return hn::BitCast(s16, hn::Broadcast<i()>(pairs)); };
    constexpr std::integral_constant<int, 0> first;
    constexpr std::integral_constant<int, 1> second;
    constexpr std::integral_constant<int, 2> third;
    constexpr std::integral_constant<int, 3> fourth;
    const V32s even = twoDots(pair(first), inverse02.load(), pair(second), inverse46.load());
    const V32s odd = twoDots(pair(third), inverse13.load(), pair(fourth), inverse57.load());
    return {hn::Add(even, odd), hn::Shuffle0123(hn::Sub(even, odd))};
  } else {
    const V16s reversed = hn::Reverse8(s16, row);
    const V32s sums = hn::BitCast(s32, hn::Add(row, reversed));
    const V32s differences = hn::BitCast(s32, hn::Sub(row, reversed));
    // Pairs 0, 1 and 2, 3 of the sums and differences, in every 64 bits.
    const V64u pairs = hn::BitCast(u64, hn::InterleaveLower(s32, sums, differences));
    const V16s pair01 = hn::BitCast(s16, hn::Broadcast<0>(pairs));
    const V16s pair23 = hn::BitCast(s16, hn::Broadcast<1>(pairs));
    return {twoDots(pair01, forward01Lower.load(), pair23, forward23Lower.load()),
            twoDots(pair01, forward01Upper.load(), pair23, forward23Upper.load())};
  }
}

/// Sums of the pass over columns, of two rows a, b and two rows c, d.
struct RowPairs {
  V16s abLower, abUpper, cdLower, cdUpper;

  RowPairs(V16s a, V16s b, V16s c, V16s d)
      : abLower(hn::InterleaveLower(s16, a, b)),
        abUpper(hn::InterleaveUpper(s16, a, b)),
        cdLower(hn::InterleaveLower(s16, c, d)),
        cdUpper(hn::InterleaveUpper(s16, c, d)) {}

  Sums times(Vek16s a, Vek16s b, Vek16s c, Vek16s d) const {
    const V16s ab = pairOfFactors(a, b), cd = pairOfFactors(c, d);
    return {twoDots(abLower, ab, cdLower, cd), twoDots(abUpper, ab, cdUpper, cd)};
  }
};

/// Calls result(constant k, sums) for the rows k of the pass over columns.
template <bool inverse, class Result>
[[gnu::always_inline]] inline void columnSums(const V16s (&t)[8], const Result& result) {
  if constexpr (inverse) {
    const RowPairs even(t[0], t[2], t[4], t[6]), odd(t[1], t[3], t[5], t[7]);
    unrolled<4>([&](auto k) {
      const Sums e = even.times(dctBasis[0][k], dctBasis[2][k], dctBasis[4][k], dctBasis[6][k]);
      const Sums o = odd.times(dctBasis[1][k], dctBasis[3][k], dctBasis[5][k], dctBasis[7][k]);
      result(k, {hn::Add(e.lower, o.lower), hn::Add(e.upper, o.upper)});
      result(7 - k, {hn::Sub(e.lower, o.lower), hn::Sub(e.upper, o.upper)});
    });
  } else {
    const auto sum = [&](int j) { return hn::Add(t[j], t[7 - j]); };
    const auto difference = [&](int j) { return hn::Sub(t[j], t[7 - j]); };
    const RowPairs even(sum(0), sum(1), sum(2), sum(3));
    const RowPairs odd(difference(0), difference(1), difference(2), difference(3));
    unrolled<8>([&](auto k) {
      const RowPairs& pairs = k % 2 == 0 ? even : odd;
      result(k, pairs.times(dctBasis[k][0], dctBasis[k][1], dctBasis[k][2], dctBasis[k][3]));
    });
  }
}

/// Negative in 16-bit lanes of which any row is outside of -16384 .. 16383.
V16s outside(const V16s (&rows)[8]) {
  V16s any = hn::Zero(s16);
  for (V16s row : rows) any = hn::Or(any, hn::Add(row, hn::Set(s16, Vek16s{16384})));
  return any;
}

bool isNegative(V16s any) {
  return !hn::AllFalse(s16, hn::Lt(any, hn::Zero(s16)));
}

/// Of blocks whose samples, before both passes, are from -16384 to 16383: sums and differences of two
/// fit 16 bits, and sums of products are from -2^31 to below 2^31. False if there are others.
template <bool inverse>
[[gnu::always_inline]] inline bool transformNarrow(const V16s (&samples)[8], V16s (&results)[8]) {
  V16s t[8];
  for (int y = 0; y < 8; ++y) {
    const Sums sums = rowSums<inverse>(samples[y]);
    const V32s half = hn::Set(s32, 1 << 10);
    t[y] = packClamped(hn::ShiftRight<11>(hn::Add(sums.lower, half)),
                       hn::ShiftRight<11>(hn::Add(sums.upper, half)));
  }
  if (isNegative(hn::Or(outside(samples), outside(t)))) return false;
  columnSums<inverse>(t, [&](int k, const Sums& sums) {
    // With half of 2^20 sums could leave 32 bits: what is added to half the quotient is 1.
    const V16s doubled =
        packClamped(hn::ShiftRight<19>(sums.lower), hn::ShiftRight<19>(sums.upper));
    results[k] = hn::ShiftRight<1>(hn::Add(doubled, hn::Set(s16, Vek16s{1})));
  });
  return true;
}

/// Sums of samples 256 h + l, 0 <= l < 256, from those of h and of l: (256 H + L + half) >> (8 + shift),
/// where what is below 256 in the sum comes from L alone.
template <int shift>
V32s joined(V32s high, V32s low) {
  constexpr Vek32s half = 1 << (7 + shift);
  return hn::ShiftRight<shift>(hn::Add(high, hn::ShiftRight<8>(hn::Add(low, hn::Set(s32, half)))));
}

/// Of any blocks. What is between the passes has 22 bits.
template <bool inverse>
[[gnu::noinline]] void transformWide(const V16s (&samples)[8], V16s (&results)[8]) {
  V16s high[8], low[8];
  for (int y = 0; y < 8; ++y) {
    const V16s mask = hn::Set(s16, Vek16s{255});
    const Sums h = rowSums<inverse>(hn::ShiftRight<8>(samples[y]));
    const Sums l = rowSums<inverse>(hn::And(samples[y], mask));
    const V32s lower = joined<3>(h.lower, l.lower), upper = joined<3>(h.upper, l.upper);
    high[y] = packClamped(hn::ShiftRight<8>(lower), hn::ShiftRight<8>(upper));
    const V32s wideMask = hn::Set(s32, 255);
    low[y] = packClamped(hn::And(lower, wideMask), hn::And(upper, wideMask));
  }
  Sums highSums[8];
  columnSums<inverse>(high, [&](int k, const Sums& sums) { highSums[k] = sums; });
  columnSums<inverse>(low, [&](int k, const Sums& sums) {
    results[k] = packClamped(joined<12>(highSums[k].lower, sums.lower),
                             joined<12>(highSums[k].upper, sums.upper));
  });
}

/// As many blocks as a vector has.
template <bool inverse>
[[gnu::always_inline]] inline void transformVector(const Vek8u* src, ptrdiff_t srcStep, Vek8u* dst,
                                                   ptrdiff_t dstStep) {
  V16s samples[8], results[8];
  for (int y = 0; y < 8; ++y) samples[y] = hn::BitCast(s16, hn::LoadU(u8, src + y * srcStep));
  if (!transformNarrow<inverse>(samples, results)) transformWide<inverse>(samples, results);
  for (int y = 0; y < 8; ++y) hn::StoreU(hn::BitCast(u8, results[y]), u8, dst + y * dstStep);
}

/// None of the policies of blocks.h serves: a block spans eight rows. The last blocks, fewer than a
/// vector has, are worked on in a copy.
template <bool inverse>
void transformBlocks(const Vek8u* src, ptrdiff_t srcStep, ptrdiff_t blocks, Vek8u* dst,
                     ptrdiff_t dstStep) {
  VEK_ASSERT(blocks >= 1);
  ptrdiff_t b = 0;
  for (; b + blocksAtOnce <= blocks; b += blocksAtOnce) {
    transformVector<inverse>(src + 16 * b, srcStep, dst + 16 * b, dstStep);
  }
  if constexpr (blocksAtOnce > 1) {
    if (b == blocks) return;
    alignas(64) Vek8u copy[8 * vectorBytes] = {};
    const auto rest = static_cast<size_t>(16 * (blocks - b));
    for (int y = 0; y < 8; ++y) memcpy(copy + y * vectorBytes, src + y * srcStep + 16 * b, rest);
    transformVector<inverse>(copy, vectorBytes, copy, vectorBytes);
    for (int y = 0; y < 8; ++y) memcpy(dst + y * dstStep + 16 * b, copy + y * vectorBytes, rest);
  }
}

}  // namespace

constexpr BlockDctKernels blockDctKernels = {
    .forward = transformBlocks<false>,
    .inverse = transformBlocks<true>,
};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
