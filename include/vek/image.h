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

/* Spaces and the arithmetic that leads to and from them. All of it is exact integer arithmetic; >>
 * is a shift toward minus infinity, sat8 clamps to 0..255.
 *
 * YCbCr is studio-range BT.601: Y 16..235, Cb and Cr 16..240 around 128.
 *   Y  = ( 263 R + 516 G + 100 B +  16896) >> 10
 *   Cb = (-152 R - 298 G + 450 B + 131584) >> 10
 *   Cr = ( 450 R - 377 G -  73 B + 131584) >> 10     (the offsets hold one half: rounded)
 * and back, rounded, in the function on interleaved 4:4:4 images only (vekiYCbCrToRGB_8u_C3R):
 *   R = sat8((1192 Y + 1634 Cr - 227749) >> 10)
 *   G = sat8((1192 Y - 401 Cb - 833 Cr + 139383) >> 10)
 *   B = sat8((1192 Y + 2065 Cb - 282930) >> 10)
 * and back, truncated, in every other function, with y = Y - 16, b = Cb - 128, r = Cr - 128:
 *   R = sat8((1192 y + 1634 r) >> 10)
 *   G = sat8((1192 y - 833 r - 401 b) >> 10)
 *   B = sat8((1192 y + 2065 b) >> 10)
 *
 * YUV is full-range: Y 0..255, U = 128 + 0.492 (B - Y), V = 128 + 0.877 (R - Y), truncated.
 *   Y = (306 R + 601 G + 117 B) >> 10
 * With a chroma sample for each pixel (4:4:4):
 *   U = 128 + ((-151 R - 296 G + 446 B) >> 10)       (grey gives U = 127: the row sums to -1)
 *   V = sat8(128 + ((630 R - 527 G - 102 B) >> 10))
 *   R = sat8((1024 Y + 1167 V - 148910) >> 10)
 *   G = sat8((1024 Y - 403 U - 595 V + 128307) >> 10)
 *   B = sat8((1024 Y + 2081 U - 265826) >> 10)       (rounded)
 * With chroma that pixels share (4:2:2, 4:2:0), and for 16-bit pixels, truncated as well, with
 * u = U - 128 and v = V - 128:
 *   U = sat8(128 + ((504 (B - Y)) >> 10))
 *   V = sat8(128 + ((898 (R - Y)) >> 10))
 *   R = sat8(Y + ((1167 v) >> 10))
 *   G = sat8(Y + ((-403 u - 595 v) >> 10))
 *   B = sat8(Y + ((2081 u) >> 10))
 *
 * Shared chroma. In 4:2:2 one chroma pair serves the pixels 2k and 2k + 1 of a row, in 4:2:0 the
 * 2 x 2 block of rows 2j, 2j + 1 and columns 2k, 2k + 1: co-sited with none of them, used for each
 * as it is. An odd last column or row has its chroma for itself. Toward 4:2:2 and 4:2:0 the chroma
 * is computed, with the formulas above, from the average of the R, the G and the B of the pixels
 * that share it, each rounded half up: (a + b + 1) >> 1 or (a + b + c + d + 2) >> 2, over the one
 * or two pixels that exist at an odd edge. For YUV the Y in the differences is that of the averaged
 * colour.
 *
 * Layouts. Interleaved RGB is R, G, B; interleaved YCbCr is Y, Cb, Cr; interleaved YUV is Y, U, V:
 * three bytes a pixel. Interleaved 4:2:2 (C2) is four bytes for two pixels: Y0, Cb, Y1, Cr, or Y0,
 * U, Y1, V (the resize-and-rotate functions of camera.h have another order). A row of odd width
 * still ends in a full group, so rows hold 4 * ceil(width / 2) bytes; the place of the missing Y1
 * is written as a repetition of Y0, and what it holds does not matter when it is read. Planes are
 * given in the order Y, Cb, Cr or Y, U, V. Chroma planes have ceil(width / 2) samples a row in
 * 4:2:2 and 4:2:0, and in 4:2:0 ceil(height / 2) rows.
 *
 * 16-bit pixels are little-endian words: RGB565 has R in bits 15..11, G in 10..5, B in 4..0; RGB555
 * has bit 15 zero, R 14..10, G 9..5, B 4..0; RGB444 has bits 15..12 zero, R 11..8, G 7..4, B 3..0;
 * the BGR formats exchange R and B. A field holds the top bits of its component's 8-bit value:
 * low bits are dropped, never rounded, so that white is 0xFFFF, 0x7FFF and 0x0FFF.
 *
 * Common to all functions below: sources and destinations have any alignment (the destination of
 * 16-bit pixels, too, may lie at an odd address or have an odd step), and must not overlap. Only
 * the bytes of the region's rows are read and written. Apart from the argument checks, whose order
 * differs from group to group, nothing fails: vekStsNoErr. */

