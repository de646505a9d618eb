/** @file image.h
 *  The image sub-library: primitives on 8-bit images with one channel (C1) or three interleaved
 *  channels (C3), planar and packed colour conversions, filters and norms.
 *
 *  Null pointers are answered with vekStsNullPtrErr. Each family's comment gives the order of its
 *  checks; some families test steps before sizes, others sizes before steps.
 *
 *  Selector arguments have the type int; the enumerators in this header name their values. */
#ifndef VEK_IMAGE_H
#define VEK_IMAGE_H

#include "vek/vek.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup ycbcr Colour: YCbCr and YUV
 *
 *  All arithmetic is exact integer arithmetic. >> is a shift toward minus infinity, and sat8 clamps
 *  to 0..255.
 *
 *  YCbCr is studio-range BT.601: Y is 16..235, Cb and Cr are 16..240 around 128.
 *
 *      Y  = ( 263 R + 516 G + 100 B +  16896) >> 10
 *      Cb = (-152 R - 298 G + 450 B + 131584) >> 10
 *      Cr = ( 450 R - 377 G -  73 B + 131584) >> 10
 *
 *  The offsets hold one half, so that these results are rounded to nearest. Back, rounded as well,
 *  in the function on interleaved 4:4:4 images only (vekiYCbCrToRGB_8u_C3R):
 *
 *      R = sat8((1192 Y + 1634 Cr - 227749) >> 10)
 *      G = sat8((1192 Y - 401 Cb - 833 Cr + 139383) >> 10)
 *      B = sat8((1192 Y + 2065 Cb - 282930) >> 10)
 *
 *  @quirk These offsets are the products with 16 and 128 of the factors before they were rounded,
 *  plus 512. The one of B would be -282931; it stays as it is, one higher.
 *
 *  Back, truncated, in every other function, with y = Y - 16, b = Cb - 128 and r = Cr - 128:
 *
 *      R = sat8((1192 y + 1634 r) >> 10)
 *      G = sat8((1192 y - 833 r - 401 b) >> 10)
 *      B = sat8((1192 y + 2065 b) >> 10)
 *
 *  @quirk The way back is rounded in one function and truncated in all others, which saves them the
 *  offsets. Their results are darker by 0.4 on average.
 *
 *  YUV is full-range: Y is 0..255, U = 128 + 0.492 (B - Y), V = 128 + 0.877 (R - Y). It is
 *  truncated:
 *
 *      Y = (306 R + 601 G + 117 B) >> 10
 *
 *  With a chroma sample for each pixel (4:4:4):
 *
 *      U = 128 + ((-151 R - 296 G + 446 B) >> 10)
 *      V = sat8(128 + ((630 R - 527 G - 102 B) >> 10))
 *      R = sat8((1024 Y + 1167 V - 148910) >> 10)
 *      G = sat8((1024 Y - 403 U - 595 V + 128307) >> 10)
 *      B = sat8((1024 Y + 2081 U - 265826) >> 10)
 *
 *  where the way back is rounded.
 *
 *  @quirk The factors of U sum to -1, not 0, so that greys have U = 127. The way back brings them
 *  to within 2 of the grey.
 *
 *  With chroma that pixels share (4:2:2, 4:2:0), and for 16-bit pixels, everything is truncated.
 *  With u = U - 128 and v = V - 128:
 *
 *      U = sat8(128 + ((504 (B - Y)) >> 10))
 *      V = sat8(128 + ((898 (R - Y)) >> 10))
 *      R = sat8(Y + ((1167 v) >> 10))
 *      G = sat8(Y + ((-403 u - 595 v) >> 10))
 *      B = sat8(Y + ((2081 u) >> 10))
 *
 *  Shared chroma: in 4:2:2 one chroma pair serves the pixels 2k and 2k + 1 of a row. In 4:2:0 it
 *  serves the 2 x 2 block of rows 2j, 2j + 1 and columns 2k, 2k + 1. It is co-sited with none of
 *  these pixels and used for each of them as it is. An odd last column or row has its chroma for
 *  itself. Toward 4:2:2 and 4:2:0 the chroma is computed with the formulas above from the average
 *  R, G and B of the pixels that share it. Each average is rounded half up, (a + b + 1) >> 1 or (a
 *  + b + c + d + 2) >> 2, and taken over the one or two pixels that exist at an odd edge. For YUV
 *  the Y in the differences is that of the averaged colour.
 *
 *  Layouts, with the names under which they are known elsewhere:
 *
 *  - Planar 4:2:0, 4:2:2 and 4:4:4 (P3) are I420, I422 and I444: three planes in the order Y, Cb,
 *    Cr or Y, U, V. For YV12 and YV16 exchange the two chroma pointers. Chroma planes have
 *    ceil(width / 2) samples a row in 4:2:2 and 4:2:0, and ceil(height / 2) rows in 4:2:0.
 *  - Interleaved 4:2:2 (C2) is YUY2 (YUYV): four bytes for two pixels in the order Y0, Cb, Y1, Cr,
 *    or Y0, U, Y1, V. (vekiResizeCscRotate_8u_C2R in camera.h takes Cb, Y0, Cr, Y1, which is UYVY.)
 *    A row of odd width still ends in a full group, so that rows hold 4 * ceil(width / 2) bytes.
 *    The place of the missing Y1 is written as a repetition of Y0; what it holds does not matter
 *    when it is read.
 *  - Interleaved RGB (C3) is RGB24: three bytes a pixel in the order R, G, B. Interleaved 4:4:4
 *    YCbCr and YUV are three bytes Y, Cb, Cr and Y, U, V.
 *  - RGB565 (RG16) is a little-endian word with R in bits 15..11, G in 10..5 and B in 4..0. RGB555
 *    (XR15) has bit 15 zero, R in 14..10, G in 9..5, B in 4..0. RGB444 (XR12) has bits 15..12 zero,
 *    R in 11..8, G in 7..4, B in 3..0. BGR565 (BG16), BGR555 (XB15) and BGR444 (XB12) exchange R
 *    and B. A field holds the top bits of its component's 8-bit value: low bits are dropped, never
 *    rounded, so that white is 0xFFFF, 0x7FFF and 0x0FFF.
 *
 *  Sources and destinations have any alignment; the destination of 16-bit pixels, too, may lie at
 *  an odd address or have an odd step. They must not overlap. Only the bytes of the region's rows
 *  are read and written. After the checks, whose order differs from group to group, every function
 *  returns vekStsNoErr.
 *  @{ */

/** @name Planar 4:2:0 to 16-bit pixels
 *  @{ */
/** Planar 4:2:0 (I420) to 16-bit pixels. srcStep holds the steps of the three planes.
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
/** @} */

/** @name Planar 4:4:4 to 16-bit pixels
 *  @{ */
/** Planar 4:4:4 YCbCr (I444) to 16-bit pixels. srcStep is the step of all three planes.
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
/** @} */

/** @name Interleaved YCbCr to 16-bit pixels
 *  @{ */
/** Interleaved YCbCr, 4:2:2 (C2C3; YUY2, that is Y0, Cb, Y1, Cr) or 4:4:4 (C3), to 16-bit pixels.
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
/** @} */

/** @name Interleaved RGB to interleaved YCbCr or YUV, and back
 *  @{ */
/** Interleaved RGB (RGB24) to interleaved YCbCr or YUV, 4:4:4 (C3) or 4:2:2 (C2; YUY2, that is Y0,
 *  Cb, Y1, Cr), and back.
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
/** @} */

/** @name Interleaved RGB to planar YUV with shared chroma
 *  @{ */
/** Interleaved RGB (RGB24) to planar 4:2:0 (I420) or 4:2:2 (I422) YUV. dstStep holds the steps of
 *  the three planes.
 *
 *  Checks, in this order: width or height below 1: vekStsSizeErr; pSrc null: vekStsNullPtrErr;
 *  srcStep below 1: vekStsStepErr; dstStep, pDst or one of its planes null: vekStsNullPtrErr; a
 *  destination step below 1: vekStsStepErr. */
VEK_API VekStatus vekiRGBToYUV420_8u_C3P3R(const Vek8u* pSrc, int srcStep, Vek8u* const pDst[3],
                                           const int dstStep[3], VekiSize roiSize);
VEK_API VekStatus vekiRGBToYUV422_8u_C3P3R(const Vek8u* pSrc, int srcStep, Vek8u* const pDst[3],
                                           const int dstStep[3], VekiSize roiSize);
/** @} */

/** @name Planar YUV with shared chroma to interleaved RGB
 *  @{ */
/** Planar 4:2:0 (I420) or 4:2:2 (I422) YUV to interleaved RGB (RGB24). srcStep holds the steps of
 *  the three planes.
 *
 *  Checks, in this order: width or height below 1: vekStsSizeErr; srcStep, pSrc, one of its planes
 *  or pDst null: vekStsNullPtrErr; a source step or dstStep below 1: vekStsStepErr. */
VEK_API VekStatus vekiYUV420ToRGB_8u_P3C3R(VekConstPlanes pSrc, const int srcStep[3], Vek8u* pDst,
                                           int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiYUV422ToRGB_8u_P3C3R(VekConstPlanes pSrc, const int srcStep[3], Vek8u* pDst,
                                           int dstStep, VekiSize roiSize);
/** @} */

/** Interleaved RGB (RGB24) to planar 4:4:4 YUV (I444). dstStep is the step of all three planes.
 *
 *  Checks, in this order: pDst, one of its planes or pSrc null: vekStsNullPtrErr; width or height
 *  below 1: vekStsSizeErr; srcStep or dstStep below 1: vekStsStepErr. */
VEK_API VekStatus vekiRGBToYUV_8u_C3P3R(const Vek8u* pSrc, int srcStep, Vek8u* const pDst[3],
                                        int dstStep, VekiSize roiSize);

/** Planar 4:4:4 YUV (I444) to interleaved RGB (RGB24). srcStep is the step of all three planes.
 *
 *  Checks, in this order: width or height below 1: vekStsSizeErr; pSrc or one of its planes null:
 *  vekStsNullPtrErr; srcStep below 1: vekStsStepErr; pDst null: vekStsNullPtrErr; dstStep below 1:
 *  vekStsStepErr. */
VEK_API VekStatus vekiYUVToRGB_8u_P3C3R(VekConstPlanes pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                        VekiSize roiSize);

/** @name Planar YUV without padding
 *  @{ */
/** The planar 4:2:0 (I420) and 4:2:2 (I422) YUV conversions on images without padding: RGB rows are
 *  3 * width bytes apart, Y rows width bytes, U and V rows ceil(width / 2) bytes. The results are
 *  those of the functions with steps.
 *
 *  Checks, in this order: a pointer or plane null: vekStsNullPtrErr; width or height below 1:
 *  vekStsSizeErr. */
VEK_API VekStatus vekiRGBToYUV420_8u_C3P3(const Vek8u* pSrc, Vek8u* const pDst[3],
                                          VekiSize roiSize);
VEK_API VekStatus vekiRGBToYUV422_8u_C3P3(const Vek8u* pSrc, Vek8u* const pDst[3],
                                          VekiSize roiSize);
VEK_API VekStatus vekiYUV420ToRGB_8u_P3C3(VekConstPlanes pSrc, Vek8u* pDst, VekiSize roiSize);
VEK_API VekStatus vekiYUV422ToRGB_8u_P3C3(VekConstPlanes pSrc, Vek8u* pDst, VekiSize roiSize);
/** @} */

/** Coefficients of RGB to YCbCr with 10 fractional bits (Q10): the rows of Y, Cb, Cr over R, G, B,
 *  then the three offsets 16.5 * 1024, 128.5 * 1024 and 128.5 * 1024. */
VEK_API extern const Vek32s RGB_YCbCr_Q10[12];
/** The same factors with 16 fractional bits, which no function reads: the Y row; the Cb row; the G
 *  and B terms of Cr (its R term is Cb's B term, 28770); 16.5 * 65536; 128.5 * 65536; 0x01010000.
 */
VEK_API extern const Vek32s RGB_YCbCr[11];
/** Coefficients of YCbCr to RGB (Q10): Y gain 1.164; Cr to R 1.596; Cr to G -0.813; Cb to G -0.392;
 *  Cb to B 2.017. */
VEK_API extern const Vek16s YCbCr_RGB_Q10[5];
/** The same factors with 16 fractional bits, which no function reads. */
VEK_API extern const Vek32s YCbCr_RGB[5];
/** Coefficients of RGB to YUV (Q10): R, G and B in Y: 0.299, 0.587, 0.114; B - Y in U: 0.492; R - Y
 *  in V: 0.877. */
VEK_API extern const Vek16s RGB_YUV_Q10[5];
/** The same factors with 16 fractional bits, which no function reads. */
VEK_API extern const Vek32s RGB_YUV[5];
/** Coefficients of YUV to RGB (Q10): V to R 1.140; U to G -0.394; V to G -0.581; U to B 2.032. */
VEK_API extern const Vek16s YUV_RGB_Q10[4];
/** The same factors with 16 fractional bits, which no function reads. */
VEK_API extern const Vek32s YUV_RGB[4];

/** @name Clamp tables
 *  @{ */
/** Clamp tables: entry i of each is i clamped to 0..15 (SAT16_DK), 0..31 (SAT32_DK), 0..63
 *  (SAT64_DK) or 0..255 (SAT_DK). The pointers lead to the entries of index 0. Indices may run over
 *  -24..47, -48..95, -96..191 and -376..751; the tables lie back to back in this order. */
VEK_API extern const Vek8u* const SAT16_DK;
VEK_API extern const Vek8u* const SAT32_DK;
VEK_API extern const Vek8u* const SAT64_DK;
VEK_API extern const Vek8u* const SAT_DK;
/** @} */

/** @} */
/** @defgroup channels Order of channels, semi-planar 4:2:0
 *  Nothing is computed here: bytes move. Nothing needs alignment.
 *  @{ */

/** @name Order of channels
 *  @{ */
/** Changes the order of channels, or their number: channel i of a destination pixel is channel
 *  order[i] of the source pixel, for example {2, 1, 0} from BGR24 to RGB24. From three to four
 *  channels (C3C4) an entry of 3 stands for `value`: {0, 1, 2, 3} with the value 255 appends an
 *  opaque alpha channel. Entries may repeat.
 *
 *  C3 and C4 work in place, with the same pointer and step for source and destination. Otherwise
 *  source and destination must not overlap.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an image or order is null;
 *  vekStsSizeErr if the width or the height is below 1; vekStsStepErr if a step is below 1;
 *  vekStsBadArgErr if an entry is outside 0..2 (C3) or 0..3 (C4, C4C3, C3C4). */
VEK_API VekStatus vekiPermuteChannels_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize, const int order[3]);
VEK_API VekStatus vekiPermuteChannels_8u_C4R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize, const int order[4]);
VEK_API VekStatus vekiPermuteChannels_8u_C4C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                               int dstStep, VekiSize roiSize, const int order[3]);
VEK_API VekStatus vekiPermuteChannels_8u_C3C4R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                               int dstStep, VekiSize roiSize, const int order[4],
                                               Vek8u value);
