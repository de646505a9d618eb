#include "vekcam/white_balance.h"

#include <algorithm>
#include <utility>

namespace vekcam {
namespace {

constexpr int windowWidthUnit = 4;
constexpr int windowHeightUnit = 8;
constexpr int largestWindowSide = 2048;  ///< 2048 x 2048 is half of what a window may hold

constexpr int grey = 1024;            ///< the ratio at which red and blue equal green
constexpr int coarseTolerance = 280;  ///< how far the mean of a scene may be from grey
constexpr int fineTolerance = 12;

/// A side of a grid of about `count` equal windows.
int windowSide(int length, int count, int unit) {
  return std::clamp(length / count / unit * unit, unit, largestWindowSide);
}

std::vector<VekiRect> grid(VekiSize size) {
  const int w = windowSide(size.width, 8, windowWidthUnit);
  const int h = windowSide(size.height, 6, windowHeightUnit);
  std::vector<VekiRect> windows;
  for (int y = 0; y + h <= size.height; y += h) {
    for (int x = 0; x + w <= size.width; x += w) windows.push_back({x, y, w, h});
  }
  return windows;
}

}  // namespace

WhiteBalance::WhiteBalance(VekiSize size, int maxGainStep)
    : windows_(grid(size)),
      weights_(windows_.size(), 1),
      everything_(makeState(vekiAWBGrayWorld, coarseTolerance, maxGainStep)),
      whitePoints_(makeState(vekiAWBWhitePoints, fineTolerance, maxGainStep)) {}

WhiteBalance::State WhiteBalance::makeState(int method, int holdTolerance, int maxGainStep) const {
  VekiAWBParams params = {};
  params.method = method;
  params.numWindows = static_cast<int>(windows_.size());
  params.pWindows = windows_.data();
  params.pWeights = weights_.data();
  params.refRatioR = params.refRatioB = grey;
  params.holdTolR = params.holdTolB = static_cast<Vek16u>(holdTolerance);
  // What the sensor sees without gains lies between a tenth and twice the green in any light.
  params.validTolR = params.validTolB = 930;
  params.wpdLimit1 = params.wpdLimit2 = 100;
  params.wpdLimit3 = 120;
  params.wpdLow = 100;
  params.wpdHigh = 800;
  params.minWhiteCount = windows_.front().width * windows_.front().height / 4;
  params.maxGainStep = static_cast<Vek16u>(maxGainStep);
  params.gainMin = 64;
  params.gainMax = 2047;
  params.defaultGainR = 400;
  params.defaultGainG = 256;
  params.defaultGainB = 400;
  VekiAWBState* state = nullptr;
  succeeded(vekiInitAlloc_AWB_10RGGB_8u_C1R(&params, &state), "vekiInitAlloc_AWB_10RGGB_8u_C1R");
  return State(state);
}

VekStatus WhiteBalance::update(const RawFrame& frame, Controls& controls) {
  const auto update = [&](const State& state) {
    return succeeded(vekiAWB_10RGGB_8u_C1R(frame.row(0), frame.step(), frame.size(), &controls.red,
                                           &controls.green, &controls.blue, state.get()),
                     "vekiAWB_10RGGB_8u_C1R");
  };
  const std::pair before = {controls.red, controls.blue};
  const VekStatus status = update(everything_);
  return std::pair(controls.red, controls.blue) == before ? update(whitePoints_) : status;
}

}  // namespace vekcam
