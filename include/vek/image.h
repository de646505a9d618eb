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

/* All functions here convert 8-bit pixels; three-channel pixels are three bytes in the order of the
 * model's name. Source and destination must not overlap. Steps may be shorter than the rows. After
 * the checks every function returns vekStsNoErr. */

/** 16384 / i rounded to nearest for i = 1..511, and 0 for i = 0. */
VEK_API extern const Vek16s RCP_Q14[512];

/** CIE lightness L* of the relative luminance Y = i / 255, scaled from 0..100 to 0..255 and rounded:
 *  116 Y^(1/3) - 16 for Y > 0.008856, 903.3 Y below. */
VEK_API extern const Vek8u RGB_LUV_L_channel[256];

/** Luma of R, G, B pixels: (306 R + 601 G + 117 B + 512) >> 10, the BT.601 weights 0.299, 0.587, 0.114.
 *
 *  Returns vekStsNullPtrErr if pDst or pSrc is null; vekStsStepErr if a step is below 1;
 *  vekStsSizeErr if width or height is below 1. */
VEK_API VekStatus vekiRGBToGray_8u_C3C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize);

/** Weighted sum of the three channels with Q14 weights (16384 = 1.0):
 *  (coeffs[0] c0 + coeffs[1] c1 + coeffs[2] c2 + 8192) >> 14, clamped to 0..255. The weights are meant
 *  for -32768..32767; others are computed exactly all the same.
 *
 *  Returns vekStsNullPtrErr if pDst or pSrc is null; vekStsStepErr if a step is below 1;
 *  vekStsNullPtrErr if coeffs is null; vekStsSizeErr if width or height is below 1. */
VEK_API VekStatus vekiColorToGrayQ14_8u_C3C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                              int dstStep, VekiSize roiSize,
                                              const Vek32s coeffs[3]);

/** Linear map of the three channels. Row k of `twist` gives channel k of the result: three Q14
 *  coefficients and an offset in the same scale. Every entry is first reduced to Q10 by an arithmetic
 *  shift right by 4; the result is (t0 c0 + t1 c1 + t2 c2 + offset + 512) >> 10, clamped to 0..255.
 *  Any entries are computed exactly; those whose reduced value fits 16 bits are fast.
 *
 *  Returns vekStsNullPtrErr if pDst, pSrc or twist is null; vekStsSizeErr if the width, then if the
 *  height is below 1. The steps are not checked: any step works, 0 and negative ones too. */
VEK_API VekStatus vekiColorTwistQ14_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                           VekiSize roiSize, const Vek32s twist[3][4]);

/** RGB to and from CIE XYZ (sRGB primaries, D65, linear: no transfer function), and to and from a
 *  photo YCC space with chroma centres 156 and 137. Each is a colour twist with these Q14 matrices:
 *
 *    RGB to XYZ    6758   5859   2956        0 |  3484 11717   1182       0 |   317  1953 15569        0
 *    XYZ to RGB   53092 -25185  -8168        0 |-15880 30736    681       0 |   912 -3343 17323        0
 *    RGB to YCC    3494   6860   1332        0 | -2140 -4201   6342 2555904 |  6109 -5116  -994  2244608
 *    YCC to RGB   22256      0  29843 -4088553 | 22256 -7050 -15190 3180809 | 22256 36338     0 -5668739
 *
 *  Returns vekStsNullPtrErr if pDst or pSrc is null; vekStsSizeErr if width or height is below 1;
 *  vekStsStepErr if a step is below 1. */
VEK_API VekStatus vekiRGBToXYZ_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiXYZToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiRGBToYCC_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiYCCToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);

/** RGB to and from CIE LUV, D65 white, linear (no transfer function).
 *
 *  Forward: the luminance is Y = (6969 R + 23434 G + 2365 B) >> 15 and L = RGB_LUV_L_channel[Y]
 *  (L* scaled from 0..100 to 0..255); u and v are scaled to bytes as (u + 134) 255 / 354 and
 *  (v + 140) 255 / 262 and rounded, with X, Y, Z of the sRGB matrix in Q15. Greys have u = 97, v = 136.
 *  The inverse undoes this and clamps to 0..255; L = 0 is black.
 *
 *  Errors against double precision, found by trying every colour: forward, from the same 8-bit Y, L 0.5,
 *  u 0.92, v 1.24 (the 8-bit Y alone makes dark colours up to 9 steps of L coarse); inverse 0.58 within
 *  the RGB cube. Bytes with v' <= 0 belong to no colour; they give some clamped colour. A round trip
 *  changes a channel by 0.8 on average, in dark saturated colours by up to 18.
 *
 *  Returns vekStsNullPtrErr if pDst or pSrc is null; vekStsStepErr if a step is below 1;
 *  vekStsSizeErr if width or height is below 1. */
VEK_API VekStatus vekiRGBToLUV_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiLUVToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);

/** RGB to and from HLS (hue, lightness, saturation) and HSV (hue, saturation, value). Every component
 *  is 0..255 for its real range; 255 steps of hue are 360 degrees, red is 0, and hue 255 is red again.
 *  A colour without saturation has hue 0; black has saturation 0. Where two channels share the maximum
 *  red decides before green before blue.
 *
 *  Each result is the exact rational value rounded to nearest, halves up: the error against double
 *  precision is at most 0.5. A round trip RGB - HSV - RGB or RGB - HLS - RGB changes a channel by at
 *  most 3 or 4 respectively.
 *
 *  Returns vekStsNullPtrErr if pDst or pSrc is null; vekStsSizeErr if width or height is below 1;
 *  vekStsStepErr if a step is below 1. */
VEK_API VekStatus vekiRGBToHLS_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiHLSToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiRGBToHSV_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiHSVToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);

/* ==== Arithmetic with scale factor =========================================================== */

/* ==== Logic, shifts, thresholds, set, copy =================================================== */

/* ==== Linear filters ========================================================================= */

/* ==== Median, morphology, mirror, gamma ====================================================== */

/* ==== Norms ================================================================================== */

#ifdef __cplusplus
}
#endif

#endif /* VEK_IMAGE_H */
