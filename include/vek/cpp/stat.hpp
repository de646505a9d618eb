/** @file stat.hpp
 *  Norms in C++. vek.hpp includes it. */
#ifndef VEK_CPP_STAT_HPP
#define VEK_CPP_STAT_HPP

#include "vek/cpp/call.hpp"

namespace vek {
inline namespace v0 {

/** @defgroup cppstat C++: norms
 *  The functions of the group `norms`: the norm, or one for each channel, divided by 2^scale. Norms that are
 *  returned carry their status, which is positive where they have a reservation (Measured).
 *  @{ */

/// @cond
namespace detail {

template <int channels>
using Norm = Value<Vek32s, channels>;

/// f(source, size, norm, scale).
template <class F, class Source, class Norms>
VEK_INLINE VekStatus norm(Call call, F f, const Source& src, Norms* norms, int scale) {
  return call.done(f(src.data(), src.stepBytes(), src.size(), written(*norms), scale));
}
/// f(source, source, size, norm, scale).
template <class F, class Source, class Norms>
VEK_INLINE VekStatus norm(Call call, F f, const Source& a, const Source& b, Norms* norms,
                          int scale) {
  if (!call.same("b", b, "a", a)) return vekStsSizeErr;
  return call.done(
      f(a.data(), a.stepBytes(), b.data(), b.stepBytes(), a.size(), written(*norms), scale));
}

}  // namespace detail
/// @endcond

/// The largest sample (vekiNorm_Inf_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normInf(View<const Vek8u, channels> src,
                                                          Same<detail::Norm<channels>>* norm,
                                                          int scale = 0, OnError onError = {}) {
  return detail::norm(detail::Call{"normInf", onError},
                      detail::byChannels<channels>(vekiNorm_Inf_8u_C1RSfs, vekiNorm_Inf_8u_C3RSfs),
                      src, norm, scale);
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Measured<detail::Norm<channels>>> normInf(
    View<const Vek8u, channels> src, int scale = 0, OnError onError = {}) {
  return detail::measured<detail::Norm<channels>>(
      [&](auto* norm) { return normInf<channels>(src, norm, scale, onError); });
}

/// The sum of samples (vekiNorm_L1_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normL1(View<const Vek8u, channels> src,
                                                         Same<detail::Norm<channels>>* norm,
                                                         int scale = 0, OnError onError = {}) {
  return detail::norm(detail::Call{"normL1", onError},
                      detail::byChannels<channels>(vekiNorm_L1_8u_C1RSfs, vekiNorm_L1_8u_C3RSfs),
                      src, norm, scale);
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Measured<detail::Norm<channels>>> normL1(
    View<const Vek8u, channels> src, int scale = 0, OnError onError = {}) {
  return detail::measured<detail::Norm<channels>>(
      [&](auto* norm) { return normL1<channels>(src, norm, scale, onError); });
}

/// The root of the sum of squares (vekiNorm_L2_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normL2(View<const Vek8u, channels> src,
                                                         Same<detail::Norm<channels>>* norm,
                                                         int scale = 0, OnError onError = {}) {
  return detail::norm(detail::Call{"normL2", onError},
                      detail::byChannels<channels>(vekiNorm_L2_8u_C1RSfs, vekiNorm_L2_8u_C3RSfs),
                      src, norm, scale);
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Measured<detail::Norm<channels>>> normL2(
    View<const Vek8u, channels> src, int scale = 0, OnError onError = {}) {
  return detail::measured<detail::Norm<channels>>(
      [&](auto* norm) { return normL2<channels>(src, norm, scale, onError); });
}

/// The largest difference (vekiNormDiff_Inf_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normDiffInf(View<const Vek8u, channels> a,
                                                              Same<View<const Vek8u, channels>> b,
                                                              Same<detail::Norm<channels>>* norm,
                                                              int scale = 0, OnError onError = {}) {
  return detail::norm(
      detail::Call{"normDiffInf", onError},
      detail::byChannels<channels>(vekiNormDiff_Inf_8u_C1RSfs, vekiNormDiff_Inf_8u_C3RSfs), a, b,
      norm, scale);
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Measured<detail::Norm<channels>>> normDiffInf(
    View<const Vek8u, channels> a, Same<View<const Vek8u, channels>> b, int scale = 0,
    OnError onError = {}) {
  return detail::measured<detail::Norm<channels>>(
      [&](auto* norm) { return normDiffInf<channels>(a, b, norm, scale, onError); });
}

/// The sum of absolute differences (vekiNormDiff_L1_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normDiffL1(View<const Vek8u, channels> a,
                                                             Same<View<const Vek8u, channels>> b,
                                                             Same<detail::Norm<channels>>* norm,
                                                             int scale = 0, OnError onError = {}) {
  return detail::norm(
      detail::Call{"normDiffL1", onError},
      detail::byChannels<channels>(vekiNormDiff_L1_8u_C1RSfs, vekiNormDiff_L1_8u_C3RSfs), a, b,
      norm, scale);
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Measured<detail::Norm<channels>>> normDiffL1(
    View<const Vek8u, channels> a, Same<View<const Vek8u, channels>> b, int scale = 0,
    OnError onError = {}) {
  return detail::measured<detail::Norm<channels>>(
      [&](auto* norm) { return normDiffL1<channels>(a, b, norm, scale, onError); });
}

/// The root of the sum of squared differences (vekiNormDiff_L2_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normDiffL2(View<const Vek8u, channels> a,
                                                             Same<View<const Vek8u, channels>> b,
                                                             Same<detail::Norm<channels>>* norm,
                                                             int scale = 0, OnError onError = {}) {
  return detail::norm(
      detail::Call{"normDiffL2", onError},
      detail::byChannels<channels>(vekiNormDiff_L2_8u_C1RSfs, vekiNormDiff_L2_8u_C3RSfs), a, b,
      norm, scale);
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Measured<detail::Norm<channels>>> normDiffL2(
    View<const Vek8u, channels> a, Same<View<const Vek8u, channels>> b, int scale = 0,
    OnError onError = {}) {
  return detail::measured<detail::Norm<channels>>(
      [&](auto* norm) { return normDiffL2<channels>(a, b, norm, scale, onError); });
}

/// The largest difference, divided by the largest sample of `b` (vekiNormRel_Inf_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normRelInf(View<const Vek8u, channels> a,
                                                             Same<View<const Vek8u, channels>> b,
                                                             Same<detail::Norm<channels>>* norm,
                                                             int scale = 0, OnError onError = {}) {
  return detail::norm(
      detail::Call{"normRelInf", onError},
      detail::byChannels<channels>(vekiNormRel_Inf_8u_C1RSfs, vekiNormRel_Inf_8u_C3RSfs), a, b,
      norm, scale);
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Measured<detail::Norm<channels>>> normRelInf(
    View<const Vek8u, channels> a, Same<View<const Vek8u, channels>> b, int scale = 0,
    OnError onError = {}) {
  return detail::measured<detail::Norm<channels>>(
      [&](auto* norm) { return normRelInf<channels>(a, b, norm, scale, onError); });
}

/// The sum of absolute differences, divided by the sum of `b` (vekiNormRel_L1_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normRelL1(View<const Vek8u, channels> a,
                                                            Same<View<const Vek8u, channels>> b,
                                                            Same<detail::Norm<channels>>* norm,
                                                            int scale = 0, OnError onError = {}) {
  return detail::norm(
      detail::Call{"normRelL1", onError},
      detail::byChannels<channels>(vekiNormRel_L1_8u_C1RSfs, vekiNormRel_L1_8u_C3RSfs), a, b, norm,
      scale);
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Measured<detail::Norm<channels>>> normRelL1(
    View<const Vek8u, channels> a, Same<View<const Vek8u, channels>> b, int scale = 0,
    OnError onError = {}) {
  return detail::measured<detail::Norm<channels>>(
      [&](auto* norm) { return normRelL1<channels>(a, b, norm, scale, onError); });
}

/// The root of the sum of squared differences, divided by that of the squares of `b` (vekiNormRel_L2_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normRelL2(View<const Vek8u, channels> a,
                                                            Same<View<const Vek8u, channels>> b,
                                                            Same<detail::Norm<channels>>* norm,
                                                            int scale = 0, OnError onError = {}) {
  return detail::norm(
      detail::Call{"normRelL2", onError},
      detail::byChannels<channels>(vekiNormRel_L2_8u_C1RSfs, vekiNormRel_L2_8u_C3RSfs), a, b, norm,
      scale);
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Measured<detail::Norm<channels>>> normRelL2(
    View<const Vek8u, channels> a, Same<View<const Vek8u, channels>> b, int scale = 0,
    OnError onError = {}) {
  return detail::measured<detail::Norm<channels>>(
      [&](auto* norm) { return normRelL2<channels>(a, b, norm, scale, onError); });
}

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_CPP_STAT_HPP
