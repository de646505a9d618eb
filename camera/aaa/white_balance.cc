// Automatic white balance on 10-bit RGGB frames.
#include "vek/camera.h"

#include "camera/aaa/raw_frame.h"
#include "camera/aaa/white_balance_kernels.h"
#include "core/check.h"

struct VekiAWBState {
  Vek32s method;
  const VekiRect* windows;  ///< the caller's
  const Vek8u* weights;     ///< the caller's
  Vek32s numWindows;
  Vek16u refRatioR, refRatioB;
  Vek16u holdTolR, validTolR;
  Vek16u holdTolB, validTolB;
  vek::WhitePointLimits limits;
  Vek32s minWhiteCount;
  Vek16u maxGainStep;
  Vek16u gainMin, gainMax;
  Vek16u defaultGainR, defaultGainG, defaultGainB;
};

namespace vek {
namespace {

constexpr Vek16u maxSample = 1023;
constexpr Vek64s windowPixelsLimit = 1 << 23;

bool isValidWindow(const VekiRect& w, Vek8u weight) {
  return w.x >= 0 && w.y >= 0 && !anyBelowOne({w.width, w.height}) &&
         !isMisaligned(w.x | w.width, 4) && !isMisaligned(w.y | w.height, 8) &&
         Vek64s{w.width} * w.height < windowPixelsLimit && weight != 0;
}

bool areValid(const VekiAWBParams& p) {
  if (isOutside(p.method, vekiAWBGrayWorld, vekiAWBWhitePoints) || p.numWindows < 1 ||
      anyNull({p.pWindows, p.pWeights})) {
    return false;
  }
  for (int i = 0; i < p.numWindows; ++i) {
    if (!isValidWindow(p.pWindows[i], p.pWeights[i])) return false;
  }
  if (isOutside(p.wpdLimit1, 1, maxSample) || isOutside(p.wpdLimit2, 1, maxSample) ||
      isOutside(p.wpdLimit3, 1, 2 * maxSample + 1) || p.wpdLow < 1 || p.wpdHigh <= p.wpdLow ||
      p.wpdHigh > maxSample || p.maxGainStep == 0) {
    return false;
  }
  for (Vek16u gain : {p.defaultGainR, p.defaultGainG, p.defaultGainB}) {
    if (isOutside(gain, p.gainMin, p.gainMax)) return false;
  }
  return true;
}

VekiAWBState makeState(const VekiAWBParams& p) {
  VekiAWBState state = {};
  state.method = p.method;
  state.windows = p.pWindows;
  state.weights = p.pWeights;
  state.numWindows = p.numWindows;
  state.refRatioR = p.refRatioR;
  state.refRatioB = p.refRatioB;
  state.holdTolR = p.holdTolR;
  state.validTolR = p.validTolR;
  state.holdTolB = p.holdTolB;
  state.validTolB = p.validTolB;
  state.limits = {p.wpdLimit1, p.wpdLimit2, p.wpdLimit3, static_cast<Vek16u>(4 * p.wpdLow),
                  static_cast<Vek16u>(4 * p.wpdHigh)};
  state.minWhiteCount = p.minWhiteCount;
  state.maxGainStep = p.maxGainStep;
  state.gainMin = p.gainMin;
  state.gainMax = p.gainMax;
  state.defaultGainR = p.defaultGainR;
  state.defaultGainG = p.defaultGainG;
  state.defaultGainB = p.defaultGainB;
  return state;
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

/// In 1/1024.
struct Ratios {
  Vek32u red;
  Vek32u blue;
};

/// The ratios of red and blue to the mean green. 2 * red and 2 * blue go up, as far as 32 bits let
/// them and at most by 10 bits; green comes down by the rest of the 10. False: no green is left.
bool measureRatios(const ColourSums& sums, Ratios& ratios) {
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

/// The weighted mean of the usable windows' ratios. False: there is none.
bool measureFrame(const Vek16u* pSrc, int srcStep, const VekiAWBState& state, Ratios& mean) {
  const WhiteBalanceKernels& rows = select(whiteBalanceKernels);
  Ratios sum = {};
  Vek32u weights = 0;
  for (int i = 0; i < state.numWindows; ++i) {
    const VekiRect& w = state.windows[i];
    const Vek16u* const start = windowStart(pSrc, srcStep, w);
    ColourSums sums;
    if (state.method == vekiAWBGrayWorld) {
      sums = rows.wga(start, srcStep, w.width, w.height);
    } else {
      Vek32u count = 0;  // below 2^23
      sums = rows.wpd(start, srcStep, w.width, w.height, state.limits, &count);
      if (state.minWhiteCount > static_cast<Vek32s>(count)) continue;
    }
    Ratios ratios;
    if (!measureRatios(sums, ratios)) continue;
    sum.red += ratios.red * state.weights[i];
    sum.blue += ratios.blue * state.weights[i];
    weights += state.weights[i];
  }
  mean = {_vekDiv_32u(sum.red, weights, nullptr), _vekDiv_32u(sum.blue, weights, nullptr)};
  return weights != 0;
}

bool isWithin(Vek32u ratio, Vek16u reference, Vek16u tolerance) {
  const Vek32u difference = ratio - reference;  // signed
  return ((difference >> 31) != 0 ? 0 - difference : difference) < tolerance;
}

/// value * factor / divisor, the product modulo 2^32.
Vek32u scaled(Vek32u value, Vek16u factor, Vek32u divisor) {
  return _vekDiv_32u(value * factor, divisor, nullptr);
}

Vek16u targetGain(Vek16u reference, Vek16u gain, Vek32u ratio) {
  return ratio == 0 ? gain : static_cast<Vek16u>(scaled(reference, gain, ratio));
}

Vek32s clamped(Vek32s value, Vek32s low, Vek32s high) {
  return value < low ? low : value > high ? high : value;
}

Vek16u moveGain(const VekiAWBState& state, Vek16u gain, Vek16u target) {
  const Vek32s change = clamped(target - gain, -state.maxGainStep, state.maxGainStep);
  return static_cast<Vek16u>(clamped(gain + change, state.gainMin, state.gainMax));
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiInitAlloc_AWB_10RGGB_8u_C1R(const VekiAWBParams* pParams, VekiAWBState** ppState) {
  if (vek::anyNull({pParams, ppState}) || !vek::areValid(*pParams)) return vekStsBadArgErr;
  VekiAWBState* const state = static_cast<VekiAWBState*>(vekiMalloc(int{sizeof(VekiAWBState)}));
  if (state == nullptr) return vekStsMemAllocErr;
  *state = vek::makeState(*pParams);
  *ppState = state;
  return vekStsNoErr;
}

VekStatus vekiFree_AWB_10RGGB_8u_C1R(VekiAWBState* pState) {
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
  if (!vek::measureFrame(pSrc, srcStep, state, mean)) return vekStsAwbNoData;
  if (vek::isWithin(mean.red, state.refRatioR, state.holdTolR) &&
      vek::isWithin(mean.blue, state.refRatioB, state.holdTolB)) {
    return vekStsNoErr;
  }

  // What the frame would measure had the gains not been applied decides whether it is believed.
  Vek16u red = state.defaultGainR;
  Vek16u green = state.defaultGainG;
  Vek16u blue = state.defaultGainB;
  if (vek::isWithin(vek::scaled(mean.red, *pGainG, *pGainR), state.refRatioR, state.validTolR) &&
      vek::isWithin(vek::scaled(mean.blue, *pGainG, *pGainB), state.refRatioB, state.validTolB)) {
    red = vek::targetGain(state.refRatioR, *pGainR, mean.red);
    green = *pGainG;
    blue = vek::targetGain(state.refRatioB, *pGainB, mean.blue);
  }

  *pGainR = vek::moveGain(state, *pGainR, red);
  *pGainG = vek::moveGain(state, *pGainG, green);
  *pGainB = vek::moveGain(state, *pGainB, blue);
  for (Vek16u gain : {*pGainR, *pGainG, *pGainB}) {
    if (gain == state.gainMin || gain == state.gainMax) return vekStsAwbGainAtLimit;
  }
  return vekStsNoErr;
}

}  // extern "C"
