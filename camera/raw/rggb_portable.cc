// The rules as they read, block by block. Every level falls back on them for a matrix that its own
// arithmetic cannot hold.
#include "camera/raw/rggb_kernels.h"
#include "core/assert.h"

namespace vek::portable {
namespace {

void applyGamma(const Vek16u* __restrict src, ptrdiff_t period, const Vek8u* __restrict gamma,
                ptrdiff_t n, Vek8u* __restrict first, Vek8u* __restrict second) {
  VEK_ASSERT(period == 2 || period == 4 || period == 8);
  for (ptrdiff_t k = 0; k < n; ++k) {
    first[k] = gamma[src[k * period] & rawCodeMask];
    second[k] = gamma[src[k * period + 1] & rawCodeMask];
  }
}

struct Rgb {
  Vek32s r, g, b;
};

/// The pixels of a block: upper left, upper right, lower left, lower right.
struct Block {
  Rgb p00, p01, p10, p11;
};

Vek32s average(Vek32s a, Vek32s b) {
  return (a + b + 1) >> 1;
}
Vek32s average(Vek32s a, Vek32s b, Vek32s c, Vek32s d) {
  return (a + b + c + d + 2) >> 2;
}
template <class... Pixel>
Rgb averagePixel(Pixel... p) {
  return {average(p.r...), average(p.g...), average(p.b...)};
}

/// The sum is at most 3 * 32768 * 255 + 32768 in magnitude.
Vek8u component(const Vek16s* row, Rgb p, Vek32s offset) {
  const Vek32s v = (row[0] * p.r + row[1] * p.g + row[2] * p.b + offset) >> 8;
  return static_cast<Vek8u>(v < 0 ? 0 : v > 255 ? 255 : v);
}

template <ChromaShare share>
void storeBlock(const Block& p, const Vek16s* matrix, ptrdiff_t k, const BlockRow& out) {
  // @quirk Luma is truncated: it has no rounding term.
  const auto luma = [&](Rgb pixel) { return component(matrix, pixel, 0); };
  out.luma[0][2 * k] = luma(p.p00);
  out.luma[0][2 * k + 1] = luma(p.p01);
  out.luma[1][2 * k] = luma(p.p10);
  out.luma[1][2 * k + 1] = luma(p.p11);
  const auto chroma = [&](int row, ptrdiff_t at, Rgb pixel) {
    out.cb[row][at] = component(matrix + 3, pixel, 32768);
    out.cr[row][at] = component(matrix + 6, pixel, 32768);
  };
  if constexpr (share == ChromaShare::row) {
    chroma(0, k, averagePixel(p.p00, p.p01));
    chroma(1, k, averagePixel(p.p10, p.p11));
  } else if constexpr (share == ChromaShare::column) {
    chroma(0, 2 * k, averagePixel(p.p00, p.p10));
    chroma(0, 2 * k + 1, averagePixel(p.p01, p.p11));
  } else {
    chroma(0, k, averagePixel(p.p00, p.p01, p.p10, p.p11));
  }
}

/// `a`, `b`, `c`, `d` are the rows from above the quad to below it. In a and c the even columns hold
/// Gb and the odd ones B; in b and d they hold R and Gr.
template <ChromaShare share>
void demosaic(const SplitRow rows[4], ptrdiff_t n, const Vek16s* matrix, const BlockRow& out) {
  VEK_ASSERT(n >= 1);
  const SplitRow a = rows[0], b = rows[1], c = rows[2], d = rows[3];
  for (ptrdiff_t k = 0; k < n; ++k) {
    const Block pixels = {
        .p00 = {b.even[k], average(a.even[k], b.odd[k - 1], b.odd[k], c.even[k]),
                average(a.odd[k - 1], a.odd[k], c.odd[k - 1], c.odd[k])},
        .p01 = {average(b.even[k], b.even[k + 1]), b.odd[k], average(a.odd[k], c.odd[k])},
        .p10 = {average(b.even[k], d.even[k]), c.even[k], average(c.odd[k - 1], c.odd[k])},
        .p11 = {average(b.even[k], b.even[k + 1], d.even[k], d.even[k + 1]),
                average(b.odd[k], c.even[k], c.even[k + 1], d.odd[k]), c.odd[k]}};
    storeBlock<share>(pixels, matrix, k, out);
  }
}

template <ChromaShare share>
void convertQuads(const QuadRow pixels[4], ptrdiff_t n, const Vek16s* matrix, const BlockRow& out) {
  VEK_ASSERT(n >= 1);
  for (ptrdiff_t k = 0; k < n; ++k) {
    const auto pixel = [&](const QuadRow& quad) {
      return Rgb{quad.red[k], average(quad.green[0][k], quad.green[1][k]), quad.blue[k]};
    };
    storeBlock<share>({pixel(pixels[0]), pixel(pixels[1]), pixel(pixels[2]), pixel(pixels[3])},
                      matrix, k, out);
  }
}

}  // namespace

constexpr RggbKernels rggbKernels = {
    .applyGamma = applyGamma,
    .demosaic = {demosaic<ChromaShare::row>, demosaic<ChromaShare::column>,
                 demosaic<ChromaShare::block>},
    .convertQuads = {convertQuads<ChromaShare::row>, convertQuads<ChromaShare::column>,
                     convertQuads<ChromaShare::block>}};

}  // namespace vek::portable
