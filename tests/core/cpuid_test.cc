// The CPUID reader, also in builds whose library asks glibc.
#include "core/cpuid.h"

#include <gtest/gtest.h>
#include <string_view>

#include "core/level.h"

#if __has_include(<sys/platform/x86.h>)
#include <cstdlib>
#include <sys/platform/x86.h>
#endif

namespace vek::test {
namespace {

#define VEK_AND_FEATURE(feature) &&answers.has(cpuid::feature)
#define VEK_LEVEL_IN(level, ...) (true VEK_FEATURES_##level(VEK_AND_FEATURE)),

/// How many levels a processor with these answers has.
int levelsOf(const cpuid::Answers& answers) {
  int count = 0;
  for (const bool has : {VEK_EACH_LEVEL(VEK_LEVEL_IN)}) count += has ? 1 : 0;
  return count;
}

#define VEK_NAME_OF(level, ...) #level,

/// How many levels of this build have names that do not start so.
int levelsBut(std::string_view start) {
  int count = 0;
  for (const std::string_view name : {VEK_EACH_LEVEL(VEK_NAME_OF)}) {
    count += name.starts_with(start) ? 0 : 1;
  }
  return count;
}

cpuid::Answers everything() {
  cpuid::Answers answers;
  for (uint32_t& word : answers.words) word = 0xFFFFFFFF;
  answers.savedStates = 0xFFFFFFFF;
  return answers;
}

TEST(Cpuid, LevelsNeedWhatTheOperatingSystemSaves) {
  cpuid::Answers answers = everything();
  EXPECT_EQ(levelsOf(answers), static_cast<int>(levelCount));
  for (uint32_t state :
       {0x20u, 0x40u, 0x80u}) {  // mask registers, halves of ZMM, further registers
    answers.savedStates = ~state;
    EXPECT_EQ(levelsOf(answers), levelsBut("avx512")) << state;
  }
  for (uint32_t state : {0x02u, 0x04u}) {  // XMM, upper halves of YMM
    answers.savedStates = ~state;
    EXPECT_EQ(levelsOf(answers), levelsBut("avx")) << state;
  }
  answers.savedStates = 0;
  EXPECT_EQ(levelsOf(answers), levelsBut("avx"));
}

TEST(Cpuid, LevelsNeedEachOfTheirFeatures) {
  const auto without = [](const cpuid::Feature& feature) {
    cpuid::Answers answers = everything();
    answers.words[feature.word] ^= uint32_t{1} << feature.bit;
    return answers;
  };
#define VEK_WITHOUT(feature) \
  EXPECT_LT(levelsOf(without(cpuid::feature)), static_cast<int>(levelCount));
#define VEK_WITHOUT_ALL(level, ...) VEK_FEATURES_##level(VEK_WITHOUT)
  VEK_EACH_LEVEL(VEK_WITHOUT_ALL)
}

#if __has_include(<sys/platform/x86.h>)
TEST(Cpuid, AgreesWithGlibc) {
  // glibc numbers its features by leaf (here 1, 7 and 0x80000001), register and bit.
  const int words[] = {x86_cpu_index_1_ecx, x86_cpu_index_7_ebx, x86_cpu_index_7_ecx,
                       x86_cpu_index_80000001_ecx};
#define VEK_SAME_PLACE(feature) \
  EXPECT_EQ(words[cpuid::feature.word] + cpuid::feature.bit, x86_cpu_##feature) << #feature;
#define VEK_SAME_PLACES(level, ...) VEK_FEATURES_##level(VEK_SAME_PLACE)
  VEK_EACH_LEVEL(VEK_SAME_PLACES)

  if (std::getenv("GLIBC_TUNABLES") != nullptr) return;  // switches features off in glibc only
  const cpuid::Answers answers = cpuid::ask();
#define VEK_SAME(feature) \
  EXPECT_EQ(answers.has(cpuid::feature), CPU_FEATURE_ACTIVE(feature)) << #feature;
#define VEK_SAME_ALL(level, ...) VEK_FEATURES_##level(VEK_SAME)
  VEK_EACH_LEVEL(VEK_SAME_ALL)
}
#endif

}  // namespace
}  // namespace vek::test
