// x86-64 with glibc 2.33 or newer. It has asked the processor before main() and hides what its tunable
// glibc.cpu.hwcaps switches off.
#include <sys/platform/x86.h>

#include "core/level.h"

namespace vek {

#define VEK_AND_FEATURE(feature) &&CPU_FEATURE_ACTIVE(feature)
#define VEK_CASE(level, ...) \
  case Level::level:         \
    return true VEK_FEATURES_##level(VEK_AND_FEATURE);

bool cpuHas(Level level) {
  switch (level) { VEK_EACH_LEVEL(VEK_CASE) }
  return false;
}

Level highestLevel() {
  return highestOf(cpuHas);
}

}  // namespace vek
