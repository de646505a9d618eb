#include <bit>

#include "core/assert.h"
#include "core/kernel/blocks.h"
#include "core/kernel/lanes.h"
#include "core/kernel/unroll.h"
#include "image/filter/box/box_body.h"
#include "image/filter/box/box_kernels.h"
#include "image/filter/neighbours.h"
#include "image/filter/quotients.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr ptrdiff_t lanes16 = vectorBytes / 2, lanes32 = vectorBytes / 4;

/// Clamped to 0 .. 255, in order.
V8u toBytes(V16s low, V16s high) {
  const V8u mixed = packClamped(low, high);  // 64 bits of each alternately
#if defined(__AVX512BW__)
  return V8u{_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), mixed.raw)};
#elif defined(__AVX2__)
  return V8u{_mm256_permute4x64_epi64(mixed.raw, 0xD8)};
#else
  return mixed;
#endif
}

/// The sums of a vector's worth of windows.
struct Sums {
  V16u low, high;

  explicit Sums(const Vek16u* from)
      : low(hn::LoadU(u16, from)), high(hn::LoadU(u16, from + lanes16)) {}
  void add(const Vek16u* from) {
    low = hn::Add(low, hn::LoadU(u16, from));
    high = hn::Add(high, hn::LoadU(u16, from + lanes16));
  }
};

/// Up to 128 samples the factor is 2^18 times f, the rounded 16384 / area, and sums stay within
/// 32640: (S * f + 8192) >> 14 is then one rounding multiplication, (S * 2f + 16384) >> 15. Of 3 x
/// 3 samples f is 1820, and nine of 255 give (2295 * 3640 + 16384) >> 15 = 255.
class ProductMeans {
 public:
  static constexpr int64_t mostArea = 128;

  explicit ProductMeans(const BoxScale& scale)
      : factor_(hn::Set(s16, static_cast<Vek16s>(scale.factor >> 17))) {
    VEK_ASSERT(scale.area >= 2 && scale.area <= mostArea);
  }

  V8u of(const Sums& sums) const { return toBytes(mean(sums.low), mean(sums.high)); }
  V16s mean(V16u sums) const { return hn::MulFixedPoint15(hn::BitCast(s16, sums), factor_); }

 private:
  V16s factor_;
};

class QuotientMeans {
 public:
  explicit QuotientMeans(const BoxScale& scale)
      : quotients_(static_cast<int>(scale.area),
                   Quotients::roundsUp(scale.factor, static_cast<int>(scale.area))) {
    VEK_ASSERT(scale.area > ProductMeans::mostArea && scale.area <= Quotients::mostDivisor);
  }

  /// Interleaved with zeros the lanes of each 128 bits widen to 32 bits, and packing undoes it.
  V8u of(const Sums& sums) const {
    const auto meansOf = [&](V16u v) {
      return means(hn::BitCast(u32, hn::InterleaveLower(u16, v, hn::Zero(u16))),
                   hn::BitCast(u32, hn::InterleaveUpper(u16, v, hn::Zero(u16))));
    };
    return toBytes(meansOf(sums.low), meansOf(sums.high));
  }
  /// Of sums in four vectors. Packing leaves four bytes of each alternately.
  V8u ofOrdered(V32u a, V32u b, V32u c, V32u d) const {
    constexpr size_t each = lanes32 / 4;
    alignas(64) Vek32s order[lanes32];
    for (size_t i = 0; i < 4 * each; ++i) order[i] = static_cast<Vek32s>(i % each * 4 + i / each);
    const V8u mixed = packClamped(means(a, b), means(c, d));
    return hn::BitCast(
        u8, hn::TableLookupLanes(hn::BitCast(u32, mixed), hn::SetTableIndices(u32, order)));
  }

 private:
  V16s means(V32u a, V32u b) const {
    return packClamped(quotients_.of(hn::BitCast(s32, a)), quotients_.of(hn::BitCast(s32, b)));
  }

  Quotients quotients_;
};

