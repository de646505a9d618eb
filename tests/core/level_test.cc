#include "core/level.h"

#include "vek/vek.h"

#include <climits>
#include <cstdlib>
#include <gtest/gtest.h>

#include "camera/preview/csc_kernels.h"
#include "tests/support/levels.h"

namespace vek::test {
namespace {

TEST(Level, EveryLevelBelowTheHighestRuns) {
  ASSERT_FALSE(levels().empty());
  EXPECT_EQ(levels().front(), Level::portable);
  for (size_t i = 0; i < levels().size(); ++i) EXPECT_EQ(static_cast<size_t>(levels()[i]), i);
  EXPECT_EQ(highestLevel(), levels().back());
  EXPECT_EQ(highestLevel(), levels().back());  // asked again
  // The runs that mask a level from the C library name the level below it.
  const char* const highest = std::getenv("VEK_HIGHEST_LEVEL");
  if (highest == nullptr) return;
  for (size_t i = 0; i + 1 < levels().size(); ++i) EXPECT_STRNE(levelNames[i], highest);
  EXPECT_STREQ(name(highestLevel()), highest);
}

TEST(Level, ScopeSelectsAndRestores) {
  const Level before = cpuLevel();
  for (Level level : levels()) {
    const LevelScope scope(level);
    EXPECT_EQ(&select(cscKernels), cscKernels.at[static_cast<size_t>(level)]) << name(level);
    EXPECT_EQ(vekLevel(), static_cast<int>(level));
  }
  EXPECT_EQ(cpuLevel(), before);
}

TEST(Level, NamesEndWithTheLastLevel) {
  EXPECT_STREQ(vekLevelName(0), "portable");
  for (size_t i = 0; i < levelCount; ++i) {
    EXPECT_STREQ(vekLevelName(static_cast<int>(i)), levelNames[i]);
  }
  for (int unknown : {-1, INT_MIN, INT_MAX, static_cast<int>(levelCount)}) {
    EXPECT_EQ(vekLevelName(unknown), nullptr);
  }
  EXPECT_EQ(vekLevelLimit(), INT_MAX);
}

}  // namespace
}  // namespace vek::test
