#include "core/level.h"

#if defined(__x86_64__)
#include <sys/platform/x86.h>
#endif

namespace vek {

#define VEK_AND_FEATURE(feature) &&CPU_FEATURE_ACTIVE(feature)
#define VEK_CASE(level, ...) \
  case Level::level:         \
    return true VEK_FEATURES_##level(VEK_AND_FEATURE);

bool cpuHas(Level level) {
  switch (level) { VEK_EACH_LEVEL(VEK_CASE) }
  return false;
}

}  // namespace vek
