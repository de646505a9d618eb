// Erosion, dilation, mirroring and gamma: filters whose definition is one line.
#include "vek/image.h"

#include <algorithm>
#include <cmath>

#include "tests/image/filter/neighbourhood.h"

namespace vek::test {
namespace {

using Plain = VekStatus(const Vek8u*, int, Vek8u*, int, VekiSize);

void expectExtreme(const char* name, Plain f, const int& (*extreme)(const int&, const int&)) {
  const auto define = [=, channels = channelsOf(name)](const Vek8u* src, int srcStep, Vek8u* dst,
                                                       int dstStep, VekiSize roi) {
    fromNeighbourhoods(channels, src, srcStep, dst, dstStep, roi, {1, 1}, [&](auto at) {
      int result = at(0, 0);
      for (int k = 1; k < 9; ++k) result = extreme(result, at(k % 3, k / 3));
      return result;
    });
  };
  expectDefinition(name, f, define, 200);
}

TEST(Morphology, EqualsTheNaiveExtreme) {
  VEK_C1_C3(expectExtreme, vekiErode3x3, R, std::min<int>);
  VEK_C1_C3(expectExtreme, vekiDilate3x3, R, std::max<int>);
}

void expectMirror(const char* name, VekStatus (*f)(const Vek8u*, int, Vek8u*, int, VekiSize, int)) {
  const auto define = [channels = channelsOf(name)](const Vek8u* src, ptrdiff_t srcStep, Vek8u* dst,
                                                    ptrdiff_t dstStep, VekiSize roi, int flip) {
    for (int y = 0; y < roi.height; ++y) {
      for (int x = 0; x < roi.width; ++x) {
        const int fromX = flip == 0 ? x : roi.width - 1 - x;
        const int fromY = flip == 1 ? y : roi.height - 1 - y;
        std::copy_n(src + fromY * srcStep + fromX * channels, channels,
                    dst + y * dstStep + x * channels);
      }
    }
  };
  expectDefinition(name, f, define, 150);
}

TEST(Mirror, ReversesRowsAndColumns) {
  VEK_C1_C3(expectMirror, vekiMirror, R);
}

uint8_t gammaEntry(int i, bool forward) {
  const double v = i / 255.0;
  const double result = forward     ? (v < 0.018 ? 4.5 * v : 1.099 * std::pow(v, 0.45) - 0.099)
                        : v < 0.081 ? v / 4.5
                                    : std::pow((v + 0.099) / 1.099, 1 / 0.45);
  return static_cast<uint8_t>(std::nearbyint(255 * result));
}

void expectGamma(const char* name, Plain f, bool forward) {
  const auto define = [=](const Vek8u* src, int srcStep, Vek8u* dst, int dstStep, VekiSize roi) {
    fromNeighbourhoods(3, src, srcStep, dst, dstStep, roi, {0, 0},
                       [&](auto at) { return gammaEntry(at(0, 0), forward); });
  };
  expectDefinition(name, f, define, 100);
}

TEST(Gamma, EqualsTheTransferFunction) {
  expectGamma(VEK_NAMED(vekiGammaFwd_8u_C3R), true);
  expectGamma(VEK_NAMED(vekiGammaInv_8u_C3R), false);
}

/// Mirror and gamma answer a step as they answer a size.
TEST(Filters, AnswerFaultsInOrder) {
  expectOrder("filter", {{"FilterMedian_", "0202134"},
                         {"MedianColor", "020213"},
                         {"Box", "0101234"},
                         {"Filter", "010120234"},
                         {"Mirror", "010112"},
                         {"Gamma", "01011"},
                         {"", "01012"}});
}

}  // namespace
}  // namespace vek::test
