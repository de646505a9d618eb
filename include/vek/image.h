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
 *  size of the mask. Uses about 30 KB of stack.
 *
 *  Returns vekStsNoErr or, in this order: vekStsNullPtrErr; vekStsStepErr (a step below 1);
 *  vekStsSizeErr (an empty region); vekStsMaskSizeErr (a mask width or height below 2);
 *  vekStsAnchorErr (the anchor lies outside the mask). */
VEK_API VekStatus vekiFilterBox_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, VekiSize maskSize, VekiPoint anchor);
VEK_API VekStatus vekiFilterBox_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, VekiSize maskSize, VekiPoint anchor);

/* ==== Median, morphology, mirror, gamma ====================================================== */

/* ==== Norms ================================================================================== */

#ifdef __cplusplus
}
#endif

#endif /* VEK_IMAGE_H */
