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

/* Meters the green samples of one 10-bit RGGB frame per call and moves two control values of the
 * caller's towards a target brightness. The caller programs the sensor with them and hands them to
 * the next call. vekiInitAlloc_AE_10RGGB_8u_C1R makes a state once, vekiAE_10RGGB_8u_C1R is called
 * for every frame, vekiFree_AE_10RGGB_8u_C1R releases the state.
 *
 * Raw frames, here and in the white balance: 16-bit samples that hold 10-bit values; even rows are
 * R G R G ..., odd rows G B G B .... A quad is the 2 x 2 samples whose first one is at an even row
 * and an even column.
 */

/** Metering modes of the automatic exposure. */
enum VekiAEMode {
  vekiAEHistogram = 0,    /**< a histogram of all green samples */
  vekiAEWholeFrame = 1,   /**< the average of the whole region */
  vekiAEFiveZones = 2,    /**< five fixed, overlapping zones with fixed weights */
  vekiAECentre = 3,       /**< a centred window of about 10/64 of the width and of the height */
  vekiAECallerWindows = 4 /**< weighted windows of the caller's */
};

/** What an exposure state is made from. The record is read once and not kept. */
typedef struct VekiAEParams {
  Vek32s mode; /**< one of the metering modes */

  /* Mode 4 alone. The state keeps both pointers: the arrays must stay alive and unchanged until the
   * state is released. */
  const VekiRect* pWindows; /**< pixels from the region's origin; everything even, sizes above 0 */
  const Vek16u* pWeights;   /**< one per window, not 0, in 1/65536: a sum of 65535 makes a mean */
  Vek32s numWindows;        /**< at least 1 */

  /* Mode 0 alone, but checked in every mode. */
  Vek16u histCountThresh;  /**< a bin is populated from this count on */
  Vek16u histSpreadThresh; /**< 0..1023: a dark frame's populated bins span less than this */
  Vek16u darkThresh;       /**< 0..1023: a dark frame has no populated bin from this one on */
  Vek16u brightThresh;     /**< 0..1023: a bright frame has none up to this one */

  Vek16u target;    /**< 0..1023, target brightness; see the scale of each mode below */
  Vek16u tolerance; /**< 0..1023 */

  Vek16u scaleMultiplier; /**< not 0: factor of the scale-controlled value */
  Vek16u stepSize;        /**< not 0: step of the step-controlled value */
  Vek32s scaleMin;        /**< limits of the scale-controlled value, scaleMin < scaleMax */
  Vek32s scaleMax;
  Vek32s stepMin; /**< limits of the step-controlled value, stepMin < stepMax */
  Vek32s stepMax;
} VekiAEParams;

/** State of the automatic exposure. Calls that share one must not run at the same time. */
typedef struct VekiAEState VekiAEState;

/** Makes an exposure state from *pParams and stores it in *ppState.
 *
 *  Returns vekStsNoErr; vekStsBadArgErr if, in this order: a pointer is null; mode is not 0..4; in
 *  mode 4 pWindows is null, numWindows is below 1, or a window's x or y is negative or odd, its
 *  width or height is below 1 or odd, or its weight is 0 (pWeights null: likewise);
 *  histSpreadThresh, darkThresh, brightThresh, target or tolerance is above 1023; scaleMax is not
 *  above scaleMin, or stepMax not above stepMin; scaleMultiplier or stepSize is 0. Then
 *  vekStsMemAllocErr if vekiMalloc returned null. On an error nothing stays allocated and *ppState
 *  is untouched. */
VEK_API VekStatus vekiInitAlloc_AE_10RGGB_8u_C1R(const VekiAEParams* pParams,
                                                 VekiAEState** ppState);

/** Releases an exposure state; null is accepted. Returns vekStsNoErr. */
VEK_API VekStatus vekiFree_AE_10RGGB_8u_C1R(VekiAEState* pState);