/** Planar 4:2:0 to 16-bit pixels. srcStep holds the steps of the three planes.
 *
 *  Checks, in this order: pSrc, one of its planes or srcStep null: vekStsNullPtrErr; a source step
 *  below 1: vekStsStepErr; pDst null: vekStsNullPtrErr; dstStep below 1: vekStsStepErr; width or
 *  height below 1: vekStsSizeErr. */
VEK_API VekStatus vekiYCbCr420ToRGB565_8u16u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                   Vek16u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCr420ToRGB555_8u16u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                   Vek16u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCr420ToRGB444_8u16u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                   Vek16u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCr420ToBGR565_8u16u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                   Vek16u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCr420ToBGR555_8u16u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                   Vek16u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCr420ToBGR444_8u16u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                   Vek16u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYUV420ToRGB565_8u16u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                 Vek16u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYUV420ToRGB555_8u16u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                 Vek16u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYUV420ToRGB444_8u16u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                 Vek16u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYUV420ToBGR565_8u16u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                 Vek16u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYUV420ToBGR555_8u16u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                 Vek16u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYUV420ToBGR444_8u16u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                 Vek16u* pDst, int dstStep, VekiSize roiSize);

/** Planar 4:4:4 YCbCr to 16-bit pixels. srcStep is the step of all three planes.
 *
 *  Checks, in this order: pDst, pSrc or one of its planes null: vekStsNullPtrErr; a step below 1:
 *  vekStsStepErr; width or height below 1: vekStsSizeErr. */
VEK_API VekStatus vekiYCbCrToRGB565_8u16u_P3C3R(VekConstPlanes pSrc, int srcStep, Vek16u* pDst,
                                                int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCrToRGB555_8u16u_P3C3R(VekConstPlanes pSrc, int srcStep, Vek16u* pDst,
                                                int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCrToRGB444_8u16u_P3C3R(VekConstPlanes pSrc, int srcStep, Vek16u* pDst,
                                                int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCrToBGR565_8u16u_P3C3R(VekConstPlanes pSrc, int srcStep, Vek16u* pDst,
                                                int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCrToBGR555_8u16u_P3C3R(VekConstPlanes pSrc, int srcStep, Vek16u* pDst,
                                                int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCrToBGR444_8u16u_P3C3R(VekConstPlanes pSrc, int srcStep, Vek16u* pDst,
                                                int dstStep, VekiSize roiSize);

/** Interleaved 4:2:2 (C2C3) or 4:4:4 (C3) YCbCr to 16-bit pixels.
 *
 *  Checks, in this order: pDst or pSrc null: vekStsNullPtrErr; srcStep or dstStep below 1:
 *  vekStsStepErr; width or height below 1: vekStsSizeErr. */
VEK_API VekStatus vekiYCbCr422ToRGB565_8u16u_C2C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                   int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCr422ToRGB555_8u16u_C2C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                   int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCr422ToRGB444_8u16u_C2C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                   int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCr422ToBGR565_8u16u_C2C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                   int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCr422ToBGR555_8u16u_C2C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                   int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCr422ToBGR444_8u16u_C2C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                   int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCrToRGB565_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                              int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCrToRGB555_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                              int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCrToRGB444_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                              int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCrToBGR565_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                              int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCrToBGR555_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                              int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCrToBGR444_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                              int dstStep, VekiSize roiSize);

/** Interleaved RGB to interleaved YCbCr or YUV, 4:4:4 (C3) or 4:2:2 (C2), and back.
 *
 *  Checks, in this order: pDst or pSrc null: vekStsNullPtrErr; width or height below 1:
 *  vekStsSizeErr; srcStep or dstStep below 1: vekStsStepErr. */
VEK_API VekStatus vekiRGBToYCbCr_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                        VekiSize roiSize);
VEK_API VekStatus vekiYCbCrToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                        VekiSize roiSize);
VEK_API VekStatus vekiRGBToYCbCr422_8u_C3C2R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYCbCr422ToRGB_8u_C2C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiRGBToYUV_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiYUVToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiRGBToYUV422_8u_C3C2R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                           VekiSize roiSize);
VEK_API VekStatus vekiYUV422ToRGB_8u_C2C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                           VekiSize roiSize);

