// Automatic white balance of one camera.
#pragma once

#include <memory>
#include <vector>

#include "vekcam/library_call.h"
#include "vekcam/raw_frame.h"
#include "vekcam/sensor.h"

namespace vekcam {

/// Smallest frame that holds a measurement window.
constexpr VekiSize smallestBalancedSize = {4, 8};

/// Balances in two steps: by the mean of the whole frame while that is far from grey (at the start,
/// or after a change of light), then by the nearly white points that are found so.
class WhiteBalance {
 public:
  /// `maxGainStep` is the most that one frame changes a gain by, in 1/256.
  WhiteBalance(VekiSize size, int maxGainStep);

  /// Measures a frame that was taken with the controls' gains and moves the gains for the next one.
  VekStatus update(const RawFrame& frame, Controls& controls);

 private:
  using State = std::unique_ptr<VekiAWBState, Releaser<vekiFree_AWB_10RGGB_8u_C1R>>;
  State makeState(int method, int holdTolerance, int maxGainStep) const;

  std::vector<VekiRect> windows_;  ///< kept alive for the states
  std::vector<Vek8u> weights_;
  State everything_, whitePoints_;
};

}  // namespace vekcam