/** Meters one frame and moves *pStepCtrl and *pScaleCtrl.
 *
 *  Two moves exist. Brighter: while *pScaleCtrl is below scaleMax it is multiplied by
 *  scaleMultiplier; otherwise stepSize is added to *pStepCtrl, up to stepMax. Darker: while
 *  *pScaleCtrl is above scaleMin it is divided by scaleMultiplier (truncated); otherwise stepSize
 *  is subtracted from *pStepCtrl, down to stepMin. Control values are stored modulo 65536.
 *  Multiplying and dividing do not clamp, and the product is kept modulo 65536, so *pScaleCtrl can
 *  leave its limits. The next call refuses such a value: the caller clamps *pScaleCtrl between
 *  frames.
 *
 *  Mode 0: bin 1023 (saturated samples) counts for nothing. hi and lo are the highest and the
 *  lowest populated bin (0 and 1023 if there is none), mean is the truncated mean sample (0 if all
 *  are saturated). With hi < darkThresh and hi - lo < histSpreadThresh the frame is moved brighter;
 *  else with lo > brightThresh it is moved darker. Else *pScaleCtrl is set: if mean differs from
 *  target by tolerance or more, to target * *pScaleCtrl / mean, otherwise to mean * *pScaleCtrl /
 *  target (this inverse inside the band is intended), truncated, modulo 65536, then clamped to the
 *  limits. A mean of 0 to divide by gives scaleMax for a black frame and scaleMin for a saturated
 *  one; a target of 0 to divide by leaves the value.
 *
 *  Modes 1 to 4: a window measures the truncated mean over its quads of the SUM of both greens,
 *  0..2046, and the brightness is the weighted sum of the windows' means, rounded half up. It is
 *  compared as it is with target - tolerance and target + tolerance, both modulo 65536: below the
 *  first the frame is moved brighter (always, if tolerance exceeds target), above the second
 *  darker. A sum over a window is modulo 2^32. Only whole quads are summed; the divisor is the
 *  window's width * height / 4, truncated, and a window for which that is 0 measures 0.
 *
 *  With W2, W4, W34 a half, a quarter and three quarters (half + quarter) of the width, each
 *  truncated and rounded down to even, and H2, H4, H34 of the height, mode 2 meters x, y, width,
 *  height (weight): 0, 0, W, H4 (17476); 0, H4, W4, H2 (8738); W34, H4, W2, H4 (8738); 0, H34, W,
 *  H4 (17476); W4, H4, W2, H2 (13107). Mode 3 meters the window at 27/64 of the width and height,
 *  10/64 of them large, truncated and rounded down to even.
 *
 *  Memory: mode 0 rounds the width up to a multiple of 4 and the height to a multiple of 2, and
 *  counts the samples found there; mode 2's third zone runs past the region's right edge by about a
 *  quarter of its width, into the padding and the beginning of the next row. All of this must be
 *  readable. In mode 0 samples are reduced to their low 10 bits.
 *
 *  pSrc and srcStep are multiples of 4 bytes.
 *
 *  Returns vekStsAeAtLimit if afterwards a control value equals one of its limits, moved or not;
 *  else vekStsNoErr; vekStsBadArgErr if, in this order: pSrc is null or misaligned; another pointer
 *  is null; srcStep is misaligned or below 2 * width; width or height is below 1; *pStepCtrl or
 *  *pScaleCtrl is outside its limits; in mode 4 a window leaves the region. */
VEK_API VekStatus vekiAE_10RGGB_8u_C1R(const Vek16u* pSrc, int srcStep, VekiSize roiSize,
                                       Vek16u* pStepCtrl, Vek16u* pScaleCtrl, VekiAEState* pState);

/* ==== Automatic white balance ================================================================ */

/* Measures the ratios of red and blue to green in weighted windows of one 10-bit RGGB frame per
 * call, and moves three channel gains of the caller's towards reference ratios.
 * vekiInitAlloc_AWB_10RGGB_8u_C1R makes a state once, vekiAWB_10RGGB_8u_C1R is called for every
 * frame, vekiFree_AWB_10RGGB_8u_C1R releases the state.
 *
 * Ratios are in 1/1024: 1024 says that the channel's mean equals the green mean. Gains have the
 * caller's unit: they are only scaled and limited.
 */

/** What a window of the automatic white balance measures. */
enum VekiAWBMethod {
  vekiAWBGrayWorld = 0,  /**< all of its samples */
  vekiAWBWhitePoints = 1 /**< its nearly neutral quads of moderate brightness */
};