/** Interleaved RGB to planar 4:2:0 or 4:2:2 YUV. dstStep holds the steps of the three planes.
 *
 *  Checks, in this order: width or height below 1: vekStsSizeErr; pSrc null: vekStsNullPtrErr;
 *  srcStep below 1: vekStsStepErr; dstStep, pDst or one of its planes null: vekStsNullPtrErr; a
 *  destination step below 1: vekStsStepErr. */
VEK_API VekStatus vekiRGBToYUV420_8u_C3P3R(const Vek8u* pSrc, int srcStep, Vek8u* const pDst[3],
                                           const int dstStep[3], VekiSize roiSize);
VEK_API VekStatus vekiRGBToYUV422_8u_C3P3R(const Vek8u* pSrc, int srcStep, Vek8u* const pDst[3],
                                           const int dstStep[3], VekiSize roiSize);

/** Planar 4:2:0 or 4:2:2 YUV to interleaved RGB. srcStep holds the steps of the three planes.
 *
 *  Checks, in this order: width or height below 1: vekStsSizeErr; srcStep, pSrc, one of its planes
 *  or pDst null: vekStsNullPtrErr; a source step or dstStep below 1: vekStsStepErr. */
VEK_API VekStatus vekiYUV420ToRGB_8u_P3C3R(VekConstPlanes pSrc, const int srcStep[3], Vek8u* pDst,
                                           int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYUV422ToRGB_8u_P3C3R(VekConstPlanes pSrc, const int srcStep[3], Vek8u* pDst,
                                           int dstStep, VekiSize roiSize);

/** Interleaved RGB to planar 4:4:4 YUV. dstStep is the step of all three planes.
 *
 *  Checks, in this order: pDst, one of its planes or pSrc null: vekStsNullPtrErr; width or height
 *  below 1: vekStsSizeErr; srcStep or dstStep below 1: vekStsStepErr. */
VEK_API VekStatus vekiRGBToYUV_8u_C3P3R(const Vek8u* pSrc, int srcStep, Vek8u* const pDst[3],
                                        int dstStep, VekiSize roiSize);

/** Planar 4:4:4 YUV to interleaved RGB. srcStep is the step of all three planes.
 *
 *  Checks, in this order: width or height below 1: vekStsSizeErr; pSrc or one of its planes null:
 *  vekStsNullPtrErr; srcStep below 1: vekStsStepErr; pDst null: vekStsNullPtrErr; dstStep below 1:
 *  vekStsStepErr. */
VEK_API VekStatus vekiYUVToRGB_8u_P3C3R(VekConstPlanes pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                        VekiSize roiSize);

/** The planar 4:2:0 and 4:2:2 YUV conversions on images without padding: RGB rows are 3 * width
 *  bytes apart, Y rows width bytes, U and V rows ceil(width / 2) bytes. The results are those of
 *  the functions with steps.
 *
 *  Checks, in this order: a pointer or plane null: vekStsNullPtrErr; width or height below 1:
 *  vekStsSizeErr. */
VEK_API VekStatus vekiRGBToYUV420_8u_C3P3(const Vek8u* pSrc, Vek8u* const pDst[3],
                                          VekiSize roiSize);
VEK_API VekStatus vekiRGBToYUV422_8u_C3P3(const Vek8u* pSrc, Vek8u* const pDst[3],
                                          VekiSize roiSize);
VEK_API VekStatus vekiYUV420ToRGB_8u_P3C3(VekConstPlanes pSrc, Vek8u* pDst, VekiSize roiSize);
VEK_API VekStatus vekiYUV422ToRGB_8u_P3C3(VekConstPlanes pSrc, Vek8u* pDst, VekiSize roiSize);

/* Coefficients of the conversions above, with 10 fractional bits (Q10), and the same factors with
 * 16 fractional bits, which no function reads. */

/** Rows of Y, Cb, Cr over (R, G, B); then the three offsets 16.5 * 1024 and 128.5 * 1024. */
VEK_API extern const Vek32s RGB_YCbCr_Q10[12];
/** The same in 16 bits: Y row; Cb row; G and B terms of Cr (its R term is Cb's B term 28770);
 *  16.5 * 65536; 128.5 * 65536; 0x01010000. */
VEK_API extern const Vek32s RGB_YCbCr[11];
/** Y gain 1.164; Cr to R 1.596; Cr to G -0.813; Cb to G -0.392; Cb to B 2.017. */
VEK_API extern const Vek16s YCbCr_RGB_Q10[5];
VEK_API extern const Vek32s YCbCr_RGB[5];
/** R, G and B in Y: 0.299, 0.587, 0.114; B - Y in U: 0.492; R - Y in V: 0.877. */
VEK_API extern const Vek16s RGB_YUV_Q10[5];
VEK_API extern const Vek32s RGB_YUV[5];
/** V to R 1.140; U to G -0.394; V to G -0.581; U to B 2.032. */
VEK_API extern const Vek16s YUV_RGB_Q10[4];
VEK_API extern const Vek32s YUV_RGB[4];

/** Clamp tables: entry i of each is i clamped to 0..15 (SAT16_DK), 0..31 (SAT32_DK), 0..63
 *  (SAT64_DK) and 0..255 (SAT_DK). The pointers lead to the entries of index 0. Indices may run
 *  over -24..47, -48..95, -96..191 and -376..751; the tables lie back to back in this order. */
VEK_API extern const Vek8u* const SAT16_DK;
VEK_API extern const Vek8u* const SAT32_DK;
VEK_API extern const Vek8u* const SAT64_DK;
VEK_API extern const Vek8u* const SAT_DK;

/* ==== Colour: gray, twist, XYZ, YCC, LUV, HLS, HSV =========================================== */

/* All functions here convert 8-bit pixels; three-channel pixels are three bytes in the order of the
 * model's name. Source and destination must not overlap. Steps may be shorter than the rows. After
 * the checks every function returns vekStsNoErr. */

/** 16384 / i rounded to nearest for i = 1..511, and 0 for i = 0. */
VEK_API extern const Vek16s RCP_Q14[512];

/** CIE lightness L* of the relative luminance Y = i / 255, scaled from 0..100 to 0..255 and
 *  rounded: 116 Y^(1/3) - 16 for Y > 0.008856, 903.3 Y below. */
VEK_API extern const Vek8u RGB_LUV_L_channel[256];

/** Luma of R, G, B pixels: (306 R + 601 G + 117 B + 512) >> 10, the BT.601 weights 0.299, 0.587,
 *  0.114.
 *
 *  Returns vekStsNullPtrErr if pDst or pSrc is null; vekStsStepErr if a step is below 1;
 *  vekStsSizeErr if width or height is below 1. */
VEK_API VekStatus vekiRGBToGray_8u_C3C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize);

