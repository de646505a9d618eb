/** @file camera.h
 *  The camera sub-library: automatic exposure, automatic white balance, the raw Bayer pipeline, and
 *  the preview operations that resize, rotate and convert YCbCr images.
 *
 *  Every argument fault of every function here, null pointers included, is answered with
 *  vekStsBadArgErr unless the function's comment names another status.
 */
#ifndef VEK_CAMERA_H
#define VEK_CAMERA_H

#include "vek/vek.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ==== Automatic exposure ===================================================================== */

/* ==== Automatic white balance ================================================================ */

/* ==== Raw Bayer pipeline ===================================================================== */

/* One raw frame to three 8-bit planes Y, Cb, Cr in one pass: dead pixels, gamma, demosaicing,
 * colour correction, conversion, quarter turns, reduction by 2 or 4. What does not change from
 * frame to frame is prepared once in a state; a state is only read by the frame function, so any
 * number of threads may use one state on distinct frames.
 *
 * Raw samples: 10-bit values in 16-bit words, rows R Gr R Gr ... and Gb B Gb B ...; the region's
 * top-left sample is red. Only the low 10 bits of a sample are looked at. A quad is the 2 x 2 group
 * R, Gr, Gb, B at an even row and an even column of the region.
 *
 * With g(s) the gamma table's entry for sample s, each pixel gets its R, G, B in 0..255 from mapped
 * samples g(s), by one of three rules:
 *
 * - Interior rule: a component that the site itself has is taken as it is; each other one is the
 *   average of its nearest samples, the two beside or above and below the site, (a + b + 1) >> 1,
 * or the four around it, (a + b + c + d + 2) >> 2. A quad needs one sample around it on every side.
 * - Edge rule: all four pixels of a quad get R = g(R), G = (g(Gr) + g(Gb) + 1) >> 1, B = g(B).
 *   Without a valid border it serves the quads along the four edges of the region.
 * - Reduction: a pixel of the output gets the R, G, B that the edge rule has for one quad of its
 *   block: the block itself at scale 2, the four samples in the centre of the 4 x 4 block at scale
 * 4 (there B is the upper left sample and R the lower right one).
 *
 * With C the nine Q8 coefficients of the state, every sum in 32 bits and shifted arithmetically:
 * Y = (C00 R + C01 G + C02 B) >> 8 (no rounding term), Cb = (C10 R + C11 G + C12 B + 32768) >> 8,
 * Cr likewise with row 2, each clamped to 0..255. Chroma is converted from the average R, G, B of
 * the pixels that share it, component by component: two neighbours in a destination row, (a + b +
 * 1) >> 1, in 4:2:2; the destination's 2 x 2 block, (a + b + c + d + 2) >> 2, in 4:2:0. */

/** A defective sample of the sensor. */
typedef struct VekiDeadPixel {
  Vek32s row;
  Vek32s column;
} VekiDeadPixel;

/** Colour part of the pipeline's parameters. */
typedef struct VekiRggbColorParam {
  Vek32u gammaMode;     /**< 0: built-in curve gammaCurve[0]; 1: the caller's table gammaTable[0] */
  Vek32u gammaCurve[3]; /**< mode 0: 0 linear, 1 the standard curve; [1] and [2] are not read */
  const Vek8u* gammaTable[3];      /**< mode 1: 1024 entries; [1] and [2] are not read */
  const VekiDeadPixel* deadPixels; /**< in sensor coordinates; null: none */
  Vek32s numDeadPixels;            /**< entries of deadPixels */
  Vek32s rowOffset;                /**< sensor row of the region's first row, at least 0 */
  Vek32s colOffset;                /**< sensor column of the region's first column, at least 0 */
  Vek32u reserved;                 /**< must be 0 */
  const Vek16s* colorMatrix; /**< nine Q8 coefficients (256 is 1), row-major: rows the corrected
                                  R, G, B, columns the camera's */
} VekiRggbColorParam;

/** Geometry of the pipeline. Sizes are in samples (source) and luma pixels (destination, after the
 *  rotation), steps in bytes. */
typedef struct VekiRggbGeometry {
  Vek32s srcStep;   /**< even; of any sign and size otherwise */
  Vek32s srcWidth;  /**< even */
  Vek32s srcHeight; /**< even */
  Vek32s dstStep[3];
  Vek32s dstWidth;     /**< of the region as it is seen after the rotation: all of it, half of */
  Vek32s dstHeight;    /**< it or a quarter of it, the same in both directions (scale 1, 2, 4) */
  Vek32s filterMode;   /**< 2 at scale 1, 3 at scales 2 and 4; nothing else depends on it */
  Vek32s rotation;     /**< vekiRotNone, vekiRot90Ccw, vekiRot90Cw or vekiRot180 (0..3) */
  Vek32s chromaFormat; /**< 8: 4:2:2, chroma of half the width; 9: 4:2:0, half the height as well */
  Vek32s srcBorderValid; /**< scale 1. 0: the region is all there is, the edge rule serves its
                            edges; otherwise one more sample is valid on every side of the region,
                            and the interior rule serves everything */
} VekiRggbGeometry;

