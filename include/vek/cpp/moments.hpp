/** @file moments.hpp
 *  Moments in C++. vek.hpp includes it. */
#ifndef VEK_CPP_MOMENTS_HPP
#define VEK_CPP_MOMENTS_HPP

#include "vek/cpp/call.hpp"

#include <array>
#include <cstddef>
#include <utility>

namespace vek {
inline namespace v0 {

/** @defgroup cppmoments C++: moments
 *  The functions of the group `moments`.
 *  @{ */

/// Moments in the order 00, 10, 01, 20, 11, 02, 30, 21, 12, 03.
using MomentList = std::array<Vek64f, 10>;
/// The seven moments of Hu.
using HuMoments = std::array<Vek64f, 7>;

/// The moments of an image. One thread at a time writes to it.
class Moments {
 public:
  /// Without memory: measure() takes some.
  Moments() noexcept = default;
  /// Of an image.
  template <int channels, detail::Supported<channels, int> = 0>
  explicit Moments(View<const Vek8u, channels> src, OnError onError = {}) {
    measure(src, onError);
  }
  /// In memory of the caller's, of bytes() bytes, that must stay where it is (vekiInit_Moments_8u).
  explicit Moments(Work memory, OnError onError = {}) {
    const detail::Call call{"Moments", onError};
    if (memory.data == nullptr || memory.bytes < static_cast<std::size_t>(bytes())) {
      OnError::refuse(onError, vekStsSizeErr, "Moments", "memory",
                      "has %zu bytes, but %d are needed", memory.bytes, bytes());
      return;
    }
    auto* const state = static_cast<VekiMomentState*>(memory.data);
    if (call.done(vekiInit_Moments_8u(state)) >= 0) state_ = state;
  }
  /// The moments of another one, which is empty afterwards.
  Moments(Moments&& other) noexcept
      : owned_(std::move(other.owned_)), state_(std::exchange(other.state_, nullptr)) {}
  /// Takes the moments of another one, which is empty afterwards.
  Moments& operator=(Moments&& other) noexcept {
    owned_ = std::move(other.owned_);
    state_ = std::exchange(other.state_, nullptr);
    return *this;
  }

  /// Bytes that moments take (vekiGetSpecSize_Moments_8u).
  static int bytes() noexcept {
    int size = 0;
    vekiGetSpecSize_Moments_8u(&size);
    return size;
  }

  /// Takes the moments of an image of up to 16384 x 16384 pixels (vekiMoments_8u_C1R).
  template <int channels>
  detail::Supported<channels, VekStatus> measure(View<const Vek8u, channels> src,
                                                 OnError onError = {}) {
    const detail::Call call{"Moments::measure", onError};
    if (state_ == nullptr) {
      VekiMomentState* state = nullptr;
      const VekStatus status = vekiInitAlloc_Moments_8u(&state);
      if (status < 0) return call.done(status);
      owned_.reset(state);
      state_ = state;
    }
    const auto f = detail::byChannels<channels>(vekiMoments_8u_C1R, vekiMoments_8u_C3R);
    return call.done(f(src.data(), src.stepBytes(), src.size(), state_), [&](VekStatus status) {
      return OnError::refuse(onError, status, "Moments::measure", "src",
                             "is %d x %d, and sides are 1..16384", src.width(), src.height());
    });
  }

  /// The spatial moments of a channel about a point; `origin` is what the first pixel's coordinates are
  /// (vekiSpatialMoments_64f).
  VekStatus spatial(int channel, MomentList* moments, Point origin = {0, 0},
                    OnError onError = {}) const {
    return read(detail::Call{"Moments::spatial", onError}, channel, moments,
                [&](Vek64f* to) { return vekiSpatialMoments_64f(state_, channel, origin, to); });
  }
  /// The central moments of a channel (vekiCentralMoments_64f).
  VekStatus central(int channel, MomentList* moments, OnError onError = {}) const {
    return read(detail::Call{"Moments::central", onError}, channel, moments,
                [&](Vek64f* to) { return vekiCentralMoments_64f(state_, channel, to); });
  }
  /// The normalised central moments of a channel (vekiNormalizedMoments_64f).
  VekStatus normalized(int channel, MomentList* moments, OnError onError = {}) const {
    return read(detail::Call{"Moments::normalized", onError}, channel, moments,
                [&](Vek64f* to) { return vekiNormalizedMoments_64f(state_, channel, to); });
  }
  /// The moments of Hu of a channel (vekiHuMoments_64f).
  VekStatus hu(int channel, HuMoments* moments, OnError onError = {}) const {
    return read(detail::Call{"Moments::hu", onError}, channel, moments,
                [&](Vek64f* to) { return vekiHuMoments_64f(state_, channel, to); });
  }
  /// The spatial moments, returned.
  Measured<MomentList> spatial(int channel, Point origin = {0, 0}, OnError onError = {}) const {
    return detail::measured<MomentList>(
        [&](MomentList* to) { return spatial(channel, to, origin, onError); });
  }
  /// The central moments, returned.
  Measured<MomentList> central(int channel, OnError onError = {}) const {
    return detail::measured<MomentList>(
        [&](MomentList* to) { return central(channel, to, onError); });
  }
  /// The normalised moments, returned. They are 0, with vekStsDivByZero, where there is only black.
  Measured<MomentList> normalized(int channel, OnError onError = {}) const {
    return detail::measured<MomentList>(
        [&](MomentList* to) { return normalized(channel, to, onError); });
  }
  /// The moments of Hu, returned. They are 0, with vekStsDivByZero, where there is only black.
  Measured<HuMoments> hu(int channel, OnError onError = {}) const {
    return detail::measured<HuMoments>([&](HuMoments* to) { return hu(channel, to, onError); });
  }

 private:
  template <class List, class Read>
  VekStatus read(detail::Call call, int channel, List* moments, Read from) const {
    if (state_ == nullptr) return detail::refuseEmpty(call);
    return call.done(from(moments->data()), [&](VekStatus status) {
      return OnError::refuse(
          call.onError, status, call.function, "channel",
          "is %d, which there is no image of, or the origin is farther than 2^30", channel);
    });
  }

  detail::Owned<VekiMomentState, vekiFree_Moments_8u> owned_;
  VekiMomentState* state_ = nullptr;
};

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_CPP_MOMENTS_HPP