/** Weighted sum of the three channels with Q14 weights (16384 = 1.0): (coeffs[0] c0 + coeffs[1] c1
 *  + coeffs[2] c2 + 8192) >> 14, clamped to 0..255. The weights are meant for -32768..32767; others
 *  are computed exactly all the same.
 *
 *  Returns vekStsNullPtrErr if pDst or pSrc is null; vekStsStepErr if a step is below 1;
 *  vekStsNullPtrErr if coeffs is null; vekStsSizeErr if width or height is below 1. */
VEK_API VekStatus vekiColorToGrayQ14_8u_C3C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                              int dstStep, VekiSize roiSize,
                                              const Vek32s coeffs[3]);

/** Linear map of the three channels. Row k of `twist` gives channel k of the result: three Q14
 *  coefficients and an offset in the same scale. Every entry is first reduced to Q10 by an
 *  arithmetic shift right by 4; the result is (t0 c0 + t1 c1 + t2 c2 + offset + 512) >> 10, clamped
 *  to 0..255. Any entries are computed exactly; those whose reduced value fits 16 bits are fast.
 *
 *  Returns vekStsNullPtrErr if pDst, pSrc or twist is null; vekStsSizeErr if the width, then if the
 *  height is below 1. The steps are not checked: any step works, 0 and negative ones too. */
