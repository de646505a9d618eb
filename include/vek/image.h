/** @file image.h
 *  The image sub-library: primitives on 8-bit images with one channel (C1) or three interleaved
 *  channels (C3), planar and packed colour conversions, filters and norms.
 *
 *  Null pointers are answered with vekStsNullPtrErr. Each family's comment gives the order of its
 *  checks: some test steps before sizes, some sizes before steps.
 */
#ifndef VEK_IMAGE_H
#define VEK_IMAGE_H

#include "vek/vek.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ==== Colour: YCbCr and YUV ================================================================== */

/* ==== Colour: gray, twist, XYZ, YCC, LUV, HLS, HSV =========================================== */

/* ==== Arithmetic with scale factor =========================================================== */

/* Common to the pointwise functions of this section and the next.
 *
 * Every sample of the destination depends on the samples at the same place of the sources. C3 forms
 * take interleaved channels; their constants are one for each channel, in channel order. A source
 * may be the destination (same pointer, same step); other overlap is not allowed. Nothing needs
 * alignment, and the size of the region is limited only by memory. */

/** Arithmetic on 8-bit samples with a scale factor.
 *
 *  From the exact value e (0..65025) of each sample the result is e * 2^-scaleFactor, rounded half
 *  up and saturated to 0..255:
 *  - scaleFactor > 0: (e + 2^(scaleFactor - 1)) >> scaleFactor, which is 0 for factors above 16;
 *  - scaleFactor = 0: e;
 *  - scaleFactor < 0: e << -scaleFactor. Below -7 everything but 0 becomes 255.
 *  Every int is a valid scale factor.
 *
 *  Add:  e = srcA + srcB              AddC: e = src + value
 *  Sub:  e = srcB - srcA, at least 0  SubC: e = src - value, at least 0
 *  Mul:  e = srcA * srcB              MulC: e = src * value
 *  Sqr:  e = src * src
 *  Mind the order of Sub: it takes the first image from the second. Negative differences become 0
 *  before they are scaled.
 *
 *  Returns vekStsNoErr, or, in this order: vekStsNullPtrErr if an image or (C3) value is null;
 *  vekStsStepErr if a step is below 1; vekStsSizeErr if the width or the height is below 1. */
VEK_API VekStatus vekiAdd_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                    int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                                    int scaleFactor);
VEK_API VekStatus vekiAdd_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                    int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                                    int scaleFactor);
VEK_API VekStatus vekiAddC_8u_C1RSfs(const Vek8u* pSrc, int srcStep, Vek8u value, Vek8u* pDst,
                                     int dstStep, VekiSize roiSize, int scaleFactor);
VEK_API VekStatus vekiAddC_8u_C3RSfs(const Vek8u* pSrc, int srcStep, const Vek8u value[3],
                                     Vek8u* pDst, int dstStep, VekiSize roiSize, int scaleFactor);
VEK_API VekStatus vekiSub_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                    int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                                    int scaleFactor);
VEK_API VekStatus vekiSub_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                    int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                                    int scaleFactor);
VEK_API VekStatus vekiSubC_8u_C1RSfs(const Vek8u* pSrc, int srcStep, Vek8u value, Vek8u* pDst,
                                     int dstStep, VekiSize roiSize, int scaleFactor);
VEK_API VekStatus vekiSubC_8u_C3RSfs(const Vek8u* pSrc, int srcStep, const Vek8u value[3],
                                     Vek8u* pDst, int dstStep, VekiSize roiSize, int scaleFactor);
VEK_API VekStatus vekiMul_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                    int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                                    int scaleFactor);
VEK_API VekStatus vekiMul_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                    int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                                    int scaleFactor);
VEK_API VekStatus vekiMulC_8u_C1RSfs(const Vek8u* pSrc, int srcStep, Vek8u value, Vek8u* pDst,
                                     int dstStep, VekiSize roiSize, int scaleFactor);
VEK_API VekStatus vekiMulC_8u_C3RSfs(const Vek8u* pSrc, int srcStep, const Vek8u value[3],
                                     Vek8u* pDst, int dstStep, VekiSize roiSize, int scaleFactor);
VEK_API VekStatus vekiSqr_8u_C1RSfs(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                    VekiSize roiSize, int scaleFactor);
VEK_API VekStatus vekiSqr_8u_C3RSfs(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                    VekiSize roiSize, int scaleFactor);

/** Multiplication of samples that stand for 0..1: with p = srcA * srcB, or src * value, the result
 *  is (p + (p >> 8) + 1) >> 8, which is p / 255 without its fraction. Multiplying by 255 changes
 *  nothing. Checks as above. */
VEK_API VekStatus vekiMulScale_8u_C1R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                      int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiMulScale_8u_C3R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                      int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiMulCScale_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u value, Vek8u* pDst,
                                       int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiMulCScale_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek8u value[3],
                                       Vek8u* pDst, int dstStep, VekiSize roiSize);

/* ==== Logic, shifts, thresholds, set, copy =================================================== */

/* ==== Linear filters ========================================================================= */

/* ==== Median, morphology, mirror, gamma ====================================================== */

/* ==== Norms ================================================================================== */

#ifdef __cplusplus
}
#endif

#endif /* VEK_IMAGE_H */
