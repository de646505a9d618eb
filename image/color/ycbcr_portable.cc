// The YCbCr and YUV conversions as their definitions read.
#include "core/assert.h"
#include "core/color/convert_planes_portable.h"
#include "image/color/ycbcr_kernels.h"
#include "image/color/ycbcr_matrices.h"

namespace vek::portable {
namespace {

// Interleaved images: the three samples of pixel i.

struct Interleaved444 {
  const Vek8u* data;

  Vek32s first(ptrdiff_t i) const { return data[3 * i]; }
  Vek32s second(ptrdiff_t i) const { return data[3 * i + 1]; }
  Vek32s third(ptrdiff_t i) const { return data[3 * i + 2]; }
};

struct Interleaved422 {
  const Vek8u* data;

  Vek32s first(ptrdiff_t i) const { return data[2 * i]; }
  Vek32s second(ptrdiff_t i) const { return data[4 * (i >> 1) + 1]; }
  Vek32s third(ptrdiff_t i) const { return data[4 * (i >> 1) + 3]; }
};

/// `Format` is a packed format, or Rgb24 for the three outputs in order, whatever they are.
template <class Source, const Matrix& m, class Format>
void convertInterleaved(ptrdiff_t n, const Vek8u* data, Vek8u* __restrict dst) {
  VEK_ASSERT(n >= 1);
  const Source src = {data};
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Vek32s a = src.first(i), b = src.second(i), c = src.third(i);
    Format::store(dst + i * Format::bytes, component<m, 0, Format::rBits>(a, b, c),
                  component<m, 1, Format::gBits>(a, b, c), component<m, 2, Format::bBits>(a, b, c));
  }
}

template <const Matrix& m>
void toPlanes444(ptrdiff_t n, const Vek8u* __restrict rgb, Vek8u* __restrict y, Vek8u* __restrict u,
                 Vek8u* __restrict v) {
  VEK_ASSERT(n >= 1);
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Vek32s red = rgb[3 * i], green = rgb[3 * i + 1], blue = rgb[3 * i + 2];
    y[i] = static_cast<Vek8u>(component<m, 0>(red, green, blue));
    u[i] = static_cast<Vek8u>(component<m, 1>(red, green, blue));
    v[i] = static_cast<Vek8u>(component<m, 2>(red, green, blue));
  }
}

struct Rgb {
  Vek32s r, g, b;
};

// Where pixels share chroma: luma of a pixel, chroma of the average of several.

struct SharedYcbcr {
  static Vek8u luma(Rgb p) { return output<0>(p); }
  static Vek8u second(Rgb p) { return output<1>(p); }
  static Vek8u third(Rgb p) { return output<2>(p); }

 private:
  template <int k>
  static Vek8u output(Rgb p) {
    return static_cast<Vek8u>(component<rgbToYcbcr, k>(p.r, p.g, p.b));
  }
};

struct SharedYuv {
  static Vek8u luma(Rgb p) { return static_cast<Vek8u>(component<rgbToYuv, 0>(p.r, p.g, p.b)); }
  static Vek8u second(Rgb p) { return fromDifference(uFactor, p.b - luma(p)); }
  static Vek8u third(Rgb p) { return fromDifference(vFactor, p.r - luma(p)); }

 private:
  static Vek8u fromDifference(Vek32s factor, Vek32s d) {
    return static_cast<Vek8u>(clampToBits<8>(128 + (factor * d >> 10)));
  }
};

Rgb pixel(const Vek8u* p) {
  return {p[0], p[1], p[2]};
}

Rgb average(Rgb a, Rgb b) {
  return {(a.r + b.r + 1) >> 1, (a.g + b.g + 1) >> 1, (a.b + b.b + 1) >> 1};
}

Rgb average(Rgb a, Rgb b, Rgb c, Rgb d) {
  return {(a.r + b.r + c.r + d.r + 2) >> 2, (a.g + b.g + c.g + d.g + 2) >> 2,
          (a.b + b.b + c.b + d.b + 2) >> 2};
}

/// The pixel that shares chroma with pixel i. At the end of an odd row it is i itself, so that the
/// averages are those of the pixels that exist.
ptrdiff_t partner(ptrdiff_t i, ptrdiff_t n) {
  return i + 1 < n ? i + 1 : i;
}

template <class Space>
void toInterleaved422(ptrdiff_t n, const Vek8u* __restrict rgb, Vek8u* __restrict dst) {
  VEK_ASSERT(n >= 1);
  for (ptrdiff_t i = 0; i < n; i += 2) {
    const Rgb left = pixel(rgb + 3 * i), right = pixel(rgb + 3 * partner(i, n));
    const Rgb shared = average(left, right);
    dst[2 * i] = Space::luma(left);
    dst[2 * i + 1] = Space::second(shared);
    dst[2 * i + 2] = Space::luma(right);
    dst[2 * i + 3] = Space::third(shared);
  }
}

template <class Space>
void toPlanes422(ptrdiff_t n, const Vek8u* __restrict rgb, Vek8u* __restrict y, Vek8u* __restrict u,
                 Vek8u* __restrict v) {
  VEK_ASSERT(n >= 1);
  for (ptrdiff_t i = 0; i < n; i += 2) {
    const ptrdiff_t j = partner(i, n);
    const Rgb left = pixel(rgb + 3 * i), right = pixel(rgb + 3 * j);
    const Rgb shared = average(left, right);
    y[i] = Space::luma(left);
    y[j] = Space::luma(right);
    u[i >> 1] = Space::second(shared);
    v[i >> 1] = Space::third(shared);
  }
}

template <class Space>
void toPlanes420(ptrdiff_t n, const Vek8u* __restrict top, const Vek8u* __restrict bottom,
                 Vek8u* __restrict yTop, Vek8u* __restrict yBottom, Vek8u* __restrict u,
                 Vek8u* __restrict v) {
  VEK_ASSERT(n >= 1);
  for (ptrdiff_t i = 0; i < n; i += 2) {
    const ptrdiff_t j = partner(i, n);
    const Rgb a = pixel(top + 3 * i), b = pixel(top + 3 * j);
    const Rgb c = pixel(bottom + 3 * i), d = pixel(bottom + 3 * j);
    const Rgb shared = average(a, b, c, d);
    yTop[i] = Space::luma(a);
    yTop[j] = Space::luma(b);
    yBottom[i] = Space::luma(c);
    yBottom[j] = Space::luma(d);
    u[i >> 1] = Space::second(shared);
    v[i >> 1] = Space::third(shared);
  }
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
