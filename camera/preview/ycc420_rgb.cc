// YCbCr 4:2:0 to packed RGB with resize and rotate.
#include "vek/camera.h"

#include <string.h>

#include "camera/preview/csc_rows.h"
#include "camera/preview/orientation.h"
#include "camera/preview/resample_rows.h"
#include "camera/preview/sampling.h"
#include "core/check.h"
#include "core/kernel/place_rows.h"
#include "core/region.h"

namespace vek {
namespace {

enum Format { rgb565 = 4, rgb555 = 5, rgb444 = 6, bgr24 = 7 };

/// Width of the strips that a row is converted in, and size of the tile that collects the pixels of
/// a turned strip: 1024 x 2 pixels, or 64 x 32 where rows become columns.
constexpr int stripColumns = 1024;
constexpr int turnedStripColumns = 64;
constexpr int turnedStripRows = 32;
constexpr int maxPixelBytes = 3;
static_assert(turnedStripColumns * turnedStripRows == 2 * stripColumns);

struct Image420 {
  Plane<const Vek8u> y, cb, cr;
  int width, height;
};

struct Scaling {
  int width, height;  ///< scaled size, as the source is oriented
  bool bilinear;
  Vek32u xStep, yStep;
};

VekStatus check(const Vek8u* const* pSrc, const int* srcStep, int srcWidth, int srcHeight,
                const Vek8u* pDst, int dstStep, int dstWidth, int dstHeight, int dstFormat,
                int interpolation, int rotation, int xStep, int yStep) {
  if (pSrc == nullptr || pDst == nullptr || isMisaligned(pDst, 8) || isMisaligned(pSrc[0], 4) ||
      isMisaligned(pSrc[1], 2) || isMisaligned(pSrc[2], 2) ||
      anyBelowOne({srcWidth, srcHeight, dstWidth, dstHeight})) {
    return vekStsBadArgErr;
  }
  if (anyBelowOne({xStep, yStep}) || stepTooLarge(xStep, srcWidth, dstWidth) ||
      stepTooLarge(yStep, srcHeight, dstHeight)) {
    return vekStsBadArgErr;
  }
  if (srcStep == nullptr || isMisaligned(srcStep[0], 4) || isOdd(srcStep[1]) || isOdd(srcStep[2]) ||
      anyBelowOne({srcStep[0], srcStep[1], srcStep[2], dstStep}) || srcStep[0] < srcWidth ||
      srcStep[1] < srcWidth / 2 || srcStep[2] < srcWidth / 2) {
    return vekStsBadArgErr;
  }
  if (dstFormat < rgb565 || dstFormat > bgr24 || interpolation < 0 || interpolation > 1 ||
      rotation < vekiRotNone || rotation > vekiMirrorTopBottom) {
    return vekStsBadArgErr;
  }
  if (isMisaligned(dstStep, dstFormat == bgr24 ? 2 : 8)) return vekStsBadArgErr;
  const int rowPixels = dstFormat == bgr24 ? dstStep / 3 : dstStep / 2;
  if (rowPixels < (isQuarterTurn(rotation) ? dstHeight : dstWidth)) return vekStsBadArgErr;
  if (anyPlaneNull(pSrc)) return vekStsBadArgErr;
  return vekStsNoErr;
}

CscRow rowKernel(const CscRows& rows, int dstFormat) {
  switch (dstFormat) {
    case rgb565:
      return rows.rgb565;
    case rgb555:
      return rows.rgb555;
    case rgb444:
      return rows.rgb444;
    default:
      return rows.bgr24;
  }
}

/// `n` samples of a row at the nearest columns, beginning with sample x; unscaled rows are used
/// where they lie.
const Vek8u* nearestRow(const ResampleRows& rows, const Vek8u* row, Vek32u xStep, int x, int n,
                        Vek8u* buffer) {
  if (xStep == oneSample) return row + x;
  rows.nearest(row, halfSample + static_cast<Vek32u>(x) * xStep, xStep, n, buffer);
  return buffer;
}

const Vek8u* lumaRow(const ResampleRows& rows, const Image420& src, const Scaling& scaling,
                     Vek32u rowPhase, int x, int n, Vek8u* buffer) {
  if (!scaling.bilinear) {
    return nearestRow(rows, src.y.row((rowPhase + halfSample) >> 16), scaling.xStep, x, n, buffer);
  }
  const Vek8u* top = src.y.row(rowPhase >> 16);
  const Vek32s fy = static_cast<Vek32s>(rowPhase & 0xFFFF);
  if (fy == 0 && scaling.xStep == oneSample) return top + x;
  const Vek8u* bottom = fy == 0 ? top : top + src.y.step;
  rows.bilinear(top, bottom, fy, src.width - 1, static_cast<Vek32u>(x) * scaling.xStep,
                scaling.xStep, n, buffer);
  return buffer;
}

/// With an odd size the last column repeats its left neighbour and the last row the one before it.
void repeatOddEdges(const Scaling& scaling, Vek8u* first, Orientation at, int pixelBytes) {
  const auto copy = [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t fromX, ptrdiff_t fromY) {
    memcpy(first + x * at.dx + y * at.dy, first + fromX * at.dx + fromY * at.dy,
           static_cast<size_t>(pixelBytes));
  };
  if (isOdd(scaling.width)) {
    const int x = scaling.width - 1;
    for (int y = 0; y < (scaling.height & ~1); ++y) copy(x, y, x - 1, y);
  }
  if (isOdd(scaling.height)) {
    const int y = scaling.height - 1;
    for (int x = 0; x < scaling.width; ++x) copy(x, y, x, y - 1);
  }
}

/// Walks the scaled image in strips of row pairs. Phases stay below 2^32: the step limit keeps the
/// last one inside the source.
void _vekiYCbCr420RszCscRotRGB_8u_P3C3R(const Image420& src, const Scaling& scaling, Vek8u* pDst,
                                        int dstStep, int dstFormat, int rotation) {
  const ResampleRows& resample = select(resampleRows);
  const CscRow convert = rowKernel(select(cscRows), dstFormat);
  const int pixelBytes = dstFormat == bgr24 ? 3 : 2;
  const PlaceTile place = select(placeRows).of(pixelBytes);
  const Orientation at = orientation(rotation, scaling.width, scaling.height, pixelBytes, dstStep);
  Vek8u* const first = pDst + at.start;
  const bool direct = at.dx == pixelBytes;
  const bool turned = isQuarterTurn(rotation);
  const int tileColumns = turned ? turnedStripColumns : stripColumns;
  const int tileRows = turned ? turnedStripRows : 2;
  const ptrdiff_t tileStep = tileColumns * pixelBytes;

  alignas(64) Vek8u luma[stripColumns];
  alignas(64) Vek8u blue[stripColumns / 2];
  alignas(64) Vek8u red[stripColumns / 2];
  alignas(64) Vek8u tile[2 * stripColumns * maxPixelBytes];

  const Vek32u lastRowPhase = static_cast<Vek32u>(src.height - 1) << 16;
  const int width = scaling.width & ~1;
  const int height = scaling.height & ~1;
  for (int y0 = 0; y0 < height; y0 += tileRows) {
    const int rows = height - y0 < tileRows ? height - y0 : tileRows;
    for (int x0 = 0; x0 < width; x0 += tileColumns) {
      const int columns = width - x0 < tileColumns ? width - x0 : tileColumns;
      for (int y = y0; y < y0 + rows; y += 2) {
        const Vek32u phase = static_cast<Vek32u>(y) * scaling.yStep;
        const Vek32u chromaRow = (phase + oneSample) >> 17;
        const Vek8u* cb =
            nearestRow(resample, src.cb.row(chromaRow), scaling.xStep, x0 / 2, columns / 2, blue);
        const Vek8u* cr =
            nearestRow(resample, src.cr.row(chromaRow), scaling.xStep, x0 / 2, columns / 2, red);
        Vek8u* const out = direct ? first + x0 * at.dx + y * at.dy : tile + (y - y0) * tileStep;
        Vek8u* const nextOut = out + (direct ? at.dy : tileStep);
        convert(lumaRow(resample, src, scaling, phase, x0, columns, luma), cb, cr, columns, out);
        const Vek32u nextPhase = phase + scaling.yStep;
        if (scaling.bilinear && nextPhase >= lastRowPhase) {
          memcpy(nextOut, out, static_cast<size_t>(columns * pixelBytes));
        } else {
          convert(lumaRow(resample, src, scaling, nextPhase, x0, columns, luma), cb, cr, columns,
                  nextOut);
        }
      }
      if (!direct) {
        place(tile, tileStep, columns, rows, first + x0 * at.dx + y0 * at.dy, at.dx, at.dy);
      }
    }
  }
  repeatOddEdges(scaling, first, at, pixelBytes);
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiYCbCr420RszCscRotRGB_8u_P3C3R(const Vek8u* const pSrc[3],
                                                       const int srcStep[3], int srcWidth,
                                                       int srcHeight, Vek8u* pDst, int dstStep,
                                                       int dstWidth, int dstHeight, int dstFormat,
                                                       int interpolation, int rotation, int xStep,
                                                       int yStep) {
  const VekStatus status = vek::check(pSrc, srcStep, srcWidth, srcHeight, pDst, dstStep, dstWidth,
                                      dstHeight, dstFormat, interpolation, rotation, xStep, yStep);
  if (status != vekStsNoErr) return status;
  const vek::Image420 src = {vek::Plane{pSrc[0], srcStep[0]}, vek::Plane{pSrc[1], srcStep[1]},
                             vek::Plane{pSrc[2], srcStep[2]}, srcWidth, srcHeight};
  const vek::Scaling scaling = {dstWidth, dstHeight, interpolation == 1, static_cast<Vek32u>(xStep),
                                static_cast<Vek32u>(yStep)};
  vek::_vekiYCbCr420RszCscRotRGB_8u_P3C3R(src, scaling, pDst, dstStep, dstFormat, rotation);
  return vekStsNoErr;
}
