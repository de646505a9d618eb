// The features of an x86-64 processor as the CPUID instruction reports them, by glibc's names.
#pragma once

#include <cpuid.h>
#include <stdint.h>

namespace vek::cpuid {

/// The words of CPUID that hold the features, by leaf and register.
enum Word { leaf1Ecx, leaf7Ebx, leaf7Ecx, extended1Ecx, wordCount };

/// Where a feature is reported, and the register states (bits of XCR0) that the operating system must
/// save before it can be used.
struct Feature {
  Word word;
  int bit;
  uint32_t states;
};

inline constexpr uint32_t ymmStates = 0x06;  // SSE and AVX
inline constexpr uint32_t zmmStates = 0xE6;  // and the mask registers and both parts of AVX-512

inline constexpr Feature SSE3 = {leaf1Ecx, 0, 0};
inline constexpr Feature PCLMULQDQ = {leaf1Ecx, 1, 0};
inline constexpr Feature SSSE3 = {leaf1Ecx, 9, 0};
inline constexpr Feature FMA = {leaf1Ecx, 12, ymmStates};
inline constexpr Feature CMPXCHG16B = {leaf1Ecx, 13, 0};
inline constexpr Feature SSE4_1 = {leaf1Ecx, 19, 0};
inline constexpr Feature SSE4_2 = {leaf1Ecx, 20, 0};
inline constexpr Feature MOVBE = {leaf1Ecx, 22, 0};
inline constexpr Feature POPCNT = {leaf1Ecx, 23, 0};
inline constexpr Feature AES = {leaf1Ecx, 25, 0};
inline constexpr Feature OSXSAVE = {leaf1Ecx, 27, 0};
inline constexpr Feature AVX = {leaf1Ecx, 28, ymmStates};
inline constexpr Feature F16C = {leaf1Ecx, 29, ymmStates};
inline constexpr Feature BMI1 = {leaf7Ebx, 3, 0};
inline constexpr Feature AVX2 = {leaf7Ebx, 5, ymmStates};
inline constexpr Feature BMI2 = {leaf7Ebx, 8, 0};
inline constexpr Feature AVX512F = {leaf7Ebx, 16, zmmStates};
inline constexpr Feature AVX512DQ = {leaf7Ebx, 17, zmmStates};
inline constexpr Feature AVX512CD = {leaf7Ebx, 28, zmmStates};
inline constexpr Feature AVX512BW = {leaf7Ebx, 30, zmmStates};
inline constexpr Feature AVX512VL = {leaf7Ebx, 31, zmmStates};
inline constexpr Feature AVX512_VBMI = {leaf7Ecx, 1, zmmStates};
inline constexpr Feature AVX512_VBMI2 = {leaf7Ecx, 6, zmmStates};
inline constexpr Feature AVX512_VNNI = {leaf7Ecx, 11, zmmStates};
inline constexpr Feature LAHF64_SAHF64 = {extended1Ecx, 0, 0};
inline constexpr Feature LZCNT = {extended1Ecx, 5, 0};

/// What a processor answers.
struct Answers {
  uint32_t words[wordCount] = {};
  uint32_t savedStates = 0;  ///< XCR0

  constexpr bool has(const Feature& feature) const {
    return (words[feature.word] >> feature.bit & 1) != 0 &&
           (savedStates & feature.states) == feature.states;
  }
};

inline Answers ask() {
  Answers answers;
  uint32_t a = 0, b = 0, c = 0, d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) != 0) answers.words[leaf1Ecx] = c;
  if (__get_cpuid_count(7, 0, &a, &b, &c, &d) != 0) {
    answers.words[leaf7Ebx] = b;
    answers.words[leaf7Ecx] = c;
  }
  if (__get_cpuid(0x80000001, &a, &b, &c, &d) != 0) answers.words[extended1Ecx] = c;
  // Without OSXSAVE the operating system saves no more than the SSE registers, and XGETBV traps.
  if (answers.has(OSXSAVE)) {
    __asm__ volatile("xgetbv" : "=a"(answers.savedStates), "=d"(d) : "c"(0));
  }
  return answers;
}

}  // namespace vek::cpuid
