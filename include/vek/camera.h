/** @file camera.h
 *  The camera sub-library: the raw front end, automatic exposure, automatic white balance, the raw
 *  Bayer pipeline, and the preview functions that resize, rotate and convert YCbCr images.
 *
 *  Every function here answers every argument fault, null pointers included, with vekStsBadArgErr
 *  unless its comment names another status.
 *
 *  Selector arguments and fields have the type int or Vek32s; the enumerators in this header name
 *  their values. */
#ifndef VEK_CAMERA_H
#define VEK_CAMERA_H

#include "vek/vek.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup frontend Raw front end
 *
 *  Brings the frames of any Bayer sensor into the form that all other functions here take: 10-bit
 *  samples in 16-bit words that begin with a red one (RGGB). Samples are unpacked, the black level
 *  is subtracted, and each colour has a gain, for example that of the white balance.
 *  @{ */

/** Raw formats, with the names under which they are known elsewhere. A row is a sequence of groups;
 *  rows begin with a whole one. */
enum VekiRawFormat {
  vekiRaw8 = 0,       /**< one byte a sample (SRGGB8, RAW8) */
  vekiRawPlain16 = 1, /**< little-endian words, of which the low `bits` bits count and higher ones
                           are ignored (SRGGB10, SRGGB12, ...) */
  vekiRawCsi2_10 = 2, /**< 4 samples in 5 bytes (SRGGB10P, RAW10): bits 9..2 of samples 0 to 3, then
                           a byte with bits 1..0 of sample k in its bits 2k + 1..2k */
  vekiRawCsi2_12 = 3, /**< 2 samples in 3 bytes (SRGGB12P, RAW12): bits 11..4 of samples 0 and 1,
                           then a byte with bits 3..0 of sample 0 in its bits 3..0 and of sample 1
                           in its bits 7..4 */
  vekiRawCsi2_14 = 4  /**< 4 samples in 7 bytes (SRGGB14P, RAW14): bits 13..6 of samples 0 to 3,
                           then bits 5..0 of samples 0 to 3 as a little-endian number of 24 bits,
                           sample 0 lowest */
};

/** The colours of the 2 x 2 samples at the top left of a frame, row by row. Red is in column
 *  `order & 1` of row `order >> 1`. */
enum VekiBayerOrder {
  vekiBayerRGGB = 0, /**< R G, G B */
  vekiBayerGRBG = 1, /**< G R, B G */
  vekiBayerGBRG = 2, /**< G B, R G */
  vekiBayerBGGR = 3  /**< B G, G R */
};

/** How a frame is stored, and what is done to its samples. Both arrays are in the order R, Gr (the
 *  green beside red), Gb (the green beside blue), B. */
typedef struct VekiRawFrontEnd {
  Vek32s format;   /**< one of VekiRawFormat */
  Vek32s bits;     /**< of a sample: 8 for vekiRaw8, 9..16 for vekiRawPlain16, else that of the
                        format's name */
  Vek32s order;    /**< one of VekiBayerOrder, for the frame's top left 2 x 2 */
  Vek16u black[4]; /**< black levels, in the source's units */
  Vek16u gain[4];  /**< gains, 4096 for 1 */
} VekiRawFrontEnd;

/** Converts a region of a raw frame to 10-bit RGGB.
 *
 *  `region` is in samples of the frame that pSrc points at, and begins on a red sample. Sample
 *  (x, y) of the destination comes from sample (region.x + x, region.y + y): with s that sample and
 *  c its colour,
 *
 *      d   = s > black[c] ? s - black[c] : 0
 *      dst = min(1023, (d * gain[c] + 2^(bits + 1)) >> (bits + 2))
 *
 *  exactly, which rounds half up. For example, 10 bits with a black level of 64 and a gain of 4096
 *  map 64 to 0 and 1023 to 959; a gain of 4096 * 1023 / 959 would map it to 1023.
 *
 *  The bytes of every group that holds a sample of the region may be read, and nothing else (in
 *  vekiRaw8 and vekiRawPlain16 each sample is a group). pSrc and srcStep may be odd in every
 *  format. Source and destination must not overlap.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if one of these is found, in this order: a pointer is
 *  null; the format is unknown; it does not have as many bits; order is not 0..3; the region's
 *  width or height is below 2 or odd; its x or y is negative; it does not begin on a red sample;
 *  srcStep is below the bytes from the start of a row to the end of the group that holds the
 *  region's last column; dstStep is odd or below 2 * width; pDst is odd. */
VEK_API VekStatus vekiRawTo10RGGB_8u16u_C1R(const Vek8u* pSrc, int srcStep, VekiRect region,
                                            Vek16u* pDst, int dstStep,
                                            const VekiRawFrontEnd* pFrontEnd);

/** Stores in *pRegion the largest region of a frame of srcSize that begins on a red sample and has
 *  even sizes.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if one of these is found, in this order: pRegion is
 *  null; the width or the height is below 1; order is not 0..3 (see VekiBayerOrder); there is no
 *  such region. */
VEK_API VekStatus vekiRawRegion(VekiSize srcSize, int order, VekiRect* pRegion);

/** Applies a colour matrix to the samples of a raw frame: 10-bit samples in 16-bit words, of any order of
 *  colours, to the same.
 *
 *  A sensor's channels mix the colours of the scene. The matrix that unmixes them is one of linear light:
 *  it comes before any gamma table. Where a sample is, the two colours that it does not have are the means
 *  of the nearest samples that have them. With c = 0, 1, 2 for the sample's colour R, G, B and S[R], S[G],
 *  S[B] four times the three colours at the sample,
 *
 *      of its own colour      S = 4 * sample
 *      green, at a red or     S = left + right + above + below
 *      blue sample
 *      blue at a red sample,  S = the sum of the four samples at its corners
 *      red at a blue one
 *      red or blue, at a      S = 2 * (left + right) or 2 * (above + below), whichever has the colour
 *      green sample
 *
 *      dst = min(1023, max(0, (pMatrix[3c] * S[R] + pMatrix[3c+1] * S[G] + pMatrix[3c+2] * S[B]
 *                              + 2^13) >> 14))
 *
 *  exactly, which rounds half up. pMatrix is in 1/4096, row after row, each entry within -16383..16383
 *  (-4 to 4). Where a row of it sums to 4096, a colour that is the same everywhere and grey stays what it
 *  is. For example, a red sample of 600 among green ones of 400 and blue ones of 200 becomes 720 by a first
 *  row of (6554, -2458, 0): (6554 * 2400 - 2458 * 1600 + 8192) >> 14.
 *
 *  order is that of the region's top left 2 x 2 samples (VekiBayerOrder). With srcBorderValid not 0, one
 *  more sample on every side of the region is there, and is read; with 0 a neighbour outside of the region
 *  is the one on the opposite side of the sample. Samples are at most 1023; results of larger ones are of no
 *  use. Source and destination must not overlap.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if one of these is found, in this order: a pointer is null;
 *  roiSize has a side below 2; an entry of pMatrix is outside its range; order is not 0..3; srcStep, then
 *  dstStep, is odd or below 2 * width; pSrc, then pDst, is odd. */
VEK_API VekStatus vekiColorMatrix_10Bayer_16u_C1R(const Vek16u* pSrc, int srcStep, Vek16u* pDst,
                                                  int dstStep, VekiSize roiSize,
                                                  const Vek16s pMatrix[9], int order,
                                                  int srcBorderValid);

/** @} */
/** @defgroup exposure Automatic exposure
 *
 *  Meters the green samples of one raw frame per call and moves two control values of the caller's
 *  towards a target brightness. The caller programs the sensor with them (gain and integration
 *  time, for example) and hands them to the next call. vekiInitAlloc_AE_10RGGB_8u_C1R makes a state
 *  once, vekiAE_10RGGB_8u_C1R is called for every frame, and vekiFree_AE_10RGGB_8u_C1R releases the
 *  state.
 *
 *  Raw frames, here and in the white balance, hold 10-bit samples in 16-bit words (the pixel format
 *  that is also known as SRGGB10 or RG10). Even rows are R G R G ..., odd rows G B G B .... A quad
 *  is the 2 x 2 samples whose first one is at an even row and an even column.
 *  @{ */

/** Metering modes. */
enum VekiAEMode {
  vekiAEHistogram = 0,    /**< a histogram of all green samples */
  vekiAEWholeFrame = 1,   /**< the average of the whole region */
  vekiAEFiveZones = 2,    /**< five fixed, overlapping zones with fixed weights */
  vekiAECentre = 3,       /**< a centred window of about 10/64 of the width and of the height */
  vekiAECallerWindows = 4 /**< weighted windows of the caller's */
};

/** What an exposure state is made from. The record is read once and not kept.
 *
 *  Recommended, as vek::recommended::exposureParams() gives it in C++: in mode 0 a target of 200 and a
 *  tolerance of 12, histCountThresh = width * height / 20000 (so that dead samples do not count),
 *  histSpreadThresh = darkThresh = 570 and brightThresh = 340 (whites in the lower half of the range are
 *  dark, blacks above its lowest third bright); in the other modes a target of 500 and a tolerance of 180,
 *  whose ends are more than scaleMultiplier apart, or moves would jump over the band for ever; a
 *  scaleMultiplier of 2, a stepSize of (stepMax - stepMin) / 32. Limits are those of the sensor. */
typedef struct VekiAEParams {
  Vek32s mode; /**< one of VekiAEMode */

  /** Mode 4 alone: the windows, in pixels from the region's origin. All four fields of each are
   *  even, its width and height above 0. The state keeps the pointer, so that the array must stay
   *  alive and unchanged until the state is released. */
  const VekiRect* pWindows;
  /** Mode 4 alone: the weights of the windows, not 0, in 1/65536; weights that sum to 65535 make a
   *  weighted mean. The state keeps this pointer as well. */
  const Vek16u* pWeights;
  Vek32s numWindows; /**< mode 4 alone: entries of both arrays, at least 1 */

  Vek16u histCountThresh; /**< mode 0: a bin is populated if it counts at least this many samples */
  Vek16u histSpreadThresh; /**< mode 0: in a dark frame the populated bins span less than this;
                                0..1023 in every mode */
  Vek16u darkThresh;       /**< mode 0: in a dark frame all populated bins are below this one;
                                0..1023 in every mode */
  Vek16u brightThresh;     /**< mode 0: in a bright frame all populated bins are above this one;
                                0..1023 in every mode */

  Vek16u target;    /**< target brightness, 0..1023; vekiAE_10RGGB_8u_C1R says in which unit */
  Vek16u tolerance; /**< half the width of the accepted band around the target, 0..1023 */

  Vek16u scaleMultiplier; /**< factor of one move of the scale-controlled value; not 0 */
  Vek16u stepSize;        /**< size of one move of the step-controlled value; not 0 */
  Vek32s scaleMin;        /**< lower limit of the scale-controlled value */
  Vek32s scaleMax;        /**< upper limit of the scale-controlled value, above scaleMin */
  Vek32s stepMin;         /**< lower limit of the step-controlled value */
  Vek32s stepMax;         /**< upper limit of the step-controlled value, above stepMin */
} VekiAEParams;

/** State of the automatic exposure. Calls that share one must not run at the same time. */
typedef struct VekiAEState VekiAEState;

/** Makes an exposure state from *pParams and stores it in *ppState.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if one of these is found, in this order:
 *  - a pointer is null;
 *  - mode is not 0..4;
 *  - in mode 4, pWindows or pWeights is null, numWindows is below 1, or a window has a negative or
 *    odd x or y, a width or height that is below 1 or odd, or the weight 0;
 *  - histSpreadThresh, darkThresh, brightThresh, target or tolerance is above 1023;
 *  - scaleMax is not above scaleMin, or stepMax not above stepMin;
 *  - scaleMultiplier or stepSize is 0.
 *
 *  After these checks it returns vekStsMemAllocErr if vekiMalloc returned null. On an error nothing
 *  stays allocated and *ppState is untouched. */
VEK_API VekStatus vekiInitAlloc_AE_10RGGB_8u_C1R(const VekiAEParams* pParams,
                                                 VekiAEState** ppState);

/** Releases an exposure state; null is accepted. Returns vekStsNoErr. */
VEK_API VekStatus vekiFree_AE_10RGGB_8u_C1R(VekiAEState* pState);

/** Meters one frame and moves *pStepCtrl and *pScaleCtrl.
 *
 *  There are two moves. Brighter: while *pScaleCtrl is below scaleMax it is multiplied by
 *  scaleMultiplier; otherwise stepSize is added to *pStepCtrl, up to stepMax. Darker: while
 *  *pScaleCtrl is above scaleMin it is divided by scaleMultiplier and truncated; otherwise stepSize
 *  is subtracted from *pStepCtrl, down to stepMin.
 *
 *  @quirk Control values are stored modulo 65536, and multiplying and dividing do not clamp: with a
 *  scaleMultiplier of 2 the value 40000 becomes 14464. *pScaleCtrl can thus leave its limits, and
 *  the next call then refuses it. Clamping it between frames is the caller's part.
 *
 *  Mode 0 reads a histogram of the green samples. Bin 1023, which counts the saturated samples, is
 *  left out of everything. hi and lo are the highest and the lowest populated bin (0 and 1023 if
 *  there is none), and mean is the truncated mean sample (0 if all samples are saturated). If hi is
 *  below darkThresh and hi - lo below histSpreadThresh, the frame is moved brighter. Otherwise, if
 *  lo is above brightThresh, it is moved darker. Otherwise *pScaleCtrl is set: to target *
 *  *pScaleCtrl / mean if mean differs from target by tolerance or more, and to mean * *pScaleCtrl /
 *  target if it does not. Both are truncated, taken modulo 65536 and then clamped to the limits.
 *  Where the mean to divide by is 0, a black frame gives scaleMax and a saturated one scaleMin;
 *  where the target to divide by is 0, the value stays.
 *
 *  @quirk Inside the band the quotient is the inverse of the one outside: a frame that is slightly
 *  too bright is made brighter. Control loops are tuned with it: tolerance bounds how far it goes.
 *
 *  In modes 1 to 4 a window measures the truncated mean, over its quads, of the sum of both greens.
 *  The brightness is the sum of these means times their weights (in 1/65536), rounded half up.
 *  Below target - tolerance the frame is moved brighter, above target + tolerance darker. Only
 *  whole quads are summed, while the divisor is the window's width * height / 4, truncated; a
 *  window for which that is 0 measures 0. The sum over a window is taken modulo 2^32.
 *
 *  @quirk The brightness is a sum of two samples, 0..2046, while target stays below 1024: target is
 *  in units of two samples here. Both ends of the band are modulo 65536, so that with a tolerance
 *  above the target every frame is too dark.
 *
 *  Mode 2 lays five zones over a region of width x height. W2, W4 and W34 are a half, a quarter and
 *  three quarters (the half plus the quarter) of the width, each truncated and then rounded down to
 *  an even number, and H2, H4 and H34 the same of the height:
 *
 *      zone     x    y    width  height  weight
 *      top      0    0    width  H4      17476
 *      left     0    H4   W4     H2       8738
 *      right    W34  H4   W2     H4       8738
 *      bottom   0    H34  width  H4      17476
 *      centre   W4   H4   W2     H2      13107
 *
 *  @quirk The right zone is not the mirror image of the left one. It runs past the right edge of
 *  the region by about a quarter of the width, into the padding and the beginning of the next row.
 *  That memory must be readable. The zone stays as it is because the targets of callers are tuned
 *  to the brightness that it gives.
 *
 *  Mode 3 meters one window at 27/64 of the width and of the height that is 10/64 of them large,
 *  all four truncated and rounded down to even numbers.
 *
 *  @quirk Mode 0 rounds the width up to a multiple of 4 and the height to a multiple of 2 and
 *  counts the samples that it finds there, since it counts groups of four columns and two rows.
 *  They must be readable.
 *
 *  In mode 0 samples are reduced to their low 10 bits. pSrc and srcStep are multiples of 4 bytes.
 *
 *  Returns vekStsAeAtLimit if afterwards a control value equals one of its limits, whether it was
 *  moved or not, and otherwise vekStsNoErr. It returns vekStsBadArgErr if one of these is found, in
 *  this order: pSrc is null or misaligned; another pointer is null; srcStep is misaligned or below
 *  2 * width; width or height is below 1; *pStepCtrl or *pScaleCtrl is outside its limits; in mode
 *  4 a window leaves the region. */
VEK_API VekStatus vekiAE_10RGGB_8u_C1R(const Vek16u* pSrc, int srcStep, VekiSize roiSize,
                                       Vek16u* pStepCtrl, Vek16u* pScaleCtrl, VekiAEState* pState);

/** @} */
/** @defgroup whitebalance Automatic white balance
 *
 *  Measures the ratios of red and of blue to green in weighted windows of one raw frame per call,
 *  and moves three channel gains of the caller's towards reference ratios. The frames are those of
 *  the automatic exposure. vekiInitAlloc_AWB_10RGGB_8u_C1R makes a state once,
 *  vekiAWB_10RGGB_8u_C1R is called for every frame, and vekiFree_AWB_10RGGB_8u_C1R releases the
 *  state.
 *
 *  Ratios are in 1/1024: 1024 says that the channel's mean equals the green mean. Gains have the
 *  caller's unit; they are only scaled and limited.
 *  @{ */

/** What a window of the automatic white balance measures. */
enum VekiAWBMethod {
  vekiAWBGrayWorld = 0,  /**< all of its samples */
  vekiAWBWhitePoints = 1 /**< its nearly neutral quads of moderate brightness */
};

/** What a white-balance state is made from. The record is read once and not kept. The state keeps
 *  both pointers, so that the arrays must stay alive and unchanged until the state is released.
 *
 *  Recommended, as vek::recommended::balanceParams() gives it in C++: two states over a grid of 8 x 6
 *  windows with weights of 1, refRatioR = refRatioB = 1024, validTolR = validTolB = 65535 (every light is
 *  valid), maxGainStep = 65535 (a target is right at once), gains within 1/8 to 8 times the caller's unit,
 *  which is the default gain. The first state, with vekiAWBGrayWorld and holdTolR = holdTolB = 280, acts
 *  while the mean is far from grey, as a scene has a colour of its own. Where it changes nothing, the second
 *  one, with vekiAWBWhitePoints, holdTolR = holdTolB = 6, wpdLimit1 = wpdLimit2 = 120, wpdLimit3 = 240,
 *  wpdLow = 100, wpdHigh = 800 and minWhiteCount = a quarter of a window, does the rest.
 *
 *  The white-point fields (wpdLimit1 to wpdHigh) are checked with both methods, and used with
 *  vekiAWBWhitePoints alone. With Gs = G1 + G2 and Ga = (Gs + 1) >> 1 a quad counts if
 *
 *      |R - Ga| < wpdLimit1,  |B - Ga| < wpdLimit2,  |Gs - (R + B)| < wpdLimit3  and
 *      4 * wpdLow < Gs + R + B < 4 * wpdHigh. */
typedef struct VekiAWBParams {
  Vek32s method;     /**< one of VekiAWBMethod */
  Vek32s numWindows; /**< entries of both arrays, at least 1 */
  /** The windows, in pixels from the region's origin: x and width are multiples of 4, y and height
   *  multiples of 8, and the area is below 2^23 pixels. */
  const VekiRect* pWindows;
  const Vek8u* pWeights; /**< the weights of the windows, not 0 */

  Vek16u refRatioR; /**< reference ratio of red, in 1/1024 */
  Vek16u refRatioB; /**< reference ratio of blue, in 1/1024 */
  Vek16u holdTolR;  /**< nothing changes while red is closer to its reference than this, and ... */
  Vek16u holdTolB;  /**< ... blue closer than this */
  Vek16u
      validTolR; /**< the default gains become the target if the gain-corrected ratio of red is */
  Vek16u validTolB; /**< this far off its reference or farther, or that of blue */

  Vek16u wpdLimit1;     /**< 1..1023 */
  Vek16u wpdLimit2;     /**< 1..1023 */
  Vek16u wpdLimit3;     /**< 1..2047 */
  Vek16u wpdLow;        /**< at least 1 */
  Vek16u wpdHigh;       /**< above wpdLow, at most 1023 */
  Vek32s minWhiteCount; /**< a window with fewer samples in such quads is not used */

  Vek16u maxGainStep;  /**< the most that one call changes a gain by; at least 1 */
  Vek16u gainMin;      /**< lower limit of the gains */
  Vek16u gainMax;      /**< upper limit of the gains */
  Vek16u defaultGainR; /**< default gain of red, within gainMin..gainMax */
  Vek16u defaultGainG; /**< default gain of green, within gainMin..gainMax */
  Vek16u defaultGainB; /**< default gain of blue, within gainMin..gainMax */
} VekiAWBParams;

/** State of the automatic white balance. No call changes it, so that any number of threads may
 *  share one. */
typedef struct VekiAWBState VekiAWBState;

/** Makes a white-balance state from *pParams and stores it in *ppState.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if one of these is found, in this order:
 *  - a pointer is null;
 *  - method is not 0 or 1;
 *  - numWindows is below 1, or pWindows or pWeights is null;
 *  - a window's x is negative or not a multiple of 4, its y negative or not a multiple of 8, its
 *    width below 1 or not a multiple of 4, its height below 1 or not a multiple of 8, it has 2^23
 *    pixels or more, or its weight is 0;
 *  - a white-point limit or maxGainStep is out of its range;
 *  - a default gain is below gainMin or above gainMax.
 *
 *  After these checks it returns vekStsMemAllocErr if vekiMalloc returned null. On an error
 *  *ppState is untouched. */
VEK_API VekStatus vekiInitAlloc_AWB_10RGGB_8u_C1R(const VekiAWBParams* pParams,
                                                  VekiAWBState** ppState);

/** Releases a white-balance state and returns vekStsNoErr.
 *
 *  @quirk A null pointer is refused with vekStsBadArgErr, although every other release function
 *  accepts null. Callers that test the status rely on it. */
VEK_API VekStatus vekiFree_AWB_10RGGB_8u_C1R(VekiAWBState* pState);

/** Measures one frame and moves *pGainR, *pGainG and *pGainB.
 *
 *  1. A window's ratios are 1024 * 2 R / G and 1024 * 2 B / G of its sums (G holds both greens),
 *     truncated. They are computed from sums that are scaled by a power of two, so that everything
 *     stays within 32 bits. A window without green or with too few white points is not used. The
 *     frame's ratios are the weighted means of the windows' ratios, truncated; sums and products
 *     are modulo 2^32.
 *  2. If |ratioR - refRatioR| < holdTolR and |ratioB - refRatioB| < holdTolB, the gains stay.
 *  3. The measurement is valid if ratioR * gainG / gainR is closer to refRatioR than validTolR, and
 *     ratioB * gainG / gainB closer to refRatioB than validTolB (a gain of 0 makes the quotient 0).
 *     The targets of a valid measurement are refRatioR * gainR / ratioR, gainG, and refRatioB *
 *     gainB / ratioB, truncated and modulo 65536 (the gain itself where the ratio is 0). Otherwise
 *     they are the default gains.
 *  4. Each gain moves towards its target by at most maxGainStep and is then limited to
 *     gainMin..gainMax.
 *
 *  pSrc and srcStep are multiples of 8 bytes. Samples outside the windows are not read.
 *
 *  Returns vekStsAwbNoData if no window could be used (the gains stay), vekStsAwbGainAtLimit if
 *  step 4 moved a gain to gainMin or gainMax or left it there, and otherwise vekStsNoErr. It
 *  returns vekStsBadArgErr if one of these is found, in this order: pSrc is null or misaligned; a
 *  gain pointer is null; srcStep is below 2 * width or misaligned; width or height is below 1;
 *  pState is null; a gain is below gainMin or above gainMax; a window leaves the region. */
VEK_API VekStatus vekiAWB_10RGGB_8u_C1R(const Vek16u* pSrc, int srcStep, VekiSize roiSize,
                                        Vek16u* pGainR, Vek16u* pGainG, Vek16u* pGainB,
                                        const VekiAWBState* pState);

/** @} */
/** @defgroup raw Raw Bayer pipeline
 *
 *  Takes one raw frame to three 8-bit planes Y, Cb, Cr (I420 or I422) in one pass: dead pixels,
 *  gamma, demosaicing, colour correction, conversion, quarter turns, reduction by 2 or 4. What does
 *  not change from frame to frame is prepared once in a state. The frame function only reads the
 *  state, so that any number of threads may use one state on distinct frames.
 *
 *  Raw samples are 10-bit values in 16-bit words (SRGGB10), rows R Gr R Gr ... and Gb B Gb B ...;
 *  the region's top left sample is red. Only the low 10 bits of a sample are looked at. A quad is
 *  the 2 x 2 group R, Gr, Gb, B at an even row and an even column of the region.
 *
 *  Let g(s) be the gamma table's entry for sample s. Each pixel gets its R, G and B in 0..255 from
 *  mapped samples g(s) by one of three rules:
 *
 *  - Interior rule: a component that the site itself has is taken as it is. Each other one is the
 *    average of its nearest samples: of the two beside or above and below the site, (a + b + 1) >>
 *    1, or of the four around it, (a + b + c + d + 2) >> 2. A quad needs one sample around it on
 *    every side.
 *  - Edge rule: all four pixels of a quad get R = g(R), G = (g(Gr) + g(Gb) + 1) >> 1, B = g(B).
 *    Without a valid border this rule serves the quads along the four edges of the region.
 *  - Reduction: a pixel of the output gets the R, G and B that the edge rule gives for one quad of
 *    its block. At scale 2 that is the block itself. At scale 4 it is the four samples in the
 *    centre of the 4 x 4 block, where B is the upper left sample and R the lower right one.
 *
 *  The state holds a matrix C of nine Q8 coefficients (256 is 1);
 *  vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R says how it is made. With every sum in 32 bits, shifted
 *  arithmetically and clamped to 0..255,
 *
 *      Y  = (C00 R + C01 G + C02 B) >> 8
 *      Cb = (C10 R + C11 G + C12 B + 32768) >> 8
 *      Cr = (C20 R + C21 G + C22 B + 32768) >> 8
 *
 *  @quirk Y is truncated and has no offset of 16: black is Y = 0. The preview functions below take
 *  Y = 16 as black, so that dark tones are clipped there unless the colour matrix or the gamma
 *  table leaves room.
 *
 *  Chroma is converted from the average R, G and B of the pixels that share it, component by
 *  component: of two neighbours in a destination row, (a + b + 1) >> 1, in 4:2:2, and of the
 *  destination's 2 x 2 block, (a + b + c + d + 2) >> 2, in 4:2:0.
 *  @{ */

/** A defective sample of the sensor. */
typedef struct VekiDeadPixel {
  Vek32s row;    /**< row in sensor coordinates */
  Vek32s column; /**< column in sensor coordinates */
} VekiDeadPixel;

/** Where the gamma table comes from. */
enum VekiGammaMode {
  vekiGammaModeCurve = 0, /**< it is built from the curve gammaCurve[0] */
  vekiGammaModeTable = 1  /**< it is the caller's table gammaTable[0] */
};

/** Built-in gamma curves. */
enum VekiGammaCurve {
  vekiGammaCurveLinear = 0,  /**< a straight line: 1023 becomes 255 */
  vekiGammaCurveStandard = 1 /**< the transfer function of ITU-R BT.709, which lifts shadows */
};

/** Filter modes. The scale alone decides what is done; the mode has to agree with it. */
enum VekiFilterMode {
  vekiFilterModeDemosaic = 2, /**< at scale 1: every pixel is interpolated */
  vekiFilterModeReduce = 3    /**< at scales 2 and 4: a block of samples becomes one pixel */
};

/** Chroma formats of the destination. */
enum VekiChromaFormat {
  vekiChroma422 = 8, /**< I422: chroma planes of half the width and the full height */
  vekiChroma420 = 9  /**< I420: chroma planes of half the width and half the height */
};

/** Colour part of the pipeline's parameters. */
typedef struct VekiRggbColorParam {
  Vek32u gammaMode;                /**< one of VekiGammaMode */
  Vek32u gammaCurve[3];            /**< [0] is one of VekiGammaCurve (vekiGammaModeCurve); the other
                                        two are not read */
  const Vek8u* gammaTable[3];      /**< [0] has 1024 entries (vekiGammaModeTable); the other two are
                                        not read */
  const VekiDeadPixel* deadPixels; /**< in sensor coordinates; null if there are none */
  Vek32s numDeadPixels;            /**< entries of deadPixels */
  Vek32s rowOffset;                /**< sensor row of the region's first row, at least 0 */
  Vek32s colOffset;                /**< sensor column of the region's first column, at least 0 */
  Vek32u reserved;                 /**< 0 */
  const Vek16s* colorMatrix; /**< nine Q8 coefficients (256 is 1), row after row: the rows make
                                        the corrected R, G, B, the columns take the camera's */
} VekiRggbColorParam;

/** Geometry of the pipeline. Source sizes are in samples, destination sizes in luma pixels of the
 *  rotated picture, and steps in bytes. */
typedef struct VekiRggbGeometry {
  Vek32s srcStep;        /**< even; of any sign and size otherwise */
  Vek32s srcWidth;       /**< even */
  Vek32s srcHeight;      /**< even */
  Vek32s dstStep[3];     /**< of the planes Y, Cb, Cr */
  Vek32s dstWidth;       /**< width of the rotated region, or a half or a quarter of it */
  Vek32s dstHeight;      /**< height likewise, by the same factor (scale 1, 2, 4) */
  Vek32s filterMode;     /**< one of VekiFilterMode: 2 at scale 1, 3 at scales 2 and 4 */
  Vek32s rotation;       /**< vekiRotNone, vekiRot90Ccw, vekiRot90Cw or vekiRot180 (0..3) */
  Vek32s chromaFormat;   /**< one of VekiChromaFormat */
  Vek32s srcBorderValid; /**< scale 1 alone. 0: the region is all there is, and the edge rule serves
                              its edges. Otherwise one more sample is valid on every side of the
                              region, and the interior rule serves everything. */
} VekiRggbGeometry;

/** What vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R prepares; its contents are the library's own. */
typedef struct VekiRggbToYCbCrState VekiRggbToYCbCrState;

/** Checks the parameters and prepares a state from them.
 *
 *  The matrix of the state is C = K * colorMatrix in Q8. Each entry is (sum + 128) >> 8, wrapped to
 *  16 bits, with
 *
 *           R    G    B
 *      Y   77  143   29
 *      Cb -30  -85  128
 *      Cr 128 -107  -21
 *
 *  @quirk K is not the textbook's matrix: its rows sum to 249, 13 and 0. With an identity
 *  colorMatrix white has Y = 248 and Cb = 140; callers balance it in colorMatrix.
 *
 *  A built-in gamma curve is straight lines between 33 control points with inputs and outputs of
 *  0..1024. For entry i, q is the truncated 1024 * (y1 - y0) * (i - x0) / (x1 - x0) of its segment,
 *  and the entry is min(255, (1024 * y0 + q + 512) >> 12).
 *
 *  @quirk This rounds up only the last eighth of a step, as 512 is an eighth of 4096: the linear
 *  curve maps 0..3 to 0, 4..7 to 1 and so on up to 1020..1023 to 255.
 *
 *  Dead pixels: with both offsets 0 the state uses the caller's array where it lies, whatever it
 *  holds. Otherwise entries above or to the left of the region are dropped. The others are copied
 *  in their order with the offsets subtracted; entries beyond the right or bottom edge stay.
 *
 *  @quirk A list to be copied is refused if it has no entries, or if its first entry inside the
 *  region is the region's top left sample.
 *
 *  The caller's gamma table and a dead-pixel array that is used in place must live as long as the
 *  state; everything else is copied. All memory comes from vekiMalloc.
 *
 *  @quirk Two pieces of memory are never returned: the block for the state when an argument is
 *  refused (it is taken before the checks), and the copy of a dead-pixel list. The order of the
 *  calls of vekiMalloc and vekiFree is part of the contract.
 *
 *  Returns vekStsNoErr with *ppState set. Otherwise *ppState is untouched and the result is
 *  vekStsBadArgErr if one of these is found, in this order:
 *  - pParam or pGeom is null;
 *  - gammaMode is above 1, gammaCurve[0] above 1 (mode 0), or gammaTable[0] null (mode 1);
 *  - reserved is not 0, an offset is negative, or colorMatrix is null;
 *  - srcStep, srcWidth or srcHeight is odd;
 *  - dstWidth or dstHeight is below 1;
 *  - rotation is not 0..3, or chromaFormat not 8 or 9;
 *  - the destination is neither the whole, half nor a quarter of the rotated region;
 *  - dstStep[0] is below dstWidth, or dstStep[1] or dstStep[2] below dstWidth / 2;
 *  - dstStep[0] is not a multiple of 8 (at scales 2 and 4: of 4), or dstStep[1] or dstStep[2] not a
 *    multiple of 4 (of 2);
 *  - at scales 2 and 4 dstWidth is not a multiple of 4, or dstHeight is odd;
 *  - filterMode does not belong to the scale;
 *  - a dead-pixel list to be copied is refused, as described above;
 *  - ppState is null.
 *
 *  It is vekStsMemAllocErr, and all memory of this call is returned, if the arguments are fine and
 *  vekiMalloc has given null. */
VEK_API VekStatus vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(const VekiRggbColorParam* pParam,
                                                         const VekiRggbGeometry* pGeom,
                                                         VekiRggbToYCbCrState** ppState);

/** Releases a state and the tables that it owns. Always returns vekStsNoErr; null is accepted. */
VEK_API VekStatus vekiFree_10RGGBtoYCbCr_RotRsz_P3R(VekiRggbToYCbCrState* pState);

/** Converts one frame.
 *
 *  pSrc is the region's top left sample. First each listed dead pixel is replaced in the frame
 *  itself, in the order of the list: by the sample two columns to its left if its column is above
 *  1, otherwise by the one two rows above if its row is above 1. In the top left quad it stays.
 *  Then the region is converted as described above. Apart from listed pixels the frame is only
 *  read, with one sample around the region if that is valid (scale 1).
 *
 *  @quirk Row r, column c of a dead pixel is the sample r * (srcStep / 2) + c, without regard to
 *  the region's size. Entries outside the region reach the memory that this gives, so that one list
 *  serves regions of any size of a larger frame.
 *
 *  Alignment: pSrc 2 bytes. At scale 1 pDst[0] 8 bytes, pDst[1] and pDst[2] 4; without a valid
 *  border the same holds for pDst[0] + 2, pDst[1] + 1 and pDst[2] + 1 instead, where the interior
 *  starts. At scales 2 and 4 pDst[0] 4 bytes, pDst[1] and pDst[2] 2.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr, with the frame unchanged, if one of these is found, in
 *  this order: pState is null; pSrc is null; pDst or a plane is null; a plane is misaligned. */
VEK_API VekStatus veki10RGGBtoYCbCr_RotRsz_8u_P3R(Vek16u* pSrc, Vek8u* const pDst[3],
                                                  const VekiRggbToYCbCrState* pState);

/** Order of the channels of pixels of three bytes. */
enum VekiChannelOrder {
  vekiChannelsRGB = 0, /**< RGB24: R, G, B */
  vekiChannelsBGR = 1  /**< BGR24: B, G, R */
};

/** Makes pixels of a raw frame, without YCbCr in between: each has colours of its own.
 *
 *  pSrc is the region's top left sample, a red one. pTable is the gamma table, g(s) = pTable[s & 1023], and
 *  each pixel gets its R, G and B by the interior rule, as they are: 24 bits a pixel, in the order
 *  channelOrder (VekiChannelOrder), a pixel for each sample. What is done with colours in linear light
 *  comes before, see vekiColorMatrix_10Bayer_16u_C1R. For example, a region of 2 x 2 samples (40, 80; 60, 20)
 *  without a border becomes with g(s) = s the four pixels (40, 70, 20), (40, 80, 20), (40, 60, 20) and
 *  (40, 70, 20).
 *
 *  With srcBorderValid not 0, one more sample on every side of the region is there, and is read; with 0 a
 *  neighbour outside of the region is the one on the opposite side of the site. Source and destination must
 *  not overlap; the destination may have any address and step.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if one of these is found, in this order: a pointer is null; a
 *  side of roiSize is below 2 or odd; channelOrder is not 0 or 1; srcStep is odd or below 2 * width; dstStep
 *  is below 3 * width; pSrc is odd. */
VEK_API VekStatus vekiDemosaic_10RGGB_16u8u_C1C3R(const Vek16u* pSrc, int srcStep, Vek8u* pDst,
                                                  int dstStep, VekiSize roiSize,
                                                  const Vek8u pTable[1024], int channelOrder,
                                                  int srcBorderValid);

/** @} */
/** @defgroup preview Preview: resize, rotate, convert
 *
 *  Planes are given in the order Y, Cb, Cr: I420 for 4:2:0, whose chroma has half the width and
 *  half the height of the luma (rounded down), and I422 for 4:2:2, whose chroma has half the width
 *  and the full height. For images in the order Y, Cr, Cb (YV12, YV16) exchange the two chroma
 *  pointers. Luma is studio-range: Y = 16 is black and 235 is white.
 *
 *  Scaled size: dstWidth x dstHeight is the size of the scaled image before it is rotated, seen as
 *  the source is oriented. After a quarter turn the destination has dstHeight columns and dstWidth
 *  rows.
 *
 *  Sampling steps: xStep and yStep are unsigned 16.16 distances between samples in the source.
 *  65536 is one source sample, 131072 a reduction by 2. The caller chooses them. Unless a function
 *  says otherwise, the largest horizontal step that is accepted is
 *
 *      ((srcWidth & ~1) - 1) * 65536 / ((dstWidth & ~1) - 1)
 *
 *  and the vertical limit likewise. Source and destination sizes of 1 are refused.
 *
 *  @quirk In these limits the product is taken modulo 2^32 and read as signed, and the quotient is
 *  truncated. From a source width of 32770 on the limit is therefore not the one that the formula
 *  suggests.
 *
 *  Interpolation applies to luma; chroma is always the nearest sample. A blend reads no sample
 *  outside the image whose weight is 0.
 *
 *  Conversion to R, G, B in the two RszCscRotRGB functions is studio-range BT.601 with 8 fractional
 *  bits. With y = 298 (Y - 16), b = Cb - 128 and r = Cr - 128,
 *
 *      R = y + 409 r
 *      G = y - 100 b - 208 r
 *      B = y + 516 b
 *
 *  are each shifted right by 16 minus the field's bits (toward minus infinity) and clamped to the
 *  field.
 *
 *  @quirk There is no rounding term: white (Y = 235) becomes 254 in the 24-bit format.
 *  @{ */

/** Orientations, for the `rotation` arguments. (x, y) is a pixel of the scaled W x H image. */
enum VekiRotation {
  vekiRotNone = 0,         /**< to row y, column x */
  vekiRot90Ccw = 1,        /**< quarter turn counter-clockwise: to row W-1-x, column y */
  vekiRot90Cw = 2,         /**< quarter turn clockwise: to row x, column H-1-y */
  vekiRot180 = 3,          /**< half turn: to row H-1-y, column W-1-x */
  vekiMirrorLeftRight = 4, /**< to row y, column W-1-x */
  vekiMirrorTopBottom = 5  /**< to row H-1-y, column x */
};

/** How luma is sampled by the functions that take sampling steps. */
enum VekiInterpolation {
  vekiInterpolateNearest = 0, /**< the nearest sample */
  vekiInterpolateLinear = 1   /**< a blend of the four samples around the sampling point */
};

/** Resizes and rotates a planar YCbCr 4:2:0 image (I420) to planar YCbCr 4:2:0.
 *
 *  Scaled chroma is dstWidth/2 x dstHeight/2 samples and is oriented like the luma. dstWidth and
 *  dstHeight are even.
 *
 *  Sampling: luma pixel (x, y) is sampled at column x * xStep and row y * yStep. Interpolation 0
 *  rounds both to the nearest sample. Interpolation 1 blends a + (((b - a) * fx) >> 16) in both
 *  rows, where fx is the fraction of the column, and then these two with the fraction of the row;
 *  shifts are toward minus infinity. A row that would be sampled at or below the last source row is
 *  blended 1/65536 above it. Chroma sample (i, j) is the one nearest to column i * xStep and row j
 *  * yStep of its plane.
 *
 *  Exact reductions: with rotation 0 and dstWidth x dstHeight equal to half or a quarter of the
 *  source (each rounded down), the sampling steps are checked but not used. Interpolation 1 stores
 *  (a + b + c + d + 4) >> 2 of each 2 x 2 block, or of the middle 2 x 2 samples of each 4 x 4
 *  block. Interpolation 0 takes one sample of each block: column 1 of row 0 (2:1), or column 1 of
 *  row 1 (4:1).
 *
 *  @quirk The average adds 4 instead of 2 and is taken modulo 256, so that it is half a step
 *  brighter than the exact one and four samples of 255 give 0. Studio-range samples, which end at
 *  240, never get there.
 *
 *  @quirk Exact reductions with interpolation 0 read Cr with the row step of Cb, and from row 0 of
 *  each block in the 4:1 case, too. Row y of the reduced Cr plane begins at pSrc[2] + 2 * y *
 *  srcStep[1], or 4 * y * srcStep[1]; pSrc[2] must reach as far as that reads. Equal chroma steps
 *  make this harmless.
 *
 *  @quirk With rotation 5 the rows of the Cr plane are written dstStep[1] bytes apart, upwards from
 *  row dstHeight/2 - 1, which lies dstStep[2] * (dstHeight/2 - 1) bytes behind pDst[2]. Let the two
 *  chroma steps be equal, or provide that memory.
 *
 *  Alignment in bytes: pSrc[0..2] 8, pDst[0] 4, pDst[1] and pDst[2] 2; srcStep[0..2] 8, dstStep[0]
 *  4, dstStep[1] and dstStep[2] 2.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if one of these is found, in this order: a pointer is
 *  null; a pointer is misaligned; a size is below 1; a sampling step is below 1 or above its limit;
 *  a row step is misaligned; dstWidth or dstHeight is odd; a row step is below 1; a source row step
 *  is below the row's bytes; interpolation is not 0 or 1, or rotation not 0..5; a destination row
 *  step is below the bytes of the rotated row. */
VEK_API VekStatus vekiYCbCr420RszRot_8u_P3R(VekConstPlanes pSrc, const int srcStep[3], int srcWidth,
                                            int srcHeight, Vek8u* const pDst[3],
                                            const int dstStep[3], int dstWidth, int dstHeight,
                                            int interpolation, int rotation, int xStep, int yStep);

/** Makes some rows of what vekiYCbCr420RszRot_8u_P3R makes, so that several threads can share an image.
 *
 *  All arguments but the last two are those of the whole image, whose rows firstRow to firstRow +
 *  rowCount - 1, as the source is oriented, are written where that function puts them, the same bytes,
 *  and nothing else; chroma has half as many. Calls for different rows may run at the same time.
 *
 *  Alignment is as there.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if one of these is found, in this order: what
 *  vekiYCbCr420RszRot_8u_P3R refuses; firstRow is below 0 or odd; rowCount is below 1 or odd, or reaches
 *  beyond dstHeight. */
VEK_API VekStatus vekiYCbCr420RszRotRows_8u_P3R(VekConstPlanes pSrc, const int srcStep[3],
                                                int srcWidth, int srcHeight, Vek8u* const pDst[3],
                                                const int dstStep[3], int dstWidth, int dstHeight,
                                                int interpolation, int rotation, int xStep,
                                                int yStep, int firstRow, int rowCount);

/** Resizes and rotates a planar YCbCr 4:2:2 image (I422) to planar YCbCr 4:2:2.
 *
 *  Scaled chroma is dstWidth/2 x dstHeight samples. dstWidth is even. After a quarter turn the
 *  destination's chroma is subsampled along its own rows: it has dstHeight/2 columns and dstWidth
 *  rows, and the samples of the scaled rows 2k and 2k + 1 alternate in one destination column. With
 *  rotation 1 that is column k from bottom to top, with rotation 2 column dstHeight/2-1-k from top
 *  to bottom. There are no exact reductions.
 *
 *  Sampling: luma as in vekiYCbCr420RszRot_8u_P3R, except for the rows near the lower edge. Chroma
 *  sample (i, y) is the one nearest to column i * xStep of its plane and to the row at which luma
 *  row y is sampled.
 *
 *  @quirk Of the rows that would be sampled at or below the last source row only the odd ones are
 *  moved to 1/65536 above it, and row 1 is not: rows are made in pairs, and only the lower row of a
 *  pair is kept inside.
 *
 *  @quirk With an odd dstHeight the rows are still made in pairs: a row with the index dstHeight is
 *  sampled and written as well. It is written last. Where row steps make it meet samples of the
 *  image, as an extra chroma column does if dstStep[1] is dstHeight/2, it replaces them. The caller
 *  provides this memory:
 *  - destination, rotations 0 and 4: one row more below each of the three planes;
 *  - destination, rotations 3 and 5: one row more above each plane, in front of pDst[i];
 *  - destination, rotation 1: one luma column more at the right of each row (within the row step),
 *    and one chroma column more at the right;
 *  - destination, rotation 2: one luma column more at the left, its first byte just in front of
 *    pDst[0], and one chroma column more at the left, in front of pDst[1] and pDst[2];
 *  - source: yStep limits the first dstHeight - 1 rows alone. Rows dstHeight - 1 and dstHeight are
 *    sampled at those indices times yStep, which may be below the image; with interpolation 1 row
 *    dstHeight is kept inside.
 *
 *  Alignment in bytes: pSrc[0] and pDst[0] 4, srcStep[0] and dstStep[0] 4; chroma none.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if one of these is found, in this order: a pointer is
 *  null; pDst[0] or pSrc[0] is misaligned; dstWidth is odd; a sampling step is below 1 or above its
 *  limit; a size is below 1; a luma row step is misaligned; a row step is below 1; a source row
 *  step is below the row's bytes; a destination row step is below the bytes of the rotated row;
 *  interpolation is not 0 or 1, or rotation not 0..5. */
VEK_API VekStatus vekiYCbCr422RszRot_8u_P3R(VekConstPlanes pSrc, const int srcStep[3], int srcWidth,
                                            int srcHeight, Vek8u* const pDst[3],
                                            const int dstStep[3], int dstWidth, int dstHeight,
                                            int interpolation, int rotation, int xStep, int yStep);

/** Destination formats of vekiYCbCr420RszCscRotRGB_8u_P3C3R. 16-bit pixels are little-endian words.
 */
enum VekiCsc420Format {
  vekiCsc420RGB565 = 4, /**< RGB565 (RG16): red in bits 15..11, green 10..5, blue 4..0 */
  vekiCsc420RGB555 =
      5, /**< RGB555 (XR15): bit 15 zero, red in bits 14..10, green 9..5, blue 4..0 */
  vekiCsc420RGB444 = 6, /**< RGB444 (XR12): bits 15..12 zero, red in 11..8, green 7..4, blue 3..0 */
  vekiCsc420BGR24 = 7   /**< BGR24: three bytes a pixel in the order B, G, R */
};

/** Resizes and rotates a planar YCbCr 4:2:0 image (I420) and converts it to packed RGB.
 *
 *  dstFormat is one of VekiCsc420Format; the conversion is that of the preview functions. dstStep
 *  counts bytes.
 *
 *  Pixels are sampled in 2 x 2 blocks that share one chroma sample. Luma of pixel (x, y) is sampled
 *  at (x * xStep, y * yStep) as in vekiYCbCr420RszRot_8u_P3R. Chroma of block (x / 2, y / 2) is
 *  sampled at column (x / 2) * xStep and row y * yStep / 2, both rounded to nearest. With an odd
 *  dstWidth the last column repeats its left neighbour, and with an odd dstHeight the last row
 *  repeats the one above it.
 *
 *  @quirk With interpolation 1, if the lower row of a block would start at or below the last source
 *  row, it repeats the upper row of its block instead of being kept inside the image.
 *
 *  Alignment in bytes: pDst 8, pSrc[0] 4, pSrc[1] and pSrc[2] 2; srcStep[0] 4, srcStep[1] and
 *  srcStep[2] 2; dstStep 8 for the 16-bit formats and 2 for the 24-bit one.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if one of these is found, in this order: pSrc is null;
 *  pDst is null; a pointer is misaligned; a size is below 1; a sampling step is below 1 or above
 *  its limit; a row step is misaligned, below 1, or (source) below the row's bytes; dstFormat is
 *  not 4..7, interpolation not 0 or 1, or rotation not 0..5; dstStep is misaligned or holds fewer
 *  pixels than the destination row; srcStep or a source plane is null. */
VEK_API VekStatus vekiYCbCr420RszCscRotRGB_8u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                    int srcWidth, int srcHeight, Vek8u* pDst,
                                                    int dstStep, int dstWidth, int dstHeight,
                                                    int dstFormat, int interpolation, int rotation,
                                                    int xStep, int yStep);