VEK_API VekStatus vekiColorTwistQ14_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                           VekiSize roiSize, const Vek32s twist[3][4]);

/** RGB to and from CIE XYZ (sRGB primaries, D65, linear: no transfer function), and to and from a
 *  photo YCC space with chroma centres 156 and 137. Each is a colour twist with these Q14 matrices:
 *
 *   to XYZ    6758   5859  2956        0 |  3484 11717   1182       0 |  317  1953 15569        0
 *   from XYZ 53092 -25185 -8168        0 |-15880 30736    681       0 |  912 -3343 17323        0
 *   to YCC    3494   6860  1332        0 | -2140 -4201   6342 2555904 | 6109 -5116  -994  2244608
 *   from YCC 22256      0 29843 -4088553 | 22256 -7050 -15190 3180809 |22256 36338     0 -5668739
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
 *  Forward: the luminance is Y = (6969 R + 23434 G + 2365 B) >> 15 and L = RGB_LUV_L_channel[Y] (L*
 *  scaled from 0..100 to 0..255); u and v are scaled to bytes as (u + 134) 255 / 354 and (v + 140)
 *  255 / 262 and rounded, with X, Y, Z of the sRGB matrix in Q15. Greys have u = 97, v = 136. The
 *  inverse undoes this and clamps to 0..255; L = 0 is black.
 *
 *  Errors against double precision, found by trying every colour: forward, from the same 8-bit Y, L
 *  0.5, u 0.92, v 1.24 (the 8-bit Y alone makes dark colours up to 9 steps of L coarse); inverse
 *  0.58 within the RGB cube. Bytes with v' <= 0 belong to no colour; they give some clamped colour.
 *  A round trip changes a channel by 0.8 on average, in dark saturated colours by up to 18.
 *
 *  Returns vekStsNullPtrErr if pDst or pSrc is null; vekStsStepErr if a step is below 1;
 *  vekStsSizeErr if width or height is below 1. */
VEK_API VekStatus vekiRGBToLUV_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiLUVToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);

/** RGB to and from HLS (hue, lightness, saturation) and HSV (hue, saturation, value). Every
 *  component is 0..255 for its real range; 255 steps of hue are 360 degrees, red is 0, and hue 255
 *  is red again. A colour without saturation has hue 0; black has saturation 0. Where two channels
 *  share the maximum red decides before green before blue.
 *
 *  Forward, each result is the exact rational value rounded to nearest, halves up, and so within
 *  0.5 of double precision; the inverse is within 0.52. A round trip RGB - HSV - RGB or RGB - HLS -
 *  RGB changes a channel by at most 3 or 4 respectively.
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

/** Thresholds: samples above (GT) or below (LT) a threshold become it, or (Val) become a value.
 *  Comparisons are strict: a sample equal to its threshold stays.
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

/* Common to the filters of this section and the next.
 *
 * roiSize is the size of the destination region. The neighbourhood of a pixel is read from the
 * source around the same position: pSrc points at the pixel that corresponds to pDst, and the
 * source image must have the rows and columns around the region that the neighbourhoods reach.
 * Nothing is made up at the edges, and no other sample is read. Three-channel images are filtered
 * channel by channel unless a function says otherwise. Source and destination must not overlap.
 * Nothing is allocated; each function says how much stack a call takes, the largest of the levels
 * that a processor may run.
 */