/** What InitAlloc prepares; its contents are the library's own. */
typedef struct VekiRggbToYCbCrState VekiRggbToYCbCrState;

/** Checks the parameters and prepares a state from them.
 *
 *  Coefficients: C = K * colorMatrix in Q8, each entry (sum + 128) >> 8, wrapped to 16 bits, with
 *
 *           R    G    B
 *      Y   77  143   29
 *      Cb -30  -85  128
 *      Cr 128 -107  -21
 *
 *  (not the textbook's: the rows sum to 249, 13 and 0).
 *
 *  Built-in gamma curves: straight lines between 33 control points with inputs and outputs of
 *  0..1024. With q the truncated 1024 * (y1 - y0) * (i - x0) / (x1 - x0) of a segment, entry i is
 *  min(255, (1024 * y0 + q + 512) >> 12), which rounds up the last eighth of a step only: the
 * linear curve maps 0..3 to 0, 4..7 to 1, ..., 1020..1023 to 255.
 *
 *  Dead pixels: with both offsets 0 the state uses the caller's array where it lies, whatever it
 *  holds. Otherwise entries above or left of the region are dropped and the others are copied in
 *  their order, with the offsets subtracted; entries beyond its right or bottom edge stay.
 *
 *  The caller's gamma table (mode 1) and a dead-pixel array used in place must live as long as the
 *  state; everything else is copied. All memory comes from vekiMalloc. Two pieces are never
 *  returned: the block for the state when an argument is refused, since it is taken before the
 *  checks, and the copy of a dead-pixel list.
 *
 *  Returns vekStsNoErr with *ppState set. Otherwise *ppState is untouched and the result is
 *  vekStsBadArgErr if, in this order: pParam or pGeom is null; gammaMode is above 1; gammaCurve[0]
 *  is above 1 (mode 0); gammaTable[0] is null (mode 1); reserved is not 0; an offset is negative;
 *  colorMatrix is null; srcStep, srcWidth or srcHeight is odd; dstWidth or dstHeight is below 1;
 *  rotation is not 0..3; chromaFormat is not 8 or 9; the destination is neither the whole, half nor
 *  a quarter of the turned region; dstStep[0] is below dstWidth, dstStep[1] or dstStep[2] below
 *  dstWidth / 2; dstStep[0] is not a multiple of 8 (at scales 2 and 4: of 4), dstStep[1] or
 *  dstStep[2] not a multiple of 4 (of 2); at scales 2 and 4 dstWidth is not a multiple of 4 or
 *  dstHeight is odd; filterMode does not belong to the scale; a list to be copied has no entries,
 * or its first entry inside the region is the region's top-left sample; ppState is null. It is
 *  vekStsMemAllocErr, and all memory of this call is returned, if the arguments are fine and
 *  vekiMalloc has given null. */
VEK_API VekStatus vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(const VekiRggbColorParam* pParam,
                                                         const VekiRggbGeometry* pGeom,
                                                         VekiRggbToYCbCrState** ppState);

/** Releases a state and the tables that it owns. Always returns vekStsNoErr; null is accepted. */
VEK_API VekStatus vekiFree_10RGGBtoYCbCr_RotRsz_P3R(VekiRggbToYCbCrState* pState);

/** Converts one frame.
 *
 *  pSrc is the region's top-left sample. First each listed dead pixel is replaced in the frame
 *  itself, in list order: by the sample two columns to its left if its column is above 1, else by
 *  the one two rows above if its row is above 1; in the top-left quad it stays. Row r, column c is
 *  the sample r * (srcStep / 2) + c, without regard to the region's size: entries outside the
 * region reach the memory that this gives. Then the region is converted as described above. Apart
 * from listed pixels it is only read, with one sample around it if that is valid (scale 1).
 *
 *  Alignment: pSrc 2 bytes. Scale 1: pDst[0] 8 bytes, pDst[1] and pDst[2] 4; without a valid border
 *  the same holds for pDst[0] + 2, pDst[1] + 1 and pDst[2] + 1 instead, where the interior starts.
 *  Scales 2 and 4: pDst[0] 4 bytes, pDst[1] and pDst[2] 2.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr, with the frame unchanged, if, in this order: pState is
 *  null; pSrc is null; pDst or a plane is null; a plane is misaligned. */
