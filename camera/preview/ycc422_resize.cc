// YCbCr 4:2:2 resize and rotate.
#include "vek/camera.h"

#include "camera/preview/plane_resize.h"
#include "core/check.h"

namespace vek {
namespace {

VekStatus check(const Vek8u* const* pSrc, const int* srcStep, int srcWidth, int srcHeight,
                Vek8u* const* pDst, const int* dstStep, int dstWidth, int dstHeight,
                int interpolation, int rotation, int xStep, int yStep) {
  if (anyPlaneNull(pSrc) || anyPlaneNull(pDst) || anyNull({srcStep, dstStep}) ||
      isMisaligned(pDst[0], 4) || isMisaligned(pSrc[0], 4) || isOdd(dstWidth)) {
    return vekStsBadArgErr;
  }
  if (anyBelowOne({xStep, yStep}) || stepTooLarge(xStep, srcWidth, dstWidth) ||
      stepTooLarge(yStep, srcHeight, dstHeight)) {
    return vekStsBadArgErr;
  }
  if (isMisaligned(srcStep[0], 4) || isMisaligned(dstStep[0], 4) ||
      anyBelowOne({srcStep[0], srcStep[1], srcStep[2], dstStep[0], dstStep[1], dstStep[2]}) ||
      srcStep[0] < srcWidth || srcStep[1] < srcWidth / 2 || srcStep[2] < srcWidth / 2) {
    return vekStsBadArgErr;
  }
  const int rowBytes = isTransposed(rotation) ? dstHeight : dstWidth;
  if (dstStep[0] < rowBytes || dstStep[1] < rowBytes / 2 || dstStep[2] < rowBytes / 2 ||
      interpolation < 0 || interpolation > 1 || rotation < vekiRotNone ||
      rotation > vekiMirrorTopBottom) {
    return vekStsBadArgErr;
  }
  return vekStsNoErr;
}

/// Chroma of a quarter turn. The destination is subsampled along its own rows, so that each pair of
/// source rows becomes one destination column that alternates between the two: the upper rows fill
/// every other destination row, the lower ones those between.
template <class SourceRow>
void resizeTurnedChroma(Plane<const Vek8u> src, const OrientedPlane& dst, const Scaling& scaling,
                        ptrdiff_t width, RowRange rowPairs, SourceRow sourceRow) {
  for (ptrdiff_t lower : {0, 1}) {
    OrientedPlane alternate = dst;
    alternate.first += lower * dst.dx;
    alternate.dx *= 2;
    if (scaling.unscaled()) {
      turnPlane({src.row(lower), 2 * src.step}, alternate, width, rowPairs);
    } else {
      resizeNearest(src, alternate, scaling, width, rowPairs,
                    [&](ptrdiff_t pair) { return sourceRow(2 * pair + lower); });
    }
  }
}

/// Rows are made in pairs. With an odd height the last pair has one row more than the scaled image;
/// it comes last in all planes, as what it writes outside may be another row's or plane's.
void _vekiYCbCr422RszRot_8u_P3R(const PlanarResize& planes, int srcWidth, int srcHeight,
                                const Scaling& scaling, int rotation) {
  const ptrdiff_t width = scaling.width, height = scaling.height;
  const Orientation orientation = orientationOf(rotation);
  const Vek32u lastPhase = lastRowPhase(srcHeight);
  // Only the lower rows of the pairs are kept above the last source row, and not the first of them.
  const auto rowPhase = [&](ptrdiff_t y) {
    const Vek32u phase = static_cast<Vek32u>(y) * scaling.yStep;
    const bool held = scaling.bilinear && (y & 1) != 0 && y > 1 && phase >= lastPhase;
    return held ? lastPhase - 1 : phase;
  };
  const auto sourceRow = [&](ptrdiff_t y) { return (rowPhase(y) + halfSample) >> 16; };

  const auto resizeRows = [&](RowRange rows) {
    const OrientedPlane luma(planes.dst[0], orientation, width, height);
    if (scaling.bilinear) {
      resizeBilinear(planes.src[0], srcWidth, luma, scaling.xStep, width, rows, rowPhase);
    } else {
      resizeNearest(planes.src[0], luma, scaling, width, rows, sourceRow);
    }
    for (int i : {1, 2}) {
      const Plane<Vek8u> dst = planes.dst[i];
      if (orientation.transposed) {
        resizeTurnedChroma(planes.src[i], {dst, orientation, width, height / 2}, scaling, width / 2,
                           {rows.first / 2, rows.end / 2}, sourceRow);
      } else {
        resizeNearest(planes.src[i], {dst, orientation, width / 2, height}, scaling, width / 2,
                      rows, sourceRow);
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
  const VekStatus status = vek::check(pSrc, srcStep, srcWidth, srcHeight, pDst, dstStep, dstWidth,
                                      dstHeight, interpolation, rotation, xStep, yStep);
  if (status != vekStsNoErr) return status;
  const vek::Scaling scaling(dstWidth, dstHeight, interpolation, xStep, yStep);
  vek::_vekiYCbCr422RszRot_8u_P3R({pSrc, srcStep, pDst, dstStep}, srcWidth, srcHeight, scaling,
                                  rotation);
  return vekStsNoErr;
}