/** Box filter: the mean of the maskSize.width x maskSize.height neighbourhood whose pixel at
 *  `anchor` lies on the destination pixel: columns x - anchor.x .. x - anchor.x + maskSize.width -
 *  1, rows likewise.
 *
 *  With S the sum of the n = width x height samples: up to n = 128 the mean is (S * f + 8192) >> 14
 *  with f = 16384 / n, above it is (S * f + 2^31) >> 32 with f = 2^32 / n, f rounded to nearest
 *  (exact halves down) and the mean saturated to 255. The time per pixel grows slowly
 *  with the mask's width up to 48 and does not depend on its size otherwise. Uses up to 38 KB of
 *  stack.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr; vekStsStepErr (a step below 1);
 *  vekStsSizeErr (an empty region); vekStsMaskSizeErr (a mask width or height below 2);
 *  vekStsAnchorErr (the anchor lies outside the mask). */
VEK_API VekStatus vekiFilterBox_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, VekiSize maskSize, VekiPoint anchor);
VEK_API VekStatus vekiFilterBox_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, VekiSize maskSize, VekiPoint anchor);

/* Convolutions.
 *
 * A sum is divided by `divisor` in fixed point. For a power of two 2^k that is (sum + 2^(k - 1)) >>
 * k, for 1 the sum itself, for any other divisor (sum * m + 2^31) >> 32 with m = 2^32 / divisor
 * rounded to nearest (exact halves down); then the result is saturated to 0..255. Sums and products
 * do not overflow for any kernel.
 *
 * The kernel is only read, so it may lie in read-only memory and be shared by threads; each of its
 * entries must lie in -32768..32767. Up to 7 KB of stack.
 *
 * All return vekStsNoErr or, in this order: vekStsNullPtrErr (an image or the kernel is null);
 * vekStsStepErr (a step below 1); vekStsSizeErr (an empty region, or a kernel width, height or
 * kernelSize below 2); vekStsAnchorErr (the anchor lies outside the kernel); vekStsDivisorErr (a
 * divisor below 1); vekStsCoeffRangeErr (an entry outside its range; entries are read only after
 * all other checks).
 */

/** Convolution with a kernel of kernelSize.width x kernelSize.height entries, row after row. The
 *  sum is taken over K[j][i] * source(x + anchor.x - i, y + anchor.y - j): the neighbourhood's
 *  first column is x + anchor.x - width + 1, its first row y + anchor.y - height + 1. */
VEK_API VekStatus vekiFilter_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                    VekiSize roiSize, const Vek32s* pKernel, VekiSize kernelSize,
                                    VekiPoint anchor, int divisor);
VEK_API VekStatus vekiFilter_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                    VekiSize roiSize, const Vek32s* pKernel, VekiSize kernelSize,
                                    VekiPoint anchor, int divisor);

/** Convolution along rows: the sum over K[i] * source(x + anchor - i, y). */
VEK_API VekStatus vekiFilterRow_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, const Vek32s* pKernel, int kernelSize,
                                       int anchor, int divisor);
VEK_API VekStatus vekiFilterRow_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, const Vek32s* pKernel, int kernelSize,
                                       int anchor, int divisor);

/** Convolution along columns: the sum over K[i] * source(x, y + anchor - i). */
VEK_API VekStatus vekiFilterColumn_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, const Vek32s* pKernel, int kernelSize,
                                          int anchor, int divisor);
VEK_API VekStatus vekiFilterColumn_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, const Vek32s* pKernel, int kernelSize,
                                          int anchor, int divisor);

/* ==== Median, morphology, mirror, gamma ====================================================== */

