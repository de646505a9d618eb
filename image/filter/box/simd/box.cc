#include "core/kernel/blocks.h"
#include "core/kernel/unroll.h"
#include "image/filter/box/box_body.h"
#include "image/filter/box/box_kernels.h"
#include "image/filter/filter_lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::ScalableTag<Vek8u> bytes;
constexpr hn::Repartition<Vek16u, decltype(bytes)> words;
constexpr hn::RebindToSigned<decltype(words)> swords;
constexpr hn::Repartition<Vek32u, decltype(bytes)> dwords;
constexpr hn::RebindToSigned<decltype(dwords)> sdwords;
constexpr hn::Half<decltype(words)> halfWords;
using VBytes = hn::Vec<decltype(bytes)>;
using VWords = hn::Vec<decltype(words)>;
using VDwords = hn::Vec<decltype(dwords)>;

constexpr ptrdiff_t lanes = static_cast<ptrdiff_t>(hn::MaxLanes(words));

/// Signed words saturated to bytes.
VBytes toBytes(hn::Vec<decltype(swords)> low, hn::Vec<decltype(swords)> high) {
  const VBytes mixed = packClamped(low, high);  // 64 bits of each by turns
#if defined(__AVX512BW__)
  return VBytes{_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), mixed.raw)};
#elif defined(__AVX2__)
  return VBytes{_mm256_permute4x64_epi64(mixed.raw, 0xD8)};
#else
  return mixed;
#endif
}

/// The sums of two vectors of windows.
struct Sums {
  VWords low, high;

  explicit Sums(const Vek16u* from)
      : low(hn::LoadU(words, from)), high(hn::LoadU(words, from + lanes)) {}
  void add(const Vek16u* from) {
    low = hn::Add(low, hn::LoadU(words, from));
    high = hn::Add(high, hn::LoadU(words, from + lanes));
  }
};

/// Up to 128 samples the factor is 2^18 times the rounded 16384 / area, and sums stay within 32640:
/// (S * f + 8192) >> 14 is then one rounding multiplication, (S * 2f + 16384) >> 15.
class ProductMeans {
 public:
  static constexpr int64_t mostArea = 128;

  explicit ProductMeans(const BoxScale& scale)
      : factor_(hn::Set(swords, static_cast<Vek16s>(scale.factor >> 17))) {}

  VBytes of(const Sums& sums) const { return toBytes(mean(sums.low), mean(sums.high)); }

 private:
  hn::Vec<decltype(swords)> mean(VWords sums) const {
    return hn::MulFixedPoint15(hn::BitCast(swords, sums), factor_);
  }

  hn::Vec<decltype(swords)> factor_;
};

class QuotientMeans {
 public:
  explicit QuotientMeans(const BoxScale& scale)
      : quotients_(static_cast<int>(scale.area),
                   Quotients::roundsUp(scale.factor, static_cast<int>(scale.area))) {}

  /// Interleaved with zeros the words of each 128 bits become dwords, and packing undoes it.
  VBytes of(const Sums& sums) const {
    const auto meansOf = [&](VWords v) {
      return means(hn::BitCast(dwords, hn::InterleaveLower(words, v, hn::Zero(words))),
                   hn::BitCast(dwords, hn::InterleaveUpper(words, v, hn::Zero(words))));
    };
    return toBytes(meansOf(sums.low), meansOf(sums.high));
  }
  /// Of sums in four vectors: packing leaves a dword of each by turns.
  VBytes ofOrdered(VDwords a, VDwords b, VDwords c, VDwords d) const {
    constexpr size_t each = hn::MaxLanes(dwords) / 4;
    alignas(64) Vek32s order[hn::MaxLanes(dwords)];
    for (size_t i = 0; i < 4 * each; ++i) order[i] = static_cast<Vek32s>(i % each * 4 + i / each);
    const VBytes mixed = packClamped(means(a, b), means(c, d));
    return hn::BitCast(bytes, hn::TableLookupLanes(hn::BitCast(dwords, mixed),
                                                   hn::SetTableIndices(dwords, order)));
  }

 private:
  hn::Vec<decltype(swords)> means(VDwords a, VDwords b) const {
    return hn::ReorderDemote2To(swords, quotients_.of(hn::BitCast(sdwords, a)),
                                quotients_.of(hn::BitCast(sdwords, b)));
  }

