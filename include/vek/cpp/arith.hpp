/** @file arith.hpp
 *  Arithmetic, logic and thresholds in C++. vek.hpp includes it. */
#ifndef VEK_CPP_ARITH_HPP
#define VEK_CPP_ARITH_HPP

#include "vek/cpp/call.hpp"

namespace vek {
inline namespace v0 {

/** @defgroup cpparith C++: arithmetic, logic, thresholds
 *  The functions of the groups `arithmetic` and `logic` on images of one or three channels. A source
 *  may be the destination.
 *  @{ */

/// (a + b) / 2^scale, rounded and saturated (vekiAdd_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> add(View<const Vek8u, channels> a,
                                                      Same<View<const Vek8u, channels>> b,
                                                      Same<View<Vek8u, channels>> dst,
                                                      int scale = 0, OnError onError = {}) {
  return detail::binary(detail::Call{"add", onError},
                        detail::byChannels<channels>(vekiAdd_8u_C1RSfs, vekiAdd_8u_C3RSfs), a, b,
                        dst, scale);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> add(View<const Vek8u, channels> a,
                                                        Same<View<const Vek8u, channels>> b,
                                                        int scale = 0, OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      a.size(), onError, [&](auto& dst) { return add<channels>(a, b, dst, scale, onError); });
}

/// (src + value) / 2^scale, rounded and saturated (vekiAddC_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> add(View<const Vek8u, channels> src,
                                                      const Same<Value<Vek8u, channels>>& value,
                                                      Same<View<Vek8u, channels>> dst,
                                                      int scale = 0, OnError onError = {}) {
  return detail::withValue(detail::Call{"add", onError},
                           detail::byChannels<channels>(vekiAddC_8u_C1RSfs, vekiAddC_8u_C3RSfs),
                           src, value, dst, scale);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> add(View<const Vek8u, channels> src,
                                                        const Same<Value<Vek8u, channels>>& value,
                                                        int scale = 0, OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(src.size(), onError, [&](auto& dst) {
    return add<channels>(src, value, dst, scale, onError);
  });
}

/// (a - b) / 2^scale, at least 0, rounded and saturated. The C function, vekiSub_8u_C1RSfs, takes
/// the images in the other order.
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> sub(View<const Vek8u, channels> a,
                                                      Same<View<const Vek8u, channels>> b,
                                                      Same<View<Vek8u, channels>> dst,
                                                      int scale = 0, OnError onError = {}) {
  return detail::binary(detail::Call{"sub", onError},
                        detail::byChannels<channels>(vekiSub_8u_C1RSfs, vekiSub_8u_C3RSfs), b, a,
                        dst, scale);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> sub(View<const Vek8u, channels> a,
                                                        Same<View<const Vek8u, channels>> b,
                                                        int scale = 0, OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      a.size(), onError, [&](auto& dst) { return sub<channels>(a, b, dst, scale, onError); });
}

/// (src - value) / 2^scale, at least 0, rounded and saturated (vekiSubC_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> sub(View<const Vek8u, channels> src,
                                                      const Same<Value<Vek8u, channels>>& value,
                                                      Same<View<Vek8u, channels>> dst,
                                                      int scale = 0, OnError onError = {}) {
  return detail::withValue(detail::Call{"sub", onError},
                           detail::byChannels<channels>(vekiSubC_8u_C1RSfs, vekiSubC_8u_C3RSfs),
                           src, value, dst, scale);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> sub(View<const Vek8u, channels> src,
                                                        const Same<Value<Vek8u, channels>>& value,
                                                        int scale = 0, OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(src.size(), onError, [&](auto& dst) {
    return sub<channels>(src, value, dst, scale, onError);
  });
}

/// a * b / 2^scale, rounded and saturated (vekiMul_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> mul(View<const Vek8u, channels> a,
                                                      Same<View<const Vek8u, channels>> b,
                                                      Same<View<Vek8u, channels>> dst,
                                                      int scale = 0, OnError onError = {}) {
  return detail::binary(detail::Call{"mul", onError},
                        detail::byChannels<channels>(vekiMul_8u_C1RSfs, vekiMul_8u_C3RSfs), a, b,
                        dst, scale);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> mul(View<const Vek8u, channels> a,
                                                        Same<View<const Vek8u, channels>> b,
                                                        int scale = 0, OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      a.size(), onError, [&](auto& dst) { return mul<channels>(a, b, dst, scale, onError); });
}