/// `known` is the width where it is not 0, so that the loop over the columns is unrolled.
template <class Means, ptrdiff_t known>
void averageNarrow(const Vek16u* columns, ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n,
                   const BoxScale& scale, Vek8u* dst) {
  VEK_ASSERT(known == 0 || known == width);
  const Means means(scale);
  const ptrdiff_t count = known == 0 ? width : known;
  overlappingBlocks(n, vectorBytes, [&](ptrdiff_t x) {
    Sums sums(columns + x);
    for (ptrdiff_t k = 1; k < count; ++k) sums.add(columns + x + k * pixelBytes);
    hn::StoreU(means.of(sums), u8, dst + x);
  });
}

/// Strips of a row whose intermediate sums stay in the first cache.
constexpr ptrdiff_t stripBytes = 1024;

/// Runs body(begin, count) for strips of stripBytes that cover 0 .. n - 1. None is shorter than a
/// vector, so that a body can cover its strip by overlapping blocks: the last strip may overlap its
/// neighbour, as if it were a block.
template <class Body>
void overlappingStrips(ptrdiff_t n, Body body) {
  VEK_ASSERT(n >= vectorBytes);
  for (ptrdiff_t begin = 0; begin < n;) {
    if (n - begin < vectorBytes) begin = n - vectorBytes;
    const ptrdiff_t count = n - begin < stripBytes ? n - begin : stripBytes;
    body(begin, count);
    begin += count;
  }
}

/// Of wide masks every three neighbours are added up once for all windows that contain them.
template <class Means>
void averageByThrees(const Vek16u* columns, ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n,
                     const BoxScale& scale, Vek8u* dst) {
  const Means means(scale);
  const ptrdiff_t whole = width - width % 3;
  alignas(64) Vek16u threes[stripBytes + 3 * columnBoxWidth];
  overlappingStrips(n, [&](ptrdiff_t begin, ptrdiff_t count) {
    const Vek16u* from = columns + begin;
    overlappingBlocks(count + (whole - 3) * pixelBytes, vectorBytes, [&](ptrdiff_t x) {
      Sums sums(from + x);
      sums.add(from + x + pixelBytes);
      sums.add(from + x + 2 * pixelBytes);
      hn::StoreU(sums.low, u16, threes + x);
      hn::StoreU(sums.high, u16, threes + x + lanes16);
    });
    overlappingBlocks(count, vectorBytes, [&](ptrdiff_t x) {
      Sums total(threes + x);
      ptrdiff_t k = 3;
      for (; k < whole; k += 3) total.add(threes + x + k * pixelBytes);
      for (; k < width; ++k) total.add(from + x + k * pixelBytes);
      hn::StoreU(means.of(total), u8, dst + begin + x);
    });
  });
}

/// Of each vector as many lanes are used as whole pixels fill: the same lanes of all vectors are of the
/// same channel.
template <int step>
constexpr int pixelLanes = static_cast<int>(lanes32 - lanes32 % step);

/// Where the lanes of a vector come from that move 1, 2, 4 ... pixels up, and where the last ones
/// of each channel go to all places of the channel.
template <int step>
struct LaneMoves {
  static constexpr int lanes = static_cast<int>(lanes32);
  static constexpr int levels = std::bit_width(static_cast<unsigned>(pixelLanes<step> / step - 1));
  static constexpr int rows = levels > 0 ? levels : 1;  // arrays are never empty
  alignas(64) Vek32u up[rows][lanes] = {};
  alignas(64) Vek32u last[lanes] = {};

  constexpr LaneMoves() {
    for (int i = 0; i < lanes; ++i) {
      for (int k = 0; k < levels; ++k) {
        const int from = i - (step << k);
        up[k][i] = static_cast<Vek32u>(from < 0 ? 0 : from);
      }
      last[i] = static_cast<Vek32u>(pixelLanes<step> - step + i % step);
    }
  }
};
template <int step>
constexpr LaneMoves<step> laneMoves;

V32u movedLanes(V32u v, V32u from) {
  return hn::TableLookupLanes(v, hn::IndicesFromVec(u32, from));
}

/// Zeros come up from below.
template <int distance>
V32u movedUp(V32u v, V32u from) {
#if defined(__AVX512F__)
  constexpr __mmask16 above = static_cast<__mmask16>(0xFFFFu << distance);
  return V32u{_mm512_maskz_permutexvar_epi32(above, from.raw, v.raw)};
#else
  return hn::IfThenZeroElse(hn::FirstN(u32, distance), movedLanes(v, from));
#endif
}

