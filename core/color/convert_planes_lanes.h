// The conversion of planes to pixels in vectors: the fast kernels of the families that have such
// conversions.
#pragma once

#include "core/assert.h"
#include "core/color/chroma_sums.h"
#include "core/color/convert_planes.h"
#include "core/kernel/blocks.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// Converts a block of luma with the sums of its even and of its odd pixels.
template <class Sums, class Format>
void convertBlock(const Vek8u* y, const Sums& even, const Sums& odd, Vek8u* out) {
  const V8u luma = hn::LoadU(u8, y);
  Sums::template store<Format>(Sums::template luma<false>(luma), Sums::template luma<true>(luma),
                               even, odd, out);
}

/// Calls convert(sums of the even pixels, sums of the odd pixels) with the chroma of one block.
template <int pixels, class Sums, class Convert>
void withChroma(const Vek8u* cb, const Vek8u* cr, Convert convert) {
  if constexpr (pixels == 2) {
    const Sums sums(loadChroma(cb), loadChroma(cr));
    convert(sums, sums);
  } else {
    const V8u b = hn::LoadU(u8, cb), r = hn::LoadU(u8, cr);
    convert(Sums(evenChroma(b), evenChroma(r)), Sums(oddChroma(b), oddChroma(r)));
  }
}

/// Policy "overlapping", which is the faster one, for rows of at least a block whose pairs of pixels
/// it does not split; policy "copied" for the others. The last block of an overlapping row is a second
/// call of copiedBlocks() because the body, some hundred instructions, is then compiled once.
template <class Body, class... Streams>
void forEachPixelBlock(ptrdiff_t n, Body body, Streams... streams) {
  const ptrdiff_t rest = n % vectorBytes;
  if (n < vectorBytes || rest % 2 != 0) return copiedBlocks<vectorBytes>(n, body, streams...);
  copiedBlocks<vectorBytes>(n - rest, body, streams...);
  if (rest != 0)
    copiedBlocks<vectorBytes>(vectorBytes, body, Streams{streams.at(n - vectorBytes)}...);
}

/// The kernel of convert_planes.h. Where two rows share chroma and do not overlap they are converted
/// together, so that the sums of their chroma are computed once.
template <int pixels, const Matrix& m, class Format>
void convertPlanes(const YccPlanes& planes, ptrdiff_t n, ptrdiff_t rows, Vek8u* dst,
                   ptrdiff_t dstStep) {
  VEK_ASSERT(planes.chromaShift == 0 || planes.chromaShift == 1);
  using S = Sums<m, Format>;
  using Pixel = Out<Format::bytes>;
  using ChromaIn = In<1, pixels>;
  ptrdiff_t y = 0;
  const bool apart = dstStep >= n * Format::bytes || -dstStep >= n * Format::bytes;
  if (planes.chromaShift == 1 && apart) {
    const auto body = [](Vek8u* upper, Vek8u* lower, const Vek8u* upperLuma, const Vek8u* lowerLuma,
                         const Vek8u* cb, const Vek8u* cr) {
      withChroma<pixels, S>(cb, cr, [=](const S& even, const S& odd) {
        convertBlock<S, Format>(upperLuma, even, odd, upper);
        convertBlock<S, Format>(lowerLuma, even, odd, lower);
      });
    };
    for (; y + 2 <= rows; y += 2, dst += 2 * dstStep) {
      forEachPixelBlock(n, body, Pixel{dst}, Pixel{dst + dstStep}, In<1>{planes.y.row(y)},
                        In<1>{planes.y.row(y + 1)}, ChromaIn{planes.cb.row(y / 2)},
                        ChromaIn{planes.cr.row(y / 2)});
    }
  }
  const auto body = [](Vek8u* out, const Vek8u* luma, const Vek8u* cb, const Vek8u* cr) {
    withChroma<pixels, S>(cb, cr, [=](const S& even, const S& odd) {
      convertBlock<S, Format>(luma, even, odd, out);
    });
  };
  for (; y < rows; ++y, dst += dstStep) {
    const ptrdiff_t chroma = y >> planes.chromaShift;
    forEachPixelBlock(n, body, Pixel{dst}, In<1>{planes.y.row(y)}, ChromaIn{planes.cb.row(chroma)},
                      ChromaIn{planes.cr.row(chroma)});
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