/// src * value / 2^scale, rounded and saturated (vekiMulC_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> mul(View<const Vek8u, channels> src,
                                                      const Same<Value<Vek8u, channels>>& value,
                                                      Same<View<Vek8u, channels>> dst,
                                                      int scale = 0, OnError onError = {}) {
  return detail::withValue(detail::Call{"mul", onError},
                           detail::byChannels<channels>(vekiMulC_8u_C1RSfs, vekiMulC_8u_C3RSfs),
                           src, value, dst, scale);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> mul(View<const Vek8u, channels> src,
                                                        const Same<Value<Vek8u, channels>>& value,
                                                        int scale = 0, OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(src.size(), onError, [&](auto& dst) {
    return mul<channels>(src, value, dst, scale, onError);
  });
}

/// src * src / 2^scale, rounded and saturated (vekiSqr_8u_C1RSfs).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> sqr(View<const Vek8u, channels> src,
                                                      Same<View<Vek8u, channels>> dst,
                                                      int scale = 0, OnError onError = {}) {
  return detail::unary(detail::Call{"sqr", onError},
                       detail::byChannels<channels>(vekiSqr_8u_C1RSfs, vekiSqr_8u_C3RSfs), src, dst,
                       scale);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> sqr(View<const Vek8u, channels> src,
                                                        int scale = 0, OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      src.size(), onError, [&](auto& dst) { return sqr<channels>(src, dst, scale, onError); });
}

/// a * b / 255: products of fractions of 255 (vekiMulScale_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> mulScale(View<const Vek8u, channels> a,
                                                           Same<View<const Vek8u, channels>> b,
                                                           Same<View<Vek8u, channels>> dst,
                                                           OnError onError = {}) {
  return detail::binary(detail::Call{"mulScale", onError},
                        detail::byChannels<channels>(vekiMulScale_8u_C1R, vekiMulScale_8u_C3R), a,
                        b, dst);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> mulScale(View<const Vek8u, channels> a,
                                                             Same<View<const Vek8u, channels>> b,
                                                             OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      a.size(), onError, [&](auto& dst) { return mulScale<channels>(a, b, dst, onError); });
}

/// src * value / 255: products of fractions of 255 (vekiMulCScale_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> mulScale(
    View<const Vek8u, channels> src, const Same<Value<Vek8u, channels>>& value,
    Same<View<Vek8u, channels>> dst, OnError onError = {}) {
  return detail::withValue(detail::Call{"mulScale", onError},
                           detail::byChannels<channels>(vekiMulCScale_8u_C1R, vekiMulCScale_8u_C3R),
                           src, value, dst);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> mulScale(
    View<const Vek8u, channels> src, const Same<Value<Vek8u, channels>>& value,
    OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      src.size(), onError, [&](auto& dst) { return mulScale<channels>(src, value, dst, onError); });
}

/// a & b (vekiAnd_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> bitAnd(View<const Vek8u, channels> a,
                                                         Same<View<const Vek8u, channels>> b,
                                                         Same<View<Vek8u, channels>> dst,
                                                         OnError onError = {}) {
  return detail::binary(detail::Call{"bitAnd", onError},
                        detail::byChannels<channels>(vekiAnd_8u_C1R, vekiAnd_8u_C3R), a, b, dst);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> bitAnd(View<const Vek8u, channels> a,
                                                           Same<View<const Vek8u, channels>> b,
                                                           OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      a.size(), onError, [&](auto& dst) { return bitAnd<channels>(a, b, dst, onError); });
}

/// src & value (vekiAndC_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> bitAnd(View<const Vek8u, channels> src,
                                                         const Same<Value<Vek8u, channels>>& value,
                                                         Same<View<Vek8u, channels>> dst,
                                                         OnError onError = {}) {
  return detail::withValue(detail::Call{"bitAnd", onError},
                           detail::byChannels<channels>(vekiAndC_8u_C1R, vekiAndC_8u_C3R), src,
                           value, dst);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> bitAnd(
    View<const Vek8u, channels> src, const Same<Value<Vek8u, channels>>& value,
    OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      src.size(), onError, [&](auto& dst) { return bitAnd<channels>(src, value, dst, onError); });
}

/// a | b (vekiOr_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> bitOr(View<const Vek8u, channels> a,
                                                        Same<View<const Vek8u, channels>> b,
                                                        Same<View<Vek8u, channels>> dst,
                                                        OnError onError = {}) {
  return detail::binary(detail::Call{"bitOr", onError},
                        detail::byChannels<channels>(vekiOr_8u_C1R, vekiOr_8u_C3R), a, b, dst);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> bitOr(View<const Vek8u, channels> a,
                                                          Same<View<const Vek8u, channels>> b,
                                                          OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      a.size(), onError, [&](auto& dst) { return bitOr<channels>(a, b, dst, onError); });
}

