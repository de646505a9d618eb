/** @file control.hpp
 *  Automatic exposure and automatic white balance of the camera path. isp.hpp includes it. */
#ifndef VEK_ISP_CONTROL_HPP
#define VEK_ISP_CONTROL_HPP

#include "vek/cpp/aaa.hpp"
#include "vek/isp/color.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace vek {
inline namespace v0 {

/** @addtogroup isp
 *  @{ */

/// Recommended values, with the reasons for them.
namespace recommended {

/// The mean of the green samples that the exposure aims at, of 1023. A usual scene reflects about
/// 18 % of the light on average, so that a white sheet just stays below saturation.
inline constexpr double exposureTarget = 184;
/// The exposure stays while the mean is this much (of the target) off or less. An eighth of a stop
/// is not seen, and a sensor whose shortest times are a dozen rows can get there.
inline constexpr double exposureTolerance = .09;
/// What the exposure is divided by while more than half of the samples are saturated, as their mean
/// says little then. The light of a lamp and that of the sun are about a factor of 1000 apart, which
/// this covers in three frames.
inline constexpr double saturatedFactor = 16;
/// The most that an exposure is multiplied by at once: read noise makes the mean of a black frame
/// meaningless.
inline constexpr double mostBrighter = 64;

/// Rows of a band. With 24 rows of 4K the band, its planes and the pixels stay within half a megabyte.
inline constexpr int bandRows = 24;

}  // namespace recommended

/// What a frame was taken with: the product of time and gain decides how bright it is.
struct Exposure {
  double time = 1;  ///< exposure time, in any unit
  double gain = 1;  ///< analogue gain; 1 is none
};

/// The automatic exposure. The time is used first; gain comes where the time ends, as it adds noise.
struct ExposureSettings {
  bool on = true;                                     ///< off: results().exposure stays
  Exposure least = {1, 1};                            ///< shortest time, smallest gain
  Exposure most = {1000, 8};                          ///< longest time, largest gain
  double target = recommended::exposureTarget;        ///< mean green sample, above 0, below 1023
  double tolerance = recommended::exposureTolerance;  ///< of the target, 0..1
};

/// What the last frame told.
struct IspResults {
  /// For the next frame: program the sensor with them. See also Isp::setExposure().
  Exposure exposure;
  /// The gains that the next frame is balanced with; green is 1.
  ColorGains gains;
  double brightness = 0;         ///< mean green sample of the frame, 0..1023
  double saturated = 0;          ///< part of the green samples that is saturated, 0..1
  bool exposureHeld = false;     ///< the brightness was within the tolerance: nothing was moved
  bool exposureAtLimit = false;  ///< the target needs more or less light than the limits allow
  bool balanceHeld = false;      ///< the gains were right: nothing was moved
  bool balanceAtLimit = false;   ///< a gain is at its limit
  bool balanceHasData = false;   ///< something in the frame could be used; if not, the gains stay
};

/// @cond
namespace detail {

/// Measures frames, and decides about exposure and white balance of the next one. Every n-th pair of rows
/// of a frame is kept for that.
class FrameControl {
 public:
  static constexpr int unit = 1024;  ///< a gain of 1

  explicit FrameControl(Size region)
      // From 100 pairs of rows on nothing is gained.
      : every_(std::max(region.height / 2 / 96, 1)),
        kept_({region.width, (region.height / 2 + every_ - 1) / every_ * 2}),
        greens_(static_cast<std::size_t>(kept_.height())),
        everything_(recommended::balanceParams(kept_.size(), BalanceMethod::grayWorld, unit)),
        whites_(recommended::balanceParams(kept_.size(), BalanceMethod::whitePoints, unit)) {}

  const IspResults& results() const { return results_; }
  ColorGains gains() const {
    return {gains_.red / static_cast<double>(unit), 1, gains_.blue / static_cast<double>(unit)};
  }
  void setGains(const ColorGains& gains) {
    gains_ = {static_cast<Vek16u>(std::lround(gains.red / gains.green * unit)), unit,
              static_cast<Vek16u>(std::lround(gains.blue / gains.green * unit))};
    results_.gains = this->gains();
  }
  /// What the next frame was taken with.
  void setTaken(const Exposure& taken) { results_.exposure = taken; }
  void setExposure(const ExposureSettings& exposure) {
    if (!(exposure.least.time > 0 && exposure.least.time <= exposure.most.time)) {
      OnError().failure(vekStsBadArgErr, "Isp", "exposure", "times %g to %g are no range",
                        exposure.least.time, exposure.most.time);
    }
    if (!(exposure.least.gain > 0 && exposure.least.gain <= exposure.most.gain)) {
      OnError().failure(vekStsBadArgErr, "Isp", "exposure", "gains %g to %g are no range",
                        exposure.least.gain, exposure.most.gain);
    }
    if (!(exposure.target > 0 && exposure.target < 1023)) {
      OnError().failure(vekStsBadArgErr, "Isp", "exposure",
                        "target is %g, not above 0 and below 1023", exposure.target);
    }
    if (!(exposure.tolerance >= 0 && exposure.tolerance <= 1)) {
      OnError().failure(vekStsBadArgErr, "Isp", "exposure", "tolerance is %g, not in 0..1",
                        exposure.tolerance);
    }
    exposure_ = exposure;
  }

  /// Takes a pair of rows of the region, rows 2 * pair and below, if it is one of those that are kept.
  /// Different pairs may be taken at the same time.
  void take(int pair, const Vek16u* upper, const Vek16u* lower) {
    if (pair % every_ != 0) return;
    const int row = pair / every_ * 2;
    takeRow(row, upper, 1);
    takeRow(row + 1, lower, 0);
  }

  /// Decides, once all rows were taken.
  void decide(bool balances) {
    Greens all = {};
    for (const Greens& row : greens_) {
      all.sum += row.sum;
      all.saturated += row.saturated;
    }
    const double count = kept_.width() / 2. * kept_.height();
    results_.brightness = static_cast<double>(all.sum) / count;
    results_.saturated = static_cast<double>(all.saturated) / count;
    if (exposure_.on) expose();
    if (balances) balance();
  }

 private:
  struct Greens {
    std::uint64_t sum;
    std::uint64_t saturated;
  };

  void takeRow(int row, const Vek16u* samples, int firstGreen) {
    const int width = kept_.width();
    std::memcpy(kept_.row(row), samples, static_cast<std::size_t>(width) * sizeof(Vek16u));
    Vek32u sum = 0, saturated = 0;
    for (int x = firstGreen; x < width; x += 2) {
      sum += samples[x];
      saturated += (samples[x] + 1u) >> 10;
    }
    greens_[static_cast<std::size_t>(row)] = {sum, saturated};
  }

  /// Green follows light, so that one step brings the brightness to its target. Nothing moves within
  /// the tolerance, and as each step is taken from what the frame was taken with, nothing can swing.
  void expose() {
    const Exposure least = exposure_.least, most = exposure_.most;
    const double ratio = results_.saturated > .5
                             ? 1 / recommended::saturatedFactor
                             : std::min(exposure_.target / std::max(results_.brightness, .5),
                                        recommended::mostBrighter);
    results_.exposureHeld =
        std::abs(results_.brightness - exposure_.target) <= exposure_.tolerance * exposure_.target;
    results_.exposureAtLimit = false;
    if (results_.exposureHeld) return;
    const double light = results_.exposure.time * results_.exposure.gain * ratio;
    results_.exposureAtLimit = light > most.time * most.gain || light < least.time * least.gain;
    const double time = std::clamp(light / least.gain, least.time, most.time);
    results_.exposure = {time, std::clamp(light / time, least.gain, most.gain)};
  }

  /// By the mean of everything while that is far from grey, as at the start or in a new light, then by
  /// what is nearly white.
  void balance() {
    const BalanceGains before = gains_;
    const auto isAsBefore = [&] { return gains_.red == before.red && gains_.blue == before.blue; };
    VekStatus status = everything_.measure(kept_, gains_);
    if (isAsBefore() && status == vekStsNoErr) status = whites_.measure(kept_, gains_);
    results_.balanceHeld = isAsBefore() && status == vekStsNoErr;
    results_.balanceAtLimit = status == vekStsAwbGainAtLimit;
    results_.balanceHasData = status != vekStsAwbNoData;
    results_.gains = gains();
  }

  int every_;  ///< every so many pairs of rows are kept
  Image<Raw10> kept_;
  std::vector<Greens> greens_;  ///< of each row that is kept
  AutoWhiteBalance everything_, whites_;
  BalanceGains gains_ = {unit, unit, unit};
  ExposureSettings exposure_;
  IspResults results_;
};

}  // namespace detail
/// @endcond

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_ISP_CONTROL_HPP
