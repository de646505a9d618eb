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
 * is one source sample; 2:1 reduction is 131072). The caller chooses them. Unless a function says
 * otherwise, the largest horizontal step that is accepted is ((srcWidth & ~1) - 1) * 65536 / ((dstWidth & ~1) - 1), the product taken
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

/** Resizes a planar YCbCr 4:2:0 image and turns it; the result is planar YCbCr 4:2:0 again.
 *
 *  Scaled chroma is dstWidth/2 x dstHeight/2 and is oriented like the luma. dstWidth and dstHeight
 *  are even.
 *
 *  Sampling: luma pixel (x, y) at column x * xStep and row y * yStep. Interpolation 0 rounds both
 *  to the nearest sample. Interpolation 1 blends a + (((b - a) * fx) >> 16) in both rows, fx being
 *  the fraction of the column, and then those two with the fraction of the row (shifts toward minus
 *  infinity); a row at or below the last source row is blended 1/65536 above it. Chroma sample
 *  (i, j) is the one nearest to column i * xStep and row j * yStep of its plane.
 *
 *  Exact reductions: with rotation 0 and dstWidth x dstHeight equal to half or a quarter of the
 *  source (each rounded down), the sampling steps are checked but not used. Interpolation 1 stores
 *  (a + b + c + d + 4) >> 2 modulo 256 (so four samples of 255 give 0) of each 2 x 2 block, or of
 *  the middle 2 x 2 samples of each 4 x 4 block. Interpolation 0 takes one sample of each block,
 *  column 1 of row 0 (2:1) or column 1 of row 1 (4:1); Cr is then read with the row step of Cb,
 *  and from row 0 of each block also in the 4:1 case. pSrc[2] must reach as far as that reads: row
 *  y of the reduced Cr plane begins at pSrc[2] + 2 * y * srcStep[1], or 4 * y * srcStep[1].
 *
 *  With rotation 5 the rows of the Cr plane are written dstStep[1] bytes apart, upwards from row
 *  dstHeight/2 - 1 (which lies dstStep[2] * (dstHeight/2 - 1) bytes behind pDst[2]): let the two
 *  chroma steps be equal, or provide that memory.
 *
 *  Alignment: pSrc[0..2] 8 bytes, pDst[0] 4, pDst[1] and pDst[2] 2; srcStep[0..2] 8, dstStep[0] 4,
 *  dstStep[1] and dstStep[2] 2.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if, in this order: a pointer is null; a pointer is
 *  misaligned; a size is below 1; a sampling step is below 1 or above its limit; a row step is
 *  misaligned; dstWidth or dstHeight is odd; a row step is below 1; a source row step is below the
 *  row's bytes; interpolation is not 0 or 1, rotation not 0..5; a destination row step is below the
 *  bytes of the turned row. */
VEK_API VekStatus vekiYCbCr420RszRot_8u_P3R(const Vek8u* const pSrc[3], const int srcStep[3],
                                            int srcWidth, int srcHeight, Vek8u* const pDst[3],
                                            const int dstStep[3], int dstWidth, int dstHeight,
                                            int interpolation, int rotation, int xStep, int yStep);