/** Makes some rows of what vekiYCbCr420RszCscRotRGB_8u_P3C3R makes, so that several threads can share an
 *  image.
 *
 *  All arguments but the last two are those of the whole image, whose rows firstRow to firstRow +
 *  rowCount - 1, as the source is oriented, are written where that function puts them, the same bytes,
 *  and nothing else. An odd last row, which repeats the one above it, is made together with it. Calls for
 *  different rows may run at the same time.
 *
 *  Alignment is as there.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if one of these is found, in this order: what
 *  vekiYCbCr420RszCscRotRGB_8u_P3C3R refuses; firstRow is below 0 or odd; rowCount is below 1 or reaches
 *  beyond dstHeight; it is odd and not up to the last row, or an odd last row alone. */
VEK_API VekStatus vekiYCbCr420RszCscRotRGBRows_8u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                        int srcWidth, int srcHeight, Vek8u* pDst,
                                                        int dstStep, int dstWidth, int dstHeight,
                                                        int dstFormat, int interpolation,
                                                        int rotation, int xStep, int yStep,
                                                        int firstRow, int rowCount);

/** Destination formats of vekiYCbCr422RszCscRotRGB_8u_P3C3R; the layouts are those of
 *  VekiCsc420Format. */
enum VekiCsc422Format {
  vekiCsc422RGB565 = 0, /**< RGB565 (RG16) */
  vekiCsc422RGB555 = 1, /**< RGB555 (XR15), bit 15 zero */
  vekiCsc422RGB444 = 2, /**< RGB444 (XR12), bits 15..12 zero */
  vekiCsc422BGR24 = 3   /**< BGR24: three bytes a pixel in the order B, G, R */
};