/** What a white-balance state is made from. The record is read once and not kept. */
typedef struct VekiAWBParams {
  Vek32s method; /**< vekiAWBGrayWorld or vekiAWBWhitePoints */

  /* The state keeps both pointers: the arrays must stay alive and unchanged until the state is
   * released. */
  Vek32s numWindows;        /**< at least 1 */
  const VekiRect* pWindows; /**< x, width multiples of 4; y, height multiples of 8; below 2^23
                                 pixels */
  const Vek8u* pWeights;    /**< one per window, not 0 */

  Vek16u refRatioR; /**< reference ratios, in 1/1024 */
  Vek16u refRatioB;
  Vek16u holdTolR; /**< with both ratios closer to the references than this, nothing changes */
  Vek16u holdTolB;
  Vek16u validTolR; /**< with a gain-corrected ratio this far off or farther, the default gains */
  Vek16u validTolB; /**< become the target */

  /* White points alone, but checked with both methods. With Gs = G1 + G2 and Ga = (Gs + 1) >> 1 a
   * quad counts if |R - Ga| < wpdLimit1, |B - Ga| < wpdLimit2, |Gs - (R + B)| < wpdLimit3 and
   * 4 * wpdLow < Gs + R + B < 4 * wpdHigh. */
  Vek16u wpdLimit1;     /**< 1..1023 */
  Vek16u wpdLimit2;     /**< 1..1023 */
  Vek16u wpdLimit3;     /**< 1..2047 */
  Vek16u wpdLow;        /**< at least 1 */
  Vek16u wpdHigh;       /**< above wpdLow, at most 1023 */
  Vek32s minWhiteCount; /**< a window with fewer samples in such quads is not used */

  Vek16u maxGainStep; /**< at least 1: the most that a call changes a gain by */
  Vek16u gainMin;     /**< limits of the gains */
  Vek16u gainMax;
  Vek16u defaultGainR; /**< each within gainMin..gainMax */
  Vek16u defaultGainG;
  Vek16u defaultGainB;
} VekiAWBParams;

/** State of the automatic white balance; no call changes it. */
typedef struct VekiAWBState VekiAWBState;

/** Makes a white-balance state from *pParams and stores it in *ppState.
 *
 *  Returns vekStsNoErr; vekStsBadArgErr if, in this order: a pointer is null; method is not 0 or 1;
 *  numWindows is below 1; pWindows is null; a window's x is negative or no multiple of 4, its y
 *  negative or no multiple of 8, its width below 1 or no multiple of 4, its height below 1 or no
 *  multiple of 8, it has 2^23 pixels or more, or its weight is 0 (pWeights null: likewise); a
 *  white-point limit or maxGainStep is out of its range; a default gain is below gainMin or above
 *  gainMax. Then vekStsMemAllocErr if vekiMalloc returned null. On an error *ppState is untouched.
 */
VEK_API VekStatus vekiInitAlloc_AWB_10RGGB_8u_C1R(const VekiAWBParams* pParams,
                                                  VekiAWBState** ppState);

/** Releases a white-balance state. Returns vekStsNoErr, or vekStsBadArgErr for null. */
VEK_API VekStatus vekiFree_AWB_10RGGB_8u_C1R(VekiAWBState* pState);

/** Measures one frame and moves *pGainR, *pGainG and *pGainB.
 *
 *  1. A window's ratios are 1024 * 2 R / G and 1024 * 2 B / G of its sums (G holds both greens),
 *     truncated, computed with the sums scaled by a power of two so that everything stays within 32
 *     bits. A window without green, or with too few white points, is not used. The frame's ratios
 *     are the weighted means, truncated; sums and products are modulo 2^32.
 *  2. If |ratioR - refRatioR| < holdTolR and |ratioB - refRatioB| < holdTolB, the gains stay.
 *  3. The measurement is valid if ratioR * gainG / gainR and ratioB * gainG / gainB are closer to
 *     the references than validTolR and validTolB (a gain of 0 makes the quotient 0). The targets
 *     are then refRatioR * gainR / ratioR, gainG, and refRatioB * gainB / ratioB, truncated and
 *     modulo 65536 (the gain itself where the ratio is 0); otherwise the default gains.
 *  4. Each gain moves towards its target by at most maxGainStep and is then limited to
 *     gainMin..gainMax.
 *
 *  pSrc and srcStep are multiples of 8 bytes. Samples outside the windows are not read.
 *
 *  Returns vekStsAwbNoData if no window could be used (the gains stay); vekStsAwbGainAtLimit if a
 *  gain was moved or left at gainMin or gainMax in step 4; else vekStsNoErr. vekStsBadArgErr if, in
 *  this order: pSrc is null or misaligned; a gain pointer is null; srcStep is below 2 * width or
 *  misaligned; width or height is below 1; pState is null; a gain is below gainMin or above
 *  gainMax; a window leaves the region. */
