// What the preview functions write.
#pragma once

#include "vek/camera.h"

#include <algorithm>
#include <vector>

#include "tests/footprint/preview.h"

namespace vek::test::definition {

using footprint::pixelBytes;
using footprint::Place;
using footprint::Resize;

// ---- Planar to planar ---------------------------------------------------------------------------

/// The sample at two phases, or the blend of those around; neighbours without weight are not read.
inline int lumaAt(const Vek8u* plane, const Resize& a, int64_t row, int64_t column) {
  const ptrdiff_t step = a.srcStep[0];
  const Vek8u* const at = plane + (row >> 16) * step + (column >> 16);
  if (a.interpolation == 0) return *at;
  const int64_t fx = column & 0xFFFF, fy = row & 0xFFFF;
  const auto blend = [](int from, int to, int64_t f) {
    return from + static_cast<int>(((to - from) * f) >> 16);
  };
  const auto across = [&](const Vek8u* p) { return blend(p[0], fx == 0 ? p[0] : p[1], fx); };
  const int top = across(at);
  return blend(top, fy == 0 ? top : across(at + step), fy);
}

/// Exact reductions: plane `i` of 4:2:0, sample (x, y).
inline int reducedSample(const Vek8u* plane, const Resize& a, int i, int x, int y) {
  const int factor = a.exactReduction(), inset = factor == 4 ? 1 : 0;
  if (a.interpolation == 0) {  // Cr from the first row of its block, in the rows of Cb
    const ptrdiff_t row = factor * y + (i == 2 ? 0 : inset);
    return plane[row * a.srcStep[i == 2 ? 1 : i] + factor * x + 1];
  }
  const ptrdiff_t step = a.srcStep[i];
  const Vek8u* const at = plane + (factor * y + inset) * step + factor * x + inset;
  return (at[0] + at[1] + at[step] + at[step + 1] + 4) >> 2;
}

/// Row by row, as the source is oriented.
template <bool is420>
void planarRows(const Vek8u* const* src, const int* s, int srcWidth, int srcHeight,
                Vek8u* const* dst, const int* dstStep, int w, int h, int interpolation,
                int rotation, int xStep, int yStep, int first, int count) {
  const Resize a = {srcWidth, srcHeight, {s[0], s[1], s[2]}, w, h, interpolation, rotation,
                    xStep,    yStep};
  const auto put = [&](int i, Place to, int value) {
    dst[i][ptrdiff_t{to.row} * dstStep[i] + to.column] = static_cast<Vek8u>(value);
  };
  const bool exact = is420 && a.exactReduction() != 0;
  for (int y = first; y < first + count; ++y) {
    for (int x = 0; x < w; ++x) {
      const auto p = (is420 ? footprint::ycc420Phases : footprint::ycc422Phases)(a, x, y);
      put(0, footprint::rotate(rotation, x, y, w, h),
          exact ? reducedSample(src[0], a, 0, x, y) : lumaAt(src[0], a, p.row, p.column));
      if (x % 2 == 1 || (is420 && y % 2 == 1)) continue;
      for (int i : {1, 2}) {
        Place to = is420 ? footprint::rotate(rotation, x / 2, y / 2, w / 2, h / 2)
                         : footprint::rotateChroma422(a, x / 2, y);
        const ptrdiff_t row = p.chromaRow >> 16, column = p.chromaColumn >> 16;
        const int value =
            exact ? reducedSample(src[i], a, i, x / 2, y / 2) : src[i][row * s[i] + column];
        if (is420 && rotation == vekiMirrorTopBottom && i == 2) {  // in the row distance of Cb
          to.column += (h / 2 - 1) * dstStep[2] - y / 2 * dstStep[1];
          to.row = 0;
        }
        put(i, to, value);
      }
    }
  }
}

/// What an odd 4:2:2 height makes too much comes last.
template <bool is420>
void planarResize(const Vek8u* const* src, const int* s, int srcWidth, int srcHeight,
                  Vek8u* const* dst, const int* dstStep, int w, int h, int interpolation,
                  int rotation, int xStep, int yStep) {
  planarRows<is420>(src, s, srcWidth, srcHeight, dst, dstStep, w, h, interpolation, rotation, xStep,
                    yStep, 0, (h + 1) / 2 * 2);
}

// ---- Planar to RGB ------------------------------------------------------------------------------

/// One converted pixel in memory; formats are counted from 0.
inline void putPixel(int y, int cb, int cr, int format, Vek8u* to) {
  const int bits[4][3] = {{5, 6, 5}, {5, 5, 5}, {4, 4, 4}, {8, 8, 8}};
  const int luma = (y - 16) * 298;
  const int raw[3] = {luma + 409 * (cr - 128), luma - 100 * (cb - 128) - 208 * (cr - 128),
                      luma + 516 * (cb - 128)};
  int pixel = 0;  // red uppermost
  for (int i = 0; i < 3; ++i) {
    const int n = bits[format][i];
    pixel = pixel << n | std::clamp(raw[i] >> (16 - n), 0, (1 << n) - 1);
  }
  for (int i = 0; i < pixelBytes(format); ++i) to[i] = static_cast<Vek8u>(pixel >> 8 * i);
}

template <bool is420>
void planarRgbRows(const Vek8u* const* src, const int* s, int srcWidth, int srcHeight, Vek8u* dst,
                   int dstStep, int w, int h, int format, int interpolation, int rotation,
                   int xStep, int yStep, int first, int count) {
  const int chroma = s[0] / 2;
  const Resize a = {srcWidth, srcHeight, {s[0], is420 ? s[1] : chroma, is420 ? s[2] : chroma},
                    w,        h,         interpolation,
                    rotation, xStep,     yStep};
  format -= is420 ? 4 : 0;
  if (!is420 && format == 3 && a.isQuarterTurn()) std::swap(w, h);
  for (int y = first; y < std::min(first + count, h); ++y) {
    for (int x = 0; x < w; ++x) {
      const auto p = (is420 ? footprint::ycc420RgbPhases : footprint::ycc422RgbPhases)(a, x, y);
      const auto to = is420 ? footprint::rotate(rotation, x, y, w, h)
                            : footprint::rotate422Rgb(a, pixelBytes(format), x, y);
      const auto at = [&](int i) {
        return src[i][(p.chromaRow >> 16) * a.srcStep[i] + (p.chromaColumn >> 16)];
      };
      putPixel(lumaAt(src[0], a, p.row, p.column), at(1), at(2), format,
               dst + ptrdiff_t{to.row} * dstStep + to.column * pixelBytes(format));
    }
  }
}

template <bool is420>
void planarRgb(const Vek8u* const* src, const int* s, int srcWidth, int srcHeight, Vek8u* dst,
               int dstStep, int w, int h, int format, int interpolation, int rotation, int xStep,
               int yStep) {
  planarRgbRows<is420>(src, s, srcWidth, srcHeight, dst, dstStep, w, h, format, interpolation,
                       rotation, xStep, yStep, 0, std::max(w, h));
}

// ---- Interleaved 4:2:2, reduced -----------------------------------------------------------------

/// Averages neighbours until one value remains.
inline int average(std::vector<int> values) {
  while (values.size() > 1) {
    for (size_t i = 0; i < values.size() / 2; ++i) {
      values[i] = (values[2 * i] + values[2 * i + 1] + 1) >> 1;
    }
    values.resize(values.size() / 2);
  }
  return values[0];
}

inline int rgbWord(int y, int cb, int cr, int format) {
  const int luma = _vekYCbCr_RGB[0] * (y - 16), b = cb - 128, r = cr - 128;
  const int greenTop = format == 0 ? 63 : 31, greenShift = format == 0 ? 12 : 13;
  const int red = std::clamp((luma + _vekYCbCr_RGB[1] * r) >> 13, 0, 31);
  const int green =
      std::clamp((luma + _vekYCbCr_RGB[3] * b + _vekYCbCr_RGB[2] * r) >> greenShift, 0, greenTop);
  const int blue = std::clamp((luma + _vekYCbCr_RGB[4] * b) >> 13, 0, 31);
  return format == 0 ? red << 11 | green << 5 | blue : red << 10 | green << 5 | blue;
}

/// Output pixel by output pixel, low byte first; samples are averaged over `blocks` blocks side by side.
inline void reduce422(const Vek8u* src, int srcStep, Vek16u* dst, int dstStep, int width,
                      int height, int factor, int interpolation, int format, int rotation) {
  const int columns = width / factor, rows = height / factor;
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < columns; ++x) {
      // One sample of every `spacing` bytes, from byte `first` of block `column`.
      const auto sample = [&](int column, int blocks, int first, int spacing) {
        const Vek8u* at = src + factor * y * srcStep + 2 * factor * column + first;
        if (interpolation == 0) return int{*at};
        std::vector<int> averages;
        for (int row = 0; row < factor; ++row, at += srcStep) {
          std::vector<int> across;
          for (int i = 0; i < 2 * factor * blocks; i += spacing) across.push_back(at[i]);
          averages.push_back(average(across));
        }
        return average(averages);
      };
      const int pair = x & ~1, blocks = pair + 1 < columns ? 2 : 1;
      const auto [row, column] = footprint::rotate(rotation, x, y, columns, rows);
      const int pixel = rgbWord(sample(x, 1, 1, 2), sample(pair, blocks, 0, 4),
                                sample(pair, blocks, 2, 4), format);
      Vek8u* const to = reinterpret_cast<Vek8u*>(dst) + row * dstStep + 2 * column;
      to[0] = static_cast<Vek8u>(pixel), to[1] = static_cast<Vek8u>(pixel >> 8);
    }
  }
}

