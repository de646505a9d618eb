// Where every processor of the target runs all levels of the build.
#include "core/level.h"

namespace vek {

bool cpuHas(Level) {
  return true;
}

Level highestLevel() {
  return static_cast<Level>(levelCount - 1);
}

}  // namespace vek
