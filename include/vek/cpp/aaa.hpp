/** @file aaa.hpp
 *  Automatic exposure and white balance in C++. vek.hpp includes it. */
#ifndef VEK_CPP_AAA_HPP
#define VEK_CPP_AAA_HPP

#include "vek/cpp/call.hpp"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace vek {
inline namespace v0 {

/** @defgroup cppstates C++: states
 *  The exposure, the white balance and the raw pipeline as objects. They own all that the states of the C
 *  interface only point at, can be moved, and release everything. An object that is empty, because it was
 *  made so, moved from or refused, refuses its calls.
 *  @{ */

/// @cond
namespace detail {

/// Whether a frame's address and step are multiples of `unit` bytes.
inline bool isAligned(const View<const Raw10>& frame, int unit) {
  return reinterpret_cast<std::uintptr_t>(frame.data()) % static_cast<unsigned>(unit) == 0 &&
         frame.stepBytes() % unit == 0;
}

/// Reasons of refused frames that the exposure and the white balance share.
inline VekStatus refuseFrame(Call call, const View<const Raw10>& frame, int unit,
                             const char* controls) {
  if (!isAligned(frame, unit)) {
    return OnError::refuse(call.onError, vekStsBadArgErr, call.function, "frame",
                           "begins at %p with a step of %d bytes, which must be multiples of %d",
                           static_cast<const void*>(frame.data()), frame.stepBytes(), unit);
  }
  return OnError::refuse(call.onError, vekStsBadArgErr, call.function, controls,
                         "lie outside their limits, or a window outside the frame of %d x %d",
                         frame.width(), frame.height());
}

}  // namespace detail
/// @endcond

/// Metering modes.
enum class Metering : int {
  histogram = vekiAEHistogram,    ///< a histogram of all green samples
  wholeFrame = vekiAEWholeFrame,  ///< the average of the whole frame
  fiveZones = vekiAEFiveZones,    ///< five overlapping zones with fixed weights
  centre = vekiAECentre,          ///< a window in the middle
  windows = vekiAECallerWindows   ///< weighted windows of the caller's
};

/// What an exposure is made from; VekiAEParams says what the numbers do.
struct ExposureParams {
  Metering metering = Metering::wholeFrame;  ///< what is measured
  std::vector<Rect>
      windows;  ///< Metering::windows alone: even numbers, from the frame's first sample
  std::vector<Vek16u> weights;  ///< one for each window, not 0, in 1/65536
  Vek16u histCountThresh = 1;   ///< Metering::histogram: a bin is populated from this count on
  Vek16u histSpreadThresh = 0;  ///< Metering::histogram: a dark frame spans less than this
  Vek16u darkThresh = 0;        ///< Metering::histogram: a dark frame stays below this
  Vek16u brightThresh = 1023;   ///< Metering::histogram: a bright frame stays above this
  Vek16u target = 512;          ///< target brightness
  Vek16u tolerance = 32;        ///< half the width of the accepted band
  Vek16u scaleMultiplier = 2;   ///< factor of one move of the scale-controlled value
  Vek16u stepSize = 1;          ///< size of one move of the step-controlled value
  Vek32s scaleMin = 1;          ///< lower limit of the scale-controlled value
  Vek32s scaleMax = 65535;      ///< upper limit of it
  Vek32s stepMin = 0;           ///< lower limit of the step-controlled value
  Vek32s stepMax = 65535;       ///< upper limit of it
};

/// The two values that the exposure moves.
struct ExposureControls {
  Vek16u step;   ///< moved by addition
  Vek16u scale;  ///< moved by multiplication
};

/// Automatic exposure. Calls that share one must not run at the same time.
class AutoExposure {
 public:
  /// An empty one.
  AutoExposure() noexcept = default;
  /// Keeps copies of the windows and weights (vekiInitAlloc_AE_10RGGB_8u_C1R).
  explicit AutoExposure(const ExposureParams& params, OnError onError = {}) {
    const detail::Call call{"AutoExposure", onError};
    AutoExposure made;
    made.metering_ = params.metering;
    if (params.metering == Metering::windows) {
      if (params.windows.size() != params.weights.size()) {
        OnError::refuse(onError, vekStsBadArgErr, "AutoExposure", "weights",
                        "are %zu for %zu windows", params.weights.size(), params.windows.size());
        return;
      }
      made.windows_ = params.windows;
      made.weights_ = params.weights;
    }
    const VekiAEParams record = {static_cast<Vek32s>(params.metering),
                                 made.windows_.data(),
                                 made.weights_.data(),
                                 static_cast<Vek32s>(made.windows_.size()),
                                 params.histCountThresh,
                                 params.histSpreadThresh,
                                 params.darkThresh,
                                 params.brightThresh,
                                 params.target,
                                 params.tolerance,
                                 params.scaleMultiplier,
                                 params.stepSize,
                                 params.scaleMin,
                                 params.scaleMax,
                                 params.stepMin,
                                 params.stepMax};
    VekiAEState* state = nullptr;
    const VekStatus status = vekiInitAlloc_AE_10RGGB_8u_C1R(&record, &state);
    made.state_.reset(state);
    if (call.done(status, [&](VekStatus refused) { return refuse(call, refused, record); }) ==
        vekStsNoErr)
      *this = std::move(made);
  }

  /// Whether there is none.
  bool empty() const noexcept { return state_ == nullptr; }

  /// Meters a frame and moves the controls (vekiAE_10RGGB_8u_C1R). The frame begins at a multiple of 4
  /// bytes, and so do its rows. It is refused if the metering would read beyond it, which counts groups
  /// of 4 x 2 samples (Metering::histogram) or runs past the right edge (Metering::fiveZones).
  VEK_INLINE VekStatus meter(View<const Raw10> frame, ExposureControls& controls,
                             OnError onError = {}) {
    const detail::Call call{"AutoExposure::meter", onError};
    if (empty()) return detail::refuseEmpty(call);
    if (readsBeyond(frame)) {
      return OnError::refuse(onError, vekStsBadArgErr, "AutoExposure::meter", "frame",
                             "of %d x %d samples ends before what this metering reads",
                             frame.width(), frame.height());
    }
    return call.done(vekiAE_10RGGB_8u_C1R(frame.data(), frame.stepBytes(), frame.size(),
                                          &controls.step, &controls.scale, state_.get()),
                     [&](VekStatus) { return detail::refuseFrame(call, frame, 4, "controls"); });
  }

 private:
  /// Whether samples are read behind the last one of the frame.
  bool readsBeyond(const View<const Raw10>& frame) const {
    if (metering_ == Metering::histogram) return frame.width() % 4 != 0 || frame.height() % 2 != 0;
    if (metering_ != Metering::fiveZones || frame.empty()) return false;
    // The right zone: columns W34..W34 + W2 - 1, rows H4..2 H4 - 1.
    const auto even = [](int n) { return n & ~1; };
    const int half = even(frame.width() / 2), quarter = even(frame.width() / 4);
    const int height = even(frame.height() / 4);
    const std::int64_t columns = even(half + quarter) + half;
    if (height < 1) return false;
    return (2 * std::int64_t{height} - 1) * frame.stepBytes() + 2 * columns >
           (std::int64_t{frame.height()} - 1) * frame.stepBytes() + frame.rowBytes();
  }

  static VekStatus refuse(detail::Call call, VekStatus status, const VekiAEParams& p) {
    const auto because = [&](const char* argument, const char* why) {
      return OnError::refuse(call.onError, status, call.function, argument, "%s", why);
    };
    if (status == vekStsMemAllocErr) return because("params", "need more memory than there is");
    if (p.mode == vekiAECallerWindows && p.numWindows < 1) return because("windows", "are none");
    if (p.histSpreadThresh > 1023) return because("histSpreadThresh", "is above 1023");
    if (p.darkThresh > 1023) return because("darkThresh", "is above 1023");
    if (p.brightThresh > 1023) return because("brightThresh", "is above 1023");
    if (p.target > 1023) return because("target", "is above 1023");
    if (p.tolerance > 1023) return because("tolerance", "is above 1023");
    if (p.scaleMax <= p.scaleMin) return because("scaleMax", "is not above scaleMin");
    if (p.stepMax <= p.stepMin) return because("stepMax", "is not above stepMin");
    if (p.scaleMultiplier == 0) return because("scaleMultiplier", "is 0");
    if (p.stepSize == 0) return because("stepSize", "is 0");
    return because("windows", "have odd or negative numbers, or a weight of 0");
  }

  Metering metering_ = Metering::wholeFrame;
  std::vector<Rect> windows_;
  std::vector<Vek16u> weights_;
  detail::Owned<VekiAEState, vekiFree_AE_10RGGB_8u_C1R> state_;
};

/// What a window of the white balance measures.
enum class BalanceMethod : int {
  grayWorld = vekiAWBGrayWorld,     ///< all of its samples
  whitePoints = vekiAWBWhitePoints  ///< its nearly neutral quads of moderate brightness
};

/// What a white balance is made from; VekiAWBParams says what the numbers do.
struct BalanceParams {
  BalanceMethod method = BalanceMethod::grayWorld;  ///< what is measured
  std::vector<Rect> windows;   ///< x and width multiples of 4, y and height of 8
  std::vector<Vek8u> weights;  ///< one for each window, not 0
  Vek16u refRatioR = 1024;     ///< reference ratio of red, in 1/1024
  Vek16u refRatioB = 1024;     ///< reference ratio of blue, in 1/1024
  Vek16u holdTolR = 0;         ///< nothing changes while red is closer to its reference, and ...
  Vek16u holdTolB = 0;         ///< ... blue closer than this
  Vek16u validTolR = 65535;    ///< from where on the default gains are the target: of red ...
  Vek16u validTolB = 65535;    ///< ... and of blue
  Vek16u wpdLimit1 = 1023;     ///< white points: 1..1023
  Vek16u wpdLimit2 = 1023;     ///< white points: 1..1023
  Vek16u wpdLimit3 = 2047;     ///< white points: 1..2047
  Vek16u wpdLow = 1;           ///< white points: at least 1
  Vek16u wpdHigh = 1023;       ///< white points: above wpdLow, at most 1023
  Vek32s minWhiteCount = 0;    ///< white points: a window with fewer samples is not used
  Vek16u maxGainStep = 65535;  ///< the most that one call changes a gain by
  Vek16u gainMin = 0;          ///< lower limit of the gains
  Vek16u gainMax = 65535;      ///< upper limit of the gains
  Vek16u defaultGainR = 256;   ///< default gain of red
  Vek16u defaultGainG = 256;   ///< default gain of green
  Vek16u defaultGainB = 256;   ///< default gain of blue
};

/// The gains that the white balance moves.
struct BalanceGains {
  Vek16u red;    ///< of red
  Vek16u green;  ///< of green
  Vek16u blue;   ///< of blue
};

/// Automatic white balance. Calls do not change it, so that threads may share one.
class AutoWhiteBalance {
 public:
  /// An empty one.
  AutoWhiteBalance() noexcept = default;
  /// Keeps copies of the windows and weights (vekiInitAlloc_AWB_10RGGB_8u_C1R).
  explicit AutoWhiteBalance(const BalanceParams& params, OnError onError = {}) {
    const detail::Call call{"AutoWhiteBalance", onError};
    if (params.windows.size() != params.weights.size()) {
      OnError::refuse(onError, vekStsBadArgErr, "AutoWhiteBalance", "weights",
                      "are %zu for %zu windows", params.weights.size(), params.windows.size());
      return;
    }
    AutoWhiteBalance made;
    made.windows_ = params.windows;
    made.weights_ = params.weights;
    const VekiAWBParams record = {static_cast<Vek32s>(params.method),
                                  static_cast<Vek32s>(made.windows_.size()),
                                  made.windows_.data(),
                                  made.weights_.data(),
                                  params.refRatioR,
                                  params.refRatioB,
                                  params.holdTolR,
                                  params.holdTolB,
                                  params.validTolR,
                                  params.validTolB,
                                  params.wpdLimit1,
                                  params.wpdLimit2,
                                  params.wpdLimit3,
                                  params.wpdLow,
                                  params.wpdHigh,
                                  params.minWhiteCount,
                                  params.maxGainStep,
                                  params.gainMin,
                                  params.gainMax,
                                  params.defaultGainR,
                                  params.defaultGainG,
                                  params.defaultGainB};
    VekiAWBState* state = nullptr;
    const VekStatus status = vekiInitAlloc_AWB_10RGGB_8u_C1R(&record, &state);
    made.state_.reset(state);
    if (call.done(status, [&](VekStatus refused) { return refuse(call, refused, record); }) ==
        vekStsNoErr)
      *this = std::move(made);
  }

  /// Whether there is none.
  bool empty() const noexcept { return state_ == nullptr; }

  /// Measures a frame and moves the gains (vekiAWB_10RGGB_8u_C1R). The frame begins at a multiple of 8
  /// bytes, and so do its rows.
  VEK_INLINE VekStatus measure(View<const Raw10> frame, BalanceGains& gains,
                               OnError onError = {}) const {
    const detail::Call call{"AutoWhiteBalance::measure", onError};
    if (empty()) return detail::refuseEmpty(call);
    return call.done(vekiAWB_10RGGB_8u_C1R(frame.data(), frame.stepBytes(), frame.size(),
                                           &gains.red, &gains.green, &gains.blue, state_.get()),
                     [&](VekStatus) { return detail::refuseFrame(call, frame, 8, "gains"); });
  }

 private:
  static VekStatus refuse(detail::Call call, VekStatus status, const VekiAWBParams& p) {
    const auto because = [&](const char* argument, const char* why) {
      return OnError::refuse(call.onError, status, call.function, argument, "%s", why);
    };
    const auto outside = [](int gain, const VekiAWBParams& limits) {
      return gain < limits.gainMin || gain > limits.gainMax;
    };
    if (status == vekStsMemAllocErr) return because("params", "need more memory than there is");
    if (p.numWindows < 1) return because("windows", "are none");
    if (p.wpdLimit1 < 1 || p.wpdLimit1 > 1023) return because("wpdLimit1", "is not 1..1023");
    if (p.wpdLimit2 < 1 || p.wpdLimit2 > 1023) return because("wpdLimit2", "is not 1..1023");
    if (p.wpdLimit3 < 1 || p.wpdLimit3 > 2047) return because("wpdLimit3", "is not 1..2047");
    if (p.wpdLow < 1) return because("wpdLow", "is 0");
    if (p.wpdHigh <= p.wpdLow || p.wpdHigh > 1023)
      return because("wpdHigh", "is not above wpdLow, or above 1023");
    if (p.maxGainStep < 1) return because("maxGainStep", "is 0");
    if (outside(p.defaultGainR, p))
      return because("defaultGainR", "is not between gainMin and gainMax");
    if (outside(p.defaultGainG, p))
      return because("defaultGainG", "is not between gainMin and gainMax");
    if (outside(p.defaultGainB, p))
      return because("defaultGainB", "is not between gainMin and gainMax");
    return because("windows",
                   "have an x or width that is not a multiple of 4, a y or height that is not one "
                   "of 8, 2^23 samples or more, or a weight of 0");
  }

  std::vector<Rect> windows_;
  std::vector<Vek8u> weights_;
  detail::Owned<VekiAWBState, vekiFree_AWB_10RGGB_8u_C1R> state_;
};

/// Recommended values, with the reasons for them.
namespace recommended {

/// The largest gain of red and of blue over green, and the inverse of the smallest one. Candle light
/// needs about 4 in blue.
inline constexpr int mostWhiteBalance = 8;
/// How far (in 1/1024) the mean of a scene may be from grey: a scene has a colour of its own. While it
/// is farther off, the light is taken to have changed, and the gains go for a grey mean at once.
inline constexpr int coarseTolerance = 280;
/// How far (in 1/1024) the nearly white parts of the scene may be from grey: 0.6 % is less than one
/// code of the picture.
inline constexpr int fineTolerance = 6;
/// A quad is nearly white if red and blue are this close to green, of 1023. With less, noise in a lamp's blue
/// leaves out more quads on one side than on the other.
inline constexpr int whiteLimit = 120;
/// A quad is nearly white if its mean is above this, where noise is small beside whiteLimit, ...
inline constexpr int whiteLow = 100;
/// ... and below this, where no channel is saturated.
inline constexpr int whiteHigh = 800;
/// A window is used if a part of it, 1 / whiteShare, is nearly white.
inline constexpr int whiteShare = 4;

/// A white balance of frames of this size, of 16 x 16 samples or more, with gains of which `unit` is 1: a
/// grid of 8 x 6 windows in which every light that gains can balance is valid, and which needs no brake as
/// targets are right at once. With all of its samples (BalanceMethod::grayWorld) it stays within
/// coarseTolerance of grey; after that the nearly white ones (BalanceMethod::whitePoints) bring it within
/// fineTolerance.
inline BalanceParams balanceParams(Size frame, BalanceMethod method, int unit = 1024) {
  const bool isCoarse = method == BalanceMethod::grayWorld;
  const auto side = [](int length, int count, int multiple) {
    return std::clamp(length / count / multiple * multiple, multiple, 2048);
  };
  const int w = side(frame.width, 8, 4), h = side(frame.height, 6, 8);
  BalanceParams params;
  params.method = method;
  for (int y = 0; y + h <= frame.height; y += h) {
    for (int x = 0; x + w <= frame.width; x += w) params.windows.push_back({x, y, w, h});
  }
  params.weights.assign(params.windows.size(), 1);
  params.holdTolR = params.holdTolB =
      static_cast<Vek16u>(isCoarse ? coarseTolerance : fineTolerance);
  params.wpdLimit1 = params.wpdLimit2 = whiteLimit;
  params.wpdLimit3 = 2 * whiteLimit;
  params.wpdLow = whiteLow;
  params.wpdHigh = whiteHigh;
  params.minWhiteCount = w * h / whiteShare;
  params.gainMin = static_cast<Vek16u>(unit / mostWhiteBalance);
  params.gainMax = static_cast<Vek16u>(std::min(unit * mostWhiteBalance, 65535));
  params.defaultGainR = params.defaultGainG = params.defaultGainB = static_cast<Vek16u>(unit);
  return params;
}

/// An exposure of frames of this size by one of the meterings that need no windows, with controls between
/// `least` and `most`.
///
/// The histogram sets the exposure directly, to a mean of a fifth of the range. Bins count from a
/// ten-thousandth of the green samples on, so that dead ones do not; a frame is dark if even its whites stay
/// in the lower half of the range, and bright if its blacks leave the lowest third. The other meterings
/// double and halve the exposure. The ends of their band, 320 and 680 as a sum of two greens, are more than a
/// factor of two apart, or it would be jumped over for ever. The step-controlled value takes 32 frames from
/// end to end.
inline ExposureParams exposureParams(Size frame, Metering metering, ExposureControls least,
                                     ExposureControls most) {
  ExposureParams params;
  params.metering = metering;
  params.histCountThresh =
      static_cast<Vek16u>(std::clamp(frame.width * frame.height / 20000, 2, 65535));
  params.histSpreadThresh = params.darkThresh = 570;
  params.brightThresh = 340;
  const bool isHistogram = metering == Metering::histogram;
  params.target = isHistogram ? 200 : 500;
  params.tolerance = isHistogram ? 12 : 180;
  params.scaleMin = least.scale;
  params.scaleMax = most.scale;
  params.stepMin = least.step;
  params.stepMax = most.step;
  params.stepSize = static_cast<Vek16u>(std::max((most.step - least.step) / 32, 1));
  return params;
}

}  // namespace recommended

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_CPP_AAA_HPP