// ---- 4:2:2 to 4:2:0 -----------------------------------------------------------------------------

/// Sample (x, y) of plane i of the source is at(i, x, y).
template <class At>
void halved(At at, Vek8u* const* dst, const int* dstStep, int width, int height, int rotation) {
  for (int i = 0; i < 3; ++i) {
    const int w = i == 0 ? width : width / 2, h = i == 0 ? height : height / 2;
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        const Place to = footprint::rotate(rotation, x, y, w, h);
        const int value = i == 0 ? at(i, x, y) : (at(i, x, 2 * y) + at(i, x, 2 * y + 1) + 1) >> 1;
        dst[i][ptrdiff_t{to.row} * dstStep[i] + to.column] = static_cast<Vek8u>(value);
      }
    }
  }
}

inline void halvedPlanes(VekConstPlanes src, const int* srcStep, Vek8u* const* dst,
                         const int* dstStep, int width, int height, int rotation) {
  const auto at = [&](int i, int x, int y) { return src[i][ptrdiff_t{y} * srcStep[i] + x]; };
  halved(at, dst, dstStep, width, height, rotation);
}

/// Groups Cb, Y0, Cr, Y1.
inline void halvedGroups(const Vek8u* src, int srcStep, Vek8u* const* dst, const int* dstStep,
                         int width, int height, int rotation) {
  const auto at = [&](int i, int x, int y) {
    const int byte = i == 0 ? 2 * x + 1 : i == 1 ? 4 * x : 4 * x + 2;
    return src[ptrdiff_t{y} * srcStep + byte];
  };
  halved(at, dst, dstStep, width, height, rotation);
}

}  // namespace vek::test::definition
