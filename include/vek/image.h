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

/* ==== Median, morphology, mirror, gamma ====================================================== */

/* ==== Norms ================================================================================== */

#ifdef __cplusplus
}
#endif

#endif /* VEK_IMAGE_H */