/** Resizes a planar YCbCr 4:2:2 image and turns it; the result is planar YCbCr 4:2:2 again.
 *
 *  Scaled chroma is dstWidth/2 x dstHeight samples. After a quarter turn the destination chroma is
 *  subsampled along its own rows: dstHeight/2 columns and dstWidth rows, where the samples of scaled
 *  rows 2k and 2k + 1 alternate in one destination column (rotation 1: column k, bottom to top;
 *  rotation 2: column dstHeight/2-1-k, top to bottom). dstWidth is even; there are no exact
 *  reductions.
 *
 *  Sampling: luma as in vekiYCbCr420RszRot_8u_P3R, but of the rows only the odd ones are kept 1/65536
 *  above the last source row, and row 1 is not. Chroma sample (i, y) is the one nearest to column
 *  i * xStep of its plane and to the row at which luma row y is sampled.
 *
 *  With an odd dstHeight the rows are still made in pairs: a row with the index dstHeight is sampled
 *  and written too. The caller provides the memory:
 *  - destination, rotation 0 and 4: one row more below each of the three planes;
 *  - rotation 3 and 5: one row more above each plane, in front of pDst[i];
 *  - rotation 1: one luma column more at the right of each row (within the row step), and one chroma
 *    column more at the right;
 *  - rotation 2: one luma column more at the left, its first byte just in front of pDst[0], and one
 *    chroma column more at the left, in front of pDst[1] and pDst[2];
 *  - source: yStep limits the first dstHeight - 1 rows only. Rows dstHeight - 1 and dstHeight sample
 *    at those indices times yStep, which may be below the image; with interpolation 1 row dstHeight
 *    is kept inside.
 *  The extra row is written last; where row steps make it meet samples of the image, as an extra
 *  chroma column does if dstStep[1] is dstHeight/2, it replaces them.
 *
 *  Alignment: pSrc[0] and pDst[0] 4 bytes, srcStep[0] and dstStep[0] 4; chroma none.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if, in this order: a pointer is null; pDst[0] or pSrc[0]
 *  is misaligned; dstWidth is odd; a sampling step is below 1 or above its limit; a size is below 1;
 *  a luma row step is misaligned; a row step is below 1; a source row step is below the row's bytes;
 *  a destination row step is below the bytes of the turned row; interpolation is not 0 or 1,
 *  rotation not 0..5. */
VEK_API VekStatus vekiYCbCr422RszRot_8u_P3R(const Vek8u* const pSrc[3], const int srcStep[3],
                                            int srcWidth, int srcHeight, Vek8u* const pDst[3],
                                            const int dstStep[3], int dstWidth, int dstHeight,
                                            int interpolation, int rotation, int xStep, int yStep);

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

/** Resizes a planar YCbCr 4:2:2 image, turns it and converts it to packed RGB.
 *
 *  dstFormat: 0 RGB565, 1 RGB555, 2 RGB444, 3 three bytes B, G, R; layouts and conversion as in
 *  vekiYCbCr420RszCscRotRGB_8u_P3C3R (whose codes are 4 to 7). pDst may be at any address.
 *
 *  Rows of all three planes advance together: the chroma rows lie srcStep[0] / 2 bytes apart;
 *  srcStep[1] and srcStep[2] are checked but not used.
 *
 *  Size: in the 16-bit formats dstWidth pixels are made in each of dstHeight rows. Quarter turns put
 *  pixel (x, y) at pDst + (H-1-x + y(H-W)) dstStep + 2y (rotation 1) or pDst + 2(W-1-y) + (x +
 *  y(W-H)) dstStep (rotation 2): a coherent picture if dstWidth equals dstHeight, and otherwise
 *  pixels scattered over that memory, which the caller provides. In the 24-bit format dstWidth x
 *  dstHeight is the destination's own size, so that quarter turns make dstHeight pixels in each of
 *  dstWidth rows. With W x H the destination's size, rotations 0, 3, 4, 5 and all of the 24-bit
 *  format write rows of W pixels; dstStep is not compared with them.
 *
 *  Sampling: row y at y * yStep, kept 1/65536 above row srcHeight (interpolation 1: above row
 *  srcHeight - 1) from where it reaches that row. Interpolation 0 takes luma at the column
 *  (x * xStep + 32768) >> 16 and the row rounded down. Interpolation 1 blends as
 *  vekiYCbCr420RszRot_8u_P3R does, at x * xStep. Odd x are kept 1/65536 left of column srcWidth
 *  (interpolation 1: of column srcWidth - 1) from where they reach it. Even x are not kept: let
 *  their sampling points lie inside the image, or provide the samples to the right of it that they
 *  read. Both pixels of a pair take the chroma of the row rounded down and of chroma column
 *  ((x / 2) * xStep + 32768) >> 16, kept left of srcWidth / 2 (interpolation 1: of
 *  (srcWidth - 1) / 2); with an odd srcWidth that may be column (srcWidth - 1) / 2. A source one
 *  column wide or one row high is sampled there, with no blend across.
 *
 *  Alignment: srcStep[0] 4 bytes, srcStep[1] and srcStep[2] 2, dstStep 8 in the 16-bit formats; in
 *  the 24-bit format bit 1 of dstStep is clear (odd steps are accepted). Pointers: none.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if, in this order: a pointer is null; a sampling step is
 *  below 1; a source row step is misaligned; a row step is below 1; srcStep[0] is below srcWidth,
 *  srcStep[1] or srcStep[2] below half of it; dstFormat is not 0..3, interpolation not 0 or 1,
 *  rotation not 0..5; dstStep is misaligned. The sizes are not checked: with one below 1 the result
 *  is vekStsNoErr, and nothing is touched. */