  Quotients quotients_;
};

template <class Means>
void averageNarrow(const Vek16u* columns, ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n,
                   const BoxScale& scale, Vek8u* dst) {
  const Means means(scale);
  overlappingBlocks(n, 2 * lanes, [&](ptrdiff_t x) {
    Sums sums(columns + x);
    for (ptrdiff_t k = 1; k < width; ++k) sums.add(columns + x + k * pixelBytes);
    hn::StoreU(means.of(sums), bytes, dst + x);
  });
}

/// Where the lanes of a vector come from that move 1, 2, 4 ... pixels up, and where the last ones of
/// each channel go to all places of the channel in the next vector.
template <int step>
struct LaneMoves {
  static constexpr int lanes = static_cast<int>(hn::MaxLanes(dwords));
  static constexpr int levels = step * 4 < lanes   ? (step * 8 < lanes ? 4 : 3)
                                : step * 2 < lanes ? 2
                                                   : 1;
  alignas(64) Vek32u up[levels][lanes] = {};
  alignas(64) Vek32u last[lanes] = {};

  constexpr LaneMoves() {
    for (int i = 0; i < lanes; ++i) {
      for (int k = 0; k < levels; ++k) {
        const int from = i - (step << k);
        up[k][i] = static_cast<Vek32u>(from < 0 ? 0 : from);
      }
      last[i] = static_cast<Vek32u>(lanes - step + i % step);
    }
  }
};
template <int step>
constexpr LaneMoves<step> laneMoves;

VDwords movedLanes(VDwords v, VDwords from) {
  return hn::TableLookupLanes(v, hn::IndicesFromVec(dwords, from));
}

/// Zeros come up from below.
template <int distance>
VDwords movedUp(VDwords v, VDwords from) {
#if defined(__AVX512F__)
  constexpr __mmask16 above = static_cast<__mmask16>(0xFFFFu << distance);
  return VDwords{_mm512_maskz_permutexvar_epi32(above, from.raw, v.raw)};
#else
  return hn::IfThenZeroElse(hn::FirstN(dwords, distance), movedLanes(v, from));
#endif
}

/// Turns columns, vector after vector, into running totals of each channel.
template <int step>
class RunningTotals {
 public:
  RunningTotals() : last_(hn::Load(dwords, laneMoves<step>.last)), before_(hn::Zero(dwords)) {
    unrolled<levels>([&](auto k) { up_[k] = hn::Load(dwords, laneMoves<step>.up[k]); });
  }

  VDwords add(VDwords v) {
    unrolled<levels>([&](auto k) { v = hn::Add(v, movedUp<step << k>(v, up_[k])); });
    v = hn::Add(v, before_);
    before_ = movedLanes(v, last_);
    return v;
  }

 private:
  static constexpr int levels = LaneMoves<step>::levels;
  VDwords up_[levels], last_, before_;
};

/// Sums beyond 16 bits: the sum of a window is the difference of two running totals, however wide it
/// is.
template <int pixelBytes>
void averageTotals(const Vek16u* columns, ptrdiff_t width, ptrdiff_t n, const BoxScale& scale,
                   Vek8u* dst) {
  constexpr ptrdiff_t strip = 1024, each = lanes / 2;
  const QuotientMeans means(scale);
  const ptrdiff_t gap = width * pixelBytes;
  alignas(64) Vek32u totals[strip + columnBoxWidth * 3 + each];
  ptrdiff_t begin = 0;
  while (begin < n) {
    // The last strip is never shorter than a block: it overlaps the one before.
    if (n - begin < 2 * lanes) begin = n - 2 * lanes;
    const ptrdiff_t count = n - begin < strip ? n - begin : strip;
    // Up to the column before: totals begin with any number, which the differences lose.
    const Vek16u* from = columns + begin - pixelBytes;
    RunningTotals<pixelBytes> running;
    for (ptrdiff_t x = 0; x < count + gap; x += each) {
      const VDwords next = hn::PromoteTo(dwords, hn::LoadU(halfWords, from + x));
      hn::Store(running.add(next), dwords, totals + x);
    }
    overlappingBlocks(count, 2 * lanes, [&](ptrdiff_t x) {
      const auto sums = [&](ptrdiff_t i) {
        return hn::Sub(hn::LoadU(dwords, totals + x + i * each + gap),
                       hn::LoadU(dwords, totals + x + i * each));
      };
      hn::StoreU(means.ofOrdered(sums(0), sums(1), sums(2), sums(3)), bytes, dst + begin + x);
    });
    begin += count;
  }
}

