// The conversion of planes to pixels in vectors: the fast kernels of the families that have such
// conversions.
#pragma once

#include "core/assert.h"
#include "core/color/chroma_sums.h"
#include "core/color/convert_planes.h"
#include "core/color/neon_sums.h"
#include "core/kernel/blocks.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// A row's part in a block. The pointers may be moved on.
struct BlockRow {
  const Vek8u*& luma;
  Vek8u*& out;
};

/// Converts a block in rows that share their chroma. The sums are copied into the lambdas on NEON: by
/// reference they would be memory that a store might change.
template <int pixels, const Matrix& m, class Format, class... Rows>
void convertBlock(const Vek8u*& cb, const Vek8u*& cr, Rows... rows) {
#if HWY_ARCH_ARM
  if constexpr (pixels == 2) {
    const uint8x8_t b = loadEight(cb), r = loadEight(cr);
    NeonSums<m> sums(b, r);
    const auto convertRow = [sums](const BlockRow& row) {
      sums.template storePairs<Format>(loadEightPairs(row.luma), row.out);
    };
    (convertRow(rows), ...);
  } else {
    for (int half = 0; half < 2; ++half) {
      const uint8x8_t b = loadEight(cb), r = loadEight(cr);
      NeonSums<m> sums(b, r);
      const auto convertRow = [sums](const BlockRow& row) {
        sums.template store<Format>(loadEight(row.luma), row.out);
      };
      (convertRow(rows), ...);
    }
  }
#else
  using S = Sums<m, Format>;
  const auto convert = [&](const S& even, const S& odd) {
    const auto convertRow = [&](const BlockRow& row) {
      const V8u luma = hn::LoadU(u8, row.luma);
      S::template store<Format>(S::template luma<false>(luma), S::template luma<true>(luma), even,
                                odd, row.out);
    };
    (convertRow(rows), ...);
  };
  if constexpr (pixels == 2) {
    const S sums(loadChroma(cb), loadChroma(cr));
    convert(sums, sums);
  } else {
    const V8u b = hn::LoadU(u8, cb), r = hn::LoadU(u8, cr);
    convert(S(evenChroma(b), evenChroma(r)), S(oddChroma(b), oddChroma(r)));
  }
#endif
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
  using Pixel = Out<Format::bytes>;
  using ChromaIn = In<1, pixels>;
  ptrdiff_t y = 0;
  const bool apart = dstStep >= n * Format::bytes || -dstStep >= n * Format::bytes;
  if (planes.chromaShift == 1 && apart) {
    const Advancing body{[](Vek8u*& upper, Vek8u*& lower, const Vek8u*& upperLuma,
                            const Vek8u*& lowerLuma, const Vek8u*& cb, const Vek8u*& cr) {
      convertBlock<pixels, m, Format>(cb, cr, BlockRow{upperLuma, upper},
                                      BlockRow{lowerLuma, lower});
    }};
    for (; y + 2 <= rows; y += 2, dst += 2 * dstStep) {
      forEachPixelBlock(n, body, Pixel{dst}, Pixel{dst + dstStep}, In<1>{planes.y.row(y)},
                        In<1>{planes.y.row(y + 1)}, ChromaIn{planes.cb.row(y / 2)},
                        ChromaIn{planes.cr.row(y / 2)});
    }
  }
  const Advancing body{[](Vek8u*& out, const Vek8u*& luma, const Vek8u*& cb, const Vek8u*& cr) {
    convertBlock<pixels, m, Format>(cb, cr, BlockRow{luma, out});
  }};
  for (; y < rows; ++y, dst += dstStep) {
    const ptrdiff_t chroma = y >> planes.chromaShift;
    forEachPixelBlock(n, body, Pixel{dst}, In<1>{planes.y.row(y)}, ChromaIn{planes.cb.row(chroma)},
                      ChromaIn{planes.cr.row(chroma)});
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
