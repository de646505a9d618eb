// YCbCr 4:2:0 to packed RGB with resize and rotate.
#include "vek/camera.h"

#include <string.h>

#include "camera/preview/csc_rows.h"
#include "camera/preview/sampling.h"
#include "camera/preview/tile_walk.h"
#include "core/check.h"
#include "core/region.h"

namespace vek {
namespace {

enum Format { rgb565 = 4, rgb555 = 5, rgb444 = 6, bgr24 = 7 };

struct Image420 {
  Plane<const Vek8u> y, cb, cr;
  int width, height;
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

const Vek8u* lumaRow(const ResampleRows& rows, const Image420& src, const Scaling& scaling,
                     Vek32u rowPhase, ptrdiff_t x, ptrdiff_t n, Vek8u* buffer) {
  if (scaling.bilinear) {
    return bilinearRow(rows, src.y, src.width - 1, rowPhase, scaling.xStep, x, n, buffer);
  }
  return nearestRow(rows, src.y.row((rowPhase + halfSample) >> 16), scaling.xStep, x, n, buffer);
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

/// Makes tiles of row pairs that share their chroma row.
void _vekiYCbCr420RszCscRotRGB_8u_P3C3R(const Image420& src, const Scaling& scaling, Vek8u* pDst,
                                        int dstStep, int dstFormat, int rotation) {
  const ResampleRows& resample = select(resampleRows);
  const CscRow convert = select(cscRows).of(dstFormat - rgb565);
  const int pixelBytes = dstFormat == bgr24 ? 3 : 2;
  const Orientation at = orientation(rotation, scaling.width, scaling.height, pixelBytes, dstStep);
  const Vek32u lastPhase = lastRowPhase(src.height);

  alignas(64) Vek8u luma[stripColumns];
  alignas(64) Vek8u blue[stripColumns / 2];
  alignas(64) Vek8u red[stripColumns / 2];
  const auto makeTile = [&](ptrdiff_t x, ptrdiff_t y0, ptrdiff_t n, ptrdiff_t rows, Vek8u* out,
                            ptrdiff_t step) {
    for (ptrdiff_t y = y0; y < y0 + rows; y += 2, out += 2 * step) {
      const Vek32u phase = static_cast<Vek32u>(y) * scaling.yStep;
      const Vek32u nextPhase = phase + scaling.yStep;
      const Vek32u chromaRow = (phase + oneSample) >> 17;
      const Vek8u* cb =
          nearestRow(resample, src.cb.row(chromaRow), scaling.xStep, x / 2, n / 2, blue);
      const Vek8u* cr =
          nearestRow(resample, src.cr.row(chromaRow), scaling.xStep, x / 2, n / 2, red);
      convert(lumaRow(resample, src, scaling, phase, x, n, luma), cb, cr, n, out);
      if (scaling.bilinear && nextPhase >= lastPhase) {
        memcpy(out + step, out, static_cast<size_t>(n * pixelBytes));
      } else {
        convert(lumaRow(resample, src, scaling, nextPhase, x, n, luma), cb, cr, n, out + step);
      }
    }
  };
  walkTiles(pDst, at, pixelBytes, scaling.width & ~1, {0, scaling.height & ~1}, makeTile);
  repeatOddEdges(scaling, pDst + at.start, at, pixelBytes);
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
  const vek::Scaling scaling(dstWidth, dstHeight, interpolation, xStep, yStep);
  vek::_vekiYCbCr420RszCscRotRGB_8u_P3C3R(src, scaling, pDst, dstStep, dstFormat, rotation);
  return vekStsNoErr;
}
