// Look-ups in byte tables that stay in registers, at levels that permute bytes across registers.
#pragma once

#include "core/kernel/lanes.h"

#if defined(__AVX512VBMI__)
#define VEK_HAVE_BYTE_TABLE 1

namespace vek::VEK_LEVEL {
namespace {

/// 256 entries in four registers. One permutation looks up the low 7 bits of each index in two of
/// them; the top bit chooses between the results for the lower and the upper pair.
class ByteTable {
 public:
  explicit ByteTable(const Vek8u* table) {
    for (int i = 0; i < 4; ++i) quarters_[i] = _mm512_loadu_si512(table + 64 * i);
  }

  /// The entries at 64 indices. `upper` has a bit for each index, the top one, for callers that
  /// already have these bits.
  __m512i at(__m512i index, __mmask64 upper) const {
    return _mm512_mask_blend_epi8(upper,
                                  _mm512_permutex2var_epi8(quarters_[0], index, quarters_[1]),
                                  _mm512_permutex2var_epi8(quarters_[2], index, quarters_[3]));
  }
  __m512i at(__m512i index) const { return at(index, _mm512_movepi8_mask(index)); }

 private:
  __m512i quarters_[4];
};

}  // namespace
}  // namespace vek::VEK_LEVEL

#else
#define VEK_HAVE_BYTE_TABLE 0
#endif
