// The rules as they read, for a run of blocks at a time. Every level falls back on them for a matrix
// that its own arithmetic cannot hold.
#include <stdint.h>

#include "camera/raw/rggb_kernels.h"
#include "core/assert.h"
#include "core/color/pixel_block.h"
#include "core/kernel/words.h"

namespace vek::portable {
namespace {

/// Single bytes would be stored one a cycle; so many of them are collected in words first.
constexpr ptrdiff_t wordBytes = 8;

/// The entries of every `period`-th sample, of which there are eight.
[[maybe_unused]] inline uint64_t entriesInWord(const Vek16u* __restrict src, ptrdiff_t period,
                                               const Vek8u* __restrict gamma) {
  uint64_t word = 0;
  for (ptrdiff_t k = 0; k < wordBytes; ++k) {
    word |= uint64_t{gamma[src[k * period] & rawCodeMask]} << (8 * k);
  }
  return word;
}

void applyGamma(const Vek16u* __restrict src, ptrdiff_t period, const Vek8u* __restrict gamma,
                ptrdiff_t n, Vek8u* __restrict first, Vek8u* __restrict second) {
  VEK_ASSERT(period == 2 || period == 4 || period == 8);
  ptrdiff_t k = 0;
  if constexpr (hasWords) {
    for (; k + wordBytes <= n; k += wordBytes) {
      storeWord(entriesInWord(src + k * period, period, gamma), first + k);
      storeWord(entriesInWord(src + k * period + 1, period, gamma), second + k);
    }
  }
  for (; k < n; ++k) {
    first[k] = gamma[src[k * period] & rawCodeMask];
    second[k] = gamma[src[k * period + 1] & rawCodeMask];
  }
}

/// Blocks that are converted at once, in loops over arrays that compilers make vectors of.
constexpr ptrdiff_t run = 128;

/// A sample of red, green and blue for each block of a run.
struct Rgb {
  alignas(16) Vek8u r[run], g[run], b[run];
};

/// The pixels of a run of blocks: upper left, upper right, lower left, lower right.
struct Run {
  Rgb pixel[4];
};

Vek8u average(Vek8u a, Vek8u b) {
  return static_cast<Vek8u>((a + b + 1) >> 1);
}
Vek8u average(Vek8u a, Vek8u b, Vek8u c, Vek8u d) {
  return static_cast<Vek8u>((a + b + c + d + 2) >> 2);
}

/// Row `row` of the matrix. The sum is at most 3 * 32768 * 255 + 32768 in magnitude.
[[gnu::noinline]] void convertComponent(const Vek16s* row, const Rgb& p, Vek32s offset, ptrdiff_t n,
                                        Vek8u* __restrict dst) {
  const Vek16s red = row[0], green = row[1], blue = row[2];
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Vek32s v = (red * p.r[i] + green * p.g[i] + blue * p.b[i] + offset) >> 8;
    dst[i] = static_cast<Vek8u>(v < 0 ? 0 : v > 255 ? 255 : v);
  }
}

/// The left and the right samples of the blocks alternately.
void joinPairs(const Vek8u* __restrict left, const Vek8u* __restrict right, ptrdiff_t n,
               Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    dst[2 * i] = left[i];
    dst[2 * i + 1] = right[i];
  }
}

void convertPairs(const Vek16s* row, const Rgb& left, const Rgb& right, Vek32s offset, ptrdiff_t n,
                  Vek8u* dst) {
  alignas(16) Vek8u samples[2][run];
  convertComponent(row, left, offset, n, samples[0]);
  convertComponent(row, right, offset, n, samples[1]);
  joinPairs(samples[0], samples[1], n, dst);
}

[[gnu::noinline]] void averagePixels(const Rgb& a, const Rgb& b, ptrdiff_t n, Rgb& __restrict to) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    to.r[i] = average(a.r[i], b.r[i]);
    to.g[i] = average(a.g[i], b.g[i]);
    to.b[i] = average(a.b[i], b.b[i]);
  }
}

[[gnu::noinline]] void averagePixels(const Run& p, ptrdiff_t n, Rgb& __restrict to) {
  const auto averageOf = [&](auto channel, Vek8u* __restrict dst) {
    const Vek8u *const a = p.pixel[0].*channel, *const b = p.pixel[1].*channel,
                       *const c = p.pixel[2].*channel, *const d = p.pixel[3].*channel;
    for (ptrdiff_t i = 0; i < n; ++i) dst[i] = average(a[i], b[i], c[i], d[i]);
  };
  averageOf(&Rgb::r, to.r);
  averageOf(&Rgb::g, to.g);
  averageOf(&Rgb::b, to.b);
}

template <ChromaShare share>
void storeRun(const Run& p, const Vek16s* matrix, ptrdiff_t k, ptrdiff_t n, const BlockRow& out) {
  // @quirk Luma is truncated: it has no rounding term.
  convertPairs(matrix, p.pixel[0], p.pixel[1], 0, n, out.luma[0] + 2 * k);
  convertPairs(matrix, p.pixel[2], p.pixel[3], 0, n, out.luma[1] + 2 * k);
  constexpr Vek32s half = 32768;
  if constexpr (share == ChromaShare::row) {
    for (int row = 0; row < 2; ++row) {
      Rgb shared;
      averagePixels(p.pixel[2 * row], p.pixel[2 * row + 1], n, shared);
      convertComponent(matrix + 3, shared, half, n, out.cb[row] + k);
      convertComponent(matrix + 6, shared, half, n, out.cr[row] + k);
    }
  } else if constexpr (share == ChromaShare::column) {
    Rgb left, right;
    averagePixels(p.pixel[0], p.pixel[2], n, left);
    averagePixels(p.pixel[1], p.pixel[3], n, right);
    convertPairs(matrix + 3, left, right, half, n, out.cb[0] + 2 * k);
    convertPairs(matrix + 6, left, right, half, n, out.cr[0] + 2 * k);
  } else {
    Rgb shared;
    averagePixels(p, n, shared);
    convertComponent(matrix + 3, shared, half, n, out.cb[0] + k);
    convertComponent(matrix + 6, shared, half, n, out.cr[0] + k);
  }
}

