// The conversions as their definitions read: the portable kernels, and the fallback of every level.
#pragma once

#include <stddef.h>

#include "image/color/ycbcr_matrices.h"

namespace vek::VEK_LEVEL {
namespace {

// Sources: the three samples of pixel i.

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

/// `Format` is a packed format, or Rgb24 for the three outputs in order.
template <class Source, const Matrix& m, class Format>
void fromInterleaved(ptrdiff_t n, const Vek8u* data, Vek8u* __restrict dst) {
  const Source src = {data};
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Vek32s a = src.first(i), b = src.second(i), c = src.third(i);
    Format::store(dst + i * Format::bytes, component<m, 0, Format::rBits>(a, b, c),
                  component<m, 1, Format::gBits>(a, b, c), component<m, 2, Format::bBits>(a, b, c));
  }
}

template <const Matrix& m>
void toPlanes444(ptrdiff_t n, const Vek8u* __restrict src, Vek8u* __restrict y, Vek8u* __restrict u,
                 Vek8u* __restrict v) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Vek32s r = src[3 * i], g = src[3 * i + 1], b = src[3 * i + 2];
    y[i] = static_cast<Vek8u>(component<m, 0>(r, g, b));
    u[i] = static_cast<Vek8u>(component<m, 1>(r, g, b));
    v[i] = static_cast<Vek8u>(component<m, 2>(r, g, b));
  }
}

// Spaces to reduce chroma in.

struct Rgb {
  Vek32s r, g, b;
};

struct ReducedYcbcr {
  static Vek8u luma(Rgb p) {
    return static_cast<Vek8u>(component<RGB_YCbCr_Q10_C2, 0>(p.r, p.g, p.b));
  }
  static Vek8u second(Rgb p) {
    return static_cast<Vek8u>(component<RGB_YCbCr_Q10_C2, 1>(p.r, p.g, p.b));
  }
  static Vek8u third(Rgb p) {
    return static_cast<Vek8u>(component<RGB_YCbCr_Q10_C2, 2>(p.r, p.g, p.b));
  }
};

struct ReducedYuv {
  static Vek8u luma(Rgb p) {
    return static_cast<Vek8u>(component<RGB_YUV_Q10_C2, 0>(p.r, p.g, p.b));
  }
  static Vek8u second(Rgb p) { return difference(uFactor, p.b - luma(p)); }
  static Vek8u third(Rgb p) { return difference(vFactor, p.r - luma(p)); }

 private:
  static Vek8u difference(Vek32s factor, Vek32s d) {
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

/// A pixel that the row does not have is the last one again; the averages of what exists follow.
ptrdiff_t partner(ptrdiff_t i, ptrdiff_t n) {
  return i + 1 < n ? i + 1 : i;
}

template <class Space>
void toInterleaved422(ptrdiff_t n, const Vek8u* __restrict src, Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n; i += 2) {
    const Rgb left = pixel(src + 3 * i), right = pixel(src + 3 * partner(i, n));
    const Rgb shared = average(left, right);
    dst[2 * i] = Space::luma(left);
    dst[2 * i + 1] = Space::second(shared);
    dst[2 * i + 2] = Space::luma(right);
    dst[2 * i + 3] = Space::third(shared);
  }
}

template <class Space>
void toPlanes422(ptrdiff_t n, const Vek8u* __restrict src, Vek8u* __restrict y, Vek8u* __restrict u,
                 Vek8u* __restrict v) {
  for (ptrdiff_t i = 0; i < n; i += 2) {
    const ptrdiff_t j = partner(i, n);
    const Rgb left = pixel(src + 3 * i), right = pixel(src + 3 * j);
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

}  // namespace
}  // namespace vek::VEK_LEVEL
