// Where the preview functions sample, where they put it, and so what they read and write.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "tests/support/area.h"

namespace vek::test::footprint {

/// Arguments that the resize-and-rotate functions share.
struct Resize {
  int srcWidth, srcHeight;
  int srcStep[3];
  int dstWidth, dstHeight;  ///< scaled size, as the source is oriented
  int interpolation, rotation;
  int xStep, yStep;

  bool isQuarterTurn() const { return rotation == 1 || rotation == 2; }

  /// The factor, 2 or 4, at which the 4:2:0 resize works on whole blocks; otherwise 0.
  int exactReduction() const {
    for (int shift : {1, 2}) {
      if (rotation == 0 && srcWidth >> shift == dstWidth && srcHeight >> shift == dstHeight) {
        return 1 << shift;
      }
    }
    return 0;
  }
};

/// Formats 565, 555, 444 and 24-bit, counted from 0.
inline int pixelBytes(int format) {
  return format == 3 ? 3 : 2;
}

/// What a preview function reads and writes: three planes, and one or three.
struct Planes {
  Area src[3];
  Area dst[3];
};

// ---- Sampling -----------------------------------------------------------------------------------

/// Where pixel (x, y) of the scaled image is sampled, in 16.16: a luma phase is rounded down, or
/// with interpolation blended, a chroma phase rounded down.
struct Phases {
  int64_t column, row, chromaColumn, chromaRow;
};

using Sampling = Phases (*)(const Resize& a, int x, int y);

inline int64_t clamped(int64_t phase, int64_t limit) {
  return std::max<int64_t>(0, std::min(phase, limit - 1));
}
inline int64_t lastRow(const Resize& a) {
  return (int64_t{a.srcHeight} - 1) << 16;
}

/// Where nothing is clamped: nearest samples are rounded, and chroma is sampled in pairs of columns.
inline Phases freePhases(const Resize& a, int x, int y) {
  const int64_t half = a.interpolation == 0 ? 32768 : 0, row = int64_t{y} * a.yStep;
  return {half + int64_t{x} * a.xStep, half + row, 32768 + int64_t{x / 2} * a.xStep, 32768 + row};
}

inline Phases ycc420Phases(const Resize& a, int x, int y) {
  Phases p = freePhases(a, x, y);
  if (a.interpolation == 1) p.row = clamped(p.row, lastRow(a));
  p.chromaRow = 32768 + int64_t{y / 2} * a.yStep;
  return p;
}

/// Only the odd rows are clamped, and not the first of them.
inline Phases ycc422Phases(const Resize& a, int x, int y) {
  Phases p = freePhases(a, x, y);
  if (a.interpolation == 0 || y % 2 == 0 || y == 1 || p.row < lastRow(a)) return p;
  p.row = lastRow(a) - 1;
  p.chromaRow = 32768 + p.row;
  return p;
}

/// Odd sizes repeat the last even column and row; a blended odd row beyond the last one repeats the
/// row above it.
inline Phases ycc420RgbPhases(const Resize& a, int x, int y) {
  x = std::min(x, (a.dstWidth & ~1) - 1), y = std::min(y, (a.dstHeight & ~1) - 1);
  Phases p = freePhases(a, x, y);
  if (a.interpolation == 1 && y % 2 == 1 && p.row >= lastRow(a)) p.row -= a.yStep;
  p.chromaRow = (int64_t{y & ~1} * a.yStep + 65536) / 2;
  return p;
}

/// Even columns go wherever their phases lead.
inline Phases ycc422RgbPhases(const Resize& a, int x, int y) {
  const int64_t right = int64_t{a.srcWidth - a.interpolation} << 16;
  const int64_t bottom = int64_t{a.srcHeight - a.interpolation} << 16;
  Phases p = freePhases(a, x, y);
  if (x % 2 == 1) p.column = clamped(p.column, right);
  p.row = clamped(int64_t{y} * a.yStep, bottom);
  p.chromaColumn = clamped(p.chromaColumn, right / 2);
  p.chromaRow = p.row;
  return p;
}

/// What `width` x `height` pixels read. Inside the image a blend may read the right or lower
/// neighbour even where it has no weight.
inline void addReads(Planes& planes, const Resize& a, Sampling sampling, int width, int height) {
  const auto grow = [](ptrdiff_t& n, int64_t phase) {
    n = std::max(n, static_cast<ptrdiff_t>(phase >> 16) + 1);
  };
  const auto growLuma = [&](ptrdiff_t& n, int64_t phase, int size) {
    grow(n, phase);
    if (a.interpolation == 1) grow(n, phase + 65535);
    if (a.interpolation == 1) grow(n, std::min(phase + 65536, (int64_t{size} - 1) << 16));
  };
  Area luma = {0, 0, a.srcStep[0]}, chroma = {0, 0, 0};
  for (int x = 0; x < width; ++x) {
    growLuma(luma.bytes, sampling(a, x, 0).column, a.srcWidth);
    grow(chroma.bytes, sampling(a, x, 0).chromaColumn);
  }
  for (int y = 0; y < height; ++y) {
    growLuma(luma.rows, sampling(a, 0, y).row, a.srcHeight);
    grow(chroma.rows, sampling(a, 0, y).chromaRow);
  }
  planes.src[0] = luma;
  for (int i : {1, 2}) planes.src[i] = {chroma.bytes, chroma.rows, a.srcStep[i]};
}

// ---- Rotating -----------------------------------------------------------------------------------

struct Place {
  int row, column;
};

/// Where pixel (x, y) of a w x h image goes.
inline Place rotate(int rotation, int x, int y, int w, int h) {
  const Place places[6] = {{y, x},         {w - 1 - x, y}, {x, h - 1 - y}, {h - 1 - y, w - 1 - x},
                           {y, w - 1 - x}, {h - 1 - y, x}};
  return places[rotation];
}

/// The memory that w x h pixels take, pixel (x, y) being at where(x, y).
template <class Where>
Area placed(int w, int h, int step, int pixelBytes, Where where) {
  Place low = where(0, 0), high = low;
  for (const Place& p : {where(w - 1, 0), where(0, h - 1), where(w - 1, h - 1)}) {
    low = {std::min(low.row, p.row), std::min(low.column, p.column)};
    high = {std::max(high.row, p.row), std::max(high.column, p.column)};
  }
  return {ptrdiff_t{pixelBytes} * (high.column - low.column + 1), high.row - low.row + 1, step,
          low.row * ptrdiff_t{step} + low.column * pixelBytes};
}

inline Area rotated(int rotation, int w, int h, int step, int pixelBytes = 1) {
  return placed(w, h, step, pixelBytes, [=](int x, int y) { return rotate(rotation, x, y, w, h); });
}

// ---- The functions ------------------------------------------------------------------------------

/// vekiYCbCr420RszCscRotRGB_8u_P3C3R.
inline Planes ycc420Rgb(const Resize& a, int dstStep, int pixelBytes) {
  Planes p = {};
  addReads(p, a, ycc420RgbPhases, a.dstWidth, a.dstHeight);
  p.dst[0] = rotated(a.rotation, a.dstWidth, a.dstHeight, dstStep, pixelBytes);
  return p;
}

/// vekiYCbCr420RszRot_8u_P3R. Exact reductions without interpolation walk Cr in the rows of Cb;
/// mirrored top-bottom, Cr is written in the row distance of Cb.
inline Planes ycc420(const Resize& a, const int dstStep[3]) {
  Planes p;
  addReads(p, a, ycc420Phases, a.dstWidth, a.dstHeight);
  const int factor = a.exactReduction();
  for (int i = 0; i < 3; ++i) {
    const int shift = i == 0 ? 0 : 1, width = a.dstWidth >> shift, height = a.dstHeight >> shift;
    if (factor != 0) {
      const int inset = factor == 4 ? 1 : 0;
      const bool average = a.interpolation == 1;
      const bool red = i == 2 && !average;
      p.src[i] = {factor * (width - 1) + 2 + inset * average,
                  factor * (height - 1) + 1 + average + (red ? 0 : inset), a.srcStep[red ? 1 : i]};
    }
    p.dst[i] = rotated(a.rotation, width, height, dstStep[i]);
  }
  if (a.rotation == 5) {
    p.dst[2].first = (a.dstHeight / 2 - 1) * dstStep[2];
    p.dst[2].step = -dstStep[1];
  }
  return p;
}

/// Where chroma sample (x, y) of vekiYCbCr422RszRot_8u_P3R goes: quarter turns make one column of
/// two rows, alternately.
inline Place rotateChroma422(const Resize& a, int x, int y) {
  if (!a.isQuarterTurn()) return rotate(a.rotation, x, y, a.dstWidth / 2, a.dstHeight);
  return rotate(a.rotation, 2 * x + y % 2, y / 2, a.dstWidth, a.dstHeight / 2);
}

/// vekiYCbCr422RszRot_8u_P3R. An odd height is rounded up: a row, or after a quarter turn a column,
/// beyond the scaled image is sampled and written.
inline Planes ycc422(const Resize& a, const int dstStep[3]) {
  const int rows = (a.dstHeight + 1) & ~1;
  Planes p;
  addReads(p, a, ycc422Phases, a.dstWidth, rows);
  for (int i = 0; i < 3; ++i) {
    const int across = i > 0 && !a.isQuarterTurn() ? 1 : 0,
              down = i > 0 && a.isQuarterTurn() ? 1 : 0;
    const int w = a.dstWidth >> across, h = a.dstHeight >> down;
    p.dst[i] = placed(w, rows >> down, dstStep[i], 1,
                      [&](int x, int y) { return rotate(a.rotation, x, y, w, h); });
  }
  return p;
}

/// Where pixel (x, y) of vekiYCbCr422RszCscRotRGB_8u_P3C3R goes. The size is the destination's own,
/// but 16-bit quarter turns walk rows of its width, as if it were a square.
inline Place rotate422Rgb(const Resize& a, int pixelBytes, int x, int y) {
  const int w = a.dstWidth, h = a.dstHeight;
  if (!a.isQuarterTurn()) return rotate(a.rotation, x, y, w, h);
  if (pixelBytes == 3) return rotate(a.rotation, x, y, h, w);
  return a.rotation == 1 ? Place{h - 1 - x + y * (h - w), y} : Place{x + y * (w - h), w - 1 - y};
}

/// vekiYCbCr422RszCscRotRGB_8u_P3C3R. Chroma rows are half a luma step apart.
inline Planes ycc422Rgb(const Resize& a, int dstStep, int pixelBytes) {
  const bool swapped = pixelBytes == 3 && a.isQuarterTurn();
  const int w = swapped ? a.dstHeight : a.dstWidth, h = swapped ? a.dstWidth : a.dstHeight;
  Planes p = {};
  addReads(p, a, ycc422RgbPhases, w, h);
  for (int i : {1, 2}) p.src[i].step = a.srcStep[0] / 2;
  p.dst[0] = placed(w, h, dstStep, pixelBytes,
                    [&](int x, int y) { return rotate422Rgb(a, pixelBytes, x, y); });
  return p;
}

/// vekiResizeCscRotate_8u_C2R: whole blocks, or their first samples (luma in byte 1 of a group, Cr
/// in byte 2).
inline Planes ycc422Reduce(int width, int height, int srcStep, int factor, int interpolation,
                           int rotation, int dstStep) {
  const int columns = width / factor, rows = height / factor;
  const int lastBlock = 2 * factor * (columns - 1);
  const Area firsts = {lastBlock + (columns % 2 == 0 ? 2 : 3), factor * (rows - 1) + 1, srcStep};
  const Area blocks = {lastBlock + 2 * factor, factor * rows, srcStep};
  return {{interpolation == 0 ? firsts : blocks}, {rotated(rotation, columns, rows, dstStep, 2)}};
}

}  // namespace vek::test::footprint