/** Resizes and rotates a planar YCbCr 4:2:2 image (I422) and converts it to packed RGB.
 *
 *  dstFormat is one of VekiCsc422Format; the conversion is that of the preview functions. pDst may
 *  be at any address, for 16-bit pixels, too. dstStep counts bytes and is not compared with the
 *  row.
 *
 *  @quirk The codes of dstFormat are 0 to 3 here, and 4 to 7 in vekiYCbCr420RszCscRotRGB_8u_P3C3R.
 *
 *  @quirk Rows of all three planes advance together: the chroma rows lie srcStep[0] / 2 bytes
 *  apart. srcStep[1] and srcStep[2] are checked but not used.
 *
 *  Size: with W x H the destination's size, rotations 0, 3, 4 and 5 and all of the 24-bit format
 *  write rows of W pixels. In the 24-bit format dstWidth x dstHeight is the destination's own size,
 *  so that quarter turns make dstHeight pixels in each of dstWidth scaled rows. In the 16-bit
 *  formats dstWidth pixels are always made in each of dstHeight rows.
 *
 *  @quirk Quarter turns of the 16-bit formats put pixel (x, y) at pDst + (H-1-x + y(H-W)) dstStep +
 *  2y (rotation 1) or pDst + 2(W-1-y) + (x + y(W-H)) dstStep (rotation 2). That is a coherent
 *  picture if dstWidth equals dstHeight, and otherwise pixels that are scattered over memory, which
 *  the caller provides.
 *
 *  Sampling: row y is sampled at y * yStep. From where it reaches row srcHeight (with interpolation
 *  1, row srcHeight - 1) it is kept 1/65536 above that row. Interpolation 0 takes luma at the
 *  column (x * xStep + 32768) >> 16 and the row rounded down. Interpolation 1 blends at x * xStep
 *  as vekiYCbCr420RszRot_8u_P3R does. Odd x are kept 1/65536 left of column srcWidth (with
 *  interpolation 1, of column srcWidth - 1) from where they reach it. Both pixels of a pair take
 *  the chroma of the row rounded down and of chroma column ((x / 2) * xStep + 32768) >> 16, kept
 *  left of srcWidth / 2 (with interpolation 1, of (srcWidth - 1) / 2). With an odd srcWidth that
 *  may be column (srcWidth - 1) / 2. A source one column wide or one row high is sampled there,
 *  with no blend across.
 *
 *  @quirk Even x are not kept inside, as only the second pixel of a pair is. Let their sampling
 *  points lie inside the image, or provide the samples to the right of it that they read.
 *
 *  Alignment in bytes: srcStep[0] 4, srcStep[1] and srcStep[2] 2, dstStep 8 in the 16-bit formats;
 *  pointers none.
 *
 *  @quirk In the 24-bit format only bit 1 of dstStep is tested: 33 is accepted, 30 is not.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if one of these is found, in this order: a pointer is
 *  null; a sampling step is below 1; a source row step is misaligned; a row step is below 1;
 *  srcStep[0] is below srcWidth, or srcStep[1] or srcStep[2] below half of it; dstFormat is not
 *  0..3, interpolation not 0 or 1, or rotation not 0..5; dstStep is misaligned.
 *
 *  @quirk The sizes are not checked: with one below 1 the result is vekStsNoErr and nothing is
 *  touched. */
