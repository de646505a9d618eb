// Automatic white balance on 10-bit RGGB frames.
//
// The control law. The caller owns a gain for each channel, and applies them to the frames that come
// here. Every call takes four steps:
//
// 1. Measure. The ratios of red to green and of blue to green are averaged over weighted windows, of
//    which either all samples count (grey world) or only nearly neutral ones (white points).
// 2. Hold. If both ratios are close to their references, the frame is balanced and nothing moves.
// 3. Choose targets. Dividing the gains out of the ratios tells what the scene is like without them. If
//    that is close to the references, the measurement is believed: a gain's target is the one that
//    takes its ratio to the reference, and green stays as it is. If not, the picture may just be
//    colourful (a red wall is not red light), and the targets are the default gains.
// 4. Move. Each gain goes towards its target, by a limited step and within its limits.
#include "vek/camera.h"

#include "camera/aaa/limits.h"
#include "camera/aaa/raw_frame.h"
#include "camera/aaa/white_balance_kernels.h"
#include "core/allocate.h"
#include "core/check.h"

namespace vek {
namespace {

struct Gains {
  Vek16u red, green, blue;
};

}  // namespace
}  // namespace vek

struct VekiAWBState {
  Vek32s method;
  const VekiRect* windows;  ///< the caller's
  const Vek8u* weights;     ///< the caller's
  Vek32s numWindows;
  Vek16u refRatioR, refRatioB;
  Vek16u holdTolR, holdTolB;
  Vek16u validTolR, validTolB;
  vek::WhitePointLimits limits;
  Vek32s minWhiteCount;
  Vek16u maxGainStep;
  Vek16u gainMin, gainMax;
  vek::Gains defaults;
};

