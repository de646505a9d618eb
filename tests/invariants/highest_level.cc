// The shared library runs at the highest level that the processor has: by what it says, compared with
// the processor's features read in another way than the library's, and by the instructions that it
// executes, at this level and at each below it. Prints the level's name.
#include "vek/camera.h"
#include "vek/image.h"

#include <dlfcn.h>
#include <limits.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "core/level.h"

namespace {

int limit = INT_MAX;

}  // namespace

int vekLevelLimit(void) {
  return limit;
}

#if defined(__x86_64__) && defined(__linux__)

#include <signal.h>
#include <ucontext.h>

#if defined(VEK_LIBRARY_USES_CPUID) && __has_include(<sys/platform/x86.h>)
#include <sys/platform/x86.h>
#define VEK_HAS(feature) CPU_FEATURE_ACTIVE(feature)
#else
#include "core/cpuid.h"
#define VEK_HAS(feature) vek::cpuid::ask().has(vek::cpuid::feature)
#endif

namespace {

int expectedLevel() {
#define VEK_AND_HAS(feature) &&VEK_HAS(feature)
#define VEK_HAS_LEVEL(level, ...) (true VEK_FEATURES_##level(VEK_AND_HAS)),
  const bool has[] = {VEK_EACH_LEVEL(VEK_HAS_LEVEL)};
  int level = vek::levelCount - 1;
  while (!has[level]) --level;
  return level;
}

constexpr size_t mostSteps = 100000;
uintptr_t trace[mostSteps];
size_t stepCount;

void onStep(int, siginfo_t*, void* context) {
  if (stepCount == mostSteps) return;
  trace[stepCount++] =
      static_cast<uintptr_t>(static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP]);
}

/// How many instructions of each encoding a call executes in the library: of three bytes of opcode
/// (SSSE3, SSE4.1), with a VEX prefix (AVX, AVX2 and the like), with an EVEX prefix (AVX-512), and others.
struct Executed {
  int longOpcode, vex, evex, others;

  void count(const uint8_t* code) {
    if (*code == 0xC4 || *code == 0xC5) {
      ++vex;
    } else if (*code == 0x62) {
      ++evex;
    } else {
      while (*code == 0x66 || (*code & 0xF0) == 0x40) ++code;
      ++(code[0] == 0x0F && (code[1] == 0x38 || code[1] == 0x3A) ? longOpcode : others);
    }
  }
};

template <class Call>
Executed execute(Call call) {
  call();  // binds lazily
  stepCount = 0;
  // The trap flag makes the processor trap after each instruction. The pushes go below the red zone.
  __asm__ volatile(
      "lea -128(%%rsp), %%rsp\n pushfq\n orq $0x100, (%%rsp)\n popfq\n lea 128(%%rsp), %%rsp" ::
          : "memory", "cc");
  call();
  __asm__ volatile(
      "lea -128(%%rsp), %%rsp\n pushfq\n andq $~0x100, (%%rsp)\n popfq\n lea 128(%%rsp), %%rsp" ::
          : "memory", "cc");
  Dl_info library = {}, at = {};
  dladdr(vekiGetLibVersion(), &library);
  Executed executed = {};
  for (size_t i = 0; i < stepCount; ++i) {
    const void* const address = reinterpret_cast<const void*>(trace[i]);
    if (dladdr(address, &at) == 0 || at.dli_fbase != library.dli_fbase) continue;
    executed.count(static_cast<const uint8_t*>(address));
  }
  return executed;
}

alignas(16) const Vek8u source[3 * 1024] = {1, 2, 3};
alignas(16) Vek8u result[3 * 1024];

void convert() {
  vekiRGBToGray_8u_C3C1R(source, 3 * 128, result, 128, {128, 2});
}
void add() {
  vekiAdd_8u_C1RSfs(source, 128, source, 128, result, 128, {128, 2}, 0);
}
void preview() {
  const Vek8u* const planes[3] = {source, source + 1024, source + 2048};
  Vek8u* const scaled[3] = {result, result + 1024, result + 2048};
  const int steps[3] = {64, 32, 32};
  vekiYCbCr420RszRot_8u_P3R(planes, steps, 64, 16, scaled, steps, 32, 8, 1, 0, 1 << 17, 1 << 17);
}

/// `shuffles`: the call needs what SSSE3 and SSE4.1 added.
bool executesItsLevel(const char* what, void (*call)(), bool shuffles) {
  bool fine = true;
  for (limit = 0; limit <= expectedLevel(); ++limit) {
    const Executed e = execute(call);
    const char* const name = vekLevelName(limit);
    fprintf(stderr, "%s at %s: %d SSSE3 or SSE4.1, %d VEX, %d EVEX, %d other instructions\n", what,
            name, e.longOpcode, e.vex, e.evex, e.others);
    const bool portable = strcmp(name, "portable") == 0, sse4 = strcmp(name, "sse4") == 0;
    const bool avx512 = strcmp(name, "avx512") == 0;
    fine = fine && e.others > 0 && (e.evex > 0) == avx512 &&
           (e.vex + e.evex > 0) == !(portable || sse4) &&
           (portable ? e.longOpcode == 0 : !sse4 || !shuffles || e.longOpcode > 0);
  }
  limit = INT_MAX;
  return fine;
}

bool executesItsLevels() {
  struct sigaction action = {};
  action.sa_sigaction = onStep;
  action.sa_flags = SA_SIGINFO;
  sigaction(SIGTRAP, &action, nullptr);
  const bool converts = executesItsLevel("colour", convert, true);
  const bool adds = executesItsLevel("sum", add, false);
  return executesItsLevel("preview", preview, true) && converts && adds;
}

}  // namespace

#else

namespace {

int expectedLevel() {
  return static_cast<int>(vek::levelCount) - 1;
}
bool executesItsLevels() {
  return true;
}

}  // namespace

#endif

int main() {
  puts(vekLevelName(vekLevel()));
  if (getenv("GLIBC_TUNABLES") != nullptr) return 0;  // may hide levels from glibc alone
  if (vekLevel() != expectedLevel()) {
    fprintf(stderr, "the processor has level %s\n", vekLevelName(expectedLevel()));
    return 1;
  }
  return executesItsLevels() ? 0 : 1;
}
