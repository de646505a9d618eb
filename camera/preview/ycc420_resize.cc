// YCbCr 4:2:0 resize and rotate.
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
         anyMisaligned(c.src, 8, 8) || anyMisaligned(c.dst, 4, 2) || c.hasEmptyImage() ||
         c.hasSamplingStepBelowOne() || c.hasSamplingStepAboveLimit() ||
         anyMisaligned(c.srcStep, 8, 8) || anyMisaligned(c.dstStep, 4, 2) || isOdd(c.dstWidth) ||
         isOdd(c.dstHeight) || c.hasSourceStepBelowOne() || c.hasPlaneStepBelowOne() ||
         c.hasShortSourceRow() || c.hasUnknownInterpolation() || c.hasUnknownRotation() ||
         c.hasShortPlaneRow();
}

/// The size of a scaled plane, as the source is oriented.
VekiSize scaledSize(const PreviewCall& call, int plane) {
  if (plane == 0) return {call.dstWidth, call.dstHeight};
  return {call.dstWidth / 2, call.dstHeight / 2};
}

/// The rows of a plane that rows of the image have.
RowRange rowsOfPlane(RowRange rows, int plane) {
  return plane == 0 ? rows : RowRange{rows.first / 2, rows.end / 2};
}

/// The factor, 2 or 4, of an exact reduction; 0 for every other resize.
int exactReduction(const PreviewCall& call) {
  if (call.rotation != vekiRotNone) return 0;
  for (int shift : {1, 2}) {
    if (call.srcWidth >> shift == call.dstWidth && call.srcHeight >> shift == call.dstHeight) {
      return 1 << shift;
    }
  }
  return 0;
}

/// Averages of 2 x 2 samples, from the middle of each block where the factor is 4.
void averagePlane(const ReduceKernels& kernels, Plane<const Vek8u> src, Plane<Vek8u> dst,
                  int factor, ptrdiff_t width, RowRange rows) {
  const auto sumBlocks = kernels.sumBlocks(factor);
  const ptrdiff_t inset = factor == 4 ? 1 : 0;
  for (ptrdiff_t y = rows.first; y < rows.end; ++y) {
    const Vek8u* top = src.row(factor * y + inset) + inset;
    sumBlocks(top, top + src.step, width, dst.row(y));
  }
}

/// The second column of each block, in its row `rowInset`.
void pickPlane(const ReduceKernels& kernels, Plane<const Vek8u> src, Plane<Vek8u> dst, int factor,
               ptrdiff_t rowInset, ptrdiff_t width, RowRange rows) {
  const auto pick = kernels.pick(factor);
  for (ptrdiff_t y = rows.first; y < rows.end; ++y) {
    pick(src.row(factor * y + rowInset) + 1, width, dst.row(y));
  }
}

void reduce(const PreviewCall& call, RowRange rows, const ReduceKernels& kernels, int factor) {
  for (int i = 0; i < 3; ++i) {
    const int width = scaledSize(call, i).width;
    const RowRange planeRows = rowsOfPlane(rows, i);
    if (call.isBilinear()) {
      averagePlane(kernels, call.srcPlane(i), call.dstPlane(i), factor, width, planeRows);
    } else {
      // @quirk Cr is read with the row step of Cb, and from the first row of each block: callers have
      // equal chroma steps, and compare the bytes.
      const bool isCr = i == 2;
      const Plane<const Vek8u> src = {call.src[i], call.srcStep[isCr ? 1 : i]};
      pickPlane(kernels, src, call.dstPlane(i), factor, factor == 4 && !isCr ? 1 : 0, width,
                planeRows);
    }
  }
}

void resizeRotate(const PreviewCall& call, RowRange rows, const PreviewKernels& kernels) {
  if (const int factor = exactReduction(call); factor != 0) {
    return reduce(call, rows, kernels.reduce, factor);
  }
  const auto sourceRow = [&](ptrdiff_t y) {
    return (halfSample + static_cast<Vek32u>(y) * call.rowStep()) >> 16;
  };
  // A row that would be sampled at or below the last source row is sampled just above it.
  const Vek32u lastPhase = lastRowPhase(call.srcHeight);
  const auto rowPhase = [&](ptrdiff_t y) {
    const Vek32u phase = static_cast<Vek32u>(y) * call.rowStep();
    return phase < lastPhase ? phase : lastPhase - 1;
  };
  for (int i = 0; i < 3; ++i) {
    const VekiSize size = scaledSize(call, i);
    OrientedPlane dst(call.dstPlane(i), orientationOf(call.rotation), size.width, size.height);
    // @quirk Mirrored top-bottom, the rows of Cr are as far apart as those of Cb: callers have equal
    // chroma steps, or provide that memory.
    if (call.rotation == vekiMirrorTopBottom && i == 2) dst.dy = -ptrdiff_t{call.dstStep[1]};
    const RowRange planeRows = rowsOfPlane(rows, i);
    if (i == 0 && call.isBilinear()) {
      resizeBilinear(call, kernels, dst, planeRows, rowPhase);
    } else {
      resizeNearest(call, kernels, call.srcPlane(i), dst, size.width, planeRows, sourceRow);
    }
  }
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiYCbCr420RszRot_8u_P3R(const Vek8u* const pSrc[3], const int srcStep[3], int srcWidth,
                                    int srcHeight, Vek8u* const pDst[3], const int dstStep[3],
                                    int dstWidth, int dstHeight, int interpolation, int rotation,
                                    int xStep, int yStep) {
  return vekiYCbCr420RszRotRows_8u_P3R(pSrc, srcStep, srcWidth, srcHeight, pDst, dstStep, dstWidth,
                                       dstHeight, interpolation, rotation, xStep, yStep, 0,
                                       dstHeight);
}

VekStatus vekiYCbCr420RszRotRows_8u_P3R(const Vek8u* const pSrc[3], const int srcStep[3],
                                        int srcWidth, int srcHeight, Vek8u* const pDst[3],
                                        const int dstStep[3], int dstWidth, int dstHeight,
                                        int interpolation, int rotation, int xStep, int yStep,
                                        int firstRow, int rowCount) {
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
  if (vek::isRefused(call) || call.hasWrongRows(firstRow, rowCount)) return vekStsBadArgErr;
  const vek::RowRange rows = {firstRow, ptrdiff_t{firstRow} + rowCount};
  vek::resizeRotate(call, rows, vek::previewKernels(vek::cpuLevel()));
  return vekStsNoErr;
}

}  // extern "C"