namespace vek {
namespace {

constexpr Vek16u maxSample = 1023;
constexpr Vek64s windowPixelsLimit = 1 << 23;

// ---- State ------------------------------------------------------------------------------------

bool isValidWindow(const VekiRect& w, Vek8u weight) {
  return w.x >= 0 && w.y >= 0 && !anyBelowOne({w.width, w.height}) &&
         !isMisaligned(w.x | w.width, 4) && !isMisaligned(w.y | w.height, 8) &&
         Vek64s{w.width} * w.height < windowPixelsLimit && weight != 0;
}

bool areValidWhitePoints(const VekiAWBParams& p) {
  return !isOutside(p.wpdLimit1, 1, maxSample) && !isOutside(p.wpdLimit2, 1, maxSample) &&
         !isOutside(p.wpdLimit3, 1, 2 * maxSample + 1) && p.wpdLow >= 1 && p.wpdHigh > p.wpdLow &&
         p.wpdHigh <= maxSample;
}

bool areValid(const VekiAWBParams& p) {
  if (isOutside(p.method, vekiAWBGrayWorld, vekiAWBWhitePoints) || p.numWindows < 1 ||
      anyNull({p.pWindows, p.pWeights})) {
    return false;
  }
  for (int i = 0; i < p.numWindows; ++i) {
    if (!isValidWindow(p.pWindows[i], p.pWeights[i])) return false;
  }
  if (!areValidWhitePoints(p) || p.maxGainStep == 0) return false;
  for (Vek16u gain : {p.defaultGainR, p.defaultGainG, p.defaultGainB}) {
    if (isOutside(gain, p.gainMin, p.gainMax)) return false;
  }
  return true;
}

VekiAWBState makeState(const VekiAWBParams& p) {
  return {.method = p.method,
          .windows = p.pWindows,
          .weights = p.pWeights,
          .numWindows = p.numWindows,
          .refRatioR = p.refRatioR,
          .refRatioB = p.refRatioB,
          .holdTolR = p.holdTolR,
          .holdTolB = p.holdTolB,
          .validTolR = p.validTolR,
          .validTolB = p.validTolB,
          .limits = {.redLimit = p.wpdLimit1,
                     .blueLimit = p.wpdLimit2,
                     .greenLimit = p.wpdLimit3,
                     .low4 = static_cast<Vek16u>(4 * p.wpdLow),
                     .high4 = static_cast<Vek16u>(4 * p.wpdHigh)},
          .minWhiteCount = p.minWhiteCount,
          .maxGainStep = p.maxGainStep,
          .gainMin = p.gainMin,
          .gainMax = p.gainMax,
          .defaults = {.red = p.defaultGainR, .green = p.defaultGainG, .blue = p.defaultGainB}};
}

bool areValid(const Vek16u* pSrc, int srcStep, VekiSize roi, const Vek16u* pGainR,
              const Vek16u* pGainG, const Vek16u* pGainB, const VekiAWBState* state) {
  if (anyNull({pGainR, pGainG, pGainB, state}) || !isValidFrame(pSrc, srcStep, roi, 8)) {
    return false;
  }
  for (const Vek16u* gain : {pGainR, pGainG, pGainB}) {
    if (isOutside(*gain, state->gainMin, state->gainMax)) return false;
  }
  for (int i = 0; i < state->numWindows; ++i) {
    if (leaves(state->windows[i], roi)) return false;
  }
  return true;
}

// ---- Measurement ------------------------------------------------------------------------------

/// In 1/1024.
struct Ratios {
  Vek32u red;
  Vek32u blue;
};

/// The ratios of red and blue to the mean green. The quotients need 10 fractional bits: 2 * red and
/// 2 * blue go up as far as 32 bits let them, at most by 10 bits, and green comes down by the rest of
/// the 10. False if no green is left.
bool measureRatios(const ColorSums& sums, Ratios& ratios) {
  Vek32u red = 2 * sums.red;
  Vek32u blue = 2 * sums.blue;
  Vek32u green = sums.green;
  if ((red | blue) != 0) {
    int shift = 0;
    for (; shift < 10 && ((red | blue) >> 31) == 0; ++shift) {
      red <<= 1;
      blue <<= 1;
    }
    green >>= 10 - shift;
  }
  ratios = {_vekDiv_32u(red, green, nullptr), _vekDiv_32u(blue, green, nullptr)};
  return green != 0;
}

/// Whether the window can be used: grey world needs some green, white points enough of them as well.
bool measureWindow(const WhiteBalanceKernels& kernels, const Vek16u* start, int srcStep,
                   const VekiRect& window, const VekiAWBState& state, Ratios& ratios) {
  if (state.method == vekiAWBGrayWorld) {
    return measureRatios(kernels.sumAll(start, srcStep, window.width, window.height), ratios);
  }
  Vek32u count = 0;  // below 2^23, as a window's size is
  const ColorSums sums =
      kernels.sumWhitePoints(start, srcStep, window.width, window.height, state.limits, &count);
  return static_cast<Vek32s>(count) >= state.minWhiteCount && measureRatios(sums, ratios);
}

/// The weighted mean of the usable windows' ratios, its sums modulo 2^32. False if no window is
/// usable.
bool measureFrame(const WhiteBalanceKernels& kernels, const Vek16u* pSrc, int srcStep,
                  const VekiAWBState& state, Ratios& mean) {
  Ratios sum = {};
  Vek32u weights = 0;
  for (int i = 0; i < state.numWindows; ++i) {
    const VekiRect& window = state.windows[i];
    Ratios ratios;
    if (!measureWindow(kernels, windowStart(pSrc, srcStep, window), srcStep, window, state,
                       ratios)) {
      continue;
    }
    sum.red += ratios.red * state.weights[i];
    sum.blue += ratios.blue * state.weights[i];
    weights += state.weights[i];
  }
  mean = {_vekDiv_32u(sum.red, weights, nullptr), _vekDiv_32u(sum.blue, weights, nullptr)};
  return weights != 0;
}

// ---- Control law ------------------------------------------------------------------------------

/// Whether |ratio - reference| < tolerance, the difference taken as a signed number.
bool isNear(Vek32u ratio, Vek16u reference, Vek16u tolerance) {
  const Vek32u difference = ratio - reference;
  return ((difference >> 31) != 0 ? 0 - difference : difference) < tolerance;
}

/// value * factor / divisor, the product modulo 2^32; 0 if the divisor is 0.
Vek32u scaled(Vek32u value, Vek16u factor, Vek32u divisor) {
  return _vekDiv_32u(value * factor, divisor, nullptr);
}

bool isBalanced(const VekiAWBState& state, Ratios mean) {
  return isNear(mean.red, state.refRatioR, state.holdTolR) &&
         isNear(mean.blue, state.refRatioB, state.holdTolB);
}

/// Compares what the frame would measure had the gains not been applied.
bool isBelievable(const VekiAWBState& state, Ratios mean, Gains gains) {
  return isNear(scaled(mean.red, gains.green, gains.red), state.refRatioR, state.validTolR) &&
         isNear(scaled(mean.blue, gains.green, gains.blue), state.refRatioB, state.validTolB);
}

/// The gain that takes `ratio` to the reference, modulo 65536; a ratio of 0 leaves the gain.
Vek16u correctedGain(Vek16u reference, Vek16u gain, Vek32u ratio) {
  return ratio == 0 ? gain : static_cast<Vek16u>(scaled(reference, gain, ratio));
}

Gains targetGains(const VekiAWBState& state, Ratios mean, Gains gains) {
  if (!isBelievable(state, mean, gains)) return state.defaults;
  return {.red = correctedGain(state.refRatioR, gains.red, mean.red),
          .green = gains.green,
          .blue = correctedGain(state.refRatioB, gains.blue, mean.blue)};
}

Vek16u moveGain(const VekiAWBState& state, Vek16u gain, Vek16u target) {
  const Vek32s change = clamp(target - gain, -state.maxGainStep, state.maxGainStep);
  return static_cast<Vek16u>(clamp(gain + change, state.gainMin, state.gainMax));
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiInitAlloc_AWB_10RGGB_8u_C1R(const VekiAWBParams* pParams, VekiAWBState** ppState) {
  if (vek::anyNull({pParams, ppState}) || !vek::areValid(*pParams)) return vekStsBadArgErr;
  VekiAWBState* const state = vek::allocate<VekiAWBState>();
  if (state == nullptr) return vekStsMemAllocErr;
  *state = vek::makeState(*pParams);
  *ppState = state;
  return vekStsNoErr;
}

VekStatus vekiFree_AWB_10RGGB_8u_C1R(VekiAWBState* pState) {
  // @quirk Null is refused here, though the other states' functions accept it: callers compare the
  // status.
  if (pState == nullptr) return vekStsBadArgErr;
  vekiFree(pState);
  return vekStsNoErr;
}

VekStatus vekiAWB_10RGGB_8u_C1R(const Vek16u* pSrc, int srcStep, VekiSize roiSize, Vek16u* pGainR,
                                Vek16u* pGainG, Vek16u* pGainB, const VekiAWBState* pState) {
  if (!vek::areValid(pSrc, srcStep, roiSize, pGainR, pGainG, pGainB, pState)) {
    return vekStsBadArgErr;
  }
  const VekiAWBState& state = *pState;
  vek::Ratios mean;
  if (!vek::measureFrame(vek::select(vek::whiteBalanceKernels), pSrc, srcStep, state, mean)) {
    return vekStsAwbNoData;
  }
  if (vek::isBalanced(state, mean)) return vekStsNoErr;

  const vek::Gains target = vek::targetGains(state, mean, {*pGainR, *pGainG, *pGainB});
  *pGainR = vek::moveGain(state, *pGainR, target.red);
  *pGainG = vek::moveGain(state, *pGainG, target.green);
  *pGainB = vek::moveGain(state, *pGainB, target.blue);
  for (Vek16u gain : {*pGainR, *pGainG, *pGainB}) {
    if (gain == state.gainMin || gain == state.gainMax) return vekStsAwbGainAtLimit;
  }
  return vekStsNoErr;
}

}  // extern "C"
