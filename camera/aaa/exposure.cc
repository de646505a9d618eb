// Automatic exposure on 10-bit RGGB frames.
//
// The control law. The caller owns two control values and programs the sensor with them: in practice
// one is a gain and the other an exposure time. One is scaled, that is multiplied or divided by a
// factor; the other is stepped, that is moved by a fixed amount. To make the next frame brighter, the
// scaled value is multiplied while it is below its maximum, and only from there on does the stepped
// value move up. Darker is the same the other way round: the scaled value is divided while it is above
// its minimum, then the stepped value moves down. One call makes one such move.
//
// Which move it is depends on the green samples of the frame:
//
// - Histogram mode. A bin is populated if it holds enough samples; saturated samples are left out.
//   The frame is too dark if its populated bins all lie below darkThresh and close together, and too
//   bright if they all lie above brightThresh. Any other frame is exposed well enough for its mean to
//   be of use: the scaled value is set in proportion to target and mean, in one call.
// - Window modes. The brightness is a weighted mean over windows. Below target - tolerance the frame
//   is too dark, above target + tolerance too bright, and in between nothing changes.
#include "vek/camera.h"

#include <string.h>

#include "camera/aaa/exposure_kernels.h"
#include "camera/aaa/limits.h"
#include "camera/aaa/raw_frame.h"
#include "core/allocate.h"
#include "core/check.h"

namespace vek {
namespace {

constexpr Vek16u maxSample = saturatedSample;
constexpr int maxZones = 5;

struct HistogramThresholds {
  Vek16u count, spread, dark, bright, target, tolerance;
};

struct BrightnessBand {
  Vek16u lower, upper;
};

}  // namespace
}  // namespace vek

struct VekiAEState {
  Vek32s mode;
  Vek32u* histogram;  ///< histogram mode; null in the others
  VekiRect* windows;  ///< the caller's in mode 4, which are never written; null in histogram mode
  Vek16u* weights;    ///< likewise
  Vek32s numWindows;
  Vek16u scaleMultiplier;
  Vek16u stepSize;
  vek::HistogramThresholds thresholds;  ///< histogram mode
  vek::BrightnessBand band;             ///< window modes
  Vek32s scaleMin, scaleMax;
  Vek32s stepMin, stepMax;
};

