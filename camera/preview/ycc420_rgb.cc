// YCbCr 4:2:0 to packed RGB with resize and rotate.
#include "vek/camera.h"

#include <string.h>

#include "camera/preview/preview_call.h"
#include "camera/preview/preview_kernels.h"
#include "camera/preview/sampling.h"
#include "camera/preview/tile_walk.h"
#include "core/check.h"
#include "core/level.h"
#include "core/region.h"

namespace vek {
namespace {

int pixelBytes(int format) {
  return format == vekiCsc420BGR24 ? 3 : 2;
}

bool isRefused(const PreviewCall& c) {
  return c.src == nullptr || c.dst[0] == nullptr || isMisaligned(c.dst[0], 8) ||
         anyMisaligned(c.src, 4, 2) || c.hasEmptyImage() || c.hasSamplingStepBelowOne() ||
         c.hasSamplingStepAboveLimit() || c.srcStep == nullptr || anyMisaligned(c.srcStep, 4, 2) ||
         c.hasSourceStepBelowOne() || c.dstStep[0] < 1 || c.hasShortSourceRow() ||
         c.dstFormat < vekiCsc420RGB565 || c.dstFormat > vekiCsc420BGR24 ||
         c.hasUnknownInterpolation() || c.hasUnknownRotation() ||
         isMisaligned(c.dstStep[0], c.dstFormat == vekiCsc420BGR24 ? 2 : 8) ||
         c.dstStep[0] / pixelBytes(c.dstFormat) < c.orientedWidth() || anyPlaneNull(c.src);
}

/// With an odd size the last column repeats its left neighbour and the last row the one before it.
void repeatOddEdges(const PreviewCall& call, const OrientedPlane& dst, RowRange rows) {
  const size_t bytes = static_cast<size_t>(pixelBytes(call.dstFormat));
  if (isOdd(call.dstWidth)) {
    const int x = call.dstWidth - 1;
    for (ptrdiff_t y = rows.first; y < (rows.end & ~1); ++y) {
      memcpy(dst.at(x, y), dst.at(x - 1, y), bytes);
    }
  }
  if (isOdd(static_cast<int>(rows.end))) {
    const ptrdiff_t y = rows.end - 1;
    for (int x = 0; x < call.dstWidth; ++x) memcpy(dst.at(x, y), dst.at(x, y - 1), bytes);
  }
}

/// Rows are made in pairs that share their chroma row.
void resizeRotateConvert(const PreviewCall& call, RowRange rows, const PreviewKernels& kernels) {
  const int format = call.dstFormat - vekiCsc420RGB565;
  const PixelConversion convert = {.paired = kernels.csc.paired.of(format),
                                   .single = kernels.csc.single.of(format),
                                   .bytes = pixelBytes(call.dstFormat)};
  const OrientedPlane dst(call.dstPlane(0), orientationOf(call.rotation), call.dstWidth,
                          call.dstHeight, convert.bytes);
  const Plane<const Vek8u> y = call.srcPlane(0), cb = call.srcPlane(1), cr = call.srcPlane(2);
  const ResampleKernels& resample = kernels.resample;
  const Vek32u lastPhase = lastRowPhase(call.srcHeight);
  const bool unscaled = isUnscaled(call);

  Columns columns, chromaColumns;
  const auto makeLuma = [&](const Tile& tile, ptrdiff_t i, Vek8u* out, ptrdiff_t step) {
    const Vek32u phase = static_cast<Vek32u>(tile.y + i) * call.rowStep();
    const Vek8u* made;
    if (!call.isBilinear()) {
      made = nearestRow(resample, y.row((phase + halfSample) >> 16), columns, out);
    } else if (isOdd(static_cast<int>(i)) && phase >= lastPhase) {
      // @quirk The lower row of a pair that would begin at or below the last source row repeats the
      // upper one instead of being kept inside the image.
      made = out - step;
    } else {
      made = blendedRow(resample, y, phase, columns, out);
    }
    putRow(made, tile.columns, out);
  };
  const auto makeSamples = [&](const Tile& tile, SampleTile& buffer, ptrdiff_t step) -> YccPlanes {
    const ptrdiff_t pairs = tile.columns / 2, chromaStep = step / 2;
    if (unscaled) {
      return {{y.row(tile.y) + tile.x, y.step},
              {cb.row(tile.y / 2) + tile.x / 2, cb.step},
              {cr.row(tile.y / 2) + tile.x / 2, cr.step},
              1};
    }
    if (call.isBilinear()) {
      blendedColumns(resample, call.columnStep(), tile.x, tile.columns, call.srcWidth - 1, columns);
    } else {
      nearestColumns(resample, call.columnStep(), tile.x, tile.columns, columns);
    }
    nearestColumns(resample, call.columnStep(), tile.x / 2, pairs, chromaColumns);
    for (ptrdiff_t i = 0; i < tile.rows; i += 2) {
      makeLuma(tile, i, buffer.y + i * step, step);
      makeLuma(tile, i + 1, buffer.y + (i + 1) * step, step);
      const Vek32u phase = static_cast<Vek32u>(tile.y + i) * call.rowStep();
      const auto chromaRow = static_cast<ptrdiff_t>((phase + oneSample) >> 17);
      Vek8u* const cbOut = buffer.cb + i / 2 * chromaStep;
      Vek8u* const crOut = buffer.cr + i / 2 * chromaStep;
      putRow(nearestRow(resample, cb.row(chromaRow), chromaColumns, cbOut), pairs, cbOut);
      putRow(nearestRow(resample, cr.row(chromaRow), chromaColumns, crOut), pairs, crOut);
    }
    return {{buffer.y, step}, {buffer.cb, chromaStep}, {buffer.cr, chromaStep}, 1};
  };
  walkPixels(dst, convert, kernels.place, call.dstWidth & ~1, {rows.first, rows.end & ~1},
             unscaled ? tallTile : wideTile, makeSamples);
  repeatOddEdges(call, dst, rows);
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiYCbCr420RszCscRotRGB_8u_P3C3R(const Vek8u* const pSrc[3], const int srcStep[3],
                                            int srcWidth, int srcHeight, Vek8u* pDst, int dstStep,
                                            int dstWidth, int dstHeight, int dstFormat,
                                            int interpolation, int rotation, int xStep, int yStep) {
  return vekiYCbCr420RszCscRotRGBRows_8u_P3C3R(pSrc, srcStep, srcWidth, srcHeight, pDst, dstStep,
                                               dstWidth, dstHeight, dstFormat, interpolation,
                                               rotation, xStep, yStep, 0, dstHeight);
}

VekStatus vekiYCbCr420RszCscRotRGBRows_8u_P3C3R(const Vek8u* const pSrc[3], const int srcStep[3],
                                                int srcWidth, int srcHeight, Vek8u* pDst,
                                                int dstStep, int dstWidth, int dstHeight,
                                                int dstFormat, int interpolation, int rotation,
                                                int xStep, int yStep, int firstRow, int rowCount) {
  const vek::PreviewCall call = {.src = pSrc,
                                 .srcStep = srcStep,
                                 .srcWidth = srcWidth,
                                 .srcHeight = srcHeight,
                                 .dst = &pDst,
                                 .dstStep = &dstStep,
                                 .dstWidth = dstWidth,
                                 .dstHeight = dstHeight,
                                 .dstFormat = dstFormat,
                                 .interpolation = interpolation,
                                 .rotation = rotation,
                                 .xStep = xStep,
                                 .yStep = yStep};
  if (vek::isRefused(call) || call.hasWrongRows(firstRow, rowCount)) return vekStsBadArgErr;
  const vek::RowRange rows = {firstRow, ptrdiff_t{firstRow} + rowCount};
  vek::resizeRotateConvert(call, rows, vek::previewKernels(vek::cpuLevel()));
  return vekStsNoErr;
}

}  // extern "C"