/** @} */

/** @name Semi-planar 4:2:0
 *  @{ */
/** Planar 4:2:0 (I420: planes Y, Cb, Cr) to semi-planar (NV12: a plane Y and one with Cb, Cr, Cb,
 *  Cr ...), and back. For NV21 exchange the two chroma pointers of the planar side. There are
 *  ceil(width / 2) x ceil(height / 2) chroma pairs. Source and destination must not overlap.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an array of planes or steps, or a
 *  plane is null; vekStsSizeErr if the width or the height is below 1; vekStsStepErr if a step is
 *  below 1. */
VEK_API VekStatus vekiYCbCr420ToNV12_8u_P3P2R(VekConstPlanes pSrc, const int srcStep[3],
                                              Vek8u* const pDst[2], const int dstStep[2],
                                              VekiSize roiSize);
VEK_API VekStatus vekiNV12ToYCbCr420_8u_P2P3R(VekConstPlanes pSrc, const int srcStep[2],
                                              Vek8u* const pDst[3], const int dstStep[3],
                                              VekiSize roiSize);
/** @} */

/** @} */
/** @defgroup models Colour: gray, twist, XYZ, YCC, LUV, HLS, HSV
 *
 *  All functions here convert 8-bit pixels. Three-channel pixels are three bytes in the order of
 *  the model's name. Source and destination have any alignment and must not overlap. After the
 *  checks every function returns vekStsNoErr.
 *  @{ */

/** Reciprocals: 16384 / i rounded to nearest for i = 1..511, and 0 for i = 0. */
VEK_API extern const Vek16s RCP_Q14[512];

/** CIE lightness L* of the relative luminance Y = i / 255, scaled from 0..100 to 0..255 and
 *  rounded: 116 Y^(1/3) - 16 for Y > 0.008856, and 903.3 Y below. */
VEK_API extern const Vek8u RGB_LUV_L_channel[256];

/** Luma of R, G, B pixels: (306 R + 601 G + 117 B + 512) >> 10, with the BT.601 weights 0.299,
 *  0.587 and 0.114.
 *
 *  Checks, in this order: pDst or pSrc null: vekStsNullPtrErr; a step below 1: vekStsStepErr; width
 *  or height below 1: vekStsSizeErr. */
