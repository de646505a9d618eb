// The YCbCr and YUV conversions as their definitions read.
#include "core/assert.h"
#include "core/color/convert_planes_portable.h"
#include "image/color/ycbcr_kernels.h"
#include "image/color/ycbcr_matrices.h"

namespace vek::portable {
namespace {

// Interleaved images, by blocks of pixels.

struct Interleaved444 {
  template <const Matrix& m, class Format>
  static void convertPixels(ptrdiff_t n, const Vek8u* data, Vek8u* dst) {
    if constexpr (hasCommonLuma<m>) {
      portable::convertPixels<1, 3, 3, m, Format>(data, data + 1, data + 2, n, dst);
    } else {
      convertTriples<m, 0>(data, n, dst, 3);
      convertTriples<m, 1>(data, n, dst + 1, 3);
      convertTriples<m, 2>(data, n, dst + 2, 3);
    }
  }
  static void separate(const Vek8u* data, ptrdiff_t x, ptrdiff_t n, PixelBlock& __restrict to) {
    portable::separate(data + 3 * x, n, to);
  }
};

/// Two pixels are the bytes Y, Cb, Y, Cr; an odd last pixel has them all, too.
struct Interleaved422 {
  template <const Matrix& m, class Format>
  static void convertPixels(ptrdiff_t n, const Vek8u* data, Vek8u* dst) {
    portable::convertPixels<2, 2, 4, m, Format>(data, data + 1, data + 3, n, dst);
  }
  static void separate(const Vek8u* __restrict data, ptrdiff_t x, ptrdiff_t n,
                       PixelBlock& __restrict to) {
    const Vek8u* const from = data + 2 * x;
    for (ptrdiff_t i = 0; i < n / 2; ++i) {
      to.channel[0][2 * i] = from[4 * i];
      to.channel[0][2 * i + 1] = from[4 * i + 2];
      to.channel[1][2 * i] = to.channel[1][2 * i + 1] = from[4 * i + 1];
      to.channel[2][2 * i] = to.channel[2][2 * i + 1] = from[4 * i + 3];
    }
    const ptrdiff_t last = n - 1, pair = last / 2;
    to.channel[0][last] = from[2 * last];
    to.channel[1][last] = from[4 * pair + 1];
    to.channel[2][last] = from[4 * pair + 3];
  }
};

template <class Source, const Matrix& m, class Format>
void convertInterleaved(ptrdiff_t n, const Vek8u* data, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  if constexpr (!hasWords) return Source::template convertPixels<m, Format>(n, data, dst);
  forEachBlock(n, [&](ptrdiff_t x, ptrdiff_t count) {
    PixelBlock in;
    Source::separate(data, x, count, in);
    convertBlock<m, Format>(in.channel[0], in.channel[1], in.channel[2], count,
                            dst + x * Format::bytes);
  });
}

template <const Matrix& m>
void toPlanes444(ptrdiff_t n, const Vek8u* rgb, Vek8u* y, Vek8u* u, Vek8u* v) {
  VEK_ASSERT(n >= 1);
  if constexpr (!hasWords) {
    convertTriples<m, 0>(rgb, n, y, 1);
    convertTriples<m, 1>(rgb, n, u, 1);
    convertTriples<m, 2>(rgb, n, v, 1);
    return;
  }
  forEachBlock(n, [&](ptrdiff_t x, ptrdiff_t count) {
    PixelBlock in;
    separate(rgb + 3 * x, count, in);
    convertComponents<m>(in.channel[0], in.channel[1], in.channel[2], count, y + x, u + x, v + x);
  });
}

// Where pixels share chroma: luma of n pixels, chroma of the averages of several.

struct SharedYcbcr {
  [[maybe_unused]] static constexpr const Matrix& matrix = rgbToYcbcr;
  static void luma(const PixelBlock& p, ptrdiff_t n, Vek8u* y) { output<0>(p, n, y); }
  static void chroma(const PixelBlock& p, ptrdiff_t n, Vek8u* cb, Vek8u* cr) {
    output<1>(p, n, cb);
    output<2>(p, n, cr);
  }