/// Makes running totals of each channel from columns, vector after vector. Moving the lanes up by
/// 1, 2 and 4 pixels and adding each time gives the totals within a vector: (a, b, c, d) becomes
/// (a, a + b, b + c, c + d) and then (a, a + b, a + b + c, a + b + c + d).
template <int step>
class RunningTotals {
 public:
  RunningTotals() : last_(hn::Load(u32, laneMoves<step>.last)), before_(hn::Zero(u32)) {
    unrolled<levels>([&](auto k) { up_[k] = hn::Load(u32, laneMoves<step>.up[k]); });
  }

  V32u add(V32u v) {
    unrolled<levels>([&](auto k) { v = hn::Add(v, movedUp<step << k>(v, up_[k])); });
    const V32u totals = hn::Add(v, before_);
    // Moves across 128-bit blocks take several cycles, for which the next vector does not wait.
    before_ = levels == 0         ? totals
              : vectorBytes == 16 ? movedLanes(totals, last_)
                                  : hn::Add(before_, movedLanes(v, last_));
    return totals;
  }

 private:
  static constexpr int levels = LaneMoves<step>::levels;
  V32u up_[LaneMoves<step>::rows], last_, before_;
};

/// Sums beyond 16 bits: the sum of a window is the difference of two running totals, however wide
/// it is. Totals of whole vectors reach beyond the strip, into the columns' padding.
template <int pixelBytes>
void averageTotals(const Vek16u* columns, ptrdiff_t width, ptrdiff_t n, const BoxScale& scale,
                   Vek8u* dst) {
  const QuotientMeans means(scale);
  const ptrdiff_t gap = width * pixelBytes;
  alignas(64) Vek32u totals[stripBytes + columnBoxWidth * 3 + lanes32];
  overlappingStrips(n, [&](ptrdiff_t begin, ptrdiff_t count) {
    // From the pixel before on: totals begin with any number, which the differences lose.
    const Vek16u* from = columns + begin - pixelBytes;
    RunningTotals<pixelBytes> running;
    for (ptrdiff_t x = 0; x < count + gap; x += pixelLanes<pixelBytes>) {
      const V32u next = hn::PromoteTo(u32, hn::LoadU(halfU16, from + x));
      hn::StoreU(running.add(next), u32, totals + x);
    }
    overlappingBlocks(count, vectorBytes, [&](ptrdiff_t x) {
      const auto sums = [&](ptrdiff_t i) {
        return hn::Sub(hn::LoadU(u32, totals + x + i * lanes32 + gap),
                       hn::LoadU(u32, totals + x + i * lanes32));
      };
      hn::StoreU(means.ofOrdered(sums(0), sums(1), sums(2), sums(3)), u8, dst + begin + x);
    });
  });
}

template <class Means>
void averageSmall(const Vek16u* columns, ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n,
                  const BoxScale& scale, Vek8u* dst) {
  constexpr ptrdiff_t leastForThrees = 7;
  const auto filter = width == 3               ? averageNarrow<Means, 3>
                      : width == 5             ? averageNarrow<Means, 5>
                      : width < leastForThrees ? averageNarrow<Means, 0>
                                               : averageByThrees<Means>;
  filter(columns, width, pixelBytes, n, scale, dst);
}

void averageAnyColumns(const Vek16u* columns, ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n,
                       const BoxScale& scale, Vek8u* dst) {
  VEK_ASSERT(n >= 1 && width >= 1 && width <= columnBoxWidth);
  if (scale.area > smallBoxArea) {
    if (n < vectorBytes) return averageColumns<Vek32u>(columns, width, pixelBytes, n, scale, dst);
    return (pixelBytes == 1 ? averageTotals<1> : averageTotals<3>)(columns, width, n, scale, dst);
  }
  const auto filter = n < vectorBytes                        ? averageColumns<Vek16u>
                      : scale.area <= ProductMeans::mostArea ? averageSmall<ProductMeans>
                                                             : averageSmall<QuotientMeans>;
  filter(columns, width, pixelBytes, n, scale, dst);
}

