#include "core/kernel/vector.h"
#include "image/filter/median_color_body.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

struct VectorSteps {
  static constexpr hn::CappedTag<Vek8u, stripColumns> bytes = {};

  static void split(const Vek8u* src, ptrdiff_t columns, PixelRow& pixels) {
    if (columns < stripColumns) return PlainSteps::split(src, columns, pixels);
    for (size_t x = 0; x < stripColumns; x += hn::Lanes(bytes)) {
      hn::Vec<decltype(bytes)> c0, c1, c2;
      hn::LoadInterleaved3(bytes, src + 3 * x, c0, c1, c2);
      hn::StoreU(c0, bytes, pixels.channel[0].at(0) + x);
      hn::StoreU(c1, bytes, pixels.channel[1].at(0) + x);
      hn::StoreU(c2, bytes, pixels.channel[2].at(0) + x);
    }
  }

  static void measure(const PixelRow& from, const PixelRow& to, int dx,
                      Columns<Vek16s>& distances) {
    constexpr hn::Half<decltype(bytes)> halfBytes;
    constexpr hn::RepartitionToWide<hn::RebindToSigned<decltype(bytes)>> words;
    for (size_t x = 0; x < stripColumns; x += hn::Lanes(bytes)) {
      auto low = hn::Zero(words), high = low;
      for (int c = 0; c < 3; ++c) {
        const auto a = hn::LoadU(bytes, from.channel[c].at(0) + x);
        const auto b = hn::LoadU(bytes, to.channel[c].at(dx) + x);
        const auto difference = hn::Sub(hn::Max(a, b), hn::Min(a, b));
        low = hn::Add(low, hn::PromoteTo(words, hn::LowerHalf(halfBytes, difference)));
        high = hn::Add(high, hn::PromoteTo(words, hn::UpperHalf(halfBytes, difference)));
      }
      hn::StoreU(low, words, distances.at(0) + x);
      hn::StoreU(high, words, distances.at(0) + x + hn::Lanes(words));
    }
  }
};

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

namespace vek::VEK_LEVEL {
namespace {
using VectorSteps = PlainSteps;
}
}  // namespace vek::VEK_LEVEL

#endif

namespace vek::VEK_LEVEL {

constexpr ColorMedianRows colorMedianRows = {colorMedian<3, VectorSteps>,
                                             colorMedian<5, VectorSteps>};

}  // namespace vek::VEK_LEVEL
