#include "tests/support/levels.h"

namespace vek {

namespace {

Level highestLevel() {
  Level highest = Level::portable;
  for (size_t i = 0; i < levelCount; ++i) {
    if (cpuHas(static_cast<Level>(i))) highest = static_cast<Level>(i);
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
  for (size_t i = 0; i < levelCount; ++i) {
    if (cpuHas(static_cast<Level>(i))) result.push_back(static_cast<Level>(i));
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
