#include "image/filter/box_rows.h"

#include "image/filter/box_body.h"
#include "image/filter/cover.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::ScalableTag<Vek16u> words;
constexpr hn::RebindToSigned<decltype(words)> swords;
constexpr hn::Repartition<Vek32u, decltype(words)> dwords;
constexpr hn::RebindToSigned<decltype(dwords)> sdwords;
constexpr hn::Half<decltype(words)> halfWords;
constexpr hn::Rebind<Vek8u, decltype(words)> bytes;
using VWords = hn::Vec<decltype(words)>;

/// Up to 128 samples the factor is 2^18 times the rounded 16384 / area, and sums stay within 32640:
/// (S * f + 8192) >> 14 is then one rounding multiplication, (S * 2f + 16384) >> 15.
VWords smallMeans(VWords sums, Vek32u factor) {
  const auto f = hn::Set(swords, static_cast<Vek16s>(factor >> 17));
  return hn::BitCast(words, hn::MulFixedPoint15(hn::BitCast(swords, sums), f));
}

/// At most 256: packing saturates.
hn::Vec<decltype(halfWords)> means(hn::Vec<decltype(dwords)> sums, Vek32u factor) {
  const auto mean = mulHighRounded(dwords, sums, hn::Set(dwords, factor));
  return hn::DemoteTo(halfWords, hn::BitCast(sdwords, mean));
}

VWords wordMeans(VWords sums, Vek32u factor) {
  const auto low = hn::PromoteTo(dwords, hn::LowerHalf(halfWords, sums));
  const auto high = hn::PromoteTo(dwords, hn::UpperHalf(halfWords, sums));
  return hn::Combine(words, means(high, factor), means(low, factor));
}

template <VWords (*scale)(VWords, Vek32u)>
void averageBlocks(const Vek16u* columns, ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n,
                   Vek32u factor, Vek8u* dst) {
  const ptrdiff_t lanes = static_cast<ptrdiff_t>(hn::Lanes(words));
  coverRow(n, 2 * lanes, [&](ptrdiff_t x) {
    VWords low = hn::LoadU(words, columns + x);
    VWords high = hn::LoadU(words, columns + x + lanes);
    for (ptrdiff_t k = 1; k < width; ++k) {
      const Vek16u* from = columns + x + k * pixelBytes;
      low = hn::Add(low, hn::LoadU(words, from));
      high = hn::Add(high, hn::LoadU(words, from + lanes));
    }
    const auto store = [&](VWords sums, Vek8u* to) {
      hn::StoreU(hn::DemoteTo(bytes, hn::BitCast(swords, scale(sums, factor))), bytes, to);
    };
    store(low, dst + x);
    store(high, dst + x + lanes);
  });
}

void average(const Vek16u* columns, ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n,
             Vek32u factor, Vek8u* dst) {
  constexpr Vek32u leastSmallFactor = 1u << 25;  // 2^32 / 128: the factor of an area of 128
  if (n < 2 * static_cast<ptrdiff_t>(hn::Lanes(words))) {
    averageColumns(columns, width, pixelBytes, n, factor, dst);
  } else if (factor >= leastSmallFactor) {
    averageBlocks<smallMeans>(columns, width, pixelBytes, n, factor, dst);
  } else {
    averageBlocks<wordMeans>(columns, width, pixelBytes, n, factor, dst);
  }
}

void scaleSums32(const Vek32u* sums, ptrdiff_t n, Vek32u factor, Vek8u* dst) {
  const ptrdiff_t lanes = static_cast<ptrdiff_t>(hn::Lanes(dwords));
  if (n < 2 * lanes) return scaleSums<Vek32u>(sums, n, factor, dst);
  coverRow(n, 2 * lanes, [&](ptrdiff_t x) {
    const VWords mean = hn::Combine(words, means(hn::LoadU(dwords, sums + x + lanes), factor),
                                    means(hn::LoadU(dwords, sums + x), factor));
    hn::StoreU(hn::DemoteTo(bytes, hn::BitCast(swords, mean)), bytes, dst + x);
  });
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

namespace vek::VEK_LEVEL {
namespace {
constexpr auto average = averageColumns;
constexpr auto scaleSums32 = scaleSums<Vek32u>;
}  // namespace
}  // namespace vek::VEK_LEVEL

#endif

namespace vek::VEK_LEVEL {

constexpr BoxRows boxRows = {
    slideColumns,
    average,
    {slideWindows<Vek32u>, averageWindows<Vek32u, scaleSums32>},
    {slideWindows<uint64_t>, averageWindows<uint64_t, scaleSums<uint64_t>>}};

}  // namespace vek::VEK_LEVEL
