#include "tests/support/levels.h"

namespace vek {

namespace {

thread_local Level current = highestLevel();
thread_local int asked = 0;

}  // namespace

Level cpuLevel() {
  ++asked;
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

int timesLevelAsked() {
  return asked;
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