VEK_API VekStatus vekiYCbCr422RszCscRotRGB_8u_P3C3R(VekConstPlanes pSrc, const int srcStep[3],
                                                    int srcWidth, int srcHeight, Vek8u* pDst,
                                                    int dstStep, int dstWidth, int dstHeight,
                                                    int dstFormat, int interpolation, int rotation,
                                                    int xStep, int yStep);

/** @name 4:2:2 to 4:2:0 with rotation
 *  @{ */
/** Rotates a YCbCr 4:2:2 image of width x height pixels into planar 4:2:0 (I420), unscaled: what
 *  cameras give becomes what encoders and vekiYCbCr420RszRot_8u_P3R take.
 *
 *  The source of _P3R is planar (I422); that of
 *  _C2P3R is interleaved, the four bytes Cb, Y0, Cr, Y1 for each pair of pixels (UYVY).
 *
 *  rotation is one of VekiRotation. The destination's luma has height columns and width rows after a
 *  quarter turn, and its chroma half as many of both.
 *
 *  Chroma is averaged before it is oriented: sample (i, j) is (a + b + 1) >> 1 of the source's column
 *  i in rows 2 j and 2 j + 1, whatever the rotation. Every plane, Cr with rotation 5 included, is
 *  written with its own row step.
 *
 *  No pointer and no step needs to be aligned. Source and destination do not overlap.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if one of these is found, in this order: a source pointer,
 *  then a destination pointer is null; width, then height is below 2 or odd; rotation is not 0..5; a
 *  source row step is below the row's bytes (2 * width of _C2P3R, else width, width / 2, width / 2);
 *  a destination row step is below L, L / 2, L / 2, where L is the luma's columns. */