VEK_API VekStatus vekiAWB_10RGGB_8u_C1R(const Vek16u* pSrc, int srcStep, VekiSize roiSize,
                                        Vek16u* pGainR, Vek16u* pGainG, Vek16u* pGainB,
                                        const VekiAWBState* pState);

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
 *   or the four around it, (a + b + c + d + 2) >> 2. A quad needs one sample around it on every
 *   side.
 * - Edge rule: all four pixels of a quad get R = g(R), G = (g(Gr) + g(Gb) + 1) >> 1, B = g(B).
 *   Without a valid border it serves the quads along the four edges of the region.
 * - Reduction: a pixel of the output gets the R, G, B that the edge rule has for one quad of its
 *   block: the block itself at scale 2, the four samples in the centre of the 4 x 4 block at scale
 *   4 (there B is the upper left sample and R the lower right one).
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

/** Where the gamma table of the raw pipeline comes from. */
enum VekiGammaMode {
  vekiGammaModeCurve = 0, /**< built from gammaCurve[0] */
  vekiGammaModeTable = 1  /**< gammaTable[0], the caller's */
};

/** Built-in gamma curves of the raw pipeline. */
enum VekiGammaCurve {
  vekiGammaCurveLinear = 0,  /**< a straight line */
  vekiGammaCurveStandard = 1 /**< a curve that lifts the shadows, for display */
};

/** Filter modes of the raw pipeline. The scale decides which one is accepted. */
enum VekiFilterMode {
  vekiFilterModeDemosaic = 2, /**< at scale 1: every pixel is interpolated */
  vekiFilterModeReduce = 3    /**< at scales 2 and 4: a block of samples becomes one pixel */
};

/** Chroma subsampling of the raw pipeline's destination. */
enum VekiChromaFormat {
  vekiChroma422 = 8, /**< I422: chroma planes of half the width */
  vekiChroma420 = 9  /**< I420: chroma planes of half the width and half the height */
};

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
 *  linear curve maps 0..3 to 0, 4..7 to 1, ..., 1020..1023 to 255.
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
 *  or its first entry inside the region is the region's top-left sample; ppState is null. It is
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
 *  region reach the memory that this gives. Then the region is converted as described above. Apart
 *  from listed pixels it is only read, with one sample around it if that is valid (scale 1).
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
 * is one source sample; 2:1 reduction is 131072). The caller chooses them. Unless a function says
 * otherwise, the largest horizontal step that is accepted is
 * ((srcWidth & ~1) - 1) * 65536 / ((dstWidth & ~1) - 1), the product taken modulo 2^32 and read as
 * signed, the quotient truncated; the vertical limit likewise. Source and destination sizes of 1
 * are refused.
 *
 * Interpolation: 0 takes the nearest luma sample, 1 blends the four around the sampling point;
 * chroma is always the nearest sample. A blend reads no sample outside the image whose weight is 0.
 */

/** Orientations, for the `rotation` arguments. (x, y) is a pixel of the scaled W x H image. */
enum VekiRotation {
  vekiRotNone = 0,         /**< to row y, column x */
  vekiRot90Ccw = 1,        /**< quarter turn counter-clockwise: to row W-1-x, column y */
  vekiRot90Cw = 2,         /**< quarter turn clockwise: to row x, column H-1-y */
  vekiRot180 = 3,          /**< half turn: to row H-1-y, column W-1-x */
  vekiMirrorLeftRight = 4, /**< to row y, column W-1-x */
  vekiMirrorTopBottom = 5  /**< to row H-1-y, column x */
};

/** How the preview functions that resize by sampling steps sample luma. */
enum VekiInterpolation {
  vekiInterpolateNearest = 0, /**< the nearest sample */
  vekiInterpolateLinear = 1   /**< a blend of the four samples around the sampling point */
};

