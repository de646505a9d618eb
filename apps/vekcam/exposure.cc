#include "vekcam/exposure.h"

#include <algorithm>

namespace vekcam {
namespace {

constexpr int scaleMultiplier = 2;
constexpr int gainStep = 8;

// The window law doubles or halves the exposure until the brightness is in the band, so the band's
// ends must be more than a factor of two apart, or it would be jumped over for ever.
constexpr int windowTarget = 500;
constexpr int windowTolerance = 180;
static_assert(windowTarget + windowTolerance > scaleMultiplier * (windowTarget - windowTolerance));

// The histogram law sets the exposure directly. Inside its band it follows the brightness instead
// of correcting it, so the brightness swings about the target by up to twice the tolerance; a swing
// must not make the frame count as dark.
constexpr int histogramTarget = 200;
constexpr int histogramTolerance = 12;
constexpr int histogramSwing = 3 * histogramTolerance;  ///< with the steps of the gain

int libraryMode(Metering metering) {
  switch (metering) {
    case Metering::isp:
      break;
    case Metering::histogram:
      return vekiAEHistogram;
    case Metering::frame:
      return vekiAEWholeFrame;
    case Metering::centre:
      return vekiAECentre;
    case Metering::windows:
      return vekiAECallerWindows;
  }
  return vekiAEWholeFrame;
}

/// The windows that a mode meters; their brightness is not reported by the library.
std::vector<VekiRect> meteredWindows(Metering metering, VekiSize size) {
  const int w = size.width;
  const int h = size.height;
  switch (metering) {
    case Metering::centre:
      return {{(w * 27 / 64) & ~1, (h * 27 / 64) & ~1, (w * 10 / 64) & ~1, (h * 10 / 64) & ~1}};
    case Metering::windows:  // an inner window and the whole, so that the middle counts more
      return {{0, 0, w, h}, {(w / 4) & ~1, (h / 4) & ~1, (w / 2) & ~1, (h / 2) & ~1}};
    default:
      return {{0, 0, w, h}};
  }
}

/// Mean over the window's quads of the sum of both greens.
double meanGreenSum(const RawFrame& frame, const VekiRect& window) {
  uint64_t sum = 0;
  for (int y = window.y; y < window.y + window.height; y += 2) {
    const Vek16u* const top = frame.row(y) + window.x;
    const Vek16u* const bottom = frame.row(y + 1) + window.x;
    uint32_t rowSum = 0;
    for (int x = 0; x < window.width; x += 2) rowSum += top[x + 1] + bottom[x];
    sum += rowSum;
  }
  return static_cast<double>(sum) / (window.width / 2.0 * (window.height / 2.0));
}

struct Unsaturated {
  double mean;   ///< of the green samples below 1023
  double share;  ///< of all green samples
};

Unsaturated unsaturatedGreen(const RawFrame& frame) {
  uint64_t sum = 0;
  uint64_t count = 0;
  for (int y = 0; y < frame.height(); ++y) {
    const Vek16u* const row = frame.row(y);
    for (int x = (y & 1) ^ 1; x < frame.width(); x += 2) {
      if (row[x] == 1023) continue;
      sum += row[x];
      ++count;
    }
  }
  return {count == 0 ? 1023 : static_cast<double>(sum) / static_cast<double>(count),
          static_cast<double>(count) / (frame.width() / 2.0 * frame.height())};
}

}  // namespace

const char* name(Metering metering) {
  switch (metering) {
    case Metering::isp:
      return "isp";
    case Metering::histogram:
      return "histogram";
    case Metering::frame:
      return "frame";
    case Metering::centre:
      return "centre";
    case Metering::windows:
      return "windows";
  }
  return "";
}

Exposure::Exposure(Metering metering, VekiSize size)
    : target_(metering == Metering::histogram ? histogramTarget : windowTarget),
      margin_(metering == Metering::histogram ? histogramSwing : windowTolerance),
      metering_(metering),
      windows_(meteredWindows(metering, size)),
      weights_(windows_.size(), static_cast<Vek16u>(65535 / windows_.size())) {
  VekiAEParams params = {};
  params.mode = libraryMode(metering);
  params.pWindows = windows_.data();
  params.pWeights = weights_.data();
  params.numWindows = static_cast<int>(windows_.size());
  // A bin counts from a ten-thousandth of the green samples on, so that dead pixels do not. A frame
  // is dark when even its whites stay in the lower half of the range, bright when its blacks leave
  // the lowest third.
  params.histCountThresh =
      static_cast<Vek16u>(std::clamp(size.width * size.height / 20000, 2, 65535));
  params.histSpreadThresh = 570;
  params.darkThresh = 570;
  params.brightThresh = 340;
  params.target = static_cast<Vek16u>(target_);
  params.tolerance = metering == Metering::histogram ? histogramTolerance : windowTolerance;
  params.scaleMultiplier = scaleMultiplier;
  params.stepSize = gainStep;
  params.scaleMin = controlRange.minExposure;
  params.scaleMax = controlRange.maxExposure;
  params.stepMin = controlRange.minGain;
  params.stepMax = controlRange.maxGain;
  VekiAEState* state = nullptr;
  succeeded(vekiInitAlloc_AE_10RGGB_8u_C1R(&params, &state), "vekiInitAlloc_AE_10RGGB_8u_C1R");
  state_.reset(state);
}

VekStatus Exposure::update(const RawFrame& frame, Controls& controls) {
  const VekStatus status =
      vekiAE_10RGGB_8u_C1R(frame.row(0), frame.step(), frame.size(), &controls.analogueGain,
                           &controls.exposure, state_.get());
  controls.exposure = static_cast<Vek16u>(
      std::clamp<int>(controls.exposure, controlRange.minExposure, controlRange.maxExposure));
  // The histogram does not count saturated samples, so a blown-out frame looks dark to it.
  if (metering_ == Metering::histogram && unsaturatedGreen(frame).share < .5) {
    controls.exposure = controlRange.minExposure;
    controls.analogueGain = controlRange.minGain;
  }
  return succeeded(status, "vekiAE_10RGGB_8u_C1R");
}

double Exposure::brightness(const RawFrame& frame) const {
  if (metering_ == Metering::histogram) {
    // Of a frame that is white but for dead pixels, these are all that is not saturated.
    const Unsaturated green = unsaturatedGreen(frame);
    return green.share < .5 ? 1023 : green.mean;
  }
  double sum = 0;
  for (const VekiRect& window : windows_) sum += meanGreenSum(frame, window);
  return sum / static_cast<double>(windows_.size());
}

}  // namespace vekcam
