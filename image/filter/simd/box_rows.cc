#include "image/filter/box_rows.h"

#include "core/kernel/byte_pairs.h"
#include "image/filter/box_body.h"
#include "image/filter/cover.h"

#if VEK_HAVE_HIGHWAY

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

/// The same in dwords. Interleaved with zeros the words of each 128 bits become dwords, and packing
/// undoes it.
struct WideSums {
  VDwords a, b, c, d;

  explicit WideSums(const Sums& v)
      : a(lower(v.low)), b(upper(v.low)), c(lower(v.high)), d(upper(v.high)) {}
  explicit WideSums(const Vek16u* from) : WideSums(Sums(from)) {}
  void add(const Vek16u* from) {
    const WideSums more(from);
    a = hn::Add(a, more.a);
    b = hn::Add(b, more.b);
    c = hn::Add(c, more.c);
    d = hn::Add(d, more.d);
  }

 private:
  static VDwords lower(VWords v) {
    return hn::BitCast(dwords, hn::InterleaveLower(words, v, hn::Zero(words)));
  }
  static VDwords upper(VWords v) {
    return hn::BitCast(dwords, hn::InterleaveUpper(words, v, hn::Zero(words)));
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

  VBytes of(const Sums& sums) const { return of(WideSums(sums)); }
  VBytes of(const WideSums& sums) const {
    const auto mean = [&](VDwords v) { return quotients_.of(hn::BitCast(sdwords, v)); };
    return toBytes(hn::ReorderDemote2To(swords, mean(sums.a), mean(sums.b)),
                   hn::ReorderDemote2To(swords, mean(sums.c), mean(sums.d)));
  }

 private:
  Quotients quotients_;
};

template <class Means>
void averageNarrow(const Vek16u* columns, ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n,
                   const BoxScale& scale, Vek8u* dst) {
  const Means means(scale);
  coverRow(n, 2 * lanes, [&](ptrdiff_t x) {
    Sums sums(columns + x);
    for (ptrdiff_t k = 1; k < width; ++k) sums.add(columns + x + k * pixelBytes);
    hn::StoreU(means.of(sums), bytes, dst + x);
  });
}

/// Of wide masks every three neighbours are added up once for all windows that contain them. The
/// totals are sums of type Total.
template <class Means, class Total>
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
    coverRow(count + (whole - 3) * pixelBytes, 2 * lanes, [&](ptrdiff_t x) {
      Sums sums(from + x);
      sums.add(from + x + pixelBytes);
      sums.add(from + x + 2 * pixelBytes);
      hn::StoreU(sums.low, words, threes + x);
      hn::StoreU(sums.high, words, threes + x + lanes);
    });
    coverRow(count, 2 * lanes, [&](ptrdiff_t x) {
      Total total(threes + x);
      ptrdiff_t k = 3;
      for (; k < whole; k += 3) total.add(threes + x + k * pixelBytes);
      for (; k < width; ++k) total.add(from + x + k * pixelBytes);
      hn::StoreU(means.of(total), bytes, dst + begin + x);
    });
    begin += count;
  }
}

void average(const Vek16u* columns, ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n,
             const BoxScale& scale, Vek8u* dst) {
  constexpr ptrdiff_t leastForThrees = 7;
  const bool wide = scale.area > smallBoxArea;
  const bool products = scale.area <= ProductMeans::mostArea;
  const auto filter =
      n < 2 * lanes ? (wide ? averageColumns<Vek32u> : averageColumns<Vek16u>)
      : wide        ? averageByThrees<QuotientMeans, WideSums>
      : width < leastForThrees
          ? (products ? averageNarrow<ProductMeans> : averageNarrow<QuotientMeans>)
          : (products ? averageByThrees<ProductMeans, Sums> : averageByThrees<QuotientMeans, Sums>);
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
  coverRow(n, lanes, [&](ptrdiff_t x) {
    const VWords mean = hn::Combine(words, means(hn::LoadU(dwords, sums + x + size), scale.factor),
                                    means(hn::LoadU(dwords, sums + x), scale.factor));
    hn::StoreU(hn::DemoteTo(halfBytes, hn::BitCast(swords, mean)), halfBytes, dst + x);
  });
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

namespace vek::VEK_LEVEL {
namespace {
constexpr auto average = averageColumns<Vek16u>;
constexpr ptrdiff_t mostWidth = 16;
constexpr int64_t mostArea = smallBoxArea;
constexpr auto scaleSums32 = scaleSums<Vek32u>;
}  // namespace
}  // namespace vek::VEK_LEVEL

#endif

namespace vek::VEK_LEVEL {

constexpr BoxRows boxRows = {
    slideColumns,
    mostWidth,
    mostArea,
    average,
    {slideWindows<Vek32u>, averageWindows<Vek32u, scaleSums32>},
    {slideWindows<uint64_t>, averageWindows<uint64_t, scaleSums<uint64_t>>}};

}  // namespace vek::VEK_LEVEL