/** Resizes a planar YCbCr 4:2:0 image and turns it; the result is planar YCbCr 4:2:0 again.
 *
 *  Scaled chroma is dstWidth/2 x dstHeight/2 and is oriented like the luma. dstWidth and dstHeight
 *  are even.
 *
 *  Sampling: luma pixel (x, y) at column x * xStep and row y * yStep. Interpolation 0 rounds both
 *  to the nearest sample. Interpolation 1 blends a + (((b - a) * fx) >> 16) in both rows, fx being
 *  the fraction of the column, and then those two with the fraction of the row (shifts toward minus
 *  infinity); a row at or below the last source row is blended 1/65536 above it. Chroma sample (i,
 *  j) is the one nearest to column i * xStep and row j * yStep of its plane.
 *
 *  Exact reductions: with rotation 0 and dstWidth x dstHeight equal to half or a quarter of the
 *  source (each rounded down), the sampling steps are checked but not used. Interpolation 1 stores
 *  (a + b + c + d + 4) >> 2 modulo 256 (so four samples of 255 give 0) of each 2 x 2 block, or of
 *  the middle 2 x 2 samples of each 4 x 4 block. Interpolation 0 takes one sample of each block,
 *  column 1 of row 0 (2:1) or column 1 of row 1 (4:1); Cr is then read with the row step of Cb, and
 *  from row 0 of each block also in the 4:1 case. pSrc[2] must reach as far as that reads: row y of
 *  the reduced Cr plane begins at pSrc[2] + 2 * y * srcStep[1], or 4 * y * srcStep[1].
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
VEK_API VekStatus vekiYCbCr420RszRot_8u_P3R(VekConstPlanes pSrc, const int srcStep[3], int srcWidth,
                                            int srcHeight, Vek8u* const pDst[3],
                                            const int dstStep[3], int dstWidth, int dstHeight,
                                            int interpolation, int rotation, int xStep, int yStep);

/** Resizes a planar YCbCr 4:2:2 image and turns it; the result is planar YCbCr 4:2:2 again.
 *
 *  Scaled chroma is dstWidth/2 x dstHeight samples. After a quarter turn the destination chroma is
 *  subsampled along its own rows: dstHeight/2 columns and dstWidth rows, where the samples of
 *  scaled rows 2k and 2k + 1 alternate in one destination column (rotation 1: column k, bottom to
 *  top; rotation 2: column dstHeight/2-1-k, top to bottom). dstWidth is even; there are no exact
 *  reductions.
 *
 *  Sampling: luma as in vekiYCbCr420RszRot_8u_P3R, but of the rows only the odd ones are kept
 *  1/65536 above the last source row, and row 1 is not. Chroma sample (i, y) is the one nearest to
 *  column i * xStep of its plane and to the row at which luma row y is sampled.
 *
 *  With an odd dstHeight the rows are still made in pairs: a row with the index dstHeight is
 *  sampled and written too. The caller provides the memory:
 *  - destination, rotation 0 and 4: one row more below each of the three planes;
 *  - rotation 3 and 5: one row more above each plane, in front of pDst[i];
 *  - rotation 1: one luma column more at the right of each row (within the row step), and one
 *    chroma column more at the right;
 *  - rotation 2: one luma column more at the left, its first byte just in front of pDst[0], and one
 *    chroma column more at the left, in front of pDst[1] and pDst[2];
 *  - source: yStep limits the first dstHeight - 1 rows only. Rows dstHeight - 1 and dstHeight
 *    sample at those indices times yStep, which may be below the image; with interpolation 1 row
 *    dstHeight is kept inside.
 *
 *  The extra row is written last; where row steps make it meet samples of the image, as an extra
 *  chroma column does if dstStep[1] is dstHeight/2, it replaces them.
 *
 *  Alignment: pSrc[0] and pDst[0] 4 bytes, srcStep[0] and dstStep[0] 4; chroma none.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if, in this order: a pointer is null; pDst[0] or pSrc[0]
 *  is misaligned; dstWidth is odd; a sampling step is below 1 or above its limit; a size is below
 *  1; a luma row step is misaligned; a row step is below 1; a source row step is below the row's
 *  bytes; a destination row step is below the bytes of the turned row; interpolation is not 0 or 1,
 *  rotation not 0..5. */
VEK_API VekStatus vekiYCbCr422RszRot_8u_P3R(VekConstPlanes pSrc, const int srcStep[3], int srcWidth,
                                            int srcHeight, Vek8u* const pDst[3],
                                            const int dstStep[3], int dstWidth, int dstHeight,
                                            int interpolation, int rotation, int xStep, int yStep);