/// The sums of a vector's worth of columns, which begin at even and at odd bytes of it.
struct ColumnSums {
  V16u even, odd;

  explicit ColumnSums(V8u bytes)
      : even(hn::And(hn::BitCast(u16, bytes), hn::Set(u16, 0xFF))),
        odd(hn::ShiftRight<8>(hn::BitCast(u16, bytes))) {}
  ColumnSums(V16u atEven, V16u atOdd) : even(atEven), odd(atOdd) {}

  ColumnSums plus(const ColumnSums& b) const {
    return {hn::Add(even, b.even), hn::Add(odd, b.odd)};
  }
};

template <int lanes>
V16u furtherLanes(V16u v, V16u next) {
  if constexpr (lanes == 0) {
    return v;
  } else {
    return hn::BitCast(u16, further<2 * lanes>(hn::BitCast(u8, v), hn::BitCast(u8, next)));
  }
}

/// An odd number of bytes further, what was at odd places is at even ones.
template <int distance>
ColumnSums further(const ColumnSums& v, const ColumnSums& next) {
  if constexpr (distance % 2 == 0) {
    return {furtherLanes<distance / 2>(v.even, next.even),
            furtherLanes<distance / 2>(v.odd, next.odd)};
  } else {
    return {furtherLanes<distance / 2>(v.odd, next.odd),
            furtherLanes<distance / 2 + 1>(v.even, next.even)};
  }
}

/// The columns of two windows of 3, one above the other.
struct ColumnSumsPair {
  ColumnSums upper, lower;
};

template <int distance>
ColumnSumsPair further(const ColumnSumsPair& v, const ColumnSumsPair& next) {
  return {further<distance>(v.upper, next.upper), further<distance>(v.lower, next.lower)};
}

/// The rows of two windows of 3, one above the other: the two rows that both have are added once.
/// `lowerRow` and `lowerDst` are the upper ones where there is no lower window.
struct BoxRowPair {
  const Vek8u *upperRow, *first, *second, *lowerRow;
  Vek8u *upperDst, *lowerDst;
  ProductMeans means;

  ColumnSumsPair columns(ptrdiff_t x) const {
    const auto row = [&](const Vek8u* src) { return ColumnSums(hn::LoadU(u8, src + x)); };
    const ColumnSums both = row(first).plus(row(second));
    return {both.plus(row(upperRow)), both.plus(row(lowerRow))};
  }
  void store(const ColumnSumsPair& a, const ColumnSumsPair& b, const ColumnSumsPair& c,
             ptrdiff_t x) const {
    hn::StoreU(meansOf(a.upper, b.upper, c.upper), u8, upperDst + x);
    hn::StoreU(meansOf(a.lower, b.lower, c.lower), u8, lowerDst + x);
  }

 private:
  /// The middle and the last column at even places are, of one channel, the first and the middle one
  /// at odd places, so that compilers add them once.
  V8u meansOf(const ColumnSums& a, const ColumnSums& b, const ColumnSums& c) const {
    const V16s even = means.mean(hn::Add(a.even, hn::Add(b.even, c.even)));
    const V16s odd = means.mean(hn::Add(hn::Add(a.odd, b.odd), c.odd));
    return hn::BitCast(u8, hn::Or(even, hn::ShiftLeft<8>(odd)));
  }
};

void averageNine(Plane<const Vek8u> src, Plane<Vek8u> dst, ptrdiff_t pixelBytes, ptrdiff_t n,
                 ptrdiff_t rows, const BoxScale& scale) {
  VEK_ASSERT(n >= vectorBytes && scale.area == 9);
  const auto filter = pixelBytes == 1 ? forWindowsOf3<1, BoxRowPair> : forWindowsOf3<3, BoxRowPair>;
  const ProductMeans means(scale);
  for (ptrdiff_t y = 0; y < rows; y += 2) {
    const ptrdiff_t lower = y + 1 < rows ? 1 : 0;
    filter({src.row(y), src.row(y + 1), src.row(y + 2), src.row(y + 3 * lower), dst.row(y),
            dst.row(y + lower), means},
           n);
  }
}