VEK_API VekStatus vekiRGBToGray_8u_C3C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize);

/** Weighted sum of the three channels c0, c1, c2 with Q14 weights (16384 is 1): (coeffs[0] c0 +
 *  coeffs[1] c1 + coeffs[2] c2 + 8192) >> 14, clamped to 0..255. The weights are meant for
 *  -32768..32767; others are computed exactly all the same.
 *
 *  Checks, in this order: pDst or pSrc null: vekStsNullPtrErr; a step below 1: vekStsStepErr;
 *  coeffs null: vekStsNullPtrErr; width or height below 1: vekStsSizeErr. */
VEK_API VekStatus vekiColorToGrayQ14_8u_C3C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                              int dstStep, VekiSize roiSize,
                                              const Vek32s coeffs[3]);

/** Linear map of the three channels. Row k of `twist` gives channel k of the result: three Q14
 *  coefficients and an offset in the same scale. Every entry is first reduced to Q10 by an
 *  arithmetic shift right by 4. The result is (t0 c0 + t1 c1 + t2 c2 + offset + 512) >> 10, clamped
 *  to 0..255. Any entries are computed exactly; those whose reduced value fits 16 bits are fast.
 *
 *  @quirk The steps are not checked. Any step works, 0 and negative ones, too.
 *
 *  Checks, in this order: pDst, pSrc or twist null: vekStsNullPtrErr; width, then height below 1:
 *  vekStsSizeErr. */
VEK_API VekStatus vekiColorTwistQ14_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                           VekiSize roiSize, const Vek32s twist[3][4]);

/** @name CIE XYZ and photo YCC
 *  @{ */
/** RGB to and from CIE XYZ (sRGB primaries, D65), and to and from a photo YCC space with chroma
 *  centres 156 and 137. RGB is taken as linear (no transfer function). Each is a colour twist with
 *  these Q14 matrices:
 *
 *      to XYZ      6758   5859   2956        0
 *                  3484  11717   1182        0
 *                   317   1953  15569        0
 *      from XYZ   53092 -25185  -8168        0
 *                -15880  30736    681        0
 *                   912  -3343  17323        0
 *      to YCC      3494   6860   1332        0
 *                 -2140  -4201   6342  2555904
 *                  6109  -5116   -994  2244608
 *      from YCC   22256      0  29843 -4088553
 *                 22256  -7050 -15190  3180809
 *                 22256  36338      0 -5668739
 *
 *  Checks, in this order: pDst or pSrc null: vekStsNullPtrErr; width or height below 1:
 *  vekStsSizeErr; a step below 1: vekStsStepErr. */
VEK_API VekStatus vekiRGBToXYZ_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiXYZToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiRGBToYCC_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiYCCToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
/** @} */

/** @name CIE LUV
 *  @{ */
/** RGB to and from CIE LUV with the D65 white point. RGB is taken as linear (no transfer function).
 *
 *  Forward: the luminance is Y = (6969 R + 23434 G + 2365 B) >> 15, and L is RGB_LUV_L_channel[Y]
 *  (L* scaled from 0..100 to 0..255). u and v are scaled to bytes as (u + 134) 255 / 354 and (v +
 *  140) 255 / 262 and rounded, with X, Y, Z of the sRGB matrix in Q15. Greys have u = 97 and v =
 *  136. The inverse undoes this and clamps to 0..255; L = 0 is black.
 *
 *  Errors against double precision, found by trying every colour: forward, from the same 8-bit Y,
 *  0.5 in L, 0.92 in u and 1.24 in v (the 8-bit Y alone makes dark colours up to 9 steps of L
 *  coarse); back 0.58 within the RGB cube. Bytes with v' <= 0 belong to no colour and give some
 *  clamped colour. A round trip changes a channel by 0.8 on average, and in dark saturated colours
 *  by up to 18.
 *
 *  Checks, in this order: pDst or pSrc null: vekStsNullPtrErr; a step below 1: vekStsStepErr; width
 *  or height below 1: vekStsSizeErr. */
VEK_API VekStatus vekiRGBToLUV_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiLUVToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
/** @} */

/** @name HLS and HSV
 *  @{ */
/** RGB to and from HLS (hue, lightness, saturation) and HSV (hue, saturation, value). Every
 *  component is 0..255 for its real range. 255 steps of hue are 360 degrees: red is 0, and hue 255
 *  is red again. A colour without saturation has hue 0; black has saturation 0. Where two channels
 *  share the maximum, red decides before green and green before blue.
 *
 *  Forward, each result is the exact rational value rounded to nearest, halves up, and so within
 *  0.5 of double precision. The inverse is within 0.52. A round trip changes a channel by at most 3
 *  through HSV and 4 through HLS.
 *
 *  Checks, in this order: pDst or pSrc null: vekStsNullPtrErr; width or height below 1:
 *  vekStsSizeErr; a step below 1: vekStsStepErr. */
VEK_API VekStatus vekiRGBToHLS_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiHLSToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiRGBToHSV_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiHSVToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
/** @} */

/** @} */
/** @defgroup arithmetic Arithmetic with a scale factor
 *
 *  This holds for the pointwise functions of this section and the next. Every sample of the
 *  destination depends on the samples at the same place of the sources. C3 forms take interleaved
 *  channels; their constants are one for each channel, in the order of the channels. A source may
 *  be the destination (same pointer, same step); no other overlap is allowed. Nothing needs
 *  alignment, and the size of the region is limited only by memory.
 *  @{ */

/** @name Add, subtract, multiply, square
 *  @{ */
/** Arithmetic on 8-bit samples with a scale factor.
 *
 *  From the exact value e (0..65025) of each sample the result is e * 2^-scaleFactor, rounded half
 *  up and saturated to 0..255. Every int is a valid scale factor:
 *  - scaleFactor > 0: (e + 2^(scaleFactor - 1)) >> scaleFactor, which is 0 for factors above 16;
 *  - scaleFactor = 0: e;
 *  - scaleFactor < 0: e << -scaleFactor. Below -7 everything but 0 becomes 255.
 *
 *  The exact values are:
 *
 *      Add:  e = srcA + srcB              AddC: e = src + value
 *      Sub:  e = srcB - srcA, at least 0  SubC: e = src - value, at least 0
 *      Mul:  e = srcA * srcB              MulC: e = src * value
 *      Sqr:  e = src * src
 *
 *  Negative differences become 0 before they are scaled.
 *  @quirk Sub takes the first image from the second.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an image or (C3) value is null;
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
/** @} */

/** @name Multiply as fractions
 *  @{ */
/** Multiplication of samples that stand for 0..1: with p = srcA * srcB, or src * value, the result
 *  is (p + (p >> 8) + 1) >> 8, which is p / 255 without its fraction. Multiplying by 255 changes
 *  nothing. The checks are those of vekiAdd_8u_C1RSfs. */
VEK_API VekStatus vekiMulScale_8u_C1R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                      int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiMulScale_8u_C3R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                      int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiMulCScale_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u value, Vek8u* pDst,
                                       int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiMulCScale_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek8u value[3],
                                       Vek8u* pDst, int dstStep, VekiSize roiSize);
/** @} */

/** @} */
/** @defgroup logic Logic, shifts, thresholds, set, copy
 *  What the section on arithmetic says about channels, overlap and alignment holds here as well.
 *  @{ */

/** @name Bitwise logic
 *  @{ */
/** Bitwise logic: srcA & srcB, srcA | srcB, srcA ^ srcB; src & value, src | value, src ^ value; and
 *  ~src.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an image or (C3) value is null;
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
/** @} */

/** @name Shifts
 *  @{ */
/** Logical shifts: src >> value, and src << value without the bits that leave the byte (no
 *  saturation). An amount of 8 or more leaves 0. The checks are those of vekiAndC_8u_C1R. */
