#include "tests/support/levels.h"

namespace vek {

namespace {

Level highestLevel() {
  Level highest = Level::portable;
  for (Level level : allLevels) {
    if (cpuHas(level)) highest = level;
  }
  return highest;
}

thread_local Level current = highestLevel();

}  // namespace

Level cpuLevel() {
  return current;
}

namespace test {

std::vector<Level> levels() {
  std::vector<Level> result;
  for (Level level : allLevels) {
    if (cpuHas(level)) result.push_back(level);
  }
  return result;
}

const char* name(Level level) {
  return levelNames[static_cast<size_t>(level)];
}

LevelScope::LevelScope(Level level) : previous_(current) {
  current = level;
}

LevelScope::~LevelScope() {
  current = previous_;
}

}  // namespace test
}  // namespace vek
