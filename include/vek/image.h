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

/* ==== Logic, shifts, thresholds, set, copy =================================================== */

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
 *  (exact halves down) and the mean saturated to 255. The time per pixel does not depend on the
 *  size of the mask. Uses up to 38 KB of stack.
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
 * entries must lie in -32768..32767. About 3 KB of stack.
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
 *  Square masks of 3 to 11 go through sorting networks (in regions of at least one vector's width);
 *  others through histograms, with a time per pixel that does not depend on the mask up to a width
 *  of 129 and grows with its height beyond. Uses up to 54 KB of stack.
 *
 *  Return vekStsNoErr or, in this order: vekStsNullPtrErr; vekStsSizeErr (an empty region);
 *  vekStsStepErr (a step below 1); vekStsMaskSizeErr (a mask dimension below 1 or even, or a height
 *  above 256); vekStsAnchorErr (the anchor lies outside the mask). */
VEK_API VekStatus vekiFilterMedian_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, VekiSize maskSize, VekiPoint anchor);
VEK_API VekStatus vekiFilterMedian_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, VekiSize maskSize, VekiPoint anchor);

/** Masks, for vekiFilterMedianColor_8u_C3R. */
enum { vekiMask3x3 = 33, vekiMask5x5 = 55 };

/** Vector median: each destination pixel becomes the pixel of the 3 x 3 or 5 x 5 neighbourhood
 *  centred on it whose sum of distances to all pixels of the neighbourhood is least. The distance
 *  of two pixels is the sum of the absolute differences of their channels. Among equals the first
 *  wins, counted row after row from the top left. Uses up to 40 KB of stack.
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
enum {
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

#ifdef __cplusplus
}
#endif

#endif /* VEK_IMAGE_H */