/// src | value (vekiOrC_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> bitOr(View<const Vek8u, channels> src,
                                                        const Same<Value<Vek8u, channels>>& value,
                                                        Same<View<Vek8u, channels>> dst,
                                                        OnError onError = {}) {
  return detail::withValue(detail::Call{"bitOr", onError},
                           detail::byChannels<channels>(vekiOrC_8u_C1R, vekiOrC_8u_C3R), src, value,
                           dst);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> bitOr(View<const Vek8u, channels> src,
                                                          const Same<Value<Vek8u, channels>>& value,
                                                          OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      src.size(), onError, [&](auto& dst) { return bitOr<channels>(src, value, dst, onError); });
}

/// a ^ b (vekiXor_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> bitXor(View<const Vek8u, channels> a,
                                                         Same<View<const Vek8u, channels>> b,
                                                         Same<View<Vek8u, channels>> dst,
                                                         OnError onError = {}) {
  return detail::binary(detail::Call{"bitXor", onError},
                        detail::byChannels<channels>(vekiXor_8u_C1R, vekiXor_8u_C3R), a, b, dst);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> bitXor(View<const Vek8u, channels> a,
                                                           Same<View<const Vek8u, channels>> b,
                                                           OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      a.size(), onError, [&](auto& dst) { return bitXor<channels>(a, b, dst, onError); });
}

/// src ^ value (vekiXorC_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> bitXor(View<const Vek8u, channels> src,
                                                         const Same<Value<Vek8u, channels>>& value,
                                                         Same<View<Vek8u, channels>> dst,
                                                         OnError onError = {}) {
  return detail::withValue(detail::Call{"bitXor", onError},
                           detail::byChannels<channels>(vekiXorC_8u_C1R, vekiXorC_8u_C3R), src,
                           value, dst);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> bitXor(
    View<const Vek8u, channels> src, const Same<Value<Vek8u, channels>>& value,
    OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      src.size(), onError, [&](auto& dst) { return bitXor<channels>(src, value, dst, onError); });
}

/// ~src (vekiNot_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> bitNot(View<const Vek8u, channels> src,
                                                         Same<View<Vek8u, channels>> dst,
                                                         OnError onError = {}) {
  return detail::unary(detail::Call{"bitNot", onError},
                       detail::byChannels<channels>(vekiNot_8u_C1R, vekiNot_8u_C3R), src, dst);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> bitNot(View<const Vek8u, channels> src,
                                                           OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      src.size(), onError, [&](auto& dst) { return bitNot<channels>(src, dst, onError); });
}

/// src >> bits (vekiRShiftC_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> shiftRight(
    View<const Vek8u, channels> src, const Same<Value<Vek32u, channels>>& bits,
    Same<View<Vek8u, channels>> dst, OnError onError = {}) {
  return detail::withValue(detail::Call{"shiftRight", onError},
                           detail::byChannels<channels>(vekiRShiftC_8u_C1R, vekiRShiftC_8u_C3R),
                           src, bits, dst);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> shiftRight(
    View<const Vek8u, channels> src, const Same<Value<Vek32u, channels>>& bits,
    OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(src.size(), onError, [&](auto& dst) {
    return shiftRight<channels>(src, bits, dst, onError);
  });
}

/// src << bits, without the bits that leave the byte (vekiLShiftC_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> shiftLeft(
    View<const Vek8u, channels> src, const Same<Value<Vek32u, channels>>& bits,
    Same<View<Vek8u, channels>> dst, OnError onError = {}) {
  return detail::withValue(detail::Call{"shiftLeft", onError},
                           detail::byChannels<channels>(vekiLShiftC_8u_C1R, vekiLShiftC_8u_C3R),
                           src, bits, dst);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> shiftLeft(
    View<const Vek8u, channels> src, const Same<Value<Vek32u, channels>>& bits,
    OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      src.size(), onError, [&](auto& dst) { return shiftLeft<channels>(src, bits, dst, onError); });
}