namespace vek {
namespace {

// ---- State ------------------------------------------------------------------------------------

bool isValidWindow(const VekiRect& w, Vek16u weight) {
  return w.x >= 0 && w.y >= 0 && !anyBelowOne({w.width, w.height}) &&
         !isOdd(w.x | w.y | w.width | w.height) && weight != 0;
}

bool areValidWindows(const VekiAEParams& p) {
  if (anyNull({p.pWindows, p.pWeights}) || p.numWindows < 1) return false;
  for (int i = 0; i < p.numWindows; ++i) {
    if (!isValidWindow(p.pWindows[i], p.pWeights[i])) return false;
  }
  return true;
}

bool areValid(const VekiAEParams& p) {
  if (isOutside(p.mode, vekiAEHistogram, vekiAECallerWindows)) return false;
  if (p.mode == vekiAECallerWindows && !areValidWindows(p)) return false;
  for (Vek16u v : {p.histSpreadThresh, p.darkThresh, p.brightThresh, p.target, p.tolerance}) {
    if (v > maxSample) return false;
  }
  return p.scaleMax > p.scaleMin && p.stepMax > p.stepMin && p.scaleMultiplier != 0 &&
         p.stepSize != 0;
}

/// How many windows the state itself lays over a frame.
int zoneCount(Vek32s mode) {
  switch (mode) {
    case vekiAEWholeFrame:
    case vekiAECentre:
      return 1;
    case vekiAEFiveZones:
      return maxZones;
    default:
      return 0;
  }
}

VekiAEState makeState(const VekiAEParams& p) {
  const bool callers = p.mode == vekiAECallerWindows;
  return {.mode = p.mode,
          .histogram = nullptr,
          .windows = callers ? const_cast<VekiRect*>(p.pWindows) : nullptr,
          .weights = callers ? const_cast<Vek16u*>(p.pWeights) : nullptr,
          .numWindows = p.numWindows,
          .scaleMultiplier = p.scaleMultiplier,
          .stepSize = p.stepSize,
          .thresholds = {.count = p.histCountThresh,
                         .spread = p.histSpreadThresh,
                         .dark = p.darkThresh,
                         .bright = p.brightThresh,
                         .target = p.target,
                         .tolerance = p.tolerance},
          // @quirk Both limits are kept modulo 65536, as callers know them: with target 10 and
          // tolerance 20 the lower one is 65526, and every frame is too dark.
          .band = {.lower = static_cast<Vek16u>(p.target - p.tolerance),
                   .upper = static_cast<Vek16u>(p.target + p.tolerance)},
          .scaleMin = p.scaleMin,
          .scaleMax = p.scaleMax,
          .stepMin = p.stepMin,
          .stepMax = p.stepMax};
}

/// Gives the state its histogram or its own windows and weights. False if the allocator returned
/// null.
bool takeMemory(VekiAEState& state) {
  if (state.mode == vekiAEHistogram) {
    state.histogram = allocate<Vek32u>(histogramBins);
    return state.histogram != nullptr;
  }
  const int zones = zoneCount(state.mode);
  if (zones == 0) return true;
  state.windows = allocate<VekiRect>(zones);
  state.weights = allocate<Vek16u>(zones);
  return !anyNull({state.windows, state.weights});
}

/// An application's vekiFree need not expect null for the lists that a mode does not have.
void freeTaken(void* memory) {
  if (memory != nullptr) vekiFree(memory);
}

void release(VekiAEState* state) {
  freeTaken(state->histogram);
  if (state->mode != vekiAECallerWindows) {
    freeTaken(state->weights);
    freeTaken(state->windows);
  }
  vekiFree(state);
}

// ---- Control law ------------------------------------------------------------------------------

/// The caller's two values.
struct Controls {
  Vek16u& step;
  Vek16u& scale;
};

/// @quirk The product is kept modulo 65536 and is not clamped to scaleMax; nor does the division in
/// moveDarker() stop at scaleMin. Clamping between two frames is the caller's part.
void moveBrighter(const VekiAEState& state, Controls control) {
  if (control.scale < state.scaleMax) {
    control.scale = static_cast<Vek16u>(Vek32u{control.scale} * state.scaleMultiplier);
  } else {
    const Vek32s next = control.step + state.stepSize;
    control.step = static_cast<Vek16u>(next > state.stepMax ? state.stepMax : next);
  }
}

void moveDarker(const VekiAEState& state, Controls control) {
  if (control.scale > state.scaleMin) {
    control.scale = static_cast<Vek16u>(_vekDiv_16u(control.scale, state.scaleMultiplier, nullptr));
  } else {
    const Vek32s next = control.step - state.stepSize;
    control.step = static_cast<Vek16u>(next < state.stepMin ? state.stepMin : next);
  }
}

/// Sets the scaled value to scale * numerator / denominator, taken modulo 65536 and then clamped. The
/// product stays below 1023 * 65536.
void multiplyScale(const VekiAEState& state, Vek16u numerator, Vek16u denominator,
                   Controls control) {
  const Vek32u product = Vek32u{numerator} * control.scale;
  const Vek16u quotient = static_cast<Vek16u>(_vekDiv_32u(product, denominator, nullptr));
  control.scale = static_cast<Vek16u>(clamp(quotient, state.scaleMin, state.scaleMax));
}

/// For frames that are neither too dark nor too bright. A frame without any sample below saturation
/// has mean 0, too, but wants the least light, a black one the most.
///
/// @quirk Within the tolerance the quotient is upside down: at target 512 and mean 500 a scaled value
/// of 1000 becomes 976, away from the target. Applications are tuned to it.
void multiplyByTarget(const VekiAEState& state, const GreenHistogram& greens, Vek16u mean,
                      Controls control) {
  const HistogramThresholds& t = state.thresholds;
  const Vek32s error = mean - t.target;
  const bool isOnTarget = -t.tolerance < error && error < t.tolerance;
  if (isOnTarget) {
    if (t.target != 0) multiplyScale(state, mean, t.target, control);
  } else if (mean != 0) {
    multiplyScale(state, t.target, mean, control);
  } else {
    control.scale = static_cast<Vek16u>(greens.samples == 0 ? state.scaleMin : state.scaleMax);
  }
}

void controlByHistogram(const VekiAEState& state, const GreenHistogram& greens, Controls control) {
  const HistogramThresholds& t = state.thresholds;
  const Vek16u mean = static_cast<Vek16u>(_vekDiv_32u(greens.sum, greens.samples, nullptr));
  if (greens.highest < t.dark && greens.highest - greens.lowest < t.spread) {
    moveBrighter(state, control);
  } else if (greens.lowest > t.bright) {
    moveDarker(state, control);
  } else {
    multiplyByTarget(state, greens, mean, control);
  }
}

void controlByWindows(const VekiAEState& state, Vek32s brightness, Controls control) {
  if (brightness < state.band.lower) {
    moveBrighter(state, control);
  } else if (brightness > state.band.upper) {
    moveDarker(state, control);
  }
}

bool isAtLimit(const VekiAEState& state, Controls control) {
  return control.step == state.stepMax || control.step == state.stepMin ||
         control.scale == state.scaleMax || control.scale == state.scaleMin;
}

// ---- Metering ---------------------------------------------------------------------------------

Vek32s roundDownToEven(Vek32s v) {
  return v & ~1;
}

/// Lays the state's own windows over the region.
void layZones(VekiAEState& state, VekiSize roi) {
  const Vek32s w = roi.width;
  const Vek32s h = roi.height;
  if (state.mode == vekiAEWholeFrame) {
    state.windows[0] = {0, 0, w, h};
    state.weights[0] = 65535;
  } else if (state.mode == vekiAECentre) {
    const auto part = [](Vek32s size, Vek64s sixtyFourths) {
      return roundDownToEven(static_cast<Vek32s>((size * sixtyFourths) >> 6));
    };
    state.windows[0] = {part(w, 27), part(h, 27), part(w, 10), part(h, 10)};
    state.weights[0] = 65535;
  } else {
    const Vek32s w2 = roundDownToEven(w >> 1), w4 = roundDownToEven(w >> 2);
    const Vek32s h2 = roundDownToEven(h >> 1), h4 = roundDownToEven(h >> 2);
    const Vek32s w34 = roundDownToEven((w >> 1) + (w >> 2));
    const Vek32s h34 = roundDownToEven((h >> 1) + (h >> 2));
    // @quirk The third zone is not the mirror image of the second: it has half the width and a
    // quarter of the height, and leaves the region on the right. The weights are tuned to it.
    const VekiRect zones[maxZones] = {
        {0, 0, w, h4}, {0, h4, w4, h2}, {w34, h4, w2, h4}, {0, h34, w, h4}, {w4, h4, w2, h2}};
    const Vek16u weights[maxZones] = {17476, 8738, 8738, 17476, 13107};
    memcpy(state.windows, zones, sizeof zones);
    memcpy(state.weights, weights, sizeof weights);
  }
  state.numWindows = zoneCount(state.mode);
}

/// The weighted brightness of the windows.
///
/// @quirk A window's mean is that of the sum of a quad's two greens, so the brightness of 10-bit
/// samples goes up to 2046 with weights that sum to 65535, while a target ends at 1023.
Vek32s meterWindows(const ExposureKernels& kernels, const Vek16u* pSrc, int srcStep,
                    const VekiAEState& state) {
  Vek32u sum = 0;
  for (int i = 0; i < state.numWindows; ++i) {
    const VekiRect& w = state.windows[i];
    const Vek32u greens =
        kernels.sumGreens(windowStart(pSrc, srcStep, w), srcStep, w.width, w.height);
    const Vek32u quads = (static_cast<Vek32u>(w.width) * static_cast<Vek32u>(w.height)) >> 2;
    sum += _vekDiv_32u(greens, quads, nullptr) * state.weights[i];
  }
  return static_cast<Vek32s>((sum + 32768) >> 16);
}

bool areValid(const Vek16u* pSrc, int srcStep, VekiSize roi, const Vek16u* pStepCtrl,
              const Vek16u* pScaleCtrl, const VekiAEState* state) {
  if (anyNull({pStepCtrl, pScaleCtrl, state}) || !isValidFrame(pSrc, srcStep, roi, 4)) return false;
  if (isOutside(*pStepCtrl, state->stepMin, state->stepMax)) return false;
  if (isOutside(*pScaleCtrl, state->scaleMin, state->scaleMax)) return false;
  if (state->mode != vekiAECallerWindows) return true;
  for (int i = 0; i < state->numWindows; ++i) {
    if (leaves(state->windows[i], roi)) return false;
  }
  return true;
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiInitAlloc_AE_10RGGB_8u_C1R(const VekiAEParams* pParams, VekiAEState** ppState) {
  if (vek::anyNull({pParams, ppState}) || !vek::areValid(*pParams)) return vekStsBadArgErr;
  VekiAEState* const state = vek::allocate<VekiAEState>();
  if (state == nullptr) return vekStsMemAllocErr;
  *state = vek::makeState(*pParams);
  if (!vek::takeMemory(*state)) {
    vek::release(state);
    return vekStsMemAllocErr;
  }
  *ppState = state;
  return vekStsNoErr;
}

VekStatus vekiFree_AE_10RGGB_8u_C1R(VekiAEState* pState) {
  if (pState != nullptr) vek::release(pState);
  return vekStsNoErr;
}

VekStatus vekiAE_10RGGB_8u_C1R(const Vek16u* pSrc, int srcStep, VekiSize roiSize, Vek16u* pStepCtrl,
                               Vek16u* pScaleCtrl, VekiAEState* pState) {
  if (!vek::areValid(pSrc, srcStep, roiSize, pStepCtrl, pScaleCtrl, pState)) return vekStsBadArgErr;
  const vek::ExposureKernels& kernels = vek::select(vek::exposureKernels);
  const vek::Controls control = {*pStepCtrl, *pScaleCtrl};
  VekiAEState& state = *pState;
  if (state.mode == vekiAEHistogram) {
    memset(state.histogram, 0, vek::histogramBins * sizeof *state.histogram);
    const vek::GreenHistogram greens = kernels.measureGreens(
        pSrc, srcStep, roiSize.width, roiSize.height, state.thresholds.count, state.histogram);
    vek::controlByHistogram(state, greens, control);
  } else {
    if (state.mode != vekiAECallerWindows) vek::layZones(state, roiSize);
    vek::controlByWindows(state, vek::meterWindows(kernels, pSrc, srcStep, state), control);
  }
  return vek::isAtLimit(state, control) ? vekStsAeAtLimit : vekStsNoErr;
}

}  // extern "C"
