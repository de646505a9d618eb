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

/// Rows are made in pairs that share their chroma row. Not inlined, as the two orientations have stacks
/// of their own.
template <bool transposed>
[[gnu::noinline]] void resizeConvert(const PreviewCall& call, RowRange rows,
                                     const PreviewKernels& kernels, const PixelConversion& convert,
                                     const OrientedPlane& dst) {
  const Plane<const Vek8u> y = call.srcPlane(0), cb = call.srcPlane(1), cr = call.srcPlane(2);
  const ResampleKernels& resample = kernels.resample;
  const Vek32u lastPhase = lastRowPhase(call.srcHeight);
  const bool unscaled = isUnscaled(call);

  ColumnsOf<mostColumns<transposed>> columns;
  ColumnsOf<mostColumns<transposed> / 2> chromaColumns;
  const auto makeLuma = [&](const Tile& strip, Plane<Vek8u> out) {
    if (call.isBilinear()) {
      blendedColumns(resample, call.columnStep(), strip.x, strip.columns, call.srcWidth - 1,
                     columns);
    } else {
      nearestColumns(resample, call.columnStep(), strip.x, strip.columns, columns);
    }
    for (ptrdiff_t i = 0; i < strip.rows; ++i) {
      const Vek32u phase = static_cast<Vek32u>(strip.y + i) * call.rowStep();
      const Vek8u* made;
      if (!call.isBilinear()) {
        made = nearestRow(resample, y.row((phase + halfSample) >> 16), columns, out.row(i));
      } else if (isOdd(static_cast<int>(i)) && phase >= lastPhase) {
        // @quirk The lower row of a pair that would begin at or below the last source row repeats the
        // upper one instead of being kept inside the image.
        made = out.row(i - 1);
      } else {
        made = blendedRow(resample, y, phase, columns, out.row(i));
      }
      putRow(made, strip.columns, out.row(i));
    }
  };
  const auto makeChroma = [&](const Tile& strip, const Plane<const Vek8u>& from, Plane<Vek8u> out) {
    const ptrdiff_t pairs = strip.columns / 2;
    nearestColumns(resample, call.columnStep(), strip.x / 2, pairs, chromaColumns);
    for (ptrdiff_t i = 0; i < strip.rows / 2; ++i) {
      const Vek32u phase = static_cast<Vek32u>(strip.y + 2 * i) * call.rowStep();
      const auto row = static_cast<ptrdiff_t>((phase + oneSample) >> 17);
      putRow(nearestRow(resample, from.row(row), chromaColumns, out.row(i)), pairs, out.row(i));
    }
  };
  const auto makeSamples = [&](const Tile& strip, Samples what,
                               const SampleRows& out) -> YccPlanes {
    if (unscaled) {
      return {{y.row(strip.y) + strip.x, y.step},
              {cb.row(strip.y / 2) + strip.x / 2, cb.step},
              {cr.row(strip.y / 2) + strip.x / 2, cr.step},
              1};
    }
    if (includes(what, Samples::luma)) makeLuma(strip, out.y);
    if (includes(what, Samples::cb)) makeChroma(strip, cb, out.cb);
    if (includes(what, Samples::cr)) makeChroma(strip, cr, out.cr);
    return out.planes(1);
  };
  walkPixels<transposed, 1, true>(
      {.dst = dst,
       .convert = convert,
       .place = kernels.place,
       .width = call.dstWidth & ~1,
       .rows = {rows.first, rows.end & ~1},
       .shape = unscaled ? tallTile : wideTile},
      [=](const Tile&) { return !unscaled; }, makeSamples);
}

void resizeRotateConvert(const PreviewCall& call, RowRange rows, const PreviewKernels& kernels) {
  const int format = call.dstFormat - vekiCsc420RGB565;
  const PixelConversion convert = {.paired = kernels.csc.paired.of(format),
                                   .single = kernels.csc.single.of(format),
                                   .bytes = pixelBytes(call.dstFormat)};
  const OrientedPlane dst(call.dstPlane(0), orientationOf(call.rotation), call.dstWidth,
                          call.dstHeight, convert.bytes);
  const auto resize = dst.transposed ? resizeConvert<true> : resizeConvert<false>;
  resize(call, rows, kernels, convert, dst);
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