 private:
  template <int k>
  static void output(const PixelBlock& p, ptrdiff_t n, Vek8u* dst) {
    convertComponent<rgbToYcbcr, k>(p.channel[0], p.channel[1], p.channel[2], n, dst);
  }
};

struct SharedYuv {
  [[maybe_unused]] static constexpr const Matrix& matrix = rgbToYuv;
  static void luma(const PixelBlock& p, ptrdiff_t n, Vek8u* y) {
    convertComponent<rgbToYuv, 0>(p.channel[0], p.channel[1], p.channel[2], n, y);
  }
  static void chroma(const PixelBlock& p, ptrdiff_t n, Vek8u* u, Vek8u* v) {
    PixelBlock averages;
    Vek8u* const y = averages.channel[0];
    luma(p, n, y);
    fromDifferences<uFactor>(p.channel[2], y, n, u);
    fromDifferences<vFactor>(p.channel[0], y, n, v);
  }

 private:
  template <Vek32s factor>
  [[gnu::noinline]] static void fromDifferences(const Vek8u* __restrict color,
                                                const Vek8u* __restrict y, ptrdiff_t n,
                                                Vek8u* __restrict dst) {
    for (ptrdiff_t i = 0; i < n; ++i) {
      dst[i] = static_cast<Vek8u>(clampToBits<8>(128 + (factor * (color[i] - y[i]) >> 10)));
    }
  }
};

/// Repeats an odd last pixel, so that the averages are those of the pixels that exist, and returns
/// the number of pairs.
[[gnu::noinline]] ptrdiff_t completePairs(PixelBlock& p, ptrdiff_t n) {
  if (n % 2 != 0) {
    for (auto& channel : p.channel) channel[n] = channel[n - 1];
  }
  return (n + 1) / 2;
}

[[gnu::noinline]] void averagePairs(const PixelBlock& p, ptrdiff_t pairs,
                                    PixelBlock& __restrict averages) {
  for (int c = 0; c < 3; ++c) {
    const Vek8u* const from = p.channel[c];
    for (ptrdiff_t i = 0; i < pairs; ++i) {
      averages.channel[c][i] = static_cast<Vek8u>((from[2 * i] + from[2 * i + 1] + 1) >> 1);
    }
  }
}

[[gnu::noinline]] void averageFours(const PixelBlock& p, const PixelBlock& q, ptrdiff_t pairs,
                                    PixelBlock& __restrict averages) {
  for (int c = 0; c < 3; ++c) {
    const Vek8u *const upper = p.channel[c], *const lower = q.channel[c];
    for (ptrdiff_t i = 0; i < pairs; ++i) {
      averages.channel[c][i] = static_cast<Vek8u>(
          (upper[2 * i] + upper[2 * i + 1] + lower[2 * i] + lower[2 * i + 1] + 2) >> 2);
    }
  }
}

// Without vectors, from pixels where they lie.

/// Averages of pairs in one or two rows; of an odd last pixel there are no others.
template <int rows>
[[gnu::noinline]] void averageTriples(const Vek8u* __restrict top, const Vek8u* __restrict bottom,
                                      ptrdiff_t n, PixelBlock& __restrict averages) {
  const auto average = [&](ptrdiff_t at, ptrdiff_t next) {
    const int sum = top[at] + top[next];
    return static_cast<Vek8u>(rows == 1 ? (sum + 1) >> 1
                                        : (sum + bottom[at] + bottom[next] + 2) >> 2);
  };
  for (ptrdiff_t i = 0; i < n / 2; ++i) {
    for (int c = 0; c < 3; ++c) averages.channel[c][i] = average(6 * i + c, 6 * i + c + 3);
  }
  if (n % 2 == 0) return;
  for (ptrdiff_t c = 0; c < 3; ++c) {
    averages.channel[c][n / 2] = average(3 * (n - 1) + c, 3 * (n - 1) + c);
  }
}

/// Calls convert(first pair, pairs, averages) for blocks of n pixels.
template <int rows, class Convert>
void shareChroma(const Vek8u* top, const Vek8u* bottom, ptrdiff_t n, Convert convert) {
  forEachBlock(n, [&](ptrdiff_t x, ptrdiff_t count) {
    PixelBlock shared;
    averageTriples<rows>(top + 3 * x, bottom + 3 * x, count, shared);
    convert(x / 2, (count + 1) / 2, shared);
  });
}

template <class Space>
void triplesToInterleaved422(ptrdiff_t n, const Vek8u* rgb, Vek8u* dst) {
  convertTriples<Space::matrix, 0>(rgb, n, dst, 2);
  if (n % 2 != 0) dst[2 * n] = dst[2 * n - 2];
  shareChroma<1>(rgb, rgb, n, [&](ptrdiff_t first, ptrdiff_t pairs, const PixelBlock& p) {
    Vek8u cb[blockPixels / 2], cr[blockPixels / 2];
    Space::chroma(p, pairs, cb, cr);
    Vek8u* const to = dst + 4 * first;
    for (ptrdiff_t i = 0; i < pairs; ++i) {
      to[4 * i + 1] = cb[i];
      to[4 * i + 3] = cr[i];
    }
  });
}

template <class Space>
void toInterleaved422(ptrdiff_t n, const Vek8u* rgb, Vek8u* __restrict dst) {
  VEK_ASSERT(n >= 1);
  if constexpr (!hasWords) return triplesToInterleaved422<Space>(n, rgb, dst);
  forEachBlock(n, [&](ptrdiff_t x, ptrdiff_t count) {
    PixelBlock in, shared, out;
    separate(rgb + 3 * x, count, in);
    const ptrdiff_t pairs = completePairs(in, count);
    averagePairs(in, pairs, shared);
    Space::luma(in, 2 * pairs, out.channel[0]);
    Space::chroma(shared, pairs, out.channel[1], out.channel[2]);
    Vek8u* const to = dst + 2 * x;
    for (ptrdiff_t i = 0; i < pairs; ++i) {
      to[4 * i] = out.channel[0][2 * i];
      to[4 * i + 1] = out.channel[1][i];
      to[4 * i + 2] = out.channel[0][2 * i + 1];
      to[4 * i + 3] = out.channel[2][i];
    }
  });
}

template <class Space>
void toPlanes422(ptrdiff_t n, const Vek8u* rgb, Vek8u* y, Vek8u* u, Vek8u* v) {
  VEK_ASSERT(n >= 1);
  if constexpr (!hasWords) {
    convertTriples<Space::matrix, 0>(rgb, n, y, 1);
    return shareChroma<1>(rgb, rgb, n, [&](ptrdiff_t x, ptrdiff_t pairs, const PixelBlock& p) {
      Space::chroma(p, pairs, u + x, v + x);
    });
  }
  forEachBlock(n, [&](ptrdiff_t x, ptrdiff_t count) {
    PixelBlock in, shared;
    separate(rgb + 3 * x, count, in);
    Space::luma(in, count, y + x);
    const ptrdiff_t pairs = completePairs(in, count);
    averagePairs(in, pairs, shared);
    Space::chroma(shared, pairs, u + x / 2, v + x / 2);
  });
}

template <class Space>
void toPlanes420(ptrdiff_t n, const Vek8u* top, const Vek8u* bottom, Vek8u* yTop, Vek8u* yBottom,
                 Vek8u* u, Vek8u* v) {
  VEK_ASSERT(n >= 1);
  if constexpr (!hasWords) {
    convertTriples<Space::matrix, 0>(top, n, yTop, 1);
    convertTriples<Space::matrix, 0>(bottom, n, yBottom, 1);
    return shareChroma<2>(top, bottom, n, [&](ptrdiff_t x, ptrdiff_t pairs, const PixelBlock& p) {
      Space::chroma(p, pairs, u + x, v + x);
    });
  }
  forEachBlock(n, [&](ptrdiff_t x, ptrdiff_t count) {
    PixelBlock upper, lower, shared;
    separate(top + 3 * x, count, upper);
    separate(bottom + 3 * x, count, lower);
    Space::luma(upper, count, yTop + x);
    Space::luma(lower, count, yBottom + x);
    const ptrdiff_t pairs = completePairs(upper, count);
    completePairs(lower, count);
    averageFours(upper, lower, pairs, shared);
    Space::chroma(shared, pairs, u + x / 2, v + x / 2);
  });
}

template <int pixels, const Matrix& m>
constexpr PackedFormats<ConvertPlanes> planesToPacked = {
    .rgb565 = convertPlanes<pixels, m, Rgb565>,
    .rgb555 = convertPlanes<pixels, m, Rgb555>,
    .rgb444 = convertPlanes<pixels, m, Rgb444>,
    .bgr565 = convertPlanes<pixels, m, Bgr565>,
    .bgr555 = convertPlanes<pixels, m, Bgr555>,
    .bgr444 = convertPlanes<pixels, m, Bgr444>};

template <class Source, const Matrix& m>
constexpr PackedFormats<ConvertRow> interleavedToPacked = {
    .rgb565 = convertInterleaved<Source, m, Rgb565>,
    .rgb555 = convertInterleaved<Source, m, Rgb555>,
    .rgb444 = convertInterleaved<Source, m, Rgb444>,
    .bgr565 = convertInterleaved<Source, m, Bgr565>,
    .bgr555 = convertInterleaved<Source, m, Bgr555>,
    .bgr444 = convertInterleaved<Source, m, Bgr444>};

}  // namespace

constexpr YcbcrPackedKernels ycbcrPackedKernels = {
    .ycbcr420 = planesToPacked<2, ycbcrToRgb>,
    .yuv420 = planesToPacked<2, yuvToRgb>,
    .ycbcr444 = planesToPacked<1, ycbcrToRgb>,
    .ycbcrInterleaved422 = interleavedToPacked<Interleaved422, ycbcrToRgb>,
    .ycbcrInterleaved444 = interleavedToPacked<Interleaved444, ycbcrToRgb>,
};

constexpr YcbcrRgbKernels ycbcrRgbKernels = {
    .rgbToYcbcr444 = convertInterleaved<Interleaved444, rgbToYcbcr, Rgb24>,
    .ycbcr444ToRgb = convertInterleaved<Interleaved444, ycbcrToRgbRounded, Rgb24>,
    .rgbToYcbcr422 = toInterleaved422<SharedYcbcr>,
    .ycbcr422ToRgb = convertInterleaved<Interleaved422, ycbcrToRgb, Rgb24>,
    .rgbToYuv444 = convertInterleaved<Interleaved444, rgbToYuv, Rgb24>,
    .yuv444ToRgb = convertInterleaved<Interleaved444, yuvToRgbRounded, Rgb24>,
    .rgbToYuv422 = toInterleaved422<SharedYuv>,
    .yuv422ToRgb = convertInterleaved<Interleaved422, yuvToRgb, Rgb24>,
    .rgbToYuv444Planes = toPlanes444<rgbToYuv>,
    .rgbToYuv422Planes = toPlanes422<SharedYuv>,
    .rgbToYuv420Planes = toPlanes420<SharedYuv>,
    .yuv444PlanesToRgb = convertPlanes<1, yuvToRgbRounded, Rgb24>,
    .yuvSharedPlanesToRgb = convertPlanes<2, yuvToRgb, Rgb24>,
};

}  // namespace vek::portable
