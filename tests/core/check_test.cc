#include "core/check.h"

#include <climits>
#include <gtest/gtest.h>
#include <vector>

#include "core/region.h"

namespace {

TEST(Check, TwoFaultsAnswerTheFirst) {
  const int value = 0;
  using vek::checkPointersSizeSteps;
  using vek::checkPointersStepsSize;
  EXPECT_EQ(checkPointersStepsSize({nullptr}, {0}, {0, 0}), vekStsNullPtrErr);
  EXPECT_EQ(checkPointersStepsSize({&value}, {0}, {0, 0}), vekStsStepErr);
  EXPECT_EQ(checkPointersStepsSize({&value}, {1}, {1, INT_MIN}), vekStsSizeErr);
  EXPECT_EQ(checkPointersSizeSteps({&value, nullptr}, {0, 0}, {0}), vekStsNullPtrErr);
  EXPECT_EQ(checkPointersSizeSteps({&value}, {0, 1}, {-1}), vekStsSizeErr);
  EXPECT_EQ(checkPointersSizeSteps({&value}, {1, 1}, {3, INT_MIN}), vekStsStepErr);
  EXPECT_EQ(checkPointersSizeSteps({&value}, {1, 1}, {1}), vekStsNoErr);
}

TEST(Region, PackedRowsAreOneLongRow) {
  Vek8u data[64];
  const auto runs = [&](int bytes, int stepA, int stepB) {
    std::vector<ptrdiff_t> lengths;
    vek::forEachRow(
        bytes, 3, [&](ptrdiff_t n, const Vek8u*, Vek8u*) { lengths.push_back(n); },
        vek::Plane{static_cast<const Vek8u*>(data), stepA}, vek::Plane{data, stepB});
    return lengths;
  };
  EXPECT_EQ(runs(8, 8, 8), (std::vector<ptrdiff_t>{24}));
  EXPECT_EQ(runs(8, 8, 9), (std::vector<ptrdiff_t>{8, 8, 8}));
  EXPECT_EQ(runs(8, 4, 8), (std::vector<ptrdiff_t>{8, 8, 8}));
}

}  // namespace