/** Median filter: in each channel, the middle one of the samples of the maskSize.width x
 *  maskSize.height neighbourhood whose pixel at `anchor` lies on the destination pixel (see
 *  vekiFilterBox). Both mask dimensions are odd; the height is at most 255, the width has no limit.
 *
 *  Square masks of 3 to 11 go through sorting networks, and other masks of up to 33 x 85 count how
 *  many samples are below each threshold that matters (in regions of at least one vector's width);
 *  all others go through histograms, with a time per pixel that does not depend on the mask up to a
 *  width of 129 and grows with its height beyond. Uses up to 121 KB of stack.
 *
 *  Return vekStsNoErr or, in this order: vekStsNullPtrErr; vekStsSizeErr (an empty region);
 *  vekStsStepErr (a step below 1); vekStsMaskSizeErr (a mask dimension below 1 or even, or a height
 *  above 256); vekStsAnchorErr (the anchor lies outside the mask). */
VEK_API VekStatus vekiFilterMedian_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, VekiSize maskSize, VekiPoint anchor);
VEK_API VekStatus vekiFilterMedian_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, VekiSize maskSize, VekiPoint anchor);

/** Masks of vekiFilterMedianColor_8u_C3R. */
enum VekiMask {
  vekiMask3x3 = 33, /**< 3 x 3 pixels */
  vekiMask5x5 = 55  /**< 5 x 5 pixels */
};

/** Vector median: each destination pixel becomes the pixel of the 3 x 3 or 5 x 5 neighbourhood
 *  centred on it whose sum of distances to all pixels of the neighbourhood is least. The distance
 *  of two pixels is the sum of the absolute differences of their channels. Among equals the first
 *  wins, counted row after row from the top left. Uses up to 62 KB of stack.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr; vekStsSizeErr (an empty region);
 *  vekStsStepErr (a step below 1); vekStsMaskSizeErr (`mask` is not one of the two). */
VEK_API VekStatus vekiFilterMedianColor_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                               int dstStep, VekiSize roiSize, int mask);

/** Erosion and dilation: the least and the greatest sample of the 3 x 3 neighbourhood centred on
 *  the destination pixel, in each channel. About 4 KB of stack.
 *
 *  Return vekStsNoErr or, in this order: vekStsNullPtrErr; vekStsStepErr (a step below 1);
 *  vekStsSizeErr (an empty region). */
VEK_API VekStatus vekiErode3x3_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiErode3x3_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiDilate3x3_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize);
VEK_API VekStatus vekiDilate3x3_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize);

/** Axes, for the `flip` arguments. */
enum VekiMirrorAxis {
  vekiMirrorHorizontalAxis = 0, /**< rows in reverse order */
  vekiMirrorVerticalAxis = 1,   /**< columns in reverse order */
  vekiMirrorBothAxes = 2        /**< both: half a turn */
};

/** Copies the region mirrored about an axis. Three-channel pixels move whole. Reads the region
 *  alone; not in place. Less than 1 KB of stack.
 *
 *  Return vekStsNoErr or, in this order: vekStsNullPtrErr; vekStsSizeErr (a step, the width or the
 *  height below 1: steps are answered like sizes here); vekStsMirrorFlipErr (`flip` is not one of
 *  the three). */
VEK_API VekStatus vekiMirror_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                    VekiSize roiSize, int flip);
VEK_API VekStatus vekiMirror_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                    VekiSize roiSize, int flip);

/** Video gamma by the transfer function of ITU-R BT.709, every byte through a table of 256.
 *  Forward, from linear light L = i / 255: V = 4.5 L below 0.018, 1.099 L^0.45 - 0.099 from there
 *  on. Inverse, from V = i / 255: L = V / 4.5 below 0.081, ((V + 0.099) / 1.099)^(1 / 0.45) from
 *  there on. Results are multiplied by 255 and rounded to nearest (exact halves to even). Reads the
 *  region alone; works in place. About 2 KB of stack.
 *
 *  Return vekStsNoErr or, in this order: vekStsNullPtrErr; vekStsSizeErr (the width, the height or
 *  a step below 1: steps are answered like sizes here). */
VEK_API VekStatus vekiGammaFwd_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiGammaInv_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);

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
