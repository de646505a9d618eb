// Automatic exposure on 10-bit RGGB frames.
#include "vek/camera.h"

#include <string.h>

#include "camera/aaa/exposure_kernels.h"
#include "camera/aaa/raw_frame.h"
#include "core/check.h"

namespace vek {
namespace {

constexpr Vek16u maxSample = saturatedSample;
constexpr int maxZones = 5;

struct HistogramThresholds {
  Vek16u count, spread, dark, bright, target, tolerance;
};

struct BrightnessBand {
  Vek16u upper, lower;
};

}  // namespace
}  // namespace vek

struct VekiAEState {
  Vek32s mode;
  Vek32u* histogram;  ///< mode 0; null in the others
  VekiRect* windows;  ///< the caller's in mode 4, which are never written; null in mode 0
  Vek16u* weights;    ///< likewise
  Vek32s numWindows;
  Vek16u scaleMultiplier;
  Vek16u stepSize;
  union {
    vek::HistogramThresholds thresholds;  ///< mode 0
    vek::BrightnessBand band;             ///< modes 1 to 4
  };
  Vek32s scaleMin;
  Vek32s scaleMax;
  Vek32s stepMax;
  Vek32s stepMin;
};

namespace vek {
namespace {

// ---- State ------------------------------------------------------------------------------------

bool areValidWindows(const VekiAEParams& p) {
  if (anyNull({p.pWindows, p.pWeights}) || p.numWindows < 1) return false;
  for (int i = 0; i < p.numWindows; ++i) {
    const VekiRect& w = p.pWindows[i];
    if (w.x < 0 || w.y < 0 || anyBelowOne({w.width, w.height}) ||
        isOdd(w.x | w.y | w.width | w.height) || p.pWeights[i] == 0) {
      return false;
    }
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

/// The number of windows that the library lays itself.
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

template <class T>
T* allocate(int count) {
  return static_cast<T*>(vekiMalloc(count * static_cast<int>(sizeof(T))));
}

/// Gives the state its histogram or its own windows and weights. False: the allocator returned
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

/// An application's vekiFree need not expect the lists that a mode does not have.
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

VekiAEState makeState(const VekiAEParams& p) {
  VekiAEState state = {};
  state.mode = p.mode;
  state.numWindows = p.numWindows;
  if (p.mode == vekiAECallerWindows) {
    state.windows = const_cast<VekiRect*>(p.pWindows);
    state.weights = const_cast<Vek16u*>(p.pWeights);
  }
  state.scaleMultiplier = p.scaleMultiplier;
  state.stepSize = p.stepSize;
  if (p.mode == vekiAEHistogram) {
    state.thresholds = {p.histCountThresh, p.histSpreadThresh, p.darkThresh,
                        p.brightThresh,    p.target,           p.tolerance};
  } else {
    state.band = {static_cast<Vek16u>(p.target + p.tolerance),
                  static_cast<Vek16u>(p.target - p.tolerance)};
  }
  state.scaleMin = p.scaleMin;
  state.scaleMax = p.scaleMax;
  state.stepMax = p.stepMax;
  state.stepMin = p.stepMin;
  return state;
}

// ---- Control laws -----------------------------------------------------------------------------

void moveBrighter(const VekiAEState& state, Vek16u& stepCtrl, Vek16u& scaleCtrl) {
  if (scaleCtrl < state.scaleMax) {
    scaleCtrl = static_cast<Vek16u>(Vek32u{scaleCtrl} * state.scaleMultiplier);
  } else {
    const Vek32s next = stepCtrl + state.stepSize;
    stepCtrl = static_cast<Vek16u>(next <= state.stepMax ? next : state.stepMax);
  }
}

void moveDarker(const VekiAEState& state, Vek16u& stepCtrl, Vek16u& scaleCtrl) {
  if (scaleCtrl > state.scaleMin) {
    scaleCtrl = static_cast<Vek16u>(_vekDiv_16u(scaleCtrl, state.scaleMultiplier, nullptr));
  } else {
    const Vek32s next = stepCtrl - state.stepSize;
    stepCtrl = static_cast<Vek16u>(next < state.stepMin ? state.stepMin : next);
  }
}

/// `scaleCtrl` times numerator / denominator, within its limits. The product stays below
/// 1023 * 65536.
void scaleBy(const VekiAEState& state, Vek16u numerator, Vek16u denominator, Vek16u& scaleCtrl) {
  const Vek32u product = Vek32u{numerator} * scaleCtrl;
  const Vek32s quotient = static_cast<Vek16u>(_vekDiv_32u(product, denominator, nullptr));
  scaleCtrl = static_cast<Vek16u>(quotient > state.scaleMax   ? state.scaleMax
                                  : quotient < state.scaleMin ? state.scaleMin
                                                              : quotient);
}

void _vekiAEControl_Hist(const VekiAEState& state, const GreenHistogram& greens, Vek16u& stepCtrl,
                         Vek16u& scaleCtrl) {
  const HistogramThresholds& t = state.thresholds;
  const Vek16u mean = static_cast<Vek16u>(_vekDiv_32u(greens.sum, greens.samples, nullptr));

  if (greens.highest < t.dark && greens.highest - greens.lowest < t.spread) {
    moveBrighter(state, stepCtrl, scaleCtrl);
  } else if (greens.lowest > t.bright) {
    moveDarker(state, stepCtrl, scaleCtrl);
  } else if (const Vek32s d = mean - t.target; d >= t.tolerance || d <= -t.tolerance) {
    if (mean != 0) {
      scaleBy(state, t.target, mean, scaleCtrl);
    } else {
      scaleCtrl = static_cast<Vek16u>(greens.samples == 0 ? state.scaleMin : state.scaleMax);
    }
  } else if (t.target != 0) {
    scaleBy(state, mean, t.target, scaleCtrl);
  }
}

void _vekiAEControl_Wnd(const VekiAEState& state, Vek32s brightness, Vek16u& stepCtrl,
                        Vek16u& scaleCtrl) {
  if (brightness < state.band.lower) {
    moveBrighter(state, stepCtrl, scaleCtrl);
  } else if (brightness > state.band.upper) {
    moveDarker(state, stepCtrl, scaleCtrl);
  }
}

// ---- Metering ---------------------------------------------------------------------------------

Vek32s evenPart(Vek32s v) {
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
      return evenPart(static_cast<Vek32s>((size * sixtyFourths) >> 6));
    };
    state.windows[0] = {part(w, 27), part(h, 27), part(w, 10), part(h, 10)};
    state.weights[0] = 65535;
  } else {
    const Vek32s w2 = evenPart(w >> 1), w4 = evenPart(w >> 2), w34 = evenPart((w >> 1) + (w >> 2));
    const Vek32s h2 = evenPart(h >> 1), h4 = evenPart(h >> 2), h34 = evenPart((h >> 1) + (h >> 2));
    // The third zone is not the mirror image of the second: it leaves the region on the right.
    const VekiRect zones[maxZones] = {
        {0, 0, w, h4}, {0, h4, w4, h2}, {w34, h4, w2, h4}, {0, h34, w, h4}, {w4, h4, w2, h2}};
    const Vek16u weights[maxZones] = {17476, 8738, 8738, 17476, 13107};
    memcpy(state.windows, zones, sizeof zones);
    memcpy(state.weights, weights, sizeof weights);
  }
  state.numWindows = zoneCount(state.mode);
}

/// The weighted brightness of the windows, 0..2046 for 10-bit samples and weights that sum to
/// 65535.
Vek32s _vekiAEMeter_10RGGB(const Vek16u* pSrc, int srcStep, const VekiRect* pWindows,
                           const Vek16u* pWeights, int count) {
  const ExposureKernels& rows = select(exposureKernels);
  Vek32u sum = 0;
  for (int i = 0; i < count; ++i) {
    const VekiRect& w = pWindows[i];
    const Vek32u greens = rows.wnd(windowStart(pSrc, srcStep, w), srcStep, w.width, w.height);
    const Vek32u quads = (static_cast<Vek32u>(w.width) * static_cast<Vek32u>(w.height)) >> 2;
    sum += _vekDiv_32u(greens, quads, nullptr) * pWeights[i];
  }
  return static_cast<Vek32s>((sum + 32768) >> 16);
}

bool areValid(const Vek16u* pSrc, int srcStep, VekiSize roi, const Vek16u* pStepCtrl,
              const Vek16u* pScaleCtrl, const VekiAEState* state) {
  if (anyNull({pStepCtrl, pScaleCtrl, state}) || !isValidFrame(pSrc, srcStep, roi, 4)) return false;
  if (isOutside(*pStepCtrl, state->stepMin, state->stepMax) ||
      isOutside(*pScaleCtrl, state->scaleMin, state->scaleMax)) {
    return false;
  }
  if (state->mode == vekiAECallerWindows) {
    for (int i = 0; i < state->numWindows; ++i) {
      if (leaves(state->windows[i], roi)) return false;
    }
  }
  return true;
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiInitAlloc_AE_10RGGB_8u_C1R(const VekiAEParams* pParams, VekiAEState** ppState) {
  if (vek::anyNull({pParams, ppState}) || !vek::areValid(*pParams)) return vekStsBadArgErr;
  VekiAEState* const state = vek::allocate<VekiAEState>(1);
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
  VekiAEState& state = *pState;
  if (state.mode == vekiAEHistogram) {
    memset(state.histogram, 0, vek::histogramBins * sizeof *state.histogram);
    const vek::GreenHistogram greens = vek::select(vek::exposureKernels)
                                           .hist(pSrc, srcStep, roiSize.width, roiSize.height,
                                                 state.thresholds.count, state.histogram);
    vek::_vekiAEControl_Hist(state, greens, *pStepCtrl, *pScaleCtrl);
  } else {
    if (state.mode != vekiAECallerWindows) vek::layZones(state, roiSize);
    const Vek32s brightness =
        vek::_vekiAEMeter_10RGGB(pSrc, srcStep, state.windows, state.weights, state.numWindows);
    vek::_vekiAEControl_Wnd(state, brightness, *pStepCtrl, *pScaleCtrl);
  }
  const bool atLimit = *pStepCtrl == state.stepMax || *pStepCtrl == state.stepMin ||
                       *pScaleCtrl == state.scaleMax || *pScaleCtrl == state.scaleMin;
  return atLimit ? vekStsAeAtLimit : vekStsNoErr;
}

}  // extern "C"
