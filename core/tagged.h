// Tagged objects: what stateful functions of the image sub-library keep between calls. They are
// 32-bit words in memory of the program's, or of vekMalloc, which need not be aligned.
#pragma once

#include "vek/vek.h"

#include <stdint.h>

namespace vek {

/// What tells objects of one kind from those of all others: the value of one of their words. Others
/// have that word, too, and it is 0.
struct Tag {
  int word;
  Vek32u value;
};

inline constexpr Tag fftTag = {0, 30};
inline constexpr Tag momentTag = {96, 34};

/// Every object has at least so many words, so that each kind's tag can be looked for in all of them.
inline constexpr int fewestTaggedWords = 97;

/// Bytes that hold `words` words wherever they begin.
constexpr int taggedBytes(int words) {
  return 4 * words + 3;
}

/// An object begins at the first multiple of 4 in its memory.
inline Vek32u* wordsOf(void* memory) {
  const uintptr_t past = reinterpret_cast<uintptr_t>(memory) % 4;
  return reinterpret_cast<Vek32u*>(static_cast<Vek8u*>(memory) + (4 - past) % 4);
}
inline const Vek32u* wordsOf(const void* memory) {
  return wordsOf(const_cast<void*>(memory));
}

inline bool hasTag(const void* memory, Tag tag) {
  return wordsOf(memory)[tag.word] == tag.value;
}

/// Makes an object of `words` words, all of them 0 but the tag.
inline Vek32u* makeTagged(void* memory, int words, Tag tag) {
  Vek32u* const object = wordsOf(memory);
  for (int i = 0; i < words; ++i) object[i] = 0;
  object[tag.word] = tag.value;
  return object;
}

/// Releases memory of vekMalloc that holds an object with the tag. The tag is removed before, so that
/// a pointer that is used on is refused for as long as the allocator leaves the memory alone.
inline VekStatus freeTagged(void* memory, Tag tag) {
  if (memory == nullptr) return vekStsNullPtrErr;
  if (!hasTag(memory, tag)) return vekStsContextMatchErr;
  // A volatile store: the compiler could omit another one to memory that is released next.
  static_cast<volatile Vek32u&>(wordsOf(memory)[tag.word]) = 0;
  vekFree(memory);
  return vekStsNoErr;
}

}  // namespace vek