VEK_API VekStatus vekiRShiftC_8u_C1R(const Vek8u* pSrc, int srcStep, Vek32u value, Vek8u* pDst,
                                     int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiRShiftC_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek32u value[3],
                                     Vek8u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiLShiftC_8u_C1R(const Vek8u* pSrc, int srcStep, Vek32u value, Vek8u* pDst,
                                     int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiLShiftC_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek32u value[3],
                                     Vek8u* pDst, int dstStep, VekiSize roiSize);
/** @} */

/** @name Thresholds
 *  @{ */
/** Thresholds: samples above (GT) or below (LT) a threshold become that threshold, or (Val) a given
 *  value. Comparisons are strict: a sample equal to its threshold stays.
 *
 *      GT:          src > threshold ? threshold : src
 *      LT:          src < threshold ? threshold : src
 *      GTVal:       src > threshold ? value : src
 *      LTVal:       src < threshold ? value : src
 *      LTValGTVal:  src < thresholdLT ? valueLT : src > thresholdGT ? valueGT : src
 *
 *  @quirk Steps are not checked. They may be 0 or negative (rows upwards from the pointer), and
 *  rows are processed in their order.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an image or (C3) a threshold or value
 *  is null; vekStsSizeErr if the width or the height is below 1; for LTValGTVal vekStsThresholdErr
 *  if thresholdGT is below thresholdLT (C3: in any channel). */
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
/** @} */

/** @name Set
 *  @{ */
/** Fills the region with a value, or with a pixel of three values.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if pDst is null; vekStsSizeErr if the
 *  width or the height is below 1; vekStsStepErr if dstStep is below 1; (C3) vekStsNullPtrErr if
 *  value is null. */
VEK_API VekStatus vekiSet_8u_C1R(Vek8u value, Vek8u* pDst, int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiSet_8u_C3R(const Vek8u value[3], Vek8u* pDst, int dstStep, VekiSize roiSize);
/** @} */

/** @name Copy
 *  @{ */
/** Copies the region.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an image is null; vekStsSizeErr if
 *  the width or the height is below 1; vekStsStepErr if a step is below 1. */
VEK_API VekStatus vekiCopy_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                  VekiSize roiSize);
VEK_API VekStatus vekiCopy_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                  VekiSize roiSize);
/** @} */

/** @} */
/** @defgroup pad Borders
 *  @{ */

/** What lies beyond the edges of an image, in all functions that have these borders. */
enum VekiBorder {
  vekiBorderConstant = 0, /**< a value of the caller's */
  vekiBorderReplicate = 1 /**< the nearest sample: aaa|abc|ccc */
};

/** One more border of vekiPad_8u_C1R and vekiPad_8u_C3R. */
enum VekiPadBorder {
  vekiBorderMirror = 2 /**< the samples mirrored, the edge itself once: dcb|abcd|cba */
};

/** @name Borders
 *  @{ */
/** Puts the source at column `left`, row `top` of the destination and fills the rest as `border`
 *  says: with `value` (0), with the nearest sample (1), or mirrored as often as needed (2; a side
 *  of 1 repeats its only sample). Columns are filled first and rows from the filled ones, so that
 *  corners follow the same rule in both directions.
 *
 *  The source may lie where it goes in the destination, pSrc = pDst + top * dstStep + left *
 *  channels with equal steps: then a border grows around it in place. Otherwise source and
 *  destination must not overlap. Nothing needs alignment.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an image or (C3, with every border)
 *  value is null; vekStsSizeErr if a width or height is below 1; vekStsBadArgErr if left or top is
 *  negative; vekStsSizeErr if the destination is smaller than left + srcSize.width or top +
 *  srcSize.height; vekStsStepErr if a step is below 1; vekStsBadArgErr if border is not 0..2. */
VEK_API VekStatus vekiPad_8u_C1R(const Vek8u* pSrc, int srcStep, VekiSize srcSize, Vek8u* pDst,
                                 int dstStep, VekiSize dstSize, int left, int top, int border,
                                 Vek8u value);
VEK_API VekStatus vekiPad_8u_C3R(const Vek8u* pSrc, int srcStep, VekiSize srcSize, Vek8u* pDst,
                                 int dstStep, VekiSize dstSize, int left, int top, int border,
                                 const Vek8u value[3]);
/** @} */

/** @} */
/** @defgroup filters Linear filters
 *
 *  This holds for the filters of this section and the next. roiSize is the size of the destination
 *  region. The neighbourhood of a pixel is read from the source around the same position: pSrc
 *  points at the pixel that corresponds to pDst, and the source image must have the rows and
 *  columns around the region that the neighbourhoods reach. Nothing is made up at the edges, and no
 *  other sample is read. Three-channel images are filtered channel by channel unless a function
 *  says otherwise. Source and destination must not overlap. Nothing needs alignment. Nothing is
 *  allocated; each function says how much stack a call takes at most on any processor.
 *  @{ */

/** @name Box filter
 *  @{ */
/** Box filter: the mean of the maskSize.width x maskSize.height neighbourhood whose pixel at
 *  `anchor` lies on the destination pixel. That is columns x - anchor.x .. x - anchor.x +
 *  maskSize.width - 1, and rows likewise.
 *
 *  With S the sum of the n = width x height samples, the mean is (S * f + 8192) >> 14 with f =
 *  16384 / n up to n = 128, and (S * f + 2^31) >> 32 with f = 2^32 / n above. f is rounded to
 *  nearest (exact halves down), and the mean is saturated to 255.
 *
 *  @quirk f has 14 bits for small masks, and that shows: a mean can be one off the exact one, and
 *  without saturating it would be 256 for white under some masks (of 86, 102 or 120 samples, for
 *  example).
 *
 *  The time per pixel grows slowly with the mask's width up to 48 and does not depend on its size
 *  otherwise. A call takes up to 20 KB of stack.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an image is null; vekStsStepErr if a
 *  step is below 1; vekStsSizeErr if the region is empty; vekStsMaskSizeErr if a mask width or
 *  height is below 2; vekStsAnchorErr if the anchor lies outside the mask. */
VEK_API VekStatus vekiFilterBox_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, VekiSize maskSize, VekiPoint anchor);
VEK_API VekStatus vekiFilterBox_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, VekiSize maskSize, VekiPoint anchor);
/** @} */

/** @} */
/** @defgroup convolution Convolutions
 *
 *  A sum is divided by `divisor` in fixed point. For a power of two 2^k the result is (sum + 2^(k -
 *  1)) >> k, and for 1 it is the sum itself. For any other divisor it is (sum * m + 2^31) >> 32,
 *  where m is 2^32 / divisor rounded to nearest (exact halves down). Then it is saturated to
 *  0..255. Sums and products do not overflow for any kernel.
 *
 *  The kernel is only read, so that it may lie in read-only memory and be shared by threads. Each
 *  of its entries must lie in -32768..32767. A call takes up to 7 KB of stack.
 *
 *  All functions return vekStsNoErr or, in this order: vekStsNullPtrErr if an image or the kernel
 *  is null; vekStsStepErr if a step is below 1; vekStsSizeErr if the region is empty, or if a
 *  kernel width, height or kernelSize is below 2; vekStsAnchorErr if the anchor lies outside the
 *  kernel; vekStsDivisorErr if the divisor is below 1; vekStsCoeffRangeErr if an entry is outside
 *  its range. Entries are read only after all other checks.
 *  @{ */

/** @name Convolution with a rectangular kernel
 *  @{ */
/** Convolution with a kernel of kernelSize.width x kernelSize.height entries, row after row. The
 *  sum is taken over K[j][i] * source(x + anchor.x - i, y + anchor.y - j), so that the
 *  neighbourhood's first column is x + anchor.x - width + 1 and its first row y + anchor.y - height
 *  + 1. */
VEK_API VekStatus vekiFilter_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                    VekiSize roiSize, const Vek32s* pKernel, VekiSize kernelSize,
                                    VekiPoint anchor, int divisor);
VEK_API VekStatus vekiFilter_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                    VekiSize roiSize, const Vek32s* pKernel, VekiSize kernelSize,
                                    VekiPoint anchor, int divisor);
/** @} */

/** @name Convolution along rows
 *  @{ */
/** Convolution along rows: the sum is taken over K[i] * source(x + anchor - i, y). */
VEK_API VekStatus vekiFilterRow_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, const Vek32s* pKernel, int kernelSize,
                                       int anchor, int divisor);
VEK_API VekStatus vekiFilterRow_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, const Vek32s* pKernel, int kernelSize,
                                       int anchor, int divisor);
/** @} */

/** @name Convolution along columns
 *  @{ */
/** Convolution along columns: the sum is taken over K[i] * source(x, y + anchor - i). */
VEK_API VekStatus vekiFilterColumn_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, const Vek32s* pKernel, int kernelSize,
                                          int anchor, int divisor);
VEK_API VekStatus vekiFilterColumn_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, const Vek32s* pKernel, int kernelSize,
                                          int anchor, int divisor);
/** @} */

/** @} */
/** @defgroup neighbourhood Median, morphology, mirror, gamma
 *  The common paragraph of the linear filters holds for the medians and for morphology.
 *  @{ */

/** @name Median filter
 *  @{ */