/// Calls body(k, count) for the runs of n blocks.
template <class Body>
void forEachRun(ptrdiff_t n, Body body) {
  for (ptrdiff_t k = 0; k < n; k += run) body(k, n - k < run ? n - k : run);
}

/// The interior rule for the n quads from quad k on. A, B, C and D are the rows from above the quad to
/// below it. In A and C the even columns hold Gb and the odd ones B; in B and D they hold R and Gr.
[[gnu::noinline]] void interpolate(const SplitRow rows[4], ptrdiff_t k, ptrdiff_t n,
                                   Run& __restrict to) {
  const Vek8u *const gbA = rows[0].even + k, *const bA = rows[0].odd + k;
  const Vek8u *const rB = rows[1].even + k, *const grB = rows[1].odd + k;
  const Vek8u *const gbC = rows[2].even + k, *const bC = rows[2].odd + k;
  const Vek8u *const rD = rows[3].even + k, *const grD = rows[3].odd + k;
  for (ptrdiff_t i = 0; i < n; ++i) {
    Rgb& p = to.pixel[0];
    p.r[i] = rB[i];
    p.g[i] = average(gbA[i], grB[i - 1], grB[i], gbC[i]);
    p.b[i] = average(bA[i - 1], bA[i], bC[i - 1], bC[i]);
  }
  for (ptrdiff_t i = 0; i < n; ++i) {
    Rgb& p = to.pixel[1];
    p.r[i] = average(rB[i], rB[i + 1]);
    p.g[i] = grB[i];
    p.b[i] = average(bA[i], bC[i]);
  }
  for (ptrdiff_t i = 0; i < n; ++i) {
    Rgb& p = to.pixel[2];
    p.r[i] = average(rB[i], rD[i]);
    p.g[i] = gbC[i];
    p.b[i] = average(bC[i - 1], bC[i]);
  }
  for (ptrdiff_t i = 0; i < n; ++i) {
    Rgb& p = to.pixel[3];
    p.r[i] = average(rB[i], rB[i + 1], rD[i], rD[i + 1]);
    p.g[i] = average(grB[i], gbC[i], gbC[i + 1], grD[i]);
    p.b[i] = bC[i];
  }
}

template <ChromaShare share>
void demosaic(const SplitRow rows[4], ptrdiff_t n, const Vek16s* matrix, const BlockRow& out) {
  VEK_ASSERT(n >= 1);
  forEachRun(n, [&](ptrdiff_t k, ptrdiff_t count) {
    Run pixels;
    interpolate(rows, k, count, pixels);
    storeRun<share>(pixels, matrix, k, count, out);
  });
}

/// `red` is the position of red in a pixel, 0 or 2.
void storePixels(const Rgb& left, const Rgb& right, int red, ptrdiff_t n, Vek8u* dst) {
  static_assert(2 * run <= blockPixels);
  PixelBlock pixels;
  joinPairs(left.r, right.r, n, pixels.channel[red]);
  joinPairs(left.g, right.g, n, pixels.channel[1]);
  joinPairs(left.b, right.b, n, pixels.channel[2 - red]);
  join(pixels, 2 * n, dst);
}

template <int red>
void demosaicPixels(const SplitRow rows[4], ptrdiff_t n, Vek8u* upper, Vek8u* lower) {
  VEK_ASSERT(n >= 1);
  forEachRun(n, [&](ptrdiff_t k, ptrdiff_t count) {
    Run p;
    interpolate(rows, k, count, p);
    storePixels(p.pixel[0], p.pixel[1], red, count, upper + 6 * k);
    storePixels(p.pixel[2], p.pixel[3], red, count, lower + 6 * k);
  });
}

[[gnu::noinline]] void mergeGreens(const QuadRow& quad, ptrdiff_t k, ptrdiff_t n,
                                   Rgb& __restrict to) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    to.r[i] = quad.red[k + i];
    to.g[i] = average(quad.green[0][k + i], quad.green[1][k + i]);
    to.b[i] = quad.blue[k + i];
  }
}

template <ChromaShare share>
void convertQuads(const QuadRow pixels[4], ptrdiff_t n, const Vek16s* matrix, const BlockRow& out) {
  VEK_ASSERT(n >= 1);
  forEachRun(n, [&](ptrdiff_t k, ptrdiff_t count) {
    Run p;
    for (int i = 0; i < 4; ++i) mergeGreens(pixels[i], k, count, p.pixel[i]);
    storeRun<share>(p, matrix, k, count, out);
  });
}

}  // namespace

constexpr RggbKernels rggbKernels = {
    .applyGamma = applyGamma,
    .demosaic = {demosaic<ChromaShare::row>, demosaic<ChromaShare::column>,
                 demosaic<ChromaShare::block>},
    .demosaicPixels = {demosaicPixels<0>, demosaicPixels<2>},
    .convertQuads = {convertQuads<ChromaShare::row>, convertQuads<ChromaShare::column>,
                     convertQuads<ChromaShare::block>}};

}  // namespace vek::portable
