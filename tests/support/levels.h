// Running a function at each CPU level. The test programs define vek::cpuLevel() themselves, which
// keeps the static library's own from being linked; the functions under test select their kernels
// through it.
#pragma once

#include <vector>

#include "core/level.h"

namespace vek::test {

/// The levels that this processor runs, portable first.
std::vector<Level> levels();

/// How often this thread has asked for the level to run at.
int timesLevelAsked();

const char* name(Level level);

/// Until its end, exported functions of this thread run at `level`.
class LevelScope {
 public:
  explicit LevelScope(Level level);
  ~LevelScope();
  LevelScope(const LevelScope&) = delete;
  LevelScope& operator=(const LevelScope&) = delete;

 private:
  Level previous_;
};

}  // namespace vek::test