/** Median filter: in each channel, the middle one of the samples of the maskSize.width x
 *  maskSize.height neighbourhood whose pixel at `anchor` lies on the destination pixel (see
 *  vekiFilterBox_8u_C1R). Both mask dimensions are odd. The height is at most 255; the width has no
 *  limit.
 *
 *  Square masks of 3 to 11 go through sorting networks. Other masks of up to 33 x 85 count how many
 *  samples are below each threshold that matters (in regions of at least one vector's width). All
 *  others go through histograms, with a time per pixel that does not depend on the mask up to a
 *  width of 129 and grows with its height beyond. The portable level has networks for masks of 3, 5
 *  and, on 64-bit processors, 7, and histograms for the rest. A call takes up to 48 KB of stack.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an image is null; vekStsSizeErr if
 *  the region is empty; vekStsStepErr if a step is below 1; vekStsMaskSizeErr if a mask dimension
 *  is below 1 or even, or the height is above 255; vekStsAnchorErr if the anchor lies outside the
 *  mask. */
VEK_API VekStatus vekiFilterMedian_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, VekiSize maskSize, VekiPoint anchor);
VEK_API VekStatus vekiFilterMedian_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, VekiSize maskSize, VekiPoint anchor);
/** @} */

/** Masks of vekiFilterMedianColor_8u_C3R. */
enum VekiMask {
  vekiMask3x3 = 33, /**< 3 x 3 pixels */
  vekiMask5x5 = 55  /**< 5 x 5 pixels */
};

/** Vector median: each destination pixel becomes the pixel of the 3 x 3 or 5 x 5 neighbourhood
 *  centred on it whose sum of distances to all pixels of the neighbourhood is least. The distance
 *  of two pixels is the sum of the absolute differences of their channels. Among equals the first
 *  one wins, counted row after row from the top left. `mask` is one of VekiMask. A call takes up to
 *  48 KB of stack.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an image is null; vekStsSizeErr if
 *  the region is empty; vekStsStepErr if a step is below 1; vekStsMaskSizeErr if `mask` is not one
 *  of the two. */
VEK_API VekStatus vekiFilterMedianColor_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                               int dstStep, VekiSize roiSize, int mask);

/** @name Morphology
 *  @{ */
/** Erosion and dilation: the least and the greatest sample of the 3 x 3 neighbourhood centred on
 *  the destination pixel, in each channel. A call takes less than 1 KB of stack.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an image is null; vekStsStepErr if a
 *  step is below 1; vekStsSizeErr if the region is empty. */
VEK_API VekStatus vekiErode3x3_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiErode3x3_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiDilate3x3_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize);
VEK_API VekStatus vekiDilate3x3_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize);
/** @} */

/** Axes, for the `flip` arguments. */
enum VekiMirrorAxis {
  vekiMirrorHorizontalAxis = 0, /**< rows in reverse order */
  vekiMirrorVerticalAxis = 1,   /**< columns in reverse order */
  vekiMirrorBothAxes = 2        /**< both: half a turn */
};

/** @name Mirror
 *  @{ */
/** Copies the region mirrored about an axis. Pixels of three channels are moved as a whole. Only
 *  the region is read. `flip` is one of VekiMirrorAxis. Source and destination must not overlap. A
 *  call takes less than 1 KB of stack.
 *
 *  @quirk A step below 1 is answered with vekStsSizeErr like a size, not with vekStsStepErr.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an image is null; vekStsSizeErr if a
 *  step, the width or the height is below 1; vekStsMirrorFlipErr if `flip` is not one of the three.
 */
VEK_API VekStatus vekiMirror_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                    VekiSize roiSize, int flip);
VEK_API VekStatus vekiMirror_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                    VekiSize roiSize, int flip);
/** @} */

/** @name Video gamma
 *  @{ */
/** Video gamma by the transfer function of ITU-R BT.709, every byte through a table of 256.
 *  Forward, from linear light L = i / 255: V = 4.5 L below 0.018, and 1.099 L^0.45 - 0.099 from
 *  there on. Inverse, from V = i / 255: L = V / 4.5 below 0.081, and ((V + 0.099) / 1.099)^(1 /
 *  0.45) from there on. Results are multiplied by 255 and rounded to nearest (exact halves to
 *  even). Only the region is read. The source may be the destination (same pointer, same step). A
 *  call takes about 2 KB of stack.
 *
 *  @quirk A step below 1 is answered with vekStsSizeErr like a size, not with vekStsStepErr.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an image is null; vekStsSizeErr if
 *  the width, the height or a step is below 1. */
VEK_API VekStatus vekiGammaFwd_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
VEK_API VekStatus vekiGammaInv_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize);
/** @} */

/** @} */
/** @defgroup dither Dithering
 *
 *  Fewer levels without contours: what rounding to a level loses is spread over the neighbourhood.
 *
 *  n levels have an index k = 0..n - 1 and stand for the grey values 255 k / (n - 1), rounded to
 *  nearest, halves up. 0 and 255 are always among them, and stay what they are.
 *
 *  Ordered dithering adds one of 64 thresholds T to each sample v before it truncates:
 *
 *      k = (v (n - 1) + T[(y + origin.y) & 7][(x + origin.x) & 7]) / 255
 *
 *  T = 255 (2 M + 1) / 128, truncated, with the matrix M of B. E. Bayer ("An optimum method for
 *  two-level rendition of continuous-tone pictures", 1973):
 *
 *       0 32  8 40  2 34 10 42
 *      48 16 56 24 50 18 58 26
 *      12 44  4 36 14 46  6 38
 *      60 28 52 20 62 30 54 22
 *       3 35 11 43  1 33  9 41
 *      51 19 59 27 49 17 57 25
 *      15 47  7 39 13 45  5 37
 *      63 31 55 23 61 29 53 21
 *
 *  `origin` is the place of the region's first pixel in the picture that the matrix is laid over.
 *  Any numbers will do; only their lowest three bits count. With it a picture may be dithered in
 *  pieces, and what changes on a display be dithered again by itself.
 *
 *  Error diffusion (R. W. Floyd and L. Steinberg, 1976) goes through every row from left to right
 *  and passes the error of each sample on to its neighbours to the right and below, each channel by
 *  itself. Errors e are in 1/16 of a grey value, and 0 outside the region. With V for the grey
 *  value of index k, and >> for a shift toward minus infinity:
 *
 *      a = 7 e(x-1, y) + e(x-1, y-1) + 5 e(x, y-1) + 3 e(x+1, y-1)
 *      u = 16 v + ((a + 8) >> 4)
 *      c = (u + 8) >> 4, clamped to 0..255
 *      k = (c (n - 1) + 127) / 255
 *      e(x, y) = u - 16 V
 *
 *  It does not look at `origin`. A call takes up to 46 KB of stack, ordered dithering less than 1 KB. Rows
 *  of colors wider than 6720 pixels are diffused one channel after the other, which takes three times as
 *  long.
 *
 *  Images need no alignment, those of 16-bit pixels included.
 *  @{ */

/** How the functions of this group spread what rounding loses. */
enum VekiDitherMethod {
  vekiDitherOrdered = 0,  /**< thresholds: for moving pictures and parts of pictures */
  vekiDitherDiffusion = 1 /**< error diffusion: for stills */
};

/** @name Dithering
 *  @{ */
/** Dithers a grey picture to `levels` levels. Every result is the byte that its level stands for.
 *  With 256 levels nothing changes. The source may be the destination (same pointer, same step).
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an image is null; vekStsSizeErr if
 *  the width or the height is below 1; vekStsStepErr if a step is below 1; vekStsBadArgErr if
 *  levels is not 2..256; vekStsStrideErr if a step is less than the bytes of a row;
 *  vekStsNotSupportedModeErr if method is not one of VekiDitherMethod; vekStsSizeErr if a picture
 *  wider than 16384 is to be diffused. */
VEK_API VekStatus vekiDither_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                    VekiSize roiSize, int levels, int method, VekiPoint origin);

/** Dithers a grey picture to 2, 4 or 16 levels and packs their indices: `bits` of 1, 2 or 4 for
 *  each sample. The first sample is in the highest bits of a row's first byte. A row takes
 *  ceil(width * bits / 8) bytes, and bits of the last one that are left over are 0. White is 1 with
 *  one bit.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an image is null; vekStsSizeErr if
 *  the width or the height is below 1; vekStsStepErr if a step is below 1; vekStsBadArgErr if bits
 *  is not 1, 2 or 4; vekStsStrideErr if a step is less than the bytes of a row;
 *  vekStsNotSupportedModeErr if method is not one of VekiDitherMethod; vekStsSizeErr if a picture
 *  wider than 16384 is to be diffused. */
VEK_API VekStatus vekiDitherPacked_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, int bits, int method, VekiPoint origin);
/** @} */

