// YCbCr 4:2:2 resize and rotate.
#include "vek/camera.h"

#include "camera/preview/plane_resize.h"
#include "camera/preview/preview_call.h"
#include "camera/preview/preview_kernels.h"
#include "core/check.h"
#include "core/level.h"
#include "core/region.h"

namespace vek {
namespace {

bool isRefused(const PreviewCall& c) {
  return anyPlaneNull(c.src) || anyPlaneNull(c.dst) || anyNull({c.srcStep, c.dstStep}) ||
         anyMisaligned(c.dst, 4, 1) || anyMisaligned(c.src, 4, 1) || isOdd(c.dstWidth) ||
         c.hasSamplingStepBelowOne() || c.hasSamplingStepAboveLimit() ||
         anyMisaligned(c.srcStep, 4, 1) || anyMisaligned(c.dstStep, 4, 1) ||
         c.hasSourceStepBelowOne() || c.hasPlaneStepBelowOne() || c.hasShortSourceRow() ||
         c.hasShortPlaneRow() || c.hasUnknownInterpolation() || c.hasUnknownRotation();
}

/// Chroma of a transposed image. The destination is subsampled along its own rows, so that each pair
/// of source rows becomes one destination column that alternates between the two: the upper rows fill
/// every other destination row, the lower ones those between.
template <class SourceRow>
void resizeTransposedChroma(const PreviewCall& call, const PreviewKernels& kernels,
                            Plane<const Vek8u> src, const OrientedPlane& dst, RowRange rowPairs,
                            SourceRow sourceRow) {
  const ptrdiff_t width = call.dstWidth / 2;
  for (ptrdiff_t lower : {0, 1}) {
    OrientedPlane everyOther = dst;
    everyOther.first += lower * dst.dx;
    everyOther.dx *= 2;
    if (isUnscaled(call)) {
      orientPlane(kernels.place, {src.row(lower), 2 * src.step}, everyOther, width, rowPairs);
    } else {
      resizeNearest(call, kernels, src, everyOther, width, rowPairs,
                    [&](ptrdiff_t pair) { return sourceRow(2 * pair + lower); });
    }
  }
}

/// @quirk Rows are made in pairs. With an odd height the last pair has one row more than the scaled
/// image, which callers provide the memory for. It comes last in all planes, as what it writes outside
/// may be another row's or plane's.
void resizeRotate(const PreviewCall& call, const PreviewKernels& kernels) {
  const ptrdiff_t width = call.dstWidth, height = call.dstHeight;
  const Orientation orientation = orientationOf(call.rotation);
  const Vek32u lastPhase = lastRowPhase(call.srcHeight);
  // @quirk Of the rows that would be sampled at or below the last source row only the lower ones of
  // the pairs are moved to just above it, and row 1 is not.
  const auto rowPhase = [&](ptrdiff_t y) {
    const Vek32u phase = static_cast<Vek32u>(y) * call.rowStep();
    const bool clamped = call.isBilinear() && (y & 1) != 0 && y > 1 && phase >= lastPhase;
    return clamped ? lastPhase - 1 : phase;
  };
  const auto sourceRow = [&](ptrdiff_t y) { return (rowPhase(y) + halfSample) >> 16; };

  const auto resizeRows = [&](RowRange rows) {
    const OrientedPlane luma(call.dstPlane(0), orientation, width, height);
    if (call.isBilinear()) {
      resizeBilinear(call, kernels, luma, rows, rowPhase);
    } else {
      resizeNearest(call, kernels, call.srcPlane(0), luma, width, rows, sourceRow);
    }
    for (int i : {1, 2}) {
      const Plane<const Vek8u> src = call.srcPlane(i);
      if (orientation.transposed) {
        const OrientedPlane chroma(call.dstPlane(i), orientation, width, height / 2);
        resizeTransposedChroma(call, kernels, src, chroma, {rows.first / 2, rows.end / 2},
                               sourceRow);
      } else {
        const OrientedPlane chroma(call.dstPlane(i), orientation, width / 2, height);
        resizeNearest(call, kernels, src, chroma, width / 2, rows, sourceRow);
      }
    }
  };
  const ptrdiff_t evenHeight = height & ~ptrdiff_t{1};
  resizeRows({0, evenHeight});
  if (height != evenHeight) resizeRows({evenHeight, evenHeight + 2});
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiYCbCr422RszRot_8u_P3R(const Vek8u* const pSrc[3], const int srcStep[3],
                                               int srcWidth, int srcHeight, Vek8u* const pDst[3],
                                               const int dstStep[3], int dstWidth, int dstHeight,
                                               int interpolation, int rotation, int xStep,
                                               int yStep) {
  const vek::PreviewCall call = {.src = pSrc,
                                 .srcStep = srcStep,
                                 .srcWidth = srcWidth,
                                 .srcHeight = srcHeight,
                                 .dst = pDst,
                                 .dstStep = dstStep,
                                 .dstWidth = dstWidth,
                                 .dstHeight = dstHeight,
                                 .interpolation = interpolation,
                                 .rotation = rotation,
                                 .xStep = xStep,
                                 .yStep = yStep};
  if (vek::isRefused(call)) return vekStsBadArgErr;
  vek::resizeRotate(call, vek::previewKernels(vek::cpuLevel()));
  return vekStsNoErr;
}
