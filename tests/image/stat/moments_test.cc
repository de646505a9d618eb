#include "vek/image.h"

#include <cfloat>
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

#include "core/int128.h"
#include "tests/support/digest.h"
#include "tests/support/levels.h"

namespace vek::test {
namespace {

using Numbers = std::vector<double>;

/// A state of an image.
struct State {
  VekiMomentState* state = nullptr;

  State() { EXPECT_EQ(vekiInitAlloc_Moments_8u(&state), 0); }
  ~State() { EXPECT_EQ(vekiFree_Moments_8u(state), 0); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  void sum(const std::vector<Vek8u>& image, int width, int channels = 1) {
    const int step = width * channels, height = static_cast<int>(image.size()) / step;
    const auto f = channels == 1 ? vekiMoments_8u_C1R : vekiMoments_8u_C3R;
    EXPECT_EQ(f(image.data(), step, {width, height}, state), 0);
  }
  Numbers spatial(VekiPoint origin = {0, 0}, int channel = 0) const {
    Numbers m(10);
    EXPECT_EQ(vekiSpatialMoments_64f(state, channel, origin, m.data()), 0);
    return m;
  }
  Numbers central(int channel = 0) const {
    Numbers m(10);
    EXPECT_EQ(vekiCentralMoments_64f(state, channel, m.data()), 0);
    return m;
  }
};

TEST(Moments, Digest) {
  for (Level level : levels()) {
    const LevelScope scope(level);
    std::vector<Vek8u> image(50 * 40 * 3);
    Noise noise;
    for (Vek8u& v : image) v = noise.byte();
    State state;
    state.sum(image, 50, 3);
    Digest digest;
    for (int channel = 0; channel < 3; ++channel) {
      double normalized[10], hu[7];
      EXPECT_EQ(vekiNormalizedMoments_64f(state.state, channel, normalized), 0);
      EXPECT_EQ(vekiHuMoments_64f(state.state, channel, hu), 0);
      digest.add(state.spatial({-7, 1000}, channel).data(), 10);
      digest.add(state.central(channel).data(), 10);
      digest.add(normalized, 10);
      digest.add(hu, 7);
    }
    EXPECT_EQ(digest.value(), 0xA712F12D53D9331F) << name(level);
  }
}

TEST(Moments, KnownValues) {
  State state;
  state.sum({1, 0, 2, 0, 3, 4}, 3);
  EXPECT_EQ(state.spatial(), (Numbers{10, 15, 7, 27, 11, 7, 51, 19, 11, 7}));
  EXPECT_EQ(state.spatial({10, -5}),
            (Numbers{10, 115, -43, 1327, -494, 187, 15361, -5696, 2146, -823}));
  EXPECT_EQ(state.central(),
            (Numbers{10, 0, 0, 4.5, 0.5, 2.1000000000000001, -3, -1.4000000000000001,
                     -0.19999999999999996, -0.83999999999999986}));
  // A single pixel has neither extent nor orientation.
  std::vector<Vek8u> image(70 * 50);
  image[49 * 70 + 69] = 255;
  state.sum(image, 70);
  EXPECT_EQ(state.central(), (Numbers{255, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(Moments, ChannelsThatCannotBeRead) {
  State state;
  double m[10];
  EXPECT_EQ(vekiCentralMoments_64f(state.state, 0, m), vekStsBadArgErr);
  state.sum({0, 5, 0, 0, 7, 0}, 2, 3);
  EXPECT_EQ(vekiNormalizedMoments_64f(state.state, 0, m), vekStsDivByZero);
  EXPECT_EQ(Numbers(m, m + 10), Numbers(10));
  EXPECT_EQ(vekiHuMoments_64f(state.state, 1, m), vekStsNoErr);
  EXPECT_EQ(vekiHuMoments_64f(state.state, 2, m), vekStsDivByZero);
  EXPECT_EQ(state.central(2), Numbers(10));
  state.sum({1, 2}, 2);
  EXPECT_EQ(vekiCentralMoments_64f(state.state, 1, m), vekStsBadArgErr);
}

/// White images as wide and as high as can be, with sums of more than 64 bits: in closed form.
TEST(Moments, LargestSides) {
  constexpr int side = 16384;
  constexpr double first = side / 2.0 * (side - 1), third = first * first;
  const std::vector<Vek8u> white(side * 512, 255);
  const std::vector<Vek8u> column(side, 255);
  for (Level level : levels()) {
    const LevelScope scope(level);
    State state;
    state.sum(white, side);
    EXPECT_EQ(state.spatial()[0], 255.0 * side * 512) << name(level);
    EXPECT_EQ(state.spatial()[1], 255.0 * 512 * first) << name(level);
    EXPECT_EQ(state.spatial()[6], 255.0 * 512 * third) << name(level);
    state.sum(column, 1);
    EXPECT_EQ(state.spatial()[2], 255 * first) << name(level);
    EXPECT_EQ(state.spatial()[9], 255 * third) << name(level);
  }
}

TEST(Int128, Arithmetic) {
  const Int128 most = INT64_MAX, least = INT64_MIN;
  const auto is = [](Int128 v, uint64_t high, uint64_t low) {
    return v.high == high && v.low == low;
  };
  EXPECT_TRUE(is(most * INT64_MAX, 0x3FFFFFFFFFFFFFFF, 1));
  EXPECT_TRUE(is(least * INT64_MIN, 0x4000000000000000, 0));
  EXPECT_TRUE(is(most * INT64_MIN, 0xC000000000000000, 0x8000000000000000));
  EXPECT_TRUE(is(Int128(-1) * -1, 0, 1));
  EXPECT_TRUE(is(Int128(-1) + Int128(1), 0, 0));
  EXPECT_TRUE(is(-Int128(0, 1), ~uint64_t{0}, 0));
}

TEST(Int128, NearestDouble) {
  const double two64 = std::ldexp(1, 64);
  EXPECT_EQ(toDouble(Int128(-3)), -3);
  EXPECT_EQ(toDouble(Int128(0, 1)), two64);
  EXPECT_EQ(toDouble(Int128(uint64_t{1} << 11, 1)), two64);  // halves to even, down
  EXPECT_EQ(toDouble(Int128((uint64_t{1} << 11) + 1, 1)), two64 * (1 + DBL_EPSILON));
  EXPECT_EQ(toDouble(Int128(uint64_t{3} << 11, 1)), two64 * (1 + 2 * DBL_EPSILON));  // and up
  EXPECT_EQ(toDouble(Int128(~uint64_t{0}, 0)), two64);
  EXPECT_EQ(toDouble(Int128(~uint64_t{0}, INT64_MAX)), std::ldexp(1, 127));
  EXPECT_EQ(toDouble(-Int128(1, uint64_t{1} << 62)), -std::ldexp(1, 126));
  // What decides lies 62 bits below.
  EXPECT_EQ(toDouble(Int128(1, (uint64_t{1} << 62) + (1 << 9))), std::ldexp(1 + DBL_EPSILON, 126));
}

}  // namespace
}  // namespace vek::test
