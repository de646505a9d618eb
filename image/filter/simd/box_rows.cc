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
constexpr hn::Half<decltype(words)> halfWords;
constexpr hn::Rebind<Vek8u, decltype(words)> bytes;
using VWords = hn::Vec<decltype(words)>;

/// Up to 128 samples the factor is 2^18 times the rounded 16384 / area, and sums stay within 32640:
/// (S * f + 8192) >> 14 is then one rounding multiplication, (S * 2f + 16384) >> 15.
VWords smallMeans(VWords sums, Vek32u factor) {
  const auto f = hn::Set(swords, static_cast<Vek16s>(factor >> 17));
  return hn::BitCast(words, hn::MulFixedPoint15(hn::BitCast(swords, sums), f));
}

VWords means(VWords sums, Vek32u factor) {
  const auto f = hn::Set(dwords, factor);
  const auto half = [&](auto part) {
    const auto mean = mulHighRounded(dwords, hn::PromoteTo(dwords, part), f);
    return hn::DemoteTo(halfWords, hn::BitCast(hn::RebindToSigned<decltype(dwords)>(), mean));
  };
  return hn::Combine(words, half(hn::UpperHalf(halfWords, sums)),
                     half(hn::LowerHalf(halfWords, sums)));
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
    averageBlocks<means>(columns, width, pixelBytes, n, factor, dst);
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

namespace vek::VEK_LEVEL {
namespace {
constexpr auto average = averageColumns;
}
}  // namespace vek::VEK_LEVEL

#endif

namespace vek::VEK_LEVEL {

constexpr BoxRows boxRows = {slideColumns, average, wideBoxRows<Vek32u>, wideBoxRows<uint64_t>};

}  // namespace vek::VEK_LEVEL