VEK_API VekStatus vekiYCbCr422RszCscRotRGB_8u_P3C3R(const Vek8u* const pSrc[3],
                                                    const int srcStep[3], int srcWidth,
                                                    int srcHeight, Vek8u* pDst, int dstStep,
                                                    int dstWidth, int dstHeight, int dstFormat,
                                                    int interpolation, int rotation, int xStep,
                                                    int yStep);

/** Coefficients of vekiResizeCscRotate_8u_C2R with 10 fractional bits (studio-range BT.601): Y, Cr to
 *  R, Cr to G, Cb to G, Cb to B = 1192, 1634, -833, -401, 2065. */
VEK_API extern const Vek32s _vekYCbCr_RGB[5];

/** Reduces an interleaved YCbCr 4:2:2 image by a whole factor, converts it to packed RGB and turns
 *  it.
 *
 *  Source: each pair of pixels is the four bytes Cb, Y0, Cr, Y1. The reduced image has
 *  width / factor columns and height / factor rows (Wo x Ho below; what remains at the right and at
 *  the bottom is not read); rotation 1 and 2 put it into Ho columns and Wo rows. dstStep counts
 *  bytes.
 *
 *  factor: 2, 4 or 8. interpolation: 0 takes the first luma sample of each factor x factor block; 1
 *  averages the block in pairs, (a + b + 1) >> 1, first horizontal neighbours until each row of the
 *  block is one value, then rows in the same way. The two pixels of an output pair share their
 *  chroma: that of the first source pair of the first block, or with interpolation 1 the average
 *  over both blocks in the same order. With an odd Wo the last pixel has the chroma of its own
 *  block.
 *
 *  dstFormat: 0 RGB565, 1 RGB555 (bit 15 zero). With y = 1192 (Y - 16), b = Cb - 128, r = Cr - 128:
 *  R = y + 1634 r, G = y - 401 b - 833 r, B = y + 2065 b, each shifted right by 18 minus the field's
 *  bits (toward minus infinity, no rounding term) and clamped to the field.
 *
 *  rotation: vekiRotNone, vekiRot90Ccw, vekiRot90Cw or vekiRot180.
 *
 *  Alignment: pSrc, pDst, srcStep and dstStep 8 bytes.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if, in this order: pSrc is null; pDst is null; a pointer
 *  is misaligned; a row step is below 1 or misaligned; factor is above width or height; factor is
 *  not 2, 4 or 8; dstStep / 2 is below the turned row's pixels; srcStep / 2 is below width;
 *  interpolation is not 0 or 1, dstFormat not 0 or 1, rotation not 0..3. */
VEK_API VekStatus vekiResizeCscRotate_8u_C2R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                             int dstStep, int width, int height, int factor,
                                             int interpolation, int dstFormat, int rotation);

#ifdef __cplusplus
}
#endif

#endif /* VEK_CAMERA_H */