/** @name Dithering to 16-bit pixels
 *  @{ */
/** Dithers a picture of three channels to the 16-bit pixels of the group `ycbcr`: little-endian
 *  words with the first channel in the high field and the third one in the low field. R, G, B thus
 *  become RGB565, and B, G, R become BGR565. A field of b bits holds an index of 2^b levels.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if an image is null; vekStsSizeErr if
 *  the width or the height is below 1; vekStsStepErr if a step is below 1; vekStsStrideErr if a
 *  step is less than the bytes of a row; vekStsNotSupportedModeErr if method is not one of
 *  VekiDitherMethod; vekStsSizeErr if a picture wider than 16384 is to be diffused. */
VEK_API VekStatus vekiDitherRGB565_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                             int dstStep, VekiSize roiSize, int method,
                                             VekiPoint origin);
VEK_API VekStatus vekiDitherRGB555_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                             int dstStep, VekiSize roiSize, int method,
                                             VekiPoint origin);
VEK_API VekStatus vekiDitherRGB444_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                             int dstStep, VekiSize roiSize, int method,
                                             VekiPoint origin);
/** @} */

/** @} */
/** @defgroup moments Moments
 *
 *  m_pq = sum over the pixels of x^p y^q I(x, y), up to p + q = 3, where (0, 0) is the region's first
 *  pixel: area, centroid, orientation and shape of what is bright. A state takes the exact sums of
 *  each channel of an image in one pass, and four functions read them as doubles. Arrays of moments
 *  have ten entries in the order
 *
 *      m00 m10 m01 m20 m11 m02 m30 m21 m12 m03
 *
 *  Every addition, subtraction, multiplication, division and root below rounds once, to the nearest
 *  double, in the order in which it is written, in the environment of floating-point numbers that
 *  programs start with. Nothing needs alignment: images, states and results may begin anywhere.
 *
 *  A state has one writer at a time. While nothing is written to it, any number of threads may read
 *  it.
 *  @{ */

/** The moments of an image, opaque. */
typedef struct VekiMomentState VekiMomentState;

/** @name States
 *  @{ */
/** Bytes of memory that a state takes, the same on every processor.
 *
 *  Returns vekStsNoErr, or vekStsNullPtrErr if pSize is null. */
VEK_API VekStatus vekiGetSpecSize_Moments_8u(int* pSize);

/** Prepares a state without channels in memory of the caller's, which is released without the
 *  library: not by vekiFree_Moments_8u. It must not be moved.
 *
 *  Returns vekStsNoErr, or vekStsNullPtrErr if pState is null. */
VEK_API VekStatus vekiInit_Moments_8u(VekiMomentState* pState);

/** Prepares a state without channels in memory of vekMalloc. On an error *ppState stays as it is.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if ppState is null; vekStsMemAllocErr if
 *  vekMalloc returns null. */
VEK_API VekStatus vekiInitAlloc_Moments_8u(VekiMomentState** ppState);

/** Releases a state of vekiInitAlloc_Moments_8u with vekFree. It must not be given one of
 *  vekiInit_Moments_8u.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if pState is null; vekStsContextMatchErr
 *  if it is no state of moments. */
VEK_API VekStatus vekiFree_Moments_8u(VekiMomentState* pState);
/** @} */

/** @name Moments of an image
 *  @{ */
/** Sums the moments of an image of one channel (C1) or of each of three (C3). They replace what the
 *  state held. All sums are exact.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if pSrc or pState is null;
 *  vekStsContextMatchErr if pState is no state of moments; vekStsSizeErr if the width or the height
 *  is outside 1..16384; vekStsStepErr if srcStep is below 1; vekStsStrideErr if srcStep is less than
 *  the bytes of a row. */
VEK_API VekStatus vekiMoments_8u_C1R(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                                     VekiMomentState* pState);
VEK_API VekStatus vekiMoments_8u_C3R(const Vek8u* pSrc, int srcStep, VekiSize roiSize,
                                     VekiMomentState* pState);
/** @} */

/** @name Reading moments
 *  @{ */
/** Ten spatial moments of a channel, where `origin` has the coordinates of the region's first pixel:
 *  the sums of (x + origin.x)^p (y + origin.y)^q I(x, y), exact and then rounded to the nearest
 *  double, halves to even.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if pState or pMoments is null;
 *  vekStsContextMatchErr if pState is no state of moments; vekStsBadArgErr if channel is outside 0
 *  .. channels of the last image - 1, or if origin.x or origin.y is outside -2^30..2^30. */
VEK_API VekStatus vekiSpatialMoments_64f(const VekiMomentState* pState, int channel,
                                         VekiPoint origin, Vek64f* pMoments);

/** Ten central moments of a channel: those about its centroid. All are 0 for a black image.
 *
 *  With S = m00, (xc, yc) = (m10 / S, m01 / S) rounded to the nearest pixel, halves up, and M_pq for
 *  the sums of (x - xc)^p (y - yc)^q I(x, y), exact and then rounded to the nearest double:
 *
 *      dx = M10 / S;  dy = M01 / S
 *      mu00 = S;  mu10 = mu01 = 0
 *      mu20 = M20 - dx * M10;  mu11 = M11 - dx * M01;  mu02 = M02 - dy * M01
 *      mu30 = M30 - dx * (3 * mu20 + dx * M10)
 *      mu21 = (M21 - dx * (2 * mu11 + dx * M01)) - dy * mu20
 *      mu12 = (M12 - dy * (2 * mu11 + dy * M10)) - dx * mu02
 *      mu03 = M03 - dy * (3 * mu02 + dy * M01)
 *
 *  Since the exact sums are taken next to the centroid, next to nothing cancels: on 60 images the
 *  results were off by at most 7.3e-17 of m00 sigma^2 (second order) and 3.5e-17 of m00 sigma^3
 *  (third).
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if pState or pMoments is null;
 *  vekStsContextMatchErr if pState is no state of moments; vekStsBadArgErr if channel is outside 0
 *  .. channels of the last image - 1. */
VEK_API VekStatus vekiCentralMoments_64f(const VekiMomentState* pState, int channel,
                                         Vek64f* pMoments);

/** Ten normalized central moments of a channel, which the scale of the image does not change:
 *
 *      n2 = S * S;  n3 = n2 * sqrt(S)
 *      nu00 = 1;  nu10 = nu01 = 0;  second order: mu / n2;  third order: mu / n3
 *
 *  The checks are those of vekiCentralMoments_64f. For a black image all results are 0, with
 *  vekStsDivByZero. */
VEK_API VekStatus vekiNormalizedMoments_64f(const VekiMomentState* pState, int channel,
                                            Vek64f* pMoments);

/** The seven invariants of M.-K. Hu ("Visual pattern recognition by moment invariants", 1962) of a
 *  channel, h1..h7, which neither scale nor rotation of the image changes, nor mirroring but for the
 *  sign of h7. With a = nu20, b = nu11, c = nu02, d = nu30, e = nu21, f = nu12, g = nu03:
 *
 *      t0 = d + f;  t1 = e + g;  q0 = t0 * t0;  q1 = t1 * t1;  n4 = 4 * b;  s = a + c;  r = a - c
 *      u0 = t0 * (q0 - 3 * q1);  u1 = t1 * (3 * q0 - q1);  p0 = d - 3 * f;  p1 = 3 * e - g
 *      h1 = s;  h2 = r * r + n4 * b;  h3 = p0 * p0 + p1 * p1;  h4 = q0 + q1
 *      h5 = p0 * u0 + p1 * u1;  h6 = r * (q0 - q1) + (n4 * t0) * t1;  h7 = p1 * u0 - p0 * u1
 *
 *  The checks are those of vekiCentralMoments_64f. For a black image all results are 0, with
 *  vekStsDivByZero. */
VEK_API VekStatus vekiHuMoments_64f(const VekiMomentState* pState, int channel, Vek64f* pMoments);
/** @} */

/** @} */
/** @defgroup norms Norms
 *
 *  A norm is taken of samples v: the largest (Inf), the sum of v (L1), or the square root of the
 *  sum of v * v (L2). pNorm receives one value (C1), or one for each channel in the order of the
 *  channels (C3), multiplied by 2^-scaleFactor. Every int is a valid scale factor. Images need no
 *  alignment.
 *  @{ */

/** @name Norms of an image
 *  @{ */
