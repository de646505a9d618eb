// What the preview functions read and write, argument by argument.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tests/support/area.h"

namespace vek::test::footprint {

/// Arguments that the resize-and-rotate functions share.
struct Resize {
  int srcWidth, srcHeight;
  int srcStep[3];
  int dstWidth, dstHeight;  ///< scaled size, as the source is oriented
  int interpolation, rotation;
  int xStep, yStep;

  bool turned() const { return rotation == 1 || rotation == 2; }

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

/// What a preview function reads and writes: three planes, and one or three.
struct Planes {
  Area src[3];
  Area dst[3];
};

/// How many samples the phases reach: that of the last of `count` samples, plus one.
inline ptrdiff_t reach(int64_t count, int64_t step, int64_t offset, int shift = 16) {
  return static_cast<ptrdiff_t>(((count - 1) * step + offset) >> shift) + 1;
}

/// The same within `size` samples. A blend (interpolation 1) reads the next sample, but none
/// outside the image.
inline ptrdiff_t lumaReach(const Resize& a, int64_t count, int64_t step, int size) {
  return std::min<ptrdiff_t>(size, reach(count, step, a.interpolation == 0 ? 32768 : 65536));
}

/// vekiYCbCr420RszCscRotRGB_8u_P3C3R: samples up to the last ones that the phases reach.
inline Planes ycc420Rgb(const Resize& a, int dstStep, int pixelBytes) {
  const int width = a.dstWidth & ~1, height = a.dstHeight & ~1;
  const ptrdiff_t chromaColumns = reach(width / 2, a.xStep, 32768);
  const ptrdiff_t chromaRows = reach(height - 1, a.yStep, 65536, 17);
  const ptrdiff_t across = a.turned() ? a.dstHeight : a.dstWidth;
  const ptrdiff_t down = a.turned() ? a.dstWidth : a.dstHeight;
  return {{{lumaReach(a, width, a.xStep, a.srcWidth), lumaReach(a, height, a.yStep, a.srcHeight),
            a.srcStep[0]},
           {chromaColumns, chromaRows, a.srcStep[1]},
           {chromaColumns, chromaRows, a.srcStep[2]}},
          {{across * pixelBytes, down, dstStep}}};
}

/// vekiYCbCr420RszRot_8u_P3R. Exact reductions without interpolation walk Cr in the rows of Cb;
/// mirrored top-bottom, Cr is written in the row distance of Cb.
inline Planes ycc420(const Resize& a, const int dstStep[3]) {
  Planes p;
  const int factor = a.exactReduction();
  for (int i = 0; i < 3; ++i) {
    const int width = i == 0 ? a.dstWidth : a.dstWidth / 2;
    const int height = i == 0 ? a.dstHeight : a.dstHeight / 2;
    if (factor != 0) {
      const int inset = factor == 4 ? 1 : 0;
      const bool average = a.interpolation == 1;
      const bool red = i == 2 && !average;
      p.src[i] = {factor * (width - 1) + 2 + inset * average,
                  factor * (height - 1) + 1 + average + (red ? 0 : inset), a.srcStep[red ? 1 : i]};
    } else if (i == 0) {
      p.src[i] = {lumaReach(a, width, a.xStep, a.srcWidth),
                  lumaReach(a, height, a.yStep, a.srcHeight), a.srcStep[0]};
    } else {
      p.src[i] = {reach(width, a.xStep, 32768), reach(height, a.yStep, 32768), a.srcStep[i]};
    }
    p.dst[i] = {a.turned() ? height : width, a.turned() ? width : height, dstStep[i]};
  }
  if (a.rotation == 5) {
    p.dst[2].first = (a.dstHeight / 2 - 1) * dstStep[2];
    p.dst[2].step = -dstStep[1];
  }
  return p;
}

/// vekiYCbCr422RszRot_8u_P3R. An odd height is rounded up: a row, or after a quarter turn a column,
/// beyond the scaled image is sampled and written.
inline Planes ycc422(const Resize& a, const int dstStep[3]) {
  const ptrdiff_t height = a.dstHeight, rows = (height + 1) & ~ptrdiff_t{1};
  ptrdiff_t lumaRows = 0, chromaRows = 0;
  for (ptrdiff_t y = 0; y < rows; ++y) {
    int64_t phase = int64_t{y} * a.yStep;
    if (a.interpolation == 1 && y % 2 == 1 && y > 1) {
      phase = std::min(phase, ((int64_t{a.srcHeight} - 1) << 16) - 1);
    }
    chromaRows = std::max(chromaRows, reach(2, phase, 32768));
    lumaRows = std::max(lumaRows, reach(2, phase, a.interpolation == 0 ? 32768 : 65535));
  }
  Planes p;
  for (int i = 0; i < 3; ++i) {
    const ptrdiff_t width = i == 0 ? a.dstWidth : a.dstWidth / 2, step = dstStep[i];
    p.src[i] = i == 0 ? Area{lumaReach(a, width, a.xStep, a.srcWidth), lumaRows, a.srcStep[0]}
                      : Area{reach(width, a.xStep, 32768), chromaRows, a.srcStep[i]};
    if (a.turned()) {
      const int shift = i == 0 ? 0 : 1;
      const ptrdiff_t extra = (rows >> shift) - (height >> shift);
      p.dst[i] = {rows >> shift, a.dstWidth, step, a.rotation == 2 ? -extra : 0};
    } else if (a.rotation == 3 || a.rotation == 5) {
      p.dst[i] = {width, rows, -step, (height - 1) * step};
    } else {
      p.dst[i] = {width, rows, step};
    }
  }
  return p;
}

/// vekiYCbCr422RszCscRotRGB_8u_P3C3R, but for 16-bit quarter turns with unequal sizes. Columns of
/// even luma samples go wherever their phases lead; the size is the destination's own.
inline Planes ycc422Rgb(const Resize& a, int dstStep, int pixelBytes) {
  const bool swapped = pixelBytes == 3 && a.turned();
  const int width = swapped ? a.dstHeight : a.dstWidth;
  const int height = swapped ? a.dstWidth : a.dstHeight;
  const int blended = a.interpolation;
  const int64_t right = int64_t{a.srcWidth - blended} << 16;
  const auto held = [](int64_t phase, int64_t limit) {
    return std::max<int64_t>(0, std::min(phase, limit - 1));
  };
  const auto samples = [&](int64_t phase) {
    return static_cast<ptrdiff_t>((phase + (blended ? 65535 : 0)) >> 16) + 1;
  };
  ptrdiff_t columns = 0;
  for (int x = 0; x < width; ++x) {
    const int64_t free = int64_t{x} * a.xStep + (blended ? 0 : 32768);
    const int64_t phase = x % 2 == 0 ? free : held(free, right);
    // Inside the image a blend may read the right neighbour even where it has no weight.
    const ptrdiff_t inside = std::min<ptrdiff_t>(a.srcWidth, (phase >> 16) + 1 + blended);
    columns = std::max({columns, samples(phase), inside});
  }
  const int64_t lastRow = held(int64_t{height - 1} * a.yStep, int64_t{a.srcHeight - blended} << 16);
  const int64_t lastChroma = held(32768 + int64_t{(width - 1) / 2} * a.xStep, right / 2);
  const Area chroma = {(lastChroma >> 16) + 1, (lastRow >> 16) + 1, a.srcStep[0] / 2};
  return {{{columns, samples(lastRow), a.srcStep[0]}, chroma, chroma},
          {{a.dstWidth * pixelBytes, a.dstHeight, dstStep}}};
}

/// vekiResizeCscRotate_8u_C2R: whole blocks, or their first samples (luma in byte 1 of a group, Cr
/// in byte 2).
inline Planes ycc422Reduce(int width, int height, int srcStep, int factor, int interpolation,
                           int rotation, int dstStep) {
  const int columns = width / factor, rows = height / factor;
  const bool turned = rotation == 1 || rotation == 2;
  const int lastBlock = 2 * factor * (columns - 1);
  const Area firsts = {lastBlock + (columns % 2 == 0 ? 2 : 3), factor * (rows - 1) + 1, srcStep};
  const Area blocks = {lastBlock + 2 * factor, factor * rows, srcStep};
  return {{interpolation == 0 ? firsts : blocks},
          {{2 * (turned ? rows : columns), turned ? columns : rows, dstStep}}};
}

}  // namespace vek::test::footprint
