// Norms of images, of differences of images, and their quotients.
#include "vek/image.h"

#include "core/check.h"
#include "core/region.h"
#include "image/stat/norm_kernels.h"
#include "image/stat/norm_scale.h"

namespace vek {
namespace {

/// Bytes of each image that a relative norm goes through twice, while they are still cached.
constexpr ptrdiff_t stripBytes = 65536;

struct Totals {
  uint64_t channel[3] = {};
};

/// Totals of Inf and L1.
VekStatus scaleTotals(const Totals& totals, int channels, int scaleFactor, Vek32s* pNorm) {
  for (int c = 0; c < channels; ++c) {
    pNorm[c] = scaleNorm(static_cast<Vek32u>(totals.channel[c]), scaleFactor);
  }
  return vekStsNoErr;
}

/// Totals of L2.
VekStatus scaleRoots(const Totals& totals, int channels, int scaleFactor, Vek32s* pNorm) {
  VekStatus status = vekStsNoErr;
  for (int c = 0; c < channels; ++c) {
    if (!scaleRoot(totals.channel[c], scaleFactor, &pNorm[c])) status = vekStsSqrtWrn;
  }
  return status;
}

/// What makes a norm Inf, L1 or L2.
struct Kind {
  MeasureKernels NormKernels::*image;
  MeasureKernels NormKernels::*difference;
  uint64_t countingBits;  ///< of a total
  VekStatus (*scale)(const Totals& totals, int channels, int scaleFactor, Vek32s* pNorm);
  VekStatus (*relative)(uint64_t d, uint64_t r, int scaleFactor, Vek32s* result);
};
constexpr Kind inf = {&NormKernels::inf, &NormKernels::diffInf, 0xFF, scaleTotals, relativeInf};
constexpr Kind l1 = {&NormKernels::l1, &NormKernels::diffL1, 0xFFFFFFFF, scaleTotals, relativeL1};
constexpr Kind l2 = {&NormKernels::l2, &NormKernels::diffL2, UINT64_MAX, scaleRoots, relativeL2};

/// Rows without padding are one long row.
void accumulate(NormKernel kernel, NormRegion region, Totals& totals) {
  const Plane<const Vek8u> first = {region.a, region.aStep}, second = {region.b, region.bStep};
  const Extent extent = joinedRows(region.rowBytes, region.rows, first, second);
  region.rowBytes = extent.n;
  region.rows = extent.rows;
  kernel(region, totals.channel);
}

NormRegion regionOf(const Vek8u* a, int aStep, const Vek8u* b, int bStep, VekiSize roi,
                    int channels) {
  return {a, aStep, b, bStep, ptrdiff_t{roi.width} * channels, roi.height};
}

VekStatus norm(const Kind& kind, int channels, const Vek8u* pSrc, int srcStep, VekiSize roi,
               Vek32s* pNorm, int scaleFactor) {
  const VekStatus status = checkPointersSizeSteps({pNorm, pSrc}, roi, {srcStep});
  if (status != vekStsNoErr) return status;
  Totals totals;
  accumulate((select(normKernels).*kind.image).of(channels),
             regionOf(pSrc, srcStep, pSrc, srcStep, roi, channels), totals);
  return kind.scale(totals, channels, scaleFactor, pNorm);
}

VekStatus normDiff(const Kind& kind, int channels, const Vek8u* pSrcA, int srcAStep,
                   const Vek8u* pSrcB, int srcBStep, VekiSize roi, Vek32s* pNorm, int scaleFactor) {
  const VekStatus status = checkPointersSizeSteps({pSrcB, pSrcA, pNorm}, roi, {srcAStep, srcBStep});
  if (status != vekStsNoErr) return status;
  Totals totals;
  accumulate((select(normKernels).*kind.difference).of(channels),
             regionOf(pSrcA, srcAStep, pSrcB, srcBStep, roi, channels), totals);
  return kind.scale(totals, channels, scaleFactor, pNorm);
}

/// Of one channel: d / r, tested for zeros in this order.
VekStatus quotient(const Kind& kind, uint64_t d, uint64_t r, int scaleFactor, Vek32s* result) {
  if (r == 0) {
    *result = static_cast<Vek32s>(maxNorm);
    return vekStsDivByZero;
  }
  if (d == 0) {
    *result = 0;
    return vekStsNoErr;
  }
  return kind.relative(d, r, scaleFactor, result);
}

VekStatus normRel(const Kind& kind, int channels, const Vek8u* pSrcA, int srcAStep,
                  const Vek8u* pSrcB, int srcBStep, VekiSize roi, Vek32s* pNorm, int scaleFactor) {
  const VekStatus status = checkPointersSizeSteps({pSrcB, pSrcA, pNorm}, roi, {srcAStep, srcBStep});
  if (status != vekStsNoErr) return status;
  const NormKernels& kernels = select(normKernels);
  const NormKernel ofDifference = (kernels.*kind.difference).of(channels);
  const NormKernel ofSecond = (kernels.*kind.image).of(channels);
  NormRegion strip = regionOf(pSrcA, srcAStep, pSrcB, srcBStep, roi, channels);
  Totals difference, second;
  const ptrdiff_t stripRows = strip.rowBytes < stripBytes ? stripBytes / strip.rowBytes : 1;
  for (ptrdiff_t left = roi.height; left > 0; left -= strip.rows) {
    strip.rows = left < stripRows ? left : stripRows;
    accumulate(ofDifference, strip, difference);
    const NormRegion secondStrip = {strip.b,     strip.bStep,    strip.b,
                                    strip.bStep, strip.rowBytes, strip.rows};
    accumulate(ofSecond, secondStrip, second);
    strip.a += strip.rows * strip.aStep;
    strip.b += strip.rows * strip.bStep;
  }
  // A channel of zeros outweighs one that does not fit.
  VekStatus worst = vekStsNoErr;
  for (int c = 0; c < channels; ++c) {
    const VekStatus one = quotient(kind, difference.channel[c] & kind.countingBits,
                                   second.channel[c] & kind.countingBits, scaleFactor, &pNorm[c]);
    worst = one > worst ? one : worst;
  }
  return worst;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiNorm_Inf_8u_C1RSfs(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                                            Vek32s* pNorm, int scaleFactor) {
  return vek::norm(vek::inf, 1, pSrc, srcStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNorm_Inf_8u_C3RSfs(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                                            Vek32s* pNorm, int scaleFactor) {
  return vek::norm(vek::inf, 3, pSrc, srcStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNorm_L1_8u_C1RSfs(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                                           Vek32s* pNorm, int scaleFactor) {
  return vek::norm(vek::l1, 1, pSrc, srcStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNorm_L1_8u_C3RSfs(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                                           Vek32s* pNorm, int scaleFactor) {
  return vek::norm(vek::l1, 3, pSrc, srcStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNorm_L2_8u_C1RSfs(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                                           Vek32s* pNorm, int scaleFactor) {
  return vek::norm(vek::l2, 1, pSrc, srcStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNorm_L2_8u_C3RSfs(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                                           Vek32s* pNorm, int scaleFactor) {
  return vek::norm(vek::l2, 3, pSrc, srcStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNormDiff_Inf_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep,
                                                const Vek8u* pSrcB, int srcBStep, VekiSize roiSize,
                                                Vek32s* pNorm, int scaleFactor) {
  return vek::normDiff(vek::inf, 1, pSrcA, srcAStep, pSrcB, srcBStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNormDiff_Inf_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep,
                                                const Vek8u* pSrcB, int srcBStep, VekiSize roiSize,
                                                Vek32s* pNorm, int scaleFactor) {
  return vek::normDiff(vek::inf, 3, pSrcA, srcAStep, pSrcB, srcBStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNormDiff_L1_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                               int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                               int scaleFactor) {
  return vek::normDiff(vek::l1, 1, pSrcA, srcAStep, pSrcB, srcBStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNormDiff_L1_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                               int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                               int scaleFactor) {
  return vek::normDiff(vek::l1, 3, pSrcA, srcAStep, pSrcB, srcBStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNormDiff_L2_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                               int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                               int scaleFactor) {
  return vek::normDiff(vek::l2, 1, pSrcA, srcAStep, pSrcB, srcBStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNormDiff_L2_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                               int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                               int scaleFactor) {
  return vek::normDiff(vek::l2, 3, pSrcA, srcAStep, pSrcB, srcBStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNormRel_Inf_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                               int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                               int scaleFactor) {
  return vek::normRel(vek::inf, 1, pSrcA, srcAStep, pSrcB, srcBStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNormRel_Inf_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                               int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                               int scaleFactor) {
  return vek::normRel(vek::inf, 3, pSrcA, srcAStep, pSrcB, srcBStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNormRel_L1_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                              int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                              int scaleFactor) {
  return vek::normRel(vek::l1, 1, pSrcA, srcAStep, pSrcB, srcBStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNormRel_L1_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                              int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                              int scaleFactor) {
  return vek::normRel(vek::l1, 3, pSrcA, srcAStep, pSrcB, srcBStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNormRel_L2_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                              int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                              int scaleFactor) {
  return vek::normRel(vek::l2, 1, pSrcA, srcAStep, pSrcB, srcBStep, roiSize, pNorm, scaleFactor);
}

extern "C" VekStatus vekiNormRel_L2_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                              int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                              int scaleFactor) {
  return vek::normRel(vek::l2, 3, pSrcA, srcAStep, pSrcB, srcBStep, roiSize, pNorm, scaleFactor);
}
