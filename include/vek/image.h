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

/** Bitwise logic: srcA & srcB, srcA | srcB, srcA ^ srcB; src & value, src | value, src ^ value; and
 *  ~src.
 *
 *  Returns vekStsNoErr, or, in this order: vekStsNullPtrErr if an image or (C3) value is null;
 *  vekStsStepErr if a step is below 1; vekStsSizeErr if the width or the height is below 1. */
VEK_API VekStatus vekiAnd_8u_C1R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB, int srcBStep,
                                 Vek8u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiAnd_8u_C3R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB, int srcBStep,
                                 Vek8u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiOr_8u_C1R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB, int srcBStep,
                                Vek8u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiOr_8u_C3R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB, int srcBStep,
                                Vek8u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiXor_8u_C1R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB, int srcBStep,
                                 Vek8u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiXor_8u_C3R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB, int srcBStep,
                                 Vek8u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiAndC_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u value, Vek8u* pDst,
                                  int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiAndC_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek8u value[3], Vek8u* pDst,
                                  int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiOrC_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u value, Vek8u* pDst,
                                 int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiOrC_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek8u value[3], Vek8u* pDst,
                                 int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiXorC_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u value, Vek8u* pDst,
                                  int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiXorC_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek8u value[3], Vek8u* pDst,
                                  int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiNot_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                 VekiSize roiSize);
VEK_API VekStatus vekiNot_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                 VekiSize roiSize);

/** Logical shifts: src >> value, and src << value without the bits that leave the byte (no
 *  saturation). An amount of 8 or more leaves 0. Checks as for the logic. */
VEK_API VekStatus vekiRShiftC_8u_C1R(const Vek8u* pSrc, int srcStep, Vek32u value, Vek8u* pDst,
                                     int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiRShiftC_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek32u value[3],
                                     Vek8u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiLShiftC_8u_C1R(const Vek8u* pSrc, int srcStep, Vek32u value, Vek8u* pDst,
                                     int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiLShiftC_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek32u value[3],
                                     Vek8u* pDst, int dstStep, VekiSize roiSize);

/** Thresholds: samples above (GT) or below (LT) a threshold are replaced by it, or (Val) by a
 * value. Comparisons are strict: a sample equal to its threshold stays.
 *
 *  GT:          src > threshold ? threshold : src
 *  LT:          src < threshold ? threshold : src
 *  GTVal:       src > threshold ? value : src
 *  LTVal:       src < threshold ? value : src
 *  LTValGTVal:  src < thresholdLT ? valueLT : src > thresholdGT ? valueGT : src
 *
 *  Steps are not tested; they may be 0 or negative (rows upwards from the pointer), and rows are
 *  processed in their order.
 *
 *  Returns vekStsNoErr, or, in this order: vekStsNullPtrErr if an image or (C3) a threshold or
 *  value is null; vekStsSizeErr if the width or the height is below 1; for LTValGTVal
 *  vekStsThresholdErr if thresholdGT is below thresholdLT (C3: in any channel). */
VEK_API VekStatus vekiThreshold_GT_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, Vek8u threshold);
VEK_API VekStatus vekiThreshold_GT_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, const Vek8u threshold[3]);
VEK_API VekStatus vekiThreshold_LT_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, Vek8u threshold);
VEK_API VekStatus vekiThreshold_LT_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, const Vek8u threshold[3]);
VEK_API VekStatus vekiThreshold_GTVal_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize, Vek8u threshold,
                                             Vek8u value);
VEK_API VekStatus vekiThreshold_GTVal_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize,
                                             const Vek8u threshold[3], const Vek8u value[3]);
VEK_API VekStatus vekiThreshold_LTVal_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize, Vek8u threshold,
                                             Vek8u value);
VEK_API VekStatus vekiThreshold_LTVal_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize,
                                             const Vek8u threshold[3], const Vek8u value[3]);
VEK_API VekStatus vekiThreshold_LTValGTVal_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                  int dstStep, VekiSize roiSize, Vek8u thresholdLT,
                                                  Vek8u valueLT, Vek8u thresholdGT, Vek8u valueGT);
VEK_API VekStatus vekiThreshold_LTValGTVal_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                  int dstStep, VekiSize roiSize,
                                                  const Vek8u thresholdLT[3],
                                                  const Vek8u valueLT[3],
                                                  const Vek8u thresholdGT[3],
                                                  const Vek8u valueGT[3]);

/** Fills the region with a value, or with a pixel of three values.
 *
 *  Returns vekStsNoErr, or, in this order: vekStsNullPtrErr if pDst is null; vekStsSizeErr if the
 *  width or the height is below 1; vekStsStepErr if dstStep is below 1; (C3) vekStsNullPtrErr if
 *  value is null. */
VEK_API VekStatus vekiSet_8u_C1R(Vek8u value, Vek8u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiSet_8u_C3R(const Vek8u value[3], Vek8u* pDst, int dstStep, VekiSize roiSize);

/** Copies the region.
 *
 *  Returns vekStsNoErr, or, in this order: vekStsNullPtrErr if an image is null; vekStsSizeErr if
 *  the width or the height is below 1; vekStsStepErr if a step is below 1. */
VEK_API VekStatus vekiCopy_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                  VekiSize roiSize);
VEK_API VekStatus vekiCopy_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                  VekiSize roiSize);

