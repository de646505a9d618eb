// YCbCr 4:2:0 resize and rotate.
#include "vek/camera.h"

#include "camera/preview/reduce_rows.h"
#include "camera/preview/sampling.h"
#include "camera/preview/tile_walk.h"
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
  const int rowBytes = isQuarterTurn(rotation) ? dstHeight : dstWidth;
  if (dstStep[0] < rowBytes || dstStep[1] < rowBytes / 2 || dstStep[2] < rowBytes / 2) {
    return vekStsBadArgErr;
  }
  return vekStsNoErr;
}

struct Planes420 {
  Plane<const Vek8u> src[3];
  Plane<Vek8u> dst[3];
};

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
  const ReduceRows& rows = select(reduceRows);
  const ptrdiff_t inset = factor == 4 ? 1 : 0;
  for (ptrdiff_t y = 0; y < height; ++y) {
    const Vek8u* top = src.row(factor * y + inset) + inset;
    rows.sumBlocks(top, top + src.step, factor, width, dst.row(y));
  }
}

/// One plane, reduced to width x height: the second column of each block, in its row `rowInset`.
void pickPlane(Plane<const Vek8u> src, Plane<Vek8u> dst, int factor, ptrdiff_t rowInset, int width,
               int height) {
  const ReduceRows& rows = select(reduceRows);
  for (ptrdiff_t y = 0; y < height; ++y) {
    rows.pick(src.row(factor * y + rowInset) + 1, factor, width, dst.row(y));
  }
}

void reduce(const Planes420& planes, const Scaling& scaling, int factor) {
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

/// Samples a plane at the nearest columns and rows and turns it.
void resizeNearest(Plane<const Vek8u> src, Vek8u* dst, const Orientation& at,
                   const Scaling& scaling, int width, int height) {
  const ResampleRows& rows = select(resampleRows);
  const auto makeTile = [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t count, Vek8u* out,
                            ptrdiff_t step) {
    for (ptrdiff_t end = y + count; y < end; ++y, out += step) {
      const Vek32u phase = halfSample + static_cast<Vek32u>(y) * scaling.yStep;
      putRow(nearestRow(rows, src.row(phase >> 16), scaling.xStep, x, n, out), n, out);
    }
  };
  walkTiles(dst, at, 1, width, {0, height}, makeTile);
}

/// Blends luma. A row that would start at or below the last source row starts just above it.
void resizeBilinear(Plane<const Vek8u> src, int srcWidth, int srcHeight, Vek8u* dst,
                    const Orientation& at, const Scaling& scaling) {
  const ResampleRows& rows = select(resampleRows);
  const Vek32u lastPhase = lastRowPhase(srcHeight);
  const auto makeTile = [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t count, Vek8u* out,
                            ptrdiff_t step) {
    for (ptrdiff_t end = y + count; y < end; ++y, out += step) {
      Vek32u phase = static_cast<Vek32u>(y) * scaling.yStep;
      if (phase >= lastPhase) phase = lastPhase - 1;
      putRow(bilinearRow(rows, src, srcWidth - 1, phase, scaling.xStep, x, n, out), n, out);
    }
  };
  walkTiles(dst, at, 1, scaling.width, {0, scaling.height}, makeTile);
}

void _vekiYCbCr420RszRot_8u_P3R(const Planes420& planes, int srcWidth, int srcHeight,
                                const Scaling& scaling, int rotation) {
  if (rotation == vekiRotNone) {
    const int factor = exactReduction(srcWidth, srcHeight, scaling);
    if (factor != 0) return reduce(planes, scaling, factor);
  }
  const int width = scaling.width, height = scaling.height;
  const auto place = [&](int i) {
    return i == 0 ? orientation(rotation, width, height, 1, planes.dst[0].step)
                  : orientation(rotation, width / 2, height / 2, 1, planes.dst[i].step);
  };
  if (scaling.bilinear) {
    resizeBilinear(planes.src[0], srcWidth, srcHeight, planes.dst[0].data, place(0), scaling);
  } else {
    resizeNearest(planes.src[0], planes.dst[0].data, place(0), scaling, width, height);
  }
  Orientation red = place(2);
  // Mirrored top-bottom, the rows of Cr are as far apart as those of Cb.
  if (rotation == vekiMirrorTopBottom) red.dy = -planes.dst[1].step;
  resizeNearest(planes.src[1], planes.dst[1].data, place(1), scaling, width / 2, height / 2);
  resizeNearest(planes.src[2], planes.dst[2].data, red, scaling, width / 2, height / 2);
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
  vek::Planes420 planes;
  for (int i = 0; i < 3; ++i) {
    planes.src[i] = {pSrc[i], srcStep[i]};
    planes.dst[i] = {pDst[i], dstStep[i]};
  }
  const vek::Scaling scaling = {dstWidth, dstHeight, interpolation == 1, static_cast<Vek32u>(xStep),
                                static_cast<Vek32u>(yStep)};
  vek::_vekiYCbCr420RszRot_8u_P3R(planes, srcWidth, srcHeight, scaling, rotation);
  return vekStsNoErr;
}
