// The walk over the quads of a window, for the portable kernels of exposure and white balance.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/assert.h"
#include "core/kernel/words.h"

namespace vek::portable {
namespace {

inline Vek32u pairAt(const Vek16u* samples) {
  return loadWord<Vek32u>(reinterpret_cast<const Vek8u*>(samples));
}

/// Calls quad(red, top green, bottom green, blue) for every whole quad of a w x h window.
template <class Quad>
void forEachQuad(const Vek16u* pWin, int srcStep, int w, int h, Quad quad) {
  VEK_ASSERT(srcStep % 2 == 0);
  const ptrdiff_t rowSamples = srcStep / 2;
  for (ptrdiff_t y = 0; y + 1 < h; y += 2) {
    const Vek16u* top = pWin + y * rowSamples;
    const Vek16u* bottom = top + rowSamples;
    for (ptrdiff_t x = 0; x + 1 < w; x += 2) {
      if constexpr (hasWords) {
        // Two samples are a word each, whose halves vectors take in its place.
        const Vek32u redGreen = pairAt(top + x), greenBlue = pairAt(bottom + x);
        quad(redGreen & 0xFFFF, redGreen >> 16, greenBlue & 0xFFFF, greenBlue >> 16);
      } else {
        quad(Vek32u{top[x]}, Vek32u{top[x + 1]}, Vek32u{bottom[x]}, Vek32u{bottom[x + 1]});
      }
    }
  }
}

}  // namespace
}  // namespace vek::portable
