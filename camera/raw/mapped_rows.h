// Raw rows that went through the gamma table, as demosaicing takes them.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "camera/raw/rggb_kernels.h"

namespace vek {

/// The widest strip in which frames are converted, in quads.
inline constexpr int maxStripQuads = 1024;

/// The last four rows of a strip that went through the gamma table. Rows r - 1 .. r + 2 around a
/// row of quads are always four different slots.
class MappedRows {
 public:
  SplitRow row(int y) const { return {even_[y & 3] + margin, odd_[y & 3] + margin}; }

  /// Maps row y of n quads, with the sample before it and the one behind it where there is one.
  void map(const RggbKernels& kernels, const Vek8u* gamma, const Vek16u* samples, ptrdiff_t n,
           int y, bool hasLeft, bool hasRight) {
    Vek8u *const even = even_[y & 3] + margin, *const odd = odd_[y & 3] + margin;
    kernels.applyGamma(samples, 2, gamma, n, even, odd);
    if (hasLeft) odd[-1] = gamma[samples[-1] & rawCodeMask];
    if (hasRight) even[n] = gamma[samples[2 * n] & rawCodeMask];
  }

  /// Gives a row that has no such samples those on the other side of its first and its last one.
  void mirror(ptrdiff_t n, int y, bool left, bool right) {
    Vek8u *const even = even_[y & 3] + margin, *const odd = odd_[y & 3] + margin;
    if (left) odd[-1] = odd[0];
    if (right) even[n] = even[n - 1];
  }

 private:
  /// One sample to the left, on a cache line of its own; one to the right, and what kernels read
  /// ahead.
  static constexpr ptrdiff_t margin = 64;
  static constexpr ptrdiff_t length = margin + maxStripQuads + 1 + readAhead;

  alignas(64) Vek8u even_[4][(length + 63) / 64 * 64];
  alignas(64) Vek8u odd_[4][(length + 63) / 64 * 64];
};

}  // namespace vek
