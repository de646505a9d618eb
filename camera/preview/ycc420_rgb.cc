// YCbCr 4:2:0 to packed RGB with resize and rotate.
#include "vek/camera.h"

#include <string.h>

#include "camera/preview/csc_kernels.h"
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
  if (rowPixels < (isTransposed(rotation) ? dstHeight : dstWidth)) return vekStsBadArgErr;
  if (anyPlaneNull(pSrc)) return vekStsBadArgErr;
  return vekStsNoErr;
}

/// With an odd size the last column repeats its left neighbour and the last row the one before it.
void repeatOddEdges(const Scaling& scaling, const OrientedPlane& dst, int pixelBytes) {
  const auto copy = [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t fromX, ptrdiff_t fromY) {
    memcpy(dst.at(x, y), dst.at(fromX, fromY), static_cast<size_t>(pixelBytes));
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

/// Rows are made in pairs that share their chroma row.
void _vekiYCbCr420RszCscRotRGB_8u_P3C3R(const Image420& src, const Scaling& scaling, Vek8u* pDst,
                                        int dstStep, int dstFormat, int rotation) {
  const ResampleKernels& resample = select(resampleKernels);
  const CscKernels& csc = select(cscKernels);
  const int format = dstFormat - rgb565;
  const PixelKernels kernels = {csc.paired.of(format), csc.single.of(format),
                                dstFormat == bgr24 ? 3 : 2};
  const OrientedPlane dst({pDst, dstStep}, orientationOf(rotation), scaling.width, scaling.height,
                          kernels.bytes);
  const Vek32u lastPhase = lastRowPhase(src.height);

  Columns columns, chromaColumns;
  const auto makeSamples = [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t rows,
                               SampleTile& tile, ptrdiff_t step) -> YccPlanes {
    if (scaling.unscaled()) {
      return {{src.y.row(y) + x, src.y.step},
              {src.cb.row(y / 2) + x / 2, src.cb.step},
              {src.cr.row(y / 2) + x / 2, src.cr.step},
              1};
    }
    if (scaling.bilinear) {
      blendedColumns(resample, scaling.xStep, x, n, src.width - 1, columns);
    } else {
      nearestColumns(resample, scaling.xStep, x, n, columns);
    }
    nearestColumns(resample, scaling.xStep, x / 2, n / 2, chromaColumns);
    for (ptrdiff_t i = 0; i < rows; ++i) {
      const Vek32u phase = static_cast<Vek32u>(y + i) * scaling.yStep;
      Vek8u* const luma = tile.y + i * step;
      if (!scaling.bilinear) {
        putRow(nearestRow(resample, src.y.row((phase + halfSample) >> 16), columns, luma), n, luma);
      } else if (i % 2 != 0 && phase >= lastPhase) {
        putRow(luma - step, n, luma);
      } else {
        putRow(blendedRow(resample, src.y, phase, columns, luma), n, luma);
      }
      if (i % 2 != 0) continue;
      const Vek32u chromaRow = (phase + oneSample) >> 17;
      Vek8u* const cb = tile.cb + i / 2 * (step / 2);
      Vek8u* const cr = tile.cr + i / 2 * (step / 2);
      putRow(nearestRow(resample, src.cb.row(chromaRow), chromaColumns, cb), n / 2, cb);
      putRow(nearestRow(resample, src.cr.row(chromaRow), chromaColumns, cr), n / 2, cr);
    }
    return {{tile.y, step}, {tile.cb, step / 2}, {tile.cr, step / 2}, 1};
  };
  walkPixels(dst, kernels, scaling.width & ~1, {0, scaling.height & ~1},
             scaling.unscaled() ? tallTile : wideTile, makeSamples);
  repeatOddEdges(scaling, dst, static_cast<int>(kernels.bytes));
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