/// Of wide masks every three neighbours are added up once for all windows that contain them.
template <class Means>
void averageByThrees(const Vek16u* columns, ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n,
                     const BoxScale& scale, Vek8u* dst) {
  constexpr ptrdiff_t strip = 1024;
  const Means means(scale);
  const ptrdiff_t whole = width - width % 3;
  alignas(64) Vek16u threes[strip + 3 * columnBoxWidth];
  ptrdiff_t begin = 0;
  while (begin < n) {
    // The last strip is never shorter than a block: it overlaps the one before.
    if (n - begin < 2 * lanes) begin = n - 2 * lanes;
    const ptrdiff_t count = n - begin < strip ? n - begin : strip;
    const Vek16u* from = columns + begin;
    overlappingBlocks(count + (whole - 3) * pixelBytes, 2 * lanes, [&](ptrdiff_t x) {
      Sums sums(from + x);
      sums.add(from + x + pixelBytes);
      sums.add(from + x + 2 * pixelBytes);
      hn::StoreU(sums.low, words, threes + x);
      hn::StoreU(sums.high, words, threes + x + lanes);
    });
    overlappingBlocks(count, 2 * lanes, [&](ptrdiff_t x) {
      Sums total(threes + x);
      ptrdiff_t k = 3;
      for (; k < whole; k += 3) total.add(threes + x + k * pixelBytes);
      for (; k < width; ++k) total.add(from + x + k * pixelBytes);
      hn::StoreU(means.of(total), bytes, dst + begin + x);
    });
    begin += count;
  }
}

template <class Means>
void averageSmall(const Vek16u* columns, ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n,
                  const BoxScale& scale, Vek8u* dst) {
  constexpr ptrdiff_t leastForThrees = 7;
  (width < leastForThrees ? averageNarrow<Means>
                          : averageByThrees<Means>)(columns, width, pixelBytes, n, scale, dst);
}

void average(const Vek16u* columns, ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n,
             const BoxScale& scale, Vek8u* dst) {
  if (scale.area > smallBoxArea) {
    if (n < 2 * lanes) return averageColumns<Vek32u>(columns, width, pixelBytes, n, scale, dst);
    return (pixelBytes == 1 ? averageTotals<1> : averageTotals<3>)(columns, width, n, scale, dst);
  }
  const auto filter = n < 2 * lanes                          ? averageColumns<Vek16u>
                      : scale.area <= ProductMeans::mostArea ? averageSmall<ProductMeans>
                                                             : averageSmall<QuotientMeans>;
  filter(columns, width, pixelBytes, n, scale, dst);
}

constexpr ptrdiff_t mostWidth = columnBoxWidth;
constexpr int64_t mostArea = Quotients::mostDivisor;

/// At most 256: packing saturates.
hn::Vec<decltype(halfWords)> means(VDwords sums, Vek32u factor) {
  const auto mean = mulHighRounded(dwords, sums, hn::Set(dwords, factor));
  return hn::DemoteTo(halfWords, hn::BitCast(sdwords, mean));
}

void scaleSums32(const Vek32u* sums, ptrdiff_t n, const BoxScale& scale, Vek8u* dst) {
  constexpr hn::Rebind<Vek8u, decltype(words)> halfBytes;
  constexpr ptrdiff_t size = lanes / 2;
  if (n < lanes) return scaleSums<Vek32u>(sums, n, scale, dst);
  overlappingBlocks(n, lanes, [&](ptrdiff_t x) {
    const VWords mean = hn::Combine(words, means(hn::LoadU(dwords, sums + x + size), scale.factor),
                                    means(hn::LoadU(dwords, sums + x), scale.factor));
    hn::StoreU(hn::DemoteTo(halfBytes, hn::BitCast(swords, mean)), halfBytes, dst + x);
  });
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr BoxKernels boxKernels = {
    slideColumns,
    mostWidth,
    mostArea,
    average,
    {slideWindows<Vek32u>, averageWindows<Vek32u, scaleSums32>},
    {slideWindows<uint64_t>, averageWindows<uint64_t, scaleSums<uint64_t>>}};

}  // namespace vek::VEK_LEVEL
