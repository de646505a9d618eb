// 32-bit ARM: what the kernel tells each program about the processor.
#include <sys/auxv.h>

#include "core/level.h"

namespace vek {
namespace {

// Bits of AT_HWCAP.
constexpr unsigned long NEON = 1ul << 12;

}  // namespace

#define VEK_AND_FEATURE(feature) &&(getauxval(AT_HWCAP) & (feature)) != 0
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
