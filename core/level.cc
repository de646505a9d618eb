#include "core/level.h"

#include "vek/vek.h"

extern "C" {

const char* vekLevelName(int level) {
  const bool known = level >= 0 && static_cast<size_t>(level) < vek::levelCount;
  return known ? vek::levelNames[level] : nullptr;
}

int vekLevel(void) {
  return static_cast<int>(vek::cpuLevel());
}

}  // extern "C"
