#include "core/level.h"

#if defined(VEK_LEVELS_X86)
#include <sys/platform/x86.h>
#endif

namespace vek {

#if defined(VEK_LEVELS_X86)

namespace {

bool hasAvx2() {
  return CPU_FEATURE_ACTIVE(SSE3) && CPU_FEATURE_ACTIVE(SSSE3) && CPU_FEATURE_ACTIVE(SSE4_1) &&
         CPU_FEATURE_ACTIVE(SSE4_2) && CPU_FEATURE_ACTIVE(POPCNT) &&
         CPU_FEATURE_ACTIVE(CMPXCHG16B) && CPU_FEATURE_ACTIVE(LAHF64_SAHF64) &&
         CPU_FEATURE_ACTIVE(AVX) && CPU_FEATURE_ACTIVE(AVX2) && CPU_FEATURE_ACTIVE(BMI1) &&
         CPU_FEATURE_ACTIVE(BMI2) && CPU_FEATURE_ACTIVE(F16C) && CPU_FEATURE_ACTIVE(FMA) &&
         CPU_FEATURE_ACTIVE(LZCNT) && CPU_FEATURE_ACTIVE(MOVBE) && CPU_FEATURE_ACTIVE(AES) &&
         CPU_FEATURE_ACTIVE(PCLMULQDQ);
}

bool hasAvx512() {
  return hasAvx2() && CPU_FEATURE_ACTIVE(AVX512F) && CPU_FEATURE_ACTIVE(AVX512BW) &&
         CPU_FEATURE_ACTIVE(AVX512CD) && CPU_FEATURE_ACTIVE(AVX512DQ) &&
         CPU_FEATURE_ACTIVE(AVX512VL) && CPU_FEATURE_ACTIVE(AVX512_VBMI) &&
         CPU_FEATURE_ACTIVE(AVX512_VBMI2) && CPU_FEATURE_ACTIVE(AVX512_VNNI);
}

}  // namespace

bool cpuHas(Level level) {
  switch (level) {
    case Level::avx512:
      return hasAvx512();
    case Level::avx2:
      return hasAvx2();
    default:
      return true;
  }
}

#else

bool cpuHas(Level) {
  return true;
}

#endif

}  // namespace vek
