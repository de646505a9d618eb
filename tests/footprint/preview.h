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
};

/// vekiYCbCr420RszCscRotRGB_8u_P3C3R: samples up to the last ones that the phases reach.
struct Csc420 {
  Area src[3];
  Area dst;
};

inline Csc420 ycc420Rgb(const Resize& a, int dstStep, int pixelBytes) {
  const auto last = [](int64_t count, int64_t step, int64_t offset, int shift) {
    return static_cast<ptrdiff_t>(((count - 1) * step + offset) >> shift) + 1;
  };
  const int width = a.dstWidth & ~1, height = a.dstHeight & ~1;
  // A blend reads the next column and row, but none outside the image.
  const int64_t offset = a.interpolation == 0 ? 32768 : 65536;
  const ptrdiff_t columns = std::min<ptrdiff_t>(a.srcWidth, last(width, a.xStep, offset, 16));
  const ptrdiff_t rows = std::min<ptrdiff_t>(a.srcHeight, last(height, a.yStep, offset, 16));
  const ptrdiff_t chromaColumns = last(width / 2, a.xStep, 32768, 16);
  const ptrdiff_t chromaRows = last(height - 1, a.yStep, 65536, 17);
  const ptrdiff_t across = a.turned() ? a.dstHeight : a.dstWidth;
  const ptrdiff_t down = a.turned() ? a.dstWidth : a.dstHeight;
  return {{{columns, rows, a.srcStep[0]},
           {chromaColumns, chromaRows, a.srcStep[1]},
           {chromaColumns, chromaRows, a.srcStep[2]}},
          {across * pixelBytes, down, dstStep}};
}

}  // namespace vek::test::footprint
