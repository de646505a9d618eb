// YCbCr 4:2:0 resize and rotate.
#include "vek/camera.h"

#include "camera/preview/plane_resize.h"
#include "camera/preview/reduce_kernels.h"
#include "core/check.h"
#include "core/region.h"

namespace vek {
namespace {

VekStatus check(const Vek8u* const* pSrc, const int* srcStep, int srcWidth, int srcHeight,
                Vek8u* const* pDst, const int* dstStep, int dstWidth, int dstHeight,
                int interpolation, int rotation, int xStep, int yStep) {
  if (anyPlaneNull(pSrc) || anyPlaneNull(pDst) || anyNull({srcStep, dstStep})) {
    return vekStsBadArgErr;
  }
  if (isMisaligned(pSrc[0], 8) || isMisaligned(pSrc[1], 8) || isMisaligned(pSrc[2], 8) ||
      isMisaligned(pDst[0], 4) || isMisaligned(pDst[1], 2) || isMisaligned(pDst[2], 2) ||
      anyBelowOne({srcWidth, srcHeight, dstWidth, dstHeight})) {
    return vekStsBadArgErr;
  }
  if (anyBelowOne({xStep, yStep}) || stepTooLarge(xStep, srcWidth, dstWidth) ||
      stepTooLarge(yStep, srcHeight, dstHeight)) {
    return vekStsBadArgErr;
  }
  if (isMisaligned(srcStep[0], 8) || isMisaligned(srcStep[1], 8) || isMisaligned(srcStep[2], 8) ||
      isMisaligned(dstStep[0], 4) || isOdd(dstStep[1]) || isOdd(dstStep[2]) || isOdd(dstWidth) ||
      isOdd(dstHeight) ||
      anyBelowOne({srcStep[0], srcStep[1], srcStep[2], dstStep[0], dstStep[1], dstStep[2]}) ||
      srcStep[0] < srcWidth || srcStep[1] < srcWidth / 2 || srcStep[2] < srcWidth / 2) {
    return vekStsBadArgErr;
  }
  if (interpolation < 0 || interpolation > 1 || rotation < vekiRotNone ||
      rotation > vekiMirrorTopBottom) {
    return vekStsBadArgErr;
  }
  const int rowBytes = isTransposed(rotation) ? dstHeight : dstWidth;
  if (dstStep[0] < rowBytes || dstStep[1] < rowBytes / 2 || dstStep[2] < rowBytes / 2) {
    return vekStsBadArgErr;
  }
  return vekStsNoErr;
}

/// The factor, 2 or 4, of an exact reduction; 0 for every other resize.
int exactReduction(int srcWidth, int srcHeight, const Scaling& scaling) {
  for (int shift : {1, 2}) {
    if (srcWidth >> shift == scaling.width && srcHeight >> shift == scaling.height) {
      return 1 << shift;
    }
  }
  return 0;
}

/// One plane, reduced to width x height: averages of 2 x 2 samples, from the middle of each block
/// where the factor is 4.
void averagePlane(Plane<const Vek8u> src, Plane<Vek8u> dst, int factor, int width, int height) {
  const ReduceKernels& rows = select(reduceKernels);
  const ptrdiff_t inset = factor == 4 ? 1 : 0;
  for (ptrdiff_t y = 0; y < height; ++y) {
    const Vek8u* top = src.row(factor * y + inset) + inset;
    rows.sumBlocks(top, top + src.step, factor, width, dst.row(y));
  }
}

/// One plane, reduced to width x height: the second column of each block, in its row `rowInset`.
void pickPlane(Plane<const Vek8u> src, Plane<Vek8u> dst, int factor, ptrdiff_t rowInset, int width,
               int height) {
  const ReduceKernels& rows = select(reduceKernels);
  for (ptrdiff_t y = 0; y < height; ++y) {
    rows.pick(src.row(factor * y + rowInset) + 1, factor, width, dst.row(y));
  }
}

void reduce(const PlanarResize& planes, const Scaling& scaling, int factor) {
  for (int i = 0; i < 3; ++i) {
    const int width = i == 0 ? scaling.width : scaling.width / 2;
    const int height = i == 0 ? scaling.height : scaling.height / 2;
    if (scaling.bilinear) {
      averagePlane(planes.src[i], planes.dst[i], factor, width, height);
    } else {
      // Cr is addressed with the row step of Cb, and taken from the first row of each block.
      const Plane<const Vek8u> src = {planes.src[i].data, planes.src[i == 2 ? 1 : i].step};
      pickPlane(src, planes.dst[i], factor, factor == 4 && i != 2 ? 1 : 0, width, height);
    }
  }
}

void _vekiYCbCr420RszRot_8u_P3R(const PlanarResize& planes, int srcWidth, int srcHeight,
                                const Scaling& scaling, int rotation) {
  if (rotation == vekiRotNone) {
    const int factor = exactReduction(srcWidth, srcHeight, scaling);
    if (factor != 0) return reduce(planes, scaling, factor);
  }
  const auto sourceRow = [&](ptrdiff_t y) {
    return (halfSample + static_cast<Vek32u>(y) * scaling.yStep) >> 16;
  };
  // A row that would start at or below the last source row starts just above it.
  const Vek32u lastPhase = lastRowPhase(srcHeight);
  const auto rowPhase = [&](ptrdiff_t y) {
    const Vek32u phase = static_cast<Vek32u>(y) * scaling.yStep;
    return phase < lastPhase ? phase : lastPhase - 1;
  };
  for (int i = 0; i < 3; ++i) {
    const int width = i == 0 ? scaling.width : scaling.width / 2;
    const int height = i == 0 ? scaling.height : scaling.height / 2;
    const Plane<const Vek8u> src = planes.src[i];
    OrientedPlane dst(planes.dst[i], orientationOf(rotation), width, height);
    // Mirrored top-bottom, the rows of Cr are as far apart as those of Cb.
    if (rotation == vekiMirrorTopBottom && i == 2) dst.dy = -planes.dst[1].step;
    if (i == 0 && scaling.bilinear) {
      resizeBilinear(src, srcWidth, dst, scaling.xStep, width, {0, height}, rowPhase);
    } else {
      resizeNearest(src, dst, scaling, width, {0, height}, sourceRow);
    }
  }
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiYCbCr420RszRot_8u_P3R(const Vek8u* const pSrc[3], const int srcStep[3],
                                               int srcWidth, int srcHeight, Vek8u* const pDst[3],
                                               const int dstStep[3], int dstWidth, int dstHeight,
                                               int interpolation, int rotation, int xStep,
                                               int yStep) {
  const VekStatus status = vek::check(pSrc, srcStep, srcWidth, srcHeight, pDst, dstStep, dstWidth,
                                      dstHeight, interpolation, rotation, xStep, yStep);
  if (status != vekStsNoErr) return status;
  const vek::Scaling scaling(dstWidth, dstHeight, interpolation, xStep, yStep);
  vek::_vekiYCbCr420RszRot_8u_P3R({pSrc, srcStep, pDst, dstStep}, srcWidth, srcHeight, scaling,
                                  rotation);
  return vekStsNoErr;
}