VEK_API VekStatus vekiYCbCr422ToYCbCr420Rotate_8u_C2P3R(const Vek8u* pSrc, int srcStep,
                                                        Vek8u* const pDst[3], const int dstStep[3],
                                                        int width, int height, int rotation);
VEK_API VekStatus vekiYCbCr422ToYCbCr420Rotate_8u_P3R(VekConstPlanes pSrc, const int srcStep[3],
                                                      Vek8u* const pDst[3], const int dstStep[3],
                                                      int width, int height, int rotation);
/** @} */

/** Coefficients of vekiResizeCscRotate_8u_C2R with 10 fractional bits (studio-range BT.601): Y, Cr
 *  to R, Cr to G, Cb to G, Cb to B = 1192, 1634, -833, -401, 2065. */
VEK_API extern const Vek32s _vekYCbCr_RGB[5];

/** How vekiResizeCscRotate_8u_C2R makes one pixel of a block. */
enum VekiReduction {
  vekiReduceFirst = 0,  /**< the first luma sample of the block */
  vekiReduceAverage = 1 /**< the average of the block */
};

/** Destination formats of vekiResizeCscRotate_8u_C2R; the layouts are those of VekiCsc420Format. */
enum VekiCscC2Format {
  vekiCscC2RGB565 = 0, /**< RGB565 (RG16) */
  vekiCscC2RGB555 = 1  /**< RGB555 (XR15), bit 15 zero */
};