/** Destination formats of vekiYCbCr420RszCscRotRGB_8u_P3C3R. */
enum VekiCsc420Format {
  vekiCsc420RGB565 = 4, /**< 16-bit words, red in bits 15..11, green 10..5, blue 4..0 */
  vekiCsc420RGB555 = 5, /**< 16-bit words, bit 15 zero, red in bits 14..10, green 9..5, blue 4..0 */
  vekiCsc420RGB444 = 6, /**< 16-bit words, bits 15..12 zero, red in 11..8, green 7..4, blue 3..0 */
  vekiCsc420BGR24 = 7   /**< three bytes a pixel in the order B, G, R */
};

/** Resizes a planar YCbCr 4:2:0 image, turns it and converts it to packed RGB.
 *
 *  dstFormat: 4 RGB565, 5 RGB555 (bit 15 zero), 6 RGB444 (bits 15..12 zero), each one little-endian
 *  16-bit word a pixel with red in the highest field; 7 three bytes B, G, R.
 *
 *  Conversion (studio-range BT.601 in 8 fractional bits): with y = 298 (Y - 16), b = Cb - 128, r =
 *  Cr - 128: R = y + 409 r, G = y - 100 b - 208 r, B = y + 516 b, each shifted right by 16 minus
 *  the field's bits (toward minus infinity, no rounding term) and clamped to the field. White (Y =
 *  235) therefore becomes 254 in the 24-bit format.
 *
 *  Pixels are sampled in 2 x 2 blocks that share one chroma sample. Luma of pixel (x, y) is sampled
 *  at (x * xStep, y * yStep); chroma of block (x / 2, y / 2) at column (x / 2) * xStep, rounded to
 *  nearest, and row y * yStep / 2, rounded to nearest. With interpolation 1 and a lower row of a
 *  block that would start at or below the last source row, that row repeats the upper one. With an
 *  odd dstWidth the last column repeats its left neighbour; with an odd dstHeight the last row
 *  repeats the one above it.
 *
 *  Alignment: pDst 8 bytes, pSrc[0] 4, pSrc[1] and pSrc[2] 2; srcStep[0] 4, srcStep[1] and
 *  srcStep[2] 2; dstStep 8 for the 16-bit formats and 2 for the 24-bit one.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if, in this order: pSrc is null; pDst is null; a pointer
 *  is misaligned; a size is below 1; a sampling step is below 1 or above its limit; a row step is
 *  misaligned, below 1, or (source) below the row's bytes; dstFormat is not 4..7, interpolation not
 *  0 or 1, rotation not 0..5; dstStep is misaligned or holds fewer pixels than the destination row;
 *  srcStep or a source plane is null. */
VEK_API VekStatus vekiYCbCr420RszCscRotRGB_8u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                    int srcWidth, int srcHeight, Vek8u* pDst,
                                                    int dstStep, int dstWidth, int dstHeight,
                                                    int dstFormat, int interpolation, int rotation,
                                                    int xStep, int yStep);

/** Destination formats of vekiYCbCr422RszCscRotRGB_8u_P3C3R; the layouts are those of
 *  VekiCsc420Format. */
enum VekiCsc422Format {
  vekiCsc422RGB565 = 0, /**< 16-bit words, 5, 6 and 5 bits */
  vekiCsc422RGB555 = 1, /**< 16-bit words, 5 bits each */
  vekiCsc422RGB444 = 2, /**< 16-bit words, 4 bits each */
  vekiCsc422BGR24 = 3   /**< three bytes a pixel in the order B, G, R */
};

