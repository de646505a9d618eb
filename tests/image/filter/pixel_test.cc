// Erosion, dilation, mirroring and gamma: filters whose definition is one line.
#include "vek/image.h"

#include <algorithm>
#include <cmath>

#include "tests/image/filter/neighbourhood.h"

namespace vek::test {
namespace {

TEST(Morphology, EqualsTheNaiveExtreme) {
  Random random(baseSeed());
  for (int round = 0; round < 200 && !HasFailure(); ++round) {
    Neighbourhood a = randomNeighbourhood(random, random.in(0, 1) * 2 + 1, {3, 3}, 150, 5);
    a.anchor = {1, 1};
    const bool erode = random.chance(50);
    const auto f = erode ? (a.channels == 1 ? vekiErode3x3_8u_C1R : vekiErode3x3_8u_C3R)
                         : (a.channels == 1 ? vekiDilate3x3_8u_C1R : vekiDilate3x3_8u_C3R);
    const auto naive = [&](auto at, int c) {
      int extreme = at(0, 0, c);
      for (int k = 1; k < 9; ++k) {
        const int sample = at(k % 3, k / 3, c);
        extreme = erode ? std::min(extreme, sample) : std::max(extreme, sample);
      }
      return static_cast<uint8_t>(extreme);
    };
    compareWithNaive(a, random, allPatterns[random.in(0, 5)], naive,
                     [&](auto src, auto dst) { return f(src, a.srcStep, dst, a.dstStep, a.roi); });
  }
  Neighbourhood wide = {3, {3000, 2}, {3, 3}, {1, 1}, 9100, 9000};
  compareWithNaive(
      wide, random, Pattern::noise,
      [&](auto at, int c) {
        int most = 0;
        for (int k = 0; k < 9; ++k) most = std::max(most, at(k % 3, k / 3, c));
        return static_cast<uint8_t>(most);
      },
      [&](auto src, auto dst) {
        return vekiDilate3x3_8u_C3R(src, wide.srcStep, dst, wide.dstStep, wide.roi);
      });
}

TEST(Mirror, ReversesRowsAndColumns) {
  Random random(baseSeed() + 1);
  for (int round = 0; round < 150 && !HasFailure(); ++round) {
    const int flip = random.in(0, 2);
    const Neighbourhood a = randomNeighbourhood(random, random.in(0, 1) * 2 + 1, {1, 1}, 200, 5);
    SCOPED_TRACE(testing::Message() << "C" << a.channels << ", " << a.roi.width << 'x'
                                    << a.roi.height << ", flip " << flip);
    Buffer src(footprint::filterSource(a));
    src.fill(random);
    std::vector<uint8_t> expected;
    for (int y = 0; y < a.roi.height; ++y) {
      for (int x = 0; x < a.roi.width; ++x) {
        const int fromX = flip == 0 ? x : a.roi.width - 1 - x;
        const int fromY = flip == 1 ? y : a.roi.height - 1 - y;
        for (int c = 0; c < a.channels; ++c) {
          expected.push_back(src.data()[fromY * a.srcStep + fromX * a.channels + c]);
        }
      }
    }
    const auto mirror = a.channels == 1 ? vekiMirror_8u_C1R : vekiMirror_8u_C3R;
    runAtEveryLevel({{footprint::filterDestination(a), 1, 0, expected}}, [&](auto dst) {
      EXPECT_EQ(mirror(src.data(), a.srcStep, dst[0], a.dstStep, a.roi, flip), 0);
    });
  }
}

uint8_t gammaEntry(int i, bool forward) {
  const double v = i / 255.0;
  const double result = forward     ? (v < 0.018 ? 4.5 * v : 1.099 * std::pow(v, 0.45) - 0.099)
                        : v < 0.081 ? v / 4.5
                                    : std::pow((v + 0.099) / 1.099, 1 / 0.45);
  return static_cast<uint8_t>(std::nearbyint(255 * result));
}

TEST(Gamma, EqualsTheTransferFunction) {
  Random random(baseSeed() + 2);
  for (bool forward : {true, false}) {
    const auto gamma = forward ? vekiGammaFwd_8u_C3R : vekiGammaInv_8u_C3R;
    Vek8u all[258] = {};
    for (int i = 0; i < 256; ++i) all[i] = static_cast<Vek8u>(i);
    std::vector<uint8_t> expected;
    for (Vek8u v : all) expected.push_back(gammaEntry(v, forward));
    runAtEveryLevel({{{258, 1, 258}, 1, 0, expected}}, [&](auto dst) {
      EXPECT_EQ(gamma(all, 258, dst[0], 258, {86, 1}), 0);
    });
    for (int round = 0; round < 60 && !HasFailure(); ++round) {
      Neighbourhood a = randomNeighbourhood(random, 3, {1, 1}, 60, 4);
      if (random.chance(30)) a.srcStep = a.dstStep = 3 * a.roi.width;
      compareWithNaive(
          a, random, Pattern::noise,
          [&](auto at, int c) { return gammaEntry(at(0, 0, c), forward); },
          [&](auto src, auto dst) { return gamma(src, a.srcStep, dst, a.dstStep, a.roi); });
    }
    for (Level level : levels()) {
      const LevelScope scope(level);
      Vek8u inPlace[258];
      std::copy(all, all + 258, inPlace);
      gamma(inPlace, 129, inPlace, 129, {43, 2});
      EXPECT_TRUE(std::equal(inPlace, inPlace + 258, expected.begin()));
    }
  }
}

TEST(PixelFilters, RefuseBadArguments) {
  Vek8u src[64] = {}, dst[64] = {};
  struct Case {
    const Vek8u* src;
    int srcStep, dstStep;
    VekiSize roi;
    int flip;
    VekStatus morphology, others;
  };
  Vek8u* const in = src + 20;
  const Case cases[] = {
      {in, 8, 8, {2, 2}, 3, vekStsNoErr, vekStsMirrorFlipErr},
      {in, 8, 8, {2, 2}, -1, vekStsNoErr, vekStsMirrorFlipErr},
      {nullptr, 8, 0, {0, 2}, 0, vekStsNullPtrErr, vekStsNullPtrErr},
      {in, 0, 8, {2, 2}, 3, vekStsStepErr, vekStsSizeErr},
      {in, 8, -8, {0, 2}, 0, vekStsStepErr, vekStsSizeErr},
      {in, 8, 8, {0, 2}, 3, vekStsSizeErr, vekStsSizeErr},
      {in, 8, 8, {2, -1}, 0, vekStsSizeErr, vekStsSizeErr},
  };
  for (const Case& c : cases) {
    for (auto f :
         {vekiErode3x3_8u_C1R, vekiErode3x3_8u_C3R, vekiDilate3x3_8u_C1R, vekiDilate3x3_8u_C3R}) {
      EXPECT_EQ(f(c.src, c.srcStep, dst, c.dstStep, c.roi), c.morphology);
      EXPECT_EQ(f(in, 0, nullptr, 0, {0, 0}), vekStsNullPtrErr);
    }
    for (auto f : {vekiMirror_8u_C1R, vekiMirror_8u_C3R}) {
      EXPECT_EQ(f(c.src, c.srcStep, dst, c.dstStep, c.roi, c.flip), c.others);
      EXPECT_EQ(f(in, 0, nullptr, 0, {0, 0}, 0), vekStsNullPtrErr);
    }
    for (auto f : {vekiGammaFwd_8u_C3R, vekiGammaInv_8u_C3R}) {
      const VekStatus expected = c.others == vekStsMirrorFlipErr ? vekStsNoErr : c.others;
      EXPECT_EQ(f(c.src, c.srcStep, dst, c.dstStep, c.roi), expected);
    }
  }
}

}  // namespace
}  // namespace vek::test