/** Reduces an interleaved YCbCr 4:2:2 image (UYVY) by a whole factor, converts it to packed RGB and
 *  rotates it.
 *
 *  Source: each pair of pixels is the four bytes Cb, Y0, Cr, Y1, which is UYVY. (The C2 functions
 *  of image.h take and make Y0, Cb, Y1, Cr, which is YUY2.) The reduced image has Wo = width /
 *  factor columns and Ho = height / factor rows; what remains at the right and at the bottom is not
 *  read. Rotations 1 and 2 put it into Ho columns and Wo rows. dstStep counts bytes.
 *
 *  factor is 2, 4 or 8. interpolation is one of VekiReduction. The average of a block is taken in
 *  pairs, (a + b + 1) >> 1: first of horizontal neighbours until each row of the block is one
 *  value, then of rows in the same way. The two pixels of an output pair share their chroma: that
 *  of the first source pair of the first block, or the average over both blocks, taken in the same
 *  order. With an odd Wo the last pixel has the chroma of its own block.
 *
 *  dstFormat is one of VekiCscC2Format. With y = 1192 (Y - 16), b = Cb - 128 and r = Cr - 128, R =
 *  y + 1634 r, G = y - 401 b - 833 r and B = y + 2065 b are each shifted right by 18 minus the
 *  field's bits (toward minus infinity, no rounding term) and clamped to the field.
 *
 *  rotation is vekiRotNone, vekiRot90Ccw, vekiRot90Cw or vekiRot180.
 *
 *  Alignment in bytes: pSrc, pDst, srcStep and dstStep 8.
 *
 *  Returns vekStsNoErr, or vekStsBadArgErr if one of these is found, in this order: pSrc is null;
 *  pDst is null; a pointer is misaligned; a row step is below 1 or misaligned; factor is above
 *  width or height; factor is not 2, 4 or 8; dstStep / 2 is below the rotated row's pixels; srcStep
 *  / 2 is below width; interpolation is not 0 or 1, dstFormat not 0 or 1, or rotation not 0..3. */
VEK_API VekStatus vekiResizeCscRotate_8u_C2R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                             int dstStep, int width, int height, int factor,
                                             int interpolation, int dstFormat, int rotation);

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* VEK_CAMERA_H */