/// Bytes whose sums are formed at a time: whole pixels.
constexpr ptrdiff_t sumBlock = 768;

/// sums[i] = the running sum of its channel; `next` carries them from call to call. Only the first
/// 16 pixels are summed one after the other. Every other sum adds the 16 differences from the sum
/// 16 pixels before it, which are added four by four and then four of those: loops without a chain
/// from element to element, which vectors can take.
template <int pixelBytes, class Sum>
void sumDifferences(const Sum* __restrict differences, ptrdiff_t n, Sum* __restrict next,
                    Sum* __restrict sums) {
  VEK_ASSERT(n <= sumBlock && n % pixelBytes == 0);
  constexpr ptrdiff_t four = 4 * pixelBytes, sixteen = 16 * pixelBytes;
  const ptrdiff_t head = n < sixteen ? n : sixteen;
  for (ptrdiff_t i = 0; i < head; ++i) {
    sums[i] = i < pixelBytes ? next[i] : sums[i - pixelBytes] + differences[i - pixelBytes];
  }
  if (n > sixteen) {
    Sum fours[sumBlock];
    for (ptrdiff_t i = 0; i < n - four; ++i) {
      fours[i] = differences[i] + differences[i + pixelBytes] + differences[i + 2 * pixelBytes] +
                 differences[i + 3 * pixelBytes];
    }
    for (ptrdiff_t i = 0; i < n - sixteen; ++i) {
      sums[i + sixteen] =
          sums[i] + fours[i] + fours[i + four] + fours[i + 2 * four] + fours[i + 3 * four];
    }
  }
  const ptrdiff_t last = n - pixelBytes;
  for (int c = 0; c < pixelBytes; ++c) next[c] = sums[last + c] + differences[last + c];
}

/// dst[i] = the mean of sums[i], in a loop of its own, which vectors can take.
void scaleSums(const uint64_t* __restrict sums, ptrdiff_t n, const BoxScale& scale,
               Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n; ++i) dst[i] = boxMean(sums[i], scale.factor);
}

void scaleSums(const Vek32u* sums, ptrdiff_t n, const BoxScale& scale, Vek8u* dst) {
  if (n < lanes16) {
    for (ptrdiff_t i = 0; i < n; ++i) dst[i] = boxMean(sums[i], scale.factor);
    return;
  }
  const V32u factor = hn::Set(u32, scale.factor);
  overlappingBlocks(n, lanes16, [&](ptrdiff_t x) {
    const auto means = [&](ptrdiff_t i) {  // at most 256
      return hn::DemoteTo(
          halfU16,
          hn::BitCast(s32, mulHighRounded(hn::LoadU(u32, sums + x + i * lanes32), factor)));
    };
    const V16u both = hn::Combine(u16, means(1), means(0));
    hn::StoreU(hn::DemoteTo(halfU8, hn::BitCast(s16, both)), halfU8, dst + x);
  });
}

template <class Sum>
void averageWindows(const Sum* differences, const Sum* first, ptrdiff_t pixelBytes, ptrdiff_t n,
                    const BoxScale& scale, Vek8u* dst) {
  VEK_ASSERT(n >= pixelBytes && n % pixelBytes == 0 && scale.factor != 0);
  const auto sumUp = pixelBytes == 1 ? sumDifferences<1, Sum> : sumDifferences<3, Sum>;
  Sum next[3] = {first[0], first[1], first[2]};
  Sum sums[sumBlock];
  for (ptrdiff_t x = 0; x < n; x += sumBlock) {
    const ptrdiff_t count = n - x < sumBlock ? n - x : sumBlock;
    sumUp(differences + x, count, next, sums);
    scaleSums(sums, count, scale, dst + x);
  }
}

}  // namespace

constexpr BoxKernels boxKernels = {
    .slideColumns = slideColumns,
    .averageColumns = averageAnyColumns,
    .averageNine = averageNine,
    .leastNine = vectorBytes,
    .mostWidth = columnBoxWidth,
    .mostArea = Quotients::mostDivisor,
    .windows32 = {.slide = slideWindows<Vek32u>, .average = averageWindows<Vek32u>},
    .windows64 = {.slide = slideWindows<uint64_t>, .average = averageWindows<uint64_t>},
};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
