// Samples taken several at a time, as words of a general register, by portable kernels.
#pragma once

#include "vek/vek.h"

#include <bit>
#include <string.h>

namespace vek::portable {
namespace {

/// Words hold bytes in the order of their addresses, and such processors load and store words of up
/// to eight bytes at any address. Others are faster byte by byte.
constexpr bool hasWords = sizeof(void*) == 8 && std::endian::native == std::endian::little;

/// Such processors of 32 bits, of which many have words at multiples of four bytes alone.
constexpr bool hasAlignedWords = sizeof(void*) == 4 && std::endian::native == std::endian::little;

template <class Word>
Word loadWord(const Vek8u* src) {
  Word word;
  memcpy(&word, src, sizeof(word));
  return word;
}

template <class Word>
void storeWord(Word word, Vek8u* dst) {
  memcpy(dst, &word, sizeof(word));
}

}  // namespace
}  // namespace vek::portable