VEK_API VekStatus veki10RGGBtoYCbCr_RotRsz_8u_P3R(Vek16u* pSrc, Vek8u* const pDst[3],
                                                  const VekiRggbToYCbCrState* pState);

/* ==== Preview: resize, rotate, convert ======================================================= */

/* Common to the preview functions.
 *
 * Planes: Y, Cb, Cr in this order. 4:2:0 chroma has half the width and half the height of the luma
 * (rounded down), 4:2:2 chroma half the width and the full height.
 *
 * Scaled size: dstWidth x dstHeight is the size of the scaled image before it is turned, as the
 * source is oriented. After a quarter turn the destination holds dstHeight columns and dstWidth
 * rows.
 *
 * Sampling steps: xStep and yStep are unsigned 16.16 distances between samples in the source (65536
 * is one source sample; 2:1 reduction is 131072). The caller chooses them; the largest horizontal
 * step that is accepted is ((srcWidth & ~1) - 1) * 65536 / ((dstWidth & ~1) - 1), the product taken
 * modulo 2^32 and read as signed, the quotient truncated; the vertical limit likewise. Source and
 * destination sizes of 1 are refused.
 *
 * Interpolation: 0 takes the nearest luma sample, 1 blends the four around the sampling point;
 * chroma is always the nearest sample. A blend reads no sample whose weight is 0.
 */

/** Orientations, for the `rotation` arguments. (x, y) is a pixel of the scaled W x H image. */
enum {
  vekiRotNone = 0,         /**< to row y, column x */
  vekiRot90Ccw = 1,        /**< quarter turn counter-clockwise: to row W-1-x, column y */
  vekiRot90Cw = 2,         /**< quarter turn clockwise: to row x, column H-1-y */
  vekiRot180 = 3,          /**< half turn: to row H-1-y, column W-1-x */
  vekiMirrorLeftRight = 4, /**< to row y, column W-1-x */
  vekiMirrorTopBottom = 5  /**< to row H-1-y, column x */
};

/** Resizes a planar YCbCr 4:2:0 image, turns it and converts it to packed RGB.
 *
 *  dstFormat: 4 RGB565, 5 RGB555 (bit 15 zero), 6 RGB444 (bits 15..12 zero), each one little-endian
 *  16-bit word a pixel with red in the highest field; 7 three bytes B, G, R.
 *
 *  Conversion (studio-range BT.601 in 8 fractional bits): with y = 298 (Y - 16), b = Cb - 128,
 *  r = Cr - 128: R = y + 409 r, G = y - 100 b - 208 r, B = y + 516 b, each shifted right by 16
 * minus the field's bits (toward minus infinity, no rounding term) and clamped to the field. White
 *  (Y = 235) therefore becomes 254 in the 24-bit format.
 *
 *  Pixels are sampled in 2 x 2 blocks that share one chroma sample. Luma of pixel (x, y) is sampled
 * at (x * xStep, y * yStep); chroma of block (x / 2, y / 2) at column (x / 2) * xStep, rounded to
 *  nearest, and row y * yStep / 2, rounded to nearest. With interpolation 1 and a lower row of a
 * block that would start at or below the last source row, that row repeats the upper one. With an
 * odd dstWidth the last column repeats its left neighbour; with an odd dstHeight the last row
 * repeats the one above it.
 *
 *  Alignment: pDst 8 bytes, pSrc[0] 4, pSrc[1] and pSrc[2] 2; srcStep[0] 4, srcStep[1] and
 * srcStep[2] 2; dstStep 8 for the 16-bit formats and 2 for the 24-bit one.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if, in this order: pSrc is null; pDst is null; a pointer
 * is misaligned; a size is below 1; a sampling step is below 1 or above its limit; a row step is
 *  misaligned, below 1, or (source) below the row's bytes; dstFormat is not 4..7, interpolation not
 * 0 or 1, rotation not 0..5; dstStep is misaligned or holds fewer pixels than the destination row;
 *  srcStep or a source plane is null. */
VEK_API VekStatus vekiYCbCr420RszCscRotRGB_8u_P3C3R(const Vek8u* const pSrc[3],
                                                    const int srcStep[3], int srcWidth,
                                                    int srcHeight, Vek8u* pDst, int dstStep,
                                                    int dstWidth, int dstHeight, int dstFormat,
                                                    int interpolation, int rotation, int xStep,
                                                    int yStep);

#ifdef __cplusplus
}
#endif

#endif /* VEK_CAMERA_H */
