// Alone in its file: the tests replace this archive member to run every function at each level.
#include "vek/vek.h"

#include "core/level.h"

namespace vek {

Level cpuLevel() {
  const Level highest = highestLevel();
  const int limit = vekLevelLimit();
  if (limit >= static_cast<int>(highest)) return highest;
  return limit > 0 ? static_cast<Level>(limit) : Level::portable;
}

}  // namespace vek