/** Resizes a planar YCbCr 4:2:2 image, turns it and converts it to packed RGB.
 *
 *  dstFormat: 0 RGB565, 1 RGB555, 2 RGB444, 3 three bytes B, G, R; layouts and conversion as in
 *  vekiYCbCr420RszCscRotRGB_8u_P3C3R (whose codes are 4 to 7). pDst may be at any address.
 *
 *  Rows of all three planes advance together: the chroma rows lie srcStep[0] / 2 bytes apart;
 *  srcStep[1] and srcStep[2] are checked but not used.
 *
 *  Size: in the 16-bit formats dstWidth pixels are made in each of dstHeight rows. Quarter turns
 *  put pixel (x, y) at pDst + (H-1-x + y(H-W)) dstStep + 2y (rotation 1) or pDst + 2(W-1-y) + (x +
 *  y(W-H)) dstStep (rotation 2): a coherent picture if dstWidth equals dstHeight, and otherwise
 *  pixels scattered over that memory, which the caller provides. In the 24-bit format dstWidth x
 *  dstHeight is the destination's own size, so that quarter turns make dstHeight pixels in each of
 *  dstWidth rows. With W x H the destination's size, rotations 0, 3, 4, 5 and all of the 24-bit
 *  format write rows of W pixels; dstStep is not compared with them.
 *
 *  Sampling: row y at y * yStep, kept 1/65536 above row srcHeight (interpolation 1: above row
 *  srcHeight - 1) from where it reaches that row. Interpolation 0 takes luma at the column (x *
 *  xStep + 32768) >> 16 and the row rounded down. Interpolation 1 blends as
 *  vekiYCbCr420RszRot_8u_P3R does, at x * xStep. Odd x are kept 1/65536 left of column srcWidth
 *  (interpolation 1: of column srcWidth - 1) from where they reach it. Even x are not kept: let
 *  their sampling points lie inside the image, or provide the samples to the right of it that they
 *  read. Both pixels of a pair take the chroma of the row rounded down and of chroma column ((x /
 *  2) * xStep + 32768) >> 16, kept left of srcWidth / 2 (interpolation 1: of (srcWidth - 1) / 2);
 *  with an odd srcWidth that may be column (srcWidth - 1) / 2. A source one column wide or one row
 *  high is sampled there, with no blend across.
 *
 *  Alignment: srcStep[0] 4 bytes, srcStep[1] and srcStep[2] 2, dstStep 8 in the 16-bit formats; in
 *  the 24-bit format bit 1 of dstStep is clear (odd steps are accepted). Pointers: none.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if, in this order: a pointer is null; a sampling step is
 *  below 1; a source row step is misaligned; a row step is below 1; srcStep[0] is below srcWidth,
 *  srcStep[1] or srcStep[2] below half of it; dstFormat is not 0..3, interpolation not 0 or 1,
 *  rotation not 0..5; dstStep is misaligned. The sizes are not checked: with one below 1 the result
 *  is vekStsNoErr, and nothing is touched. */
VEK_API VekStatus vekiYCbCr422RszCscRotRGB_8u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                    int srcWidth, int srcHeight, Vek8u* pDst,
                                                    int dstStep, int dstWidth, int dstHeight,
                                                    int dstFormat, int interpolation, int rotation,
                                                    int xStep, int yStep);

/** Coefficients of vekiResizeCscRotate_8u_C2R with 10 fractional bits (studio-range BT.601): Y, Cr
 *  to R, Cr to G, Cb to G, Cb to B = 1192, 1634, -833, -401, 2065. */
VEK_API extern const Vek32s _vekYCbCr_RGB[5];

/** How vekiResizeCscRotate_8u_C2R makes one pixel of a block. */
enum VekiReduction {
  vekiReduceFirst = 0,  /**< the block's first sample */
  vekiReduceAverage = 1 /**< the average of the block */
};

/** Destination formats of vekiResizeCscRotate_8u_C2R; the layouts are those of VekiCsc420Format. */
enum VekiCscC2Format {
  vekiCscC2RGB565 = 0, /**< 16-bit words, 5, 6 and 5 bits */
  vekiCscC2RGB555 = 1  /**< 16-bit words, 5 bits each */
};

/** Reduces an interleaved YCbCr 4:2:2 image by a whole factor, converts it to packed RGB and turns
 *  it.
 *
 *  Source: each pair of pixels is the four bytes Cb, Y0, Cr, Y1. The reduced image has width /
 *  factor columns and height / factor rows (Wo x Ho below; what remains at the right and at the
 *  bottom is not read); rotation 1 and 2 put it into Ho columns and Wo rows. dstStep counts bytes.
 *
 *  factor: 2, 4 or 8. interpolation: 0 takes the first luma sample of each factor x factor block; 1
 *  averages the block in pairs, (a + b + 1) >> 1, first horizontal neighbours until each row of the
 *  block is one value, then rows in the same way. The two pixels of an output pair share their
 *  chroma: that of the first source pair of the first block, or with interpolation 1 the average
 *  over both blocks in the same order. With an odd Wo the last pixel has the chroma of its own
 *  block.
 *
 *  dstFormat: 0 RGB565, 1 RGB555 (bit 15 zero). With y = 1192 (Y - 16), b = Cb - 128, r = Cr - 128:
 *  R = y + 1634 r, G = y - 401 b - 833 r, B = y + 2065 b, each shifted right by 18 minus the
 *  field's bits (toward minus infinity, no rounding term) and clamped to the field.
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
