// Thresholds. @quirk Steps are not tested: rows may overlap or run upwards.
#include "vek/image.h"

#include "image/arith/threshold_kernels.h"

namespace vek {
namespace {

template <class... Constants>
VekStatus check(const Vek8u* pSrc, const Vek8u* pDst, VekiSize roi, Constants... constants) {
  return checkPointersSizeSteps({pSrc, pDst, constants...}, roi, {});
}

/// `constants` point to the thresholds and values, each one a channel.
template <class... Constants>
void apply(ThresholdRow kernel, const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
           VekiSize roi, int channels, Constants... constants) {
  const Pattern patterns[] = {Pattern(constants, channels)...};
  const auto row = [&](ptrdiff_t n, Vek8u* dst, const Vek8u* src) {
    kernel(src, patterns, n, dst);
  };
  forEachRow(rowBytes(roi, channels), roi.height, row, Plane{pDst, dstStep}, Plane{pSrc, srcStep});
}

template <class... Constants>
VekStatus threshold(ThresholdRow kernel, const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                    VekiSize roi, int channels, Constants... constants) {
  const VekStatus status = check(pSrc, pDst, roi, constants...);
  if (status != vekStsNoErr) return status;
  apply(kernel, pSrc, srcStep, pDst, dstStep, roi, channels, constants...);
  return vekStsNoErr;
}

/// The form with two thresholds, whose order is tested last.
VekStatus thresholdBoth(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep, VekiSize roi,
                        int channels, const Vek8u* low, const Vek8u* valueLow, const Vek8u* high,
                        const Vek8u* valueHigh) {
  const VekStatus status = check(pSrc, pDst, roi, low, valueLow, high, valueHigh);
  if (status != vekStsNoErr) return status;
  for (int c = 0; c < channels; ++c) {
    if (high[c] < low[c]) return vekStsThresholdErr;
  }
  apply(select(thresholdKernels).ltValGtVal, pSrc, srcStep, pDst, dstStep, roi, channels, low,
        valueLow, high, valueHigh);
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiThreshold_GT_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize, Vek8u threshold) {
  return vek::threshold(vek::select(vek::thresholdKernels).gt, pSrc, srcStep, pDst, dstStep,
                        roiSize, 1, &threshold);
}

extern "C" VekStatus vekiThreshold_GT_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize,
                                             const Vek8u threshold[3]) {
  return vek::threshold(vek::select(vek::thresholdKernels).gt, pSrc, srcStep, pDst, dstStep,
                        roiSize, 3, threshold);
}

extern "C" VekStatus vekiThreshold_LT_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize, Vek8u threshold) {
  return vek::threshold(vek::select(vek::thresholdKernels).lt, pSrc, srcStep, pDst, dstStep,
                        roiSize, 1, &threshold);
}

extern "C" VekStatus vekiThreshold_LT_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize,
                                             const Vek8u threshold[3]) {
  return vek::threshold(vek::select(vek::thresholdKernels).lt, pSrc, srcStep, pDst, dstStep,
                        roiSize, 3, threshold);
}

extern "C" VekStatus vekiThreshold_GTVal_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                int dstStep, VekiSize roiSize, Vek8u threshold,
                                                Vek8u value) {
  return vek::threshold(vek::select(vek::thresholdKernels).gtVal, pSrc, srcStep, pDst, dstStep,
                        roiSize, 1, &threshold, &value);
}

extern "C" VekStatus vekiThreshold_GTVal_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                int dstStep, VekiSize roiSize,
                                                const Vek8u threshold[3], const Vek8u value[3]) {
  return vek::threshold(vek::select(vek::thresholdKernels).gtVal, pSrc, srcStep, pDst, dstStep,
                        roiSize, 3, threshold, value);
}

extern "C" VekStatus vekiThreshold_LTVal_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                int dstStep, VekiSize roiSize, Vek8u threshold,
                                                Vek8u value) {
  return vek::threshold(vek::select(vek::thresholdKernels).ltVal, pSrc, srcStep, pDst, dstStep,
                        roiSize, 1, &threshold, &value);
}

extern "C" VekStatus vekiThreshold_LTVal_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                int dstStep, VekiSize roiSize,
                                                const Vek8u threshold[3], const Vek8u value[3]) {
  return vek::threshold(vek::select(vek::thresholdKernels).ltVal, pSrc, srcStep, pDst, dstStep,
                        roiSize, 3, threshold, value);
}

extern "C" VekStatus vekiThreshold_LTValGTVal_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                     int dstStep, VekiSize roiSize,
                                                     Vek8u thresholdLT, Vek8u valueLT,
                                                     Vek8u thresholdGT, Vek8u valueGT) {
  return vek::thresholdBoth(pSrc, srcStep, pDst, dstStep, roiSize, 1, &thresholdLT, &valueLT,
                            &thresholdGT, &valueGT);
}

extern "C" VekStatus vekiThreshold_LTValGTVal_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                     int dstStep, VekiSize roiSize,
                                                     const Vek8u thresholdLT[3],
                                                     const Vek8u valueLT[3],
                                                     const Vek8u thresholdGT[3],
                                                     const Vek8u valueGT[3]) {
  return vek::thresholdBoth(pSrc, srcStep, pDst, dstStep, roiSize, 3, thresholdLT, valueLT,
                            thresholdGT, valueGT);
}
