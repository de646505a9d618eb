#include "core/level.h"

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
  EXPECT_EQ(cpuLevel(), levels().back());
  // The runs that mask a level from the C library name the level below it.
  const char* const highest = std::getenv("VEK_HIGHEST_LEVEL");
  if (highest == nullptr) return;
  for (size_t i = 0; i + 1 < levels().size(); ++i) EXPECT_STRNE(levelNames[i], highest);
}

TEST(Level, ScopeSelectsAndRestores) {
  const Level before = cpuLevel();
  for (Level level : levels()) {
    const LevelScope scope(level);
    EXPECT_EQ(&select(cscKernels), cscKernels.at[static_cast<size_t>(level)]) << name(level);
  }
  EXPECT_EQ(cpuLevel(), before);
}

}  // namespace
}  // namespace vek::test