/** Norms of an image: v = src.
 *
 *  Scaling of Inf and L1: a scaleFactor of 0 or more shifts the norm right and a negative one left,
 *  both without rounding or saturation. The amount counts modulo 256. Bits that are shifted out of
 *  the 32-bit result are lost. A left shift by 32 or more gives 0, and a right shift by 32 or more
 *  leaves the top bit of the norm (bit 31, which is never set in Inf).
 *
 *  @quirk Sums of L1 count modulo 2^32, and shift amounts modulo 256: these results wrap where
 *  those of L2 saturate. A frame of 4096 x 4096 bytes still fits.
 *
 *  Scaling of L2: the exact root * 2^-scaleFactor, rounded to nearest, halves up. A result above
 *  2147483647 becomes that, with vekStsSqrtWrn.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if pNorm or pSrc is null; vekStsSizeErr
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
/** @} */

/** @name Norms of a difference
 *  @{ */
/** Norms of the difference of two images: v = |srcA - srcB|. Scaling is that of
 *  vekiNorm_Inf_8u_C1RSfs and its group.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if pSrcB, pSrcA or pNorm is null;
 *  vekStsSizeErr if the width or the height is below 1; vekStsStepErr if srcAStep or srcBStep is
 *  below 1. With the results written: vekStsSqrtWrn (L2). */
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
/** @} */

/** @name Relative norms
 *  @{ */
/** Relative norms: d, the norm of srcA - srcB, divided by r, that of srcB.
 *
 *  If r = 0 the result is 2147483647 and, whatever the other channels give, the status is
 *  vekStsDivByZero. Otherwise, if d = 0, the result is 0. Otherwise, with s for scaleFactor:
 *  - Inf, s >= 0: (d * 256 / r + 128) >> (s + 8), the quotient truncated;
 *  - Inf, s < 0: d / r * 2^-s, truncated to halves, then rounded half up; at most 2147483647;
 *  - L1 (sums modulo 2^32): d / r * 2^-s, truncated to halves, then rounded half up; the low 32
 *    bits of that. With s > 1, d is shifted right by s - 1 before it is divided. Where d * 2^(1 -
 *    s) would have more than 63 bits, d is shifted left to 63 bits and r right by the rest; the
 *    result is 2147483647 if nothing is left of r;
 *  - L2: the exact root of the quotient of the sums * 2^-s, rounded to nearest, halves up. A result
 *    above 2147483647 becomes that, with vekStsSqrtWrn.
 *
 *  @quirk With s > 0 Inf adds the half of an unscaled result before it shifts, so that it is
 *  truncated rather than rounded.
 *
 *  The checks are those of vekiNormDiff_Inf_8u_C1RSfs. With the results written: vekStsDivByZero or
 *  vekStsSqrtWrn (L2). */
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
/** @} */

/** @} */
/** @defgroup warps Affine and perspective warps
 *
 *  Pixel centres have integer coordinates. The source has the columns 0..srcSize.width - 1 and rows
 *  likewise. `dstRect` has the coordinates of the destination's pixels, and pDst points at the pixel
 *  (dstRect.x, dstRect.y). Tiles of one picture, each with its own dstRect, therefore give the same
 *  bytes as the whole. Results are the same on every processor.
 *
 *  The coefficients c are doubles, row after row, and map (x, y) to (c0 x + c1 y + c2, c3 x + c4 y +
 *  c5) with affine warps. With perspective warps both are divided by c6 x + c7 y + c8; the scale of
 *  the nine coefficients does not matter. Products and sums are rounded one by one.
 *
 *  Nearest takes the sample at the rounded position, halves up. Linear and cubic first round the
 *  position to 1/128 pixel, halves up. Linear then weights 2 x 2 samples and rounds once, halves up.
 *  Cubic weights 4 x 4 samples with the cubic convolution of Keys (a = -1/2), of which weights are
 *  multiples of 1/16384, and rounds rows to 1/64 and the result to integers, halves up and limited to
 *  0..255. It passes through the samples and may overshoot beside edges.
 *
 *  Source and destination must not overlap. Nothing needs alignment, the coefficients included.
 *  Nothing outside of the source is read. A call takes less than 8 KB of stack.
 *  @{ */

/** What the coefficients of a warp say, for the `direction` arguments. */
enum VekiWarpDirection {
  vekiWarpForward = 0, /**< where the source's pixels go; the map is inverted first */
  vekiWarpInverse = 1  /**< where the destination's pixels come from */
};

/** Interpolations of the warps. The first two have the codes of VekiInterpolation. */
enum VekiWarpInterpolation {
  vekiWarpNearest = 0, /**< the nearest sample */
  vekiWarpLinear = 1,  /**< between 2 x 2 samples */
  vekiWarpCubic = 2    /**< between 4 x 4 samples */
};

/** One more border of the warps. Note that vekiBorderMirror, which they do not have, is 2 as well. */
enum VekiWarpBorder {
  vekiBorderTransparent = 2 /**< a pixel whose position is outside of the source keeps what the
                                 destination holds; interpolation repeats the edge's samples */
};

/** @name Affine warps
 *  @{ */
/** Writes the source under an affine map: rotated, scaled, sheared, moved.
 *
 *  `direction` is one of VekiWarpDirection and `interpolation` one of VekiWarpInterpolation.
 *  `border` says what lies outside of the source: `borderValue` (vekiBorderConstant), the nearest
 *  sample (vekiBorderReplicate) or nothing (vekiBorderTransparent). A position that is exactly on an
 *  edge's samples is not outside.
 *
 *  The inverse of vekiWarpForward is calculated with D = c0 c4 - c1 c3 and r = 1 / D as b0 = c4 r, b1
 *  = -(c1 r), b3 = -(c3 r), b4 = c0 r, b2 = -(b0 c2 + b1 c5), b5 = -(b3 c2 + b4 c5). Each of the six
 *  is then rounded to a multiple of 2^-32, halves to even, and positions are exact from there on.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if pSrc, pDst or pCoeffs is null;
 *  vekStsSizeErr if a side of the source is not 1..32767, or the destination is empty or not within
 *  -32768..32767 in both directions; vekStsStepErr if a step is below 1; vekStsStrideErr if a step is
 *  below the bytes of a row; vekStsNotSupportedModeErr if `direction`, `interpolation` or `border` is
 *  not one of the above; vekStsNullPtrErr if borderValue is null with vekiBorderConstant (C3);
 *  vekStsCoeffRangeErr if D is 0 or not finite, or unless (|b0| + |b1|) 32768 + |b2| and (|b3| +
 *  |b4|) 32768 + |b5| are below 2^30. */
VEK_API VekStatus vekiAffineWarp_8u_C1R(const Vek8u* pSrc, int srcStep, VekiSize srcSize,
                                        Vek8u* pDst, int dstStep, VekiRect dstRect,
                                        const Vek64f* pCoeffs, int direction, int interpolation,
                                        int border, Vek8u borderValue);
VEK_API VekStatus vekiAffineWarp_8u_C3R(const Vek8u* pSrc, int srcStep, VekiSize srcSize,
                                        Vek8u* pDst, int dstStep, VekiRect dstRect,
                                        const Vek64f* pCoeffs, int direction, int interpolation,
                                        int border, const Vek8u borderValue[3]);
/** @} */

/** @name Perspective warps
 *  @{ */
/** Writes the source under a projective map, which straightens a page, for example. The arguments
 *  are those of vekiAffineWarp_8u_C1R, with nine coefficients.
 *
 *  The map of vekiWarpForward is replaced by its adjugate b, b0 = c4 c8 - c5 c7 and so on, each
 *  number calculated as two products and their difference. The numbers are scaled by a power of two
 *  so that the numerators and the denominator of no position exceed 2^51, and rounded to integers,
 *  halves to even; of numerators and denominator the lowest 8 bits are left out, rounding down. The
 *  quotient is exact. Positions are off by at most 0.004 pixel for images up to 1280 pixels wide,
 *  with the rounding to 1/128 included, and by 0.011 at 16384 under a strong perspective.
 *
 *  A pixel whose denominator is then 0 has no position. It becomes borderValue, the source's pixel
 *  (0, 0) with vekiBorderReplicate, and stays with vekiBorderTransparent. Pixels of negative
 *  denominator are written as well.
 *
 *  The checks are those of vekiAffineWarp_8u_C1R but for the coefficients: vekStsCoeffRangeErr if the
 *  determinant (c0 b0 + c1 b3) + c2 b6 is 0 or not finite with vekiWarpForward, if one of
 *  (|b3i| + |b3i+1|) 32768 + |b3i+2| is not finite, i = 0..2, or if all of these are 0. */
VEK_API VekStatus vekiPerspectiveWarp_8u_C1R(const Vek8u* pSrc, int srcStep, VekiSize srcSize,
                                             Vek8u* pDst, int dstStep, VekiRect dstRect,
                                             const Vek64f* pCoeffs, int direction,
                                             int interpolation, int border, Vek8u borderValue);
