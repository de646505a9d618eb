// libyuv has the processor that our levels have. Where glibc hides features, and with them our levels,
// from the program (GLIBC_TUNABLES), libyuv does without them as well. On 32-bit ARM it would ask a file
// that under an emulator describes another processor.
#include <libyuv.h>

#if __has_include(<sys/platform/x86.h>) && defined(__x86_64__)
#include <sys/platform/x86.h>

namespace vek::bench {
namespace {

[[maybe_unused]] const bool limited = [] {
  constexpr int baseline =
      libyuv::kCpuInitialized | libyuv::kCpuHasX86 | libyuv::kCpuHasSSE2 | libyuv::kCpuHasERMS;
  constexpr int sse4 =
      baseline | libyuv::kCpuHasSSSE3 | libyuv::kCpuHasSSE41 | libyuv::kCpuHasSSE42;
  constexpr int avx2 =
      sse4 | libyuv::kCpuHasAVX | libyuv::kCpuHasAVX2 | libyuv::kCpuHasFMA3 | libyuv::kCpuHasF16C;
  int flags = -1;
  if (!CPU_FEATURE_ACTIVE(AVX512BW)) flags &= avx2;
  if (!CPU_FEATURE_ACTIVE(AVX2)) flags &= sse4;
  if (!CPU_FEATURE_ACTIVE(SSE4_2)) flags &= baseline;
  libyuv::MaskCpuFlags(flags);
  return true;
}();

}  // namespace
}  // namespace vek::bench

#elif defined(__arm__)
#include "core/level.h"

namespace vek::bench {
namespace {

[[maybe_unused]] const bool told = [] {
  const bool hasNeon = highestLevel() != Level::portable;
  libyuv::SetCpuFlags(libyuv::kCpuInitialized | libyuv::kCpuHasARM |
                      (hasNeon ? libyuv::kCpuHasNEON : 0));
  return true;
}();

}  // namespace
}  // namespace vek::bench

#endif
