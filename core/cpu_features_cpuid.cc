// x86-64 without glibc's <sys/platform/x86.h>: musl, BSD, Android.
#include <stddef.h>

#include "core/cpuid.h"
#include "core/level.h"

namespace vek {
namespace {

#define VEK_AND_FEATURE(feature) &&answers.has(cpuid::feature)
#define VEK_CASE(level, ...) \
  case Level::level:         \
    return true VEK_FEATURES_##level(VEK_AND_FEATURE);

bool has([[maybe_unused]] const cpuid::Answers& answers, Level level) {
  switch (level) { VEK_EACH_LEVEL(VEK_CASE) }
  return false;
}

// One more than the highest level, 0 until it is known. In a virtual machine each CPUID instruction
// traps to the hypervisor, and asking takes longer than most kernels do, so this is the one thing that
// the library remembers. Threads that ask at the same time store the same number.
constinit int rememberedLevel = 0;

}  // namespace

bool cpuHas(Level level) {
  return has(cpuid::ask(), level);
}

Level highestLevel() {
  if (const int known = __atomic_load_n(&rememberedLevel, __ATOMIC_RELAXED); known != 0) {
    return static_cast<Level>(known - 1);
  }
  const cpuid::Answers answers = cpuid::ask();
  const Level highest = highestOf([&](Level level) { return has(answers, level); });
  __atomic_store_n(&rememberedLevel, static_cast<int>(highest) + 1, __ATOMIC_RELAXED);
  return highest;
}

}  // namespace vek