/* ==== Linear filters ========================================================================= */

/* ==== Median, morphology, mirror, gamma ====================================================== */

/* ==== Norms ================================================================================== */

/* Common to the norms.
 *
 * A norm is taken of samples v: the largest (Inf), the sum of v (L1), or the square root of the sum
 * of v * v (L2). pNorm receives one value (C1), or one for each channel in channel order (C3),
 * multiplied by 2^-scaleFactor; every int is a valid scale factor. */

/** Norms of an image: v = src.
 *
 *  Scaling of Inf and L1: scaleFactor >= 0 shifts the norm right and scaleFactor < 0 left, both
 *  without rounding or saturation. The amount counts modulo 256; bits shifted out of the 32-bit
 *  result are lost, a left shift by 32 or more gives 0, and a right shift by 32 or more leaves the
 *  top bit of the norm (bit 31, never set in Inf). Sums of L1 count modulo 2^32.
 *
 *  Scaling of L2: the exact root * 2^-scaleFactor, rounded to nearest, halves up. A result above
 *  2147483647 becomes that, with vekStsSqrtWrn.
 *
 *  Returns vekStsNoErr, or, in this order: vekStsNullPtrErr if pNorm or pSrc is null; vekStsSizeErr
 *  if the width or the height is below 1; vekStsStepErr if srcStep is below 1. With the results
 *  written: vekStsSqrtWrn (L2). */
VEK_API VekStatus vekiNorm_Inf_8u_C1RSfs(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                                         Vek32s* pNorm, int scaleFactor);
VEK_API VekStatus vekiNorm_Inf_8u_C3RSfs(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                                         Vek32s* pNorm, int scaleFactor);
VEK_API VekStatus vekiNorm_L1_8u_C1RSfs(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                                        Vek32s* pNorm, int scaleFactor);
VEK_API VekStatus vekiNorm_L1_8u_C3RSfs(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                                        Vek32s* pNorm, int scaleFactor);
VEK_API VekStatus vekiNorm_L2_8u_C1RSfs(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                                        Vek32s* pNorm, int scaleFactor);
VEK_API VekStatus vekiNorm_L2_8u_C3RSfs(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                                        Vek32s* pNorm, int scaleFactor);

/** Norms of the difference of two images: v = |srcA - srcB|. Scaling and statuses as above; checked
 *  are pSrcB, pSrcA and pNorm, then the size, then srcAStep and srcBStep. */
VEK_API VekStatus vekiNormDiff_Inf_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                             int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                             int scaleFactor);
VEK_API VekStatus vekiNormDiff_Inf_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                             int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                             int scaleFactor);
VEK_API VekStatus vekiNormDiff_L1_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                            int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                            int scaleFactor);
VEK_API VekStatus vekiNormDiff_L1_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                            int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                            int scaleFactor);
VEK_API VekStatus vekiNormDiff_L2_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                            int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                            int scaleFactor);
VEK_API VekStatus vekiNormDiff_L2_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                            int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                            int scaleFactor);

/** Relative norms: d, the norm of srcA - srcB, divided by r, that of srcB.
 *
 *  r = 0 gives 2147483647 and, whatever the other channels give, vekStsDivByZero; else d = 0 gives
 *  0. Else, with s for scaleFactor:
 *  - Inf, s >= 0: (d * 256 / r + 128) >> (s + 8), the quotient truncated;
 *  - Inf, s < 0: d / r * 2^-s, truncated to halves, then rounded half up; at most 2147483647;
 *  - L1 (sums modulo 2^32): d / r * 2^-s, truncated to halves, then rounded half up; the low 32
 *    bits of that. With s > 1 d is shifted right by s - 1 before it is divided. Where d * 2^(1 - s)
 *    would have more than 63 bits, d is shifted left to 63 bits and r right by the rest;
 *    2147483647 if nothing is left of r;
 *  - L2: the exact root of the quotient of the sums * 2^-s, rounded to nearest, halves up. A result
 *    above 2147483647 becomes that, with vekStsSqrtWrn.
 *
 *  Checks as for the norms of a difference. */
VEK_API VekStatus vekiNormRel_Inf_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                            int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                            int scaleFactor);
VEK_API VekStatus vekiNormRel_Inf_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                            int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                            int scaleFactor);
VEK_API VekStatus vekiNormRel_L1_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                           int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                           int scaleFactor);
VEK_API VekStatus vekiNormRel_L1_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                           int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                           int scaleFactor);
VEK_API VekStatus vekiNormRel_L2_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                           int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                           int scaleFactor);
VEK_API VekStatus vekiNormRel_L2_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                           int srcBStep, VekiSize roiSize, Vek32s* pNorm,
                                           int scaleFactor);

#ifdef __cplusplus
}
#endif

#endif /* VEK_IMAGE_H */