/// Samples above `threshold` become `threshold` (vekiThreshold_GT_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> clampAbove(
    View<const Vek8u, channels> src, Same<View<Vek8u, channels>> dst,
    const Same<Value<Vek8u, channels>>& threshold, OnError onError = {}) {
  return detail::unary(
      detail::Call{"clampAbove", onError},
      detail::byChannels<channels>(vekiThreshold_GT_8u_C1R, vekiThreshold_GT_8u_C3R), src, dst,
      detail::passed(threshold));
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> clampAbove(
    View<const Vek8u, channels> src, const Same<Value<Vek8u, channels>>& threshold,
    OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(src.size(), onError, [&](auto& dst) {
    return clampAbove<channels>(src, dst, threshold, onError);
  });
}

/// Samples below `threshold` become `threshold` (vekiThreshold_LT_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> clampBelow(
    View<const Vek8u, channels> src, Same<View<Vek8u, channels>> dst,
    const Same<Value<Vek8u, channels>>& threshold, OnError onError = {}) {
  return detail::unary(
      detail::Call{"clampBelow", onError},
      detail::byChannels<channels>(vekiThreshold_LT_8u_C1R, vekiThreshold_LT_8u_C3R), src, dst,
      detail::passed(threshold));
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> clampBelow(
    View<const Vek8u, channels> src, const Same<Value<Vek8u, channels>>& threshold,
    OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(src.size(), onError, [&](auto& dst) {
    return clampBelow<channels>(src, dst, threshold, onError);
  });
}

/// Samples above `threshold` become `value` (vekiThreshold_GTVal_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> replaceAbove(
    View<const Vek8u, channels> src, Same<View<Vek8u, channels>> dst,
    const Same<Value<Vek8u, channels>>& threshold, const Same<Value<Vek8u, channels>>& value,
    OnError onError = {}) {
  return detail::unary(
      detail::Call{"replaceAbove", onError},
      detail::byChannels<channels>(vekiThreshold_GTVal_8u_C1R, vekiThreshold_GTVal_8u_C3R), src,
      dst, detail::passed(threshold), detail::passed(value));
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> replaceAbove(
    View<const Vek8u, channels> src, const Same<Value<Vek8u, channels>>& threshold,
    const Same<Value<Vek8u, channels>>& value, OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(src.size(), onError, [&](auto& dst) {
    return replaceAbove<channels>(src, dst, threshold, value, onError);
  });
}

/// Samples below `threshold` become `value` (vekiThreshold_LTVal_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> replaceBelow(
    View<const Vek8u, channels> src, Same<View<Vek8u, channels>> dst,
    const Same<Value<Vek8u, channels>>& threshold, const Same<Value<Vek8u, channels>>& value,
    OnError onError = {}) {
  return detail::unary(
      detail::Call{"replaceBelow", onError},
      detail::byChannels<channels>(vekiThreshold_LTVal_8u_C1R, vekiThreshold_LTVal_8u_C3R), src,
      dst, detail::passed(threshold), detail::passed(value));
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> replaceBelow(
    View<const Vek8u, channels> src, const Same<Value<Vek8u, channels>>& threshold,
    const Same<Value<Vek8u, channels>>& value, OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(src.size(), onError, [&](auto& dst) {
    return replaceBelow<channels>(src, dst, threshold, value, onError);
  });
}

/// Samples below `low` become `lowValue`, and samples above `high`, which is not below `low`, become
/// `highValue` (vekiThreshold_LTValGTVal_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> replaceOutside(
    View<const Vek8u, channels> src, Same<View<Vek8u, channels>> dst,
    const Same<Value<Vek8u, channels>>& low, const Same<Value<Vek8u, channels>>& lowValue,
    const Same<Value<Vek8u, channels>>& high, const Same<Value<Vek8u, channels>>& highValue,
    OnError onError = {}) {
  return detail::unary(detail::Call{"replaceOutside", onError},
                       detail::byChannels<channels>(vekiThreshold_LTValGTVal_8u_C1R,
                                                    vekiThreshold_LTValGTVal_8u_C3R),
                       src, dst, detail::passed(low), detail::passed(lowValue),
                       detail::passed(high), detail::passed(highValue));
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> replaceOutside(
    View<const Vek8u, channels> src, const Same<Value<Vek8u, channels>>& low,
    const Same<Value<Vek8u, channels>>& lowValue, const Same<Value<Vek8u, channels>>& high,
    const Same<Value<Vek8u, channels>>& highValue, OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(src.size(), onError, [&](auto& dst) {
    return replaceOutside<channels>(src, dst, low, lowValue, high, highValue, onError);
  });
}

/// A copy of the pixels (vekiCopy_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> copy(View<const Vek8u, channels> src,
                                                       Same<View<Vek8u, channels>> dst,
                                                       OnError onError = {}) {
  return detail::unary(detail::Call{"copy", onError},
                       detail::byChannels<channels>(vekiCopy_8u_C1R, vekiCopy_8u_C3R), src, dst);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> copy(View<const Vek8u, channels> src,
                                                         OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      src.size(), onError, [&](auto& dst) { return copy<channels>(src, dst, onError); });
}

/// Fills an image of one channel (vekiSet_8u_C1R).
VEK_INLINE VekStatus set(View<Vek8u> dst, Vek8u value, OnError onError = {}) {
  return detail::Call{"set", onError}.done(
      vekiSet_8u_C1R(value, dst.data(), dst.stepBytes(), dst.size()));
}
/// Fills an image of three channels (vekiSet_8u_C3R).
VEK_INLINE VekStatus set(View<Vek8u, 3> dst, const Value<Vek8u, 3>& value, OnError onError = {}) {
  return detail::Call{"set", onError}.done(
      vekiSet_8u_C3R(value.data(), dst.data(), dst.stepBytes(), dst.size()));
}

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_CPP_ARITH_HPP