VEK_API VekStatus vekiPerspectiveWarp_8u_C3R(const Vek8u* pSrc, int srcStep, VekiSize srcSize,
                                             Vek8u* pDst, int dstStep, VekiRect dstRect,
                                             const Vek64f* pCoeffs, int direction,
                                             int interpolation, int border,
                                             const Vek8u borderValue[3]);
/** @} */

/** @} */
/** @defgroup transforms Transforms: Fourier, cosine
 *  @{ */

/** @name Real two-dimensional Fourier transform
 *
 *  An image of W = 2^orderX columns and H = 2^orderY rows, orders 0..10, and its spectrum of H rows
 *  (ky) of K = W / 2 + 1 complex numbers (kx), each its real and then its imaginary part, signed
 *  32-bit integers:
 *
 *      X(ky, kx) = sum over y, x of s(y, x) exp(-2 pi i (kx x / W + ky y / H))
 *
 *  The columns beyond follow from X(-ky, -kx) = conj X(ky, kx), indices modulo H and W.
 *  @{ */

/** The spec of Fourier transforms of one size. The transforms only read it: any number of
 *  threads may share one, each with a buffer of its own. */
typedef struct VekiRealFFTSpec VekiRealFFTSpec;

/** Bytes of memory that a spec and the buffer of a transform take, the same on every
 *  processor and for all four transforms. Neither memory needs alignment. For 1024 x 1024 the
 *  buffer has 8781888 bytes.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if pSpecSize or pBufferSize is null;
 *  vekStsFftOrderErr if orderX or orderY is outside 0..10. */
VEK_API VekStatus vekiGetSpecSize_RealFFT_32s(int orderX, int orderY, int* pSpecSize,
                                              int* pBufferSize);

/** Prepares a spec in memory of the caller's, which is released without the library: not
 *  by vekiFree_RealFFT_32s. It must not be moved.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if pSpec is null; vekStsFftOrderErr if
 *  orderX or orderY is outside 0..10. */
VEK_API VekStatus vekiInit_RealFFT_32s(int orderX, int orderY, VekiRealFFTSpec* pSpec);

/** Prepares a spec in memory of vekMalloc. On an error *ppSpec stays as it is.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if ppSpec is null; vekStsFftOrderErr if
 *  orderX or orderY is outside 0..10; vekStsMemAllocErr if vekMalloc returns null. */
VEK_API VekStatus vekiInitAlloc_RealFFT_32s(int orderX, int orderY, VekiRealFFTSpec** ppSpec);

/** Releases a spec of vekiInitAlloc_RealFFT_32s with vekFree. It must not be given one of
 *  vekiInit_RealFFT_32s.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if pSpec is null; vekStsContextMatchErr
 *  if it is no spec of a Fourier transform. */
VEK_API VekStatus vekiFree_RealFFT_32s(VekiRealFFTSpec* pSpec);

/** Forward (Fwd): from an image of bytes or signed 32-bit integers to its spectrum, each real and
 *  imaginary part multiplied by 2^-scaleFactor. Inverse (Inv): from a spectrum to the image, each
 *  sample
 *
 *      s(y, x) = sum over ky, kx of X(ky, kx) exp(2 pi i (kx x / W + ky y / H))
 *
 *  multiplied by 2^-scaleFactor, where the sum goes over all W columns of the spectrum. Neither
 *  direction divides by W H: with scaleFactor 0 forward and orderX + orderY inverse the image comes
 *  back. What the inverse finds imaginary in columns 0 and W / 2 after it has transformed the
 *  columns is left out: a real image has nothing there.
 *
 *  Results are rounded to nearest, halves to even, and clamped to the type of the destination. (With
 *  halves up, as in other functions, conjugate numbers would no longer be conjugate.) Spectra of
 *  bytes need no clamping for a scaleFactor of -3 or more. Every scaleFactor is valid: below -64 it
 *  counts as -64, above 64 as 64.
 *
 *  Everything between is calculated in doubles. Before it is rounded, a spectrum of bytes with
 *  scaleFactor 0 was never found more than 3.0e-9 from the exact value (1024 x 1024), and the
 *  result was the exact value rounded.
 *
 *  Only the W samples or K complex numbers of each row are read and written. Source and destination
 *  may overlap in any way, and be the same: the whole source is read before anything is written.
 *  pBuffer has the size that vekiGetSpecSize_RealFFT_32s gives, holds nothing of importance before
 *  and after the call, and overlaps neither. No pointer or step needs alignment. A call takes less
 *  than 4 KB of stack.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if pSrc, pDst, pSpec or pBuffer is null;
 *  vekStsContextMatchErr if pSpec is no spec of a Fourier transform; vekStsStepErr if
 *  srcStep or dstStep is below 1; vekStsStrideErr if srcStep or dstStep is below the bytes of a row
 *  (W or 4 W of an image, 8 K of a spectrum). */
VEK_API VekStatus vekiRealFFTFwd_8u32s_C1RSfs(const Vek8u* pSrc, int srcStep, Vek32s* pDst,
                                              int dstStep, int scaleFactor,
                                              const VekiRealFFTSpec* pSpec, Vek8u* pBuffer);
VEK_API VekStatus vekiRealFFTFwd_32s_C1RSfs(const Vek32s* pSrc, int srcStep, Vek32s* pDst,
                                            int dstStep, int scaleFactor,
                                            const VekiRealFFTSpec* pSpec, Vek8u* pBuffer);
VEK_API VekStatus vekiRealFFTInv_32s8u_C1RSfs(const Vek32s* pSrc, int srcStep, Vek8u* pDst,
                                              int dstStep, int scaleFactor,
                                              const VekiRealFFTSpec* pSpec, Vek8u* pBuffer);
VEK_API VekStatus vekiRealFFTInv_32s_C1RSfs(const Vek32s* pSrc, int srcStep, Vek32s* pDst,
                                            int dstStep, int scaleFactor,
                                            const VekiRealFFTSpec* pSpec, Vek8u* pBuffer);
/** @} */

/** @name Cosine transform of 8 x 8 blocks
 *  @{ */
/** The orthonormal two-dimensional cosine transform (DCT-II) of blocks of 8 x 8 signed 16-bit
 *  samples (Fwd), and its inverse (Inv), as JPEG and MPEG use them: of one block of 64 values, row
 *  after row (C1), or of all blocks of an image (C1R), where a block's coefficients take the place
 *  of its samples. The coefficient in row v and column u of a block belongs to the vertical
 *  frequency v and the horizontal frequency u.
 *
 *  With D[u][x] = 2^14 c cos((2 x + 1) u pi / 16), c = 1 for u = 0 and sqrt(2) otherwise, rounded
 *  to integers: 16384; 22725, 19266, 12873, 4520; 21407, 8867. Forward, each row and then each
 *  column:
 *
 *      t[y][u] = (sum over x of D[u][x] s[y][x] + 2^10) >> 11
 *      S[v][u] = sat16((sum over y of D[v][y] t[y][u] + 2^19) >> 20)
 *
 *  Inverse likewise:
 *
 *      t[v][x] = (sum over u of D[u][x] S[v][u] + 2^10) >> 11
 *      s[y][x] = sat16((sum over v of D[v][y] t[v][x] + 2^19) >> 20)
 *
 *  >> is a shift toward minus infinity, t is not limited, and sat16 clamps to 16 bits. Samples of
 *  -4096..4095 never reach those limits. The three fractional bits of t keep the inverse within the
 *  bounds of IEEE 1180-1990. Forward, a coefficient of samples up to 255 is at most 0.55 from the
 *  exact one.
 *
 *  The source may be the destination (same pointer, same step). No pointer or step needs alignment.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr if pSrc or pDst is null; of the functions
 *  on images (C1R) also vekStsSizeErr if the width or the height is below 1 or not a multiple of 8;
 *  vekStsStepErr if srcStep or dstStep is below 1; vekStsStrideErr if srcStep or dstStep is below
 *  the 2 * width bytes of a row. */
VEK_API VekStatus vekiBlockDCTFwd_16s_C1(const Vek16s* pSrc, Vek16s* pDst);
VEK_API VekStatus vekiBlockDCTInv_16s_C1(const Vek16s* pSrc, Vek16s* pDst);
VEK_API VekStatus vekiBlockDCTFwd_16s_C1R(const Vek16s* pSrc, int srcStep, Vek16s* pDst,
                                          int dstStep, VekiSize roiSize);
VEK_API VekStatus vekiBlockDCTInv_16s_C1R(const Vek16s* pSrc, int srcStep, Vek16s* pDst,
                                          int dstStep, VekiSize roiSize);
/** @} */

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* VEK_IMAGE_H */
