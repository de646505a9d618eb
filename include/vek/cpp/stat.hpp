/** @file stat.hpp
 *  Norms in C++. vek.hpp includes it. */
#ifndef VEK_CPP_STAT_HPP
#define VEK_CPP_STAT_HPP

#include "vek/cpp/call.hpp"

namespace vek {
inline namespace v0 {

/** @defgroup cppstat C++: norms
 *  The functions of the group `norms`: the norm, or one for each channel, divided by 2^scale. A norm that
 *  is returned comes without its status: where that is positive, it is the largest number that there is.
 *  @{ */

/// The largest sample (vekiNorm_Inf_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normInf(View<const Vek8u, channels> src,
                                                          Same<Value<Vek32s, channels>>* norm,
                                                          int scale = 0, OnError onError = {}) {
  const detail::Call call{"normInf", onError};
  const auto f = detail::byChannels<channels>(vekiNorm_Inf_8u_C1RSfs, vekiNorm_Inf_8u_C3RSfs);
  return call.done(f(src.data(), src.stepBytes(), src.size(), detail::written(*norm), scale));
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Value<Vek32s, channels>> normInf(View<const Vek8u, channels> src,
                                                             int scale = 0, OnError onError = {}) {
  Value<Vek32s, channels> norm = {};
  normInf<channels>(src, &norm, scale, onError);
  return norm;
}

/// The sum of samples (vekiNorm_L1_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normL1(View<const Vek8u, channels> src,
                                                         Same<Value<Vek32s, channels>>* norm,
                                                         int scale = 0, OnError onError = {}) {
  const detail::Call call{"normL1", onError};
  const auto f = detail::byChannels<channels>(vekiNorm_L1_8u_C1RSfs, vekiNorm_L1_8u_C3RSfs);
  return call.done(f(src.data(), src.stepBytes(), src.size(), detail::written(*norm), scale));
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Value<Vek32s, channels>> normL1(View<const Vek8u, channels> src,
                                                            int scale = 0, OnError onError = {}) {
  Value<Vek32s, channels> norm = {};
  normL1<channels>(src, &norm, scale, onError);
  return norm;
}

/// The root of the sum of squares (vekiNorm_L2_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normL2(View<const Vek8u, channels> src,
                                                         Same<Value<Vek32s, channels>>* norm,
                                                         int scale = 0, OnError onError = {}) {
  const detail::Call call{"normL2", onError};
  const auto f = detail::byChannels<channels>(vekiNorm_L2_8u_C1RSfs, vekiNorm_L2_8u_C3RSfs);
  return call.done(f(src.data(), src.stepBytes(), src.size(), detail::written(*norm), scale));
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Value<Vek32s, channels>> normL2(View<const Vek8u, channels> src,
                                                            int scale = 0, OnError onError = {}) {
  Value<Vek32s, channels> norm = {};
  normL2<channels>(src, &norm, scale, onError);
  return norm;
}

/// The largest difference (vekiNormDiff_Inf_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normDiffInf(View<const Vek8u, channels> a,
                                                              Same<View<const Vek8u, channels>> b,
                                                              Same<Value<Vek32s, channels>>* norm,
                                                              int scale = 0, OnError onError = {}) {
  const detail::Call call{"normDiffInf", onError};
  if (!call.same("b", b, "a", a)) return vekStsSizeErr;
  const auto f =
      detail::byChannels<channels>(vekiNormDiff_Inf_8u_C1RSfs, vekiNormDiff_Inf_8u_C3RSfs);
  return call.done(
      f(a.data(), a.stepBytes(), b.data(), b.stepBytes(), a.size(), detail::written(*norm), scale));
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Value<Vek32s, channels>> normDiffInf(
    View<const Vek8u, channels> a, Same<View<const Vek8u, channels>> b, int scale = 0,
    OnError onError = {}) {
  Value<Vek32s, channels> norm = {};
  normDiffInf<channels>(a, b, &norm, scale, onError);
  return norm;
}

/// The sum of absolute differences (vekiNormDiff_L1_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normDiffL1(View<const Vek8u, channels> a,
                                                             Same<View<const Vek8u, channels>> b,
                                                             Same<Value<Vek32s, channels>>* norm,
                                                             int scale = 0, OnError onError = {}) {
  const detail::Call call{"normDiffL1", onError};
  if (!call.same("b", b, "a", a)) return vekStsSizeErr;
  const auto f = detail::byChannels<channels>(vekiNormDiff_L1_8u_C1RSfs, vekiNormDiff_L1_8u_C3RSfs);
  return call.done(
      f(a.data(), a.stepBytes(), b.data(), b.stepBytes(), a.size(), detail::written(*norm), scale));
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Value<Vek32s, channels>> normDiffL1(View<const Vek8u, channels> a,
                                                                Same<View<const Vek8u, channels>> b,
                                                                int scale = 0,
                                                                OnError onError = {}) {
  Value<Vek32s, channels> norm = {};
  normDiffL1<channels>(a, b, &norm, scale, onError);
  return norm;
}

/// The root of the sum of squared differences (vekiNormDiff_L2_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normDiffL2(View<const Vek8u, channels> a,
                                                             Same<View<const Vek8u, channels>> b,
                                                             Same<Value<Vek32s, channels>>* norm,
                                                             int scale = 0, OnError onError = {}) {
  const detail::Call call{"normDiffL2", onError};
  if (!call.same("b", b, "a", a)) return vekStsSizeErr;
  const auto f = detail::byChannels<channels>(vekiNormDiff_L2_8u_C1RSfs, vekiNormDiff_L2_8u_C3RSfs);
  return call.done(
      f(a.data(), a.stepBytes(), b.data(), b.stepBytes(), a.size(), detail::written(*norm), scale));
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Value<Vek32s, channels>> normDiffL2(View<const Vek8u, channels> a,
                                                                Same<View<const Vek8u, channels>> b,
                                                                int scale = 0,
                                                                OnError onError = {}) {
  Value<Vek32s, channels> norm = {};
  normDiffL2<channels>(a, b, &norm, scale, onError);
  return norm;
}

/// The largest difference, divided by the largest sample of `b` (vekiNormRel_Inf_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normRelInf(View<const Vek8u, channels> a,
                                                             Same<View<const Vek8u, channels>> b,
                                                             Same<Value<Vek32s, channels>>* norm,
                                                             int scale = 0, OnError onError = {}) {
  const detail::Call call{"normRelInf", onError};
  if (!call.same("b", b, "a", a)) return vekStsSizeErr;
  const auto f = detail::byChannels<channels>(vekiNormRel_Inf_8u_C1RSfs, vekiNormRel_Inf_8u_C3RSfs);
  return call.done(
      f(a.data(), a.stepBytes(), b.data(), b.stepBytes(), a.size(), detail::written(*norm), scale));
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Value<Vek32s, channels>> normRelInf(View<const Vek8u, channels> a,
                                                                Same<View<const Vek8u, channels>> b,
                                                                int scale = 0,
                                                                OnError onError = {}) {
  Value<Vek32s, channels> norm = {};
  normRelInf<channels>(a, b, &norm, scale, onError);
  return norm;
}

/// The sum of absolute differences, divided by the sum of `b` (vekiNormRel_L1_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normRelL1(View<const Vek8u, channels> a,
                                                            Same<View<const Vek8u, channels>> b,
                                                            Same<Value<Vek32s, channels>>* norm,
                                                            int scale = 0, OnError onError = {}) {
  const detail::Call call{"normRelL1", onError};
  if (!call.same("b", b, "a", a)) return vekStsSizeErr;
  const auto f = detail::byChannels<channels>(vekiNormRel_L1_8u_C1RSfs, vekiNormRel_L1_8u_C3RSfs);
  return call.done(
      f(a.data(), a.stepBytes(), b.data(), b.stepBytes(), a.size(), detail::written(*norm), scale));
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Value<Vek32s, channels>> normRelL1(View<const Vek8u, channels> a,
                                                               Same<View<const Vek8u, channels>> b,
                                                               int scale = 0,
                                                               OnError onError = {}) {
  Value<Vek32s, channels> norm = {};
  normRelL1<channels>(a, b, &norm, scale, onError);
  return norm;
}

/// The root of the sum of squared differences, divided by that of the squares of `b` (vekiNormRel_L2_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> normRelL2(View<const Vek8u, channels> a,
                                                            Same<View<const Vek8u, channels>> b,
                                                            Same<Value<Vek32s, channels>>* norm,
                                                            int scale = 0, OnError onError = {}) {
  const detail::Call call{"normRelL2", onError};
  if (!call.same("b", b, "a", a)) return vekStsSizeErr;
  const auto f = detail::byChannels<channels>(vekiNormRel_L2_8u_C1RSfs, vekiNormRel_L2_8u_C3RSfs);
  return call.done(
      f(a.data(), a.stepBytes(), b.data(), b.stepBytes(), a.size(), detail::written(*norm), scale));
}
/// The same, returned.
template <int channels>
detail::Supported<channels, Value<Vek32s, channels>> normRelL2(View<const Vek8u, channels> a,
                                                               Same<View<const Vek8u, channels>> b,
                                                               int scale = 0,
                                                               OnError onError = {}) {
  Value<Vek32s, channels> norm = {};
  normRelL2<channels>(a, b, &norm, scale, onError);
  return norm;
}

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_CPP_STAT_HPP
