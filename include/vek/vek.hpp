/** @file vek.hpp
 *  The C++ interface: every function of the C interface as an overload of one name per operation, chosen
 *  by the types of its views, and states as objects. C++17, header only; what is wrapped costs nothing.
 *
 *  - Arguments come in the order sources, destination, parameters. Without a destination an image is
 *    made and returned.
 *  - Sizes are compared before anything is touched. Unless a function says otherwise, source and
 *    destination have the same size.
 *  - The last argument is an `OnError`: what happens if the call is refused. Arguments with a default
 *    before it are then written out.
 *  - A function returns the C function's status, which is positive for results with a reservation.
 *  - What a function computes, to the bit, stands at the C function that its comment names. */
#ifndef VEK_VEK_HPP
#define VEK_VEK_HPP

#include "vek/view.hpp"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

namespace vek {
inline namespace v0 {

/// @cond
namespace detail {

/// The argument that a status of the image sub-library is about, if views are valid.
inline const char* argumentOf(VekStatus status) {
  switch (status) {
    case vekStsMaskSizeErr:
      return "mask";
    case vekStsAnchorErr:
      return "anchor";
    case vekStsDivisorErr:
      return "divisor";
    case vekStsCoeffRangeErr:
      return "coefficients";
    case vekStsThresholdErr:
      return "thresholds";
    case vekStsMirrorFlipErr:
      return "axis";
    case vekStsNullPtrErr:
      return "an argument";
    case vekStsSizeErr:
      return "size";
    default:
      return "an argument";
  }
}

/// A call with this name that may fail.
struct Call {
  const char* function;
  OnError onError;

  VEK_INLINE VekStatus done(VekStatus status) const {
    return status >= 0          ? onError.success(status)
           : onError.isSilent() ? status
                                : refused(*this, status);
  }
  /// The same where `reason(status)` knows more; it refuses the call.
  template <class Reason>
  VEK_INLINE VekStatus done(VekStatus status, Reason reason) const {
    return status >= 0 ? onError.success(status) : onError.isSilent() ? status : reason(status);
  }
  /// Whether two images have the same size.
  template <class A, class B>
  VEK_INLINE bool same(const char* aName, const A& a, const char* bName, const B& b) const {
    return fits(aName, a.size(), bName, b.size());
  }
  VEK_INLINE bool fits(const char* name, Size size, const char* otherName, Size other) const {
    if (size.width == other.width && size.height == other.height) return true;
    if (!onError.isSilent()) wrongSize(*this, name, size, otherName, other);
    return false;
  }

 private:
  VEK_COLD static VekStatus refused(Call call, VekStatus status) {
    return OnError::refuse(call.onError, status, call.function, argumentOf(status), "is refused");
  }
  VEK_COLD static void wrongSize(Call call, const char* name, Size size, const char* otherName,
                                 Size other) {
    OnError::refuse(call.onError, vekStsSizeErr, call.function, name, "is %d x %d, but %s %d x %d",
                    size.width, size.height, otherName, other.width, other.height);
  }
};

/// The function for so many channels.
template <int channels, class C1, class C3>
VEK_INLINE constexpr auto byChannels(C1 one, C3 three) {
  static_assert(channels == 1 || channels == 3, "one channel or three");
  if constexpr (channels == 1) {
    return (void)three, one;
  } else {
    return (void)one, three;
  }
}

/// The function for these fields.
template <Fields fields, class F>
VEK_INLINE constexpr F byFields(F rgb565, F rgb555, F rgb444, F bgr565, F bgr555, F bgr444) {
  constexpr auto index = static_cast<std::size_t>(fields);
  return std::array<F, 6>{rgb565, rgb555, rgb444, bgr565, bgr555, bgr444}[index];
}

/// A value for each channel: a number, or an array of them.
template <class Number, int channels>
struct ValueOf {
  using Type = std::array<Number, static_cast<std::size_t>(channels)>;
};
template <class Number>
struct ValueOf<Number, 1> {
  using Type = Number;
};
template <class Number>
constexpr Number passed(const Number& value) {
  return value;
}
template <class Number, std::size_t count>
constexpr const Number* passed(const std::array<Number, count>& values) {
  return values.data();
}

/// Where a function stores a number for each channel.
template <class Number>
constexpr Number* written(Number& value) {
  return &value;
}
template <class Number, std::size_t count>
constexpr Number* written(std::array<Number, count>& values) {
  return values.data();
}

/// Images of one or three channels.
template <int channels, class Result>
using Supported = std::enable_if_t<channels == 1 || channels == 3, Result>;

/// f(source, destination, size, rest...).
template <class F, class Source, class Destination, class... Rest>
VEK_INLINE VekStatus unary(Call call, F f, const Source& src, const Destination& dst,
                           Rest... rest) {
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  return call.done(
      f(src.data(), src.stepBytes(), dst.data(), dst.stepBytes(), src.size(), rest...));
}

/// f(source, value, destination, size, rest...).
template <class F, class Source, class Value, class Destination, class... Rest>
VEK_INLINE VekStatus withValue(Call call, F f, const Source& src, const Value& value,
                               const Destination& dst, Rest... rest) {
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  return call.done(f(src.data(), src.stepBytes(), passed(value), dst.data(), dst.stepBytes(),
                     src.size(), rest...));
}

/// f(source, source, destination, size, rest...).
template <class F, class Source, class Destination, class... Rest>
VEK_INLINE VekStatus binary(Call call, F f, const Source& a, const Source& b,
                            const Destination& dst, Rest... rest) {
  if (!call.same("b", b, "a", a) || !call.same("dst", dst, "a", a)) return vekStsSizeErr;
  return call.done(f(a.data(), a.stepBytes(), b.data(), b.stepBytes(), dst.data(), dst.stepBytes(),
                     a.size(), rest...));
}

/// The planes of an image as the C interface takes them.
template <class Storage, int count>
struct PlaneList {
  Storage* data[count];
  int steps[count];
};
template <Chroma chroma>
VEK_INLINE PlaneList<const Vek8u, 3> listed(const Planes<const Vek8u, chroma>& p) {
  return {{p.y().data(), p.cb().data(), p.cr().data()},
          {p.y().stepBytes(), p.cb().stepBytes(), p.cr().stepBytes()}};
}
template <Chroma chroma>
VEK_INLINE PlaneList<Vek8u, 3> listed(const Planes<Vek8u, chroma>& p) {
  return {{p.y().data(), p.cb().data(), p.cr().data()},
          {p.y().stepBytes(), p.cb().stepBytes(), p.cr().stepBytes()}};
}

/// f(planes, steps, destination, size): planes that may have different steps.
template <class F, class Source, class Destination>
VEK_INLINE VekStatus fromPlanes(Call call, F f, const Source& src, const Destination& dst) {
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  const auto from = listed(src);
  return call.done(f(from.data, from.steps, dst.data(), dst.stepBytes(), src.size()));
}
template <class F, class Source, class Destination>
VEK_INLINE VekStatus toPlanes(Call call, F f, const Source& src, const Destination& dst) {
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  const auto to = listed(dst);
  return call.done(f(src.data(), src.stepBytes(), to.data, to.steps, src.size()));
}

/// Whether the three planes have the one step that some functions take.
template <class P>
VEK_INLINE bool oneStep(Call call, const char* name, const P& planes) {
  const int step = planes.y().stepBytes();
  if (planes.cb().stepBytes() == step && planes.cr().stepBytes() == step) return true;
  OnError::refuse(call.onError, vekStsStepErr, call.function, name,
                  "has planes with steps of %d, %d and %d bytes, which must be the same", step,
                  planes.cb().stepBytes(), planes.cr().stepBytes());
  return false;
}

/// Whether an image has no padding.
template <class V>
VEK_INLINE bool unpadded(Call call, const char* name, const V& view) {
  if (view.stepBytes() == view.rowBytes()) return true;
  OnError::refuse(call.onError, vekStsStepErr, call.function, name,
                  "has rows of %lld bytes that are %d bytes apart",
                  static_cast<long long>(view.rowBytes()), view.stepBytes());
  return false;
}
template <Chroma chroma>
VEK_INLINE bool unpadded(Call call, const char* name, const Planes<const Vek8u, chroma>& planes) {
  return unpadded(call, name, planes.y()) && unpadded(call, name, planes.cb()) &&
         unpadded(call, name, planes.cr());
}

/// A new image of `size` that `fill` fills; empty if that fails.
template <class Image, class Fill>
Image made(Size size, OnError onError, Fill fill) {
  Image image(size, onError);
  if (!image.empty() && fill(image) < 0) image = Image();
  return image;
}

}  // namespace detail
/// @endcond

/// A value for each channel: a Number for one channel, and an array of them for more.
template <class Number, int channels>
using Value = typename detail::ValueOf<Number, channels>::Type;

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
/** @defgroup cppcolor C++: colour
 *  The functions of the groups `ycbcr`, `channels` and `models`. Interleaved pixels say in their type
 *  what their channels are, and `yCbCr` and `yuv` in the names what planes are: studio-range BT.601, or
 *  full range.
 *  @{ */

/// Planar 4:2:0 to 16-bit pixels (vekiYCbCr420ToRGB565_8u16u_P3C3R and its kin).
template <Fields fields>
VEK_INLINE VekStatus yCbCrToRgb(const Planes420<const Vek8u>& src, View<Pixel16<fields>> dst,
                                OnError onError = {}) {
  return detail::fromPlanes(
      detail::Call{"yCbCrToRgb", onError},
      detail::byFields<fields>(vekiYCbCr420ToRGB565_8u16u_P3C3R, vekiYCbCr420ToRGB555_8u16u_P3C3R,
                               vekiYCbCr420ToRGB444_8u16u_P3C3R, vekiYCbCr420ToBGR565_8u16u_P3C3R,
                               vekiYCbCr420ToBGR555_8u16u_P3C3R, vekiYCbCr420ToBGR444_8u16u_P3C3R),
      src, dst);
}

/// Planar 4:4:4, all planes with the same step, to 16-bit pixels (vekiYCbCrToRGB565_8u16u_P3C3R and its
/// kin).
template <Fields fields>
VEK_INLINE VekStatus yCbCrToRgb(const Planes444<const Vek8u>& src, View<Pixel16<fields>> dst,
                                OnError onError = {}) {
  const detail::Call call{"yCbCrToRgb", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  if (!detail::oneStep(call, "src", src)) return vekStsStepErr;
  const auto f = detail::byFields<fields>(
      vekiYCbCrToRGB565_8u16u_P3C3R, vekiYCbCrToRGB555_8u16u_P3C3R, vekiYCbCrToRGB444_8u16u_P3C3R,
      vekiYCbCrToBGR565_8u16u_P3C3R, vekiYCbCrToBGR555_8u16u_P3C3R, vekiYCbCrToBGR444_8u16u_P3C3R);
  return call.done(
      f(detail::listed(src).data, src.y().stepBytes(), dst.data(), dst.stepBytes(), src.size()));
}

/// Interleaved 4:2:2 to 16-bit pixels (vekiYCbCr422ToRGB565_8u16u_C2C3R and its kin).
template <Fields fields>
VEK_INLINE VekStatus yCbCrToRgb(View<const Yuy2> src, View<Pixel16<fields>> dst,
                                OnError onError = {}) {
  return detail::unary(
      detail::Call{"yCbCrToRgb", onError},
      detail::byFields<fields>(vekiYCbCr422ToRGB565_8u16u_C2C3R, vekiYCbCr422ToRGB555_8u16u_C2C3R,
                               vekiYCbCr422ToRGB444_8u16u_C2C3R, vekiYCbCr422ToBGR565_8u16u_C2C3R,
                               vekiYCbCr422ToBGR555_8u16u_C2C3R, vekiYCbCr422ToBGR444_8u16u_C2C3R),
      src, dst);
}

/// Interleaved 4:4:4 to 16-bit pixels (vekiYCbCrToRGB565_8u16u_C3R and its kin).
template <Fields fields>
VEK_INLINE VekStatus yCbCrToRgb(View<const YCbCr24> src, View<Pixel16<fields>> dst,
                                OnError onError = {}) {
  return detail::unary(
      detail::Call{"yCbCrToRgb", onError},
      detail::byFields<fields>(vekiYCbCrToRGB565_8u16u_C3R, vekiYCbCrToRGB555_8u16u_C3R,
                               vekiYCbCrToRGB444_8u16u_C3R, vekiYCbCrToBGR565_8u16u_C3R,
                               vekiYCbCrToBGR555_8u16u_C3R, vekiYCbCrToBGR444_8u16u_C3R),
      src, dst);
}

/// Interleaved 4:4:4 to RGB24, rounded (vekiYCbCrToRGB_8u_C3R).
VEK_INLINE VekStatus yCbCrToRgb(View<const YCbCr24> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"yCbCrToRgb", onError}, vekiYCbCrToRGB_8u_C3R, src, dst);
}

/// Interleaved 4:2:2 to RGB24 (vekiYCbCr422ToRGB_8u_C2C3R).
VEK_INLINE VekStatus yCbCrToRgb(View<const Yuy2> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"yCbCrToRgb", onError}, vekiYCbCr422ToRGB_8u_C2C3R, src, dst);
}

/// Any of these in a new image, whose pixels are named: `yCbCrToRgb<Rgb565>(src)`.
template <class Pixel, class Source>
Image<Pixel> yCbCrToRgb(const Source& src, OnError onError = {}) {
  return detail::made<Image<Pixel>>(
      src.size(), onError, [&](auto& dst) { return yCbCrToRgb(src, dst.view(), onError); });
}

/// RGB24 to interleaved 4:4:4 (vekiRGBToYCbCr_8u_C3R).
VEK_INLINE VekStatus rgbToYCbCr(View<const Rgb24> src, View<YCbCr24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToYCbCr", onError}, vekiRGBToYCbCr_8u_C3R, src, dst);
}

/// RGB24 to interleaved 4:2:2 (vekiRGBToYCbCr422_8u_C3C2R).
VEK_INLINE VekStatus rgbToYCbCr(View<const Rgb24> src, View<Yuy2> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToYCbCr", onError}, vekiRGBToYCbCr422_8u_C3C2R, src, dst);
}

/// Any of these in a new image, whose pixels are named: `rgbToYCbCr<Yuy2>(src)`.
template <class Pixel>
Image<Pixel> rgbToYCbCr(Same<View<const Rgb24>> src, OnError onError = {}) {
  return detail::made<Image<Pixel>>(
      src.size(), onError, [&](auto& dst) { return rgbToYCbCr(src, dst.view(), onError); });
}

/// Planar 4:2:0 to 16-bit pixels (vekiYUV420ToRGB565_8u16u_P3C3R and its kin).
template <Fields fields>
VEK_INLINE VekStatus yuvToRgb(const Planes420<const Vek8u>& src, View<Pixel16<fields>> dst,
                              OnError onError = {}) {
  return detail::fromPlanes(
      detail::Call{"yuvToRgb", onError},
      detail::byFields<fields>(vekiYUV420ToRGB565_8u16u_P3C3R, vekiYUV420ToRGB555_8u16u_P3C3R,
                               vekiYUV420ToRGB444_8u16u_P3C3R, vekiYUV420ToBGR565_8u16u_P3C3R,
                               vekiYUV420ToBGR555_8u16u_P3C3R, vekiYUV420ToBGR444_8u16u_P3C3R),
      src, dst);
}

/// Interleaved 4:4:4 to RGB24 (vekiYUVToRGB_8u_C3R).
VEK_INLINE VekStatus yuvToRgb(View<const Yuv24> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"yuvToRgb", onError}, vekiYUVToRGB_8u_C3R, src, dst);
}

/// Interleaved 4:2:2 to RGB24 (vekiYUV422ToRGB_8u_C2C3R).
VEK_INLINE VekStatus yuvToRgb(View<const Yuy2> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"yuvToRgb", onError}, vekiYUV422ToRGB_8u_C2C3R, src, dst);
}

/// Planar 4:2:0 to RGB24 (vekiYUV420ToRGB_8u_P3C3R).
VEK_INLINE VekStatus yuvToRgb(const Planes420<const Vek8u>& src, View<Rgb24> dst,
                              OnError onError = {}) {
  return detail::fromPlanes(detail::Call{"yuvToRgb", onError}, vekiYUV420ToRGB_8u_P3C3R, src, dst);
}

/// Planar 4:2:2 to RGB24 (vekiYUV422ToRGB_8u_P3C3R).
VEK_INLINE VekStatus yuvToRgb(const Planes422<const Vek8u>& src, View<Rgb24> dst,
                              OnError onError = {}) {
  return detail::fromPlanes(detail::Call{"yuvToRgb", onError}, vekiYUV422ToRGB_8u_P3C3R, src, dst);
}

/// Planar 4:4:4, all planes with the same step, to RGB24 (vekiYUVToRGB_8u_P3C3R).
VEK_INLINE VekStatus yuvToRgb(const Planes444<const Vek8u>& src, View<Rgb24> dst,
                              OnError onError = {}) {
  const detail::Call call{"yuvToRgb", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  if (!detail::oneStep(call, "src", src)) return vekStsStepErr;
  return call.done(vekiYUVToRGB_8u_P3C3R(detail::listed(src).data, src.y().stepBytes(), dst.data(),
                                         dst.stepBytes(), src.size()));
}
/// Any of these in a new image, whose pixels are named: `yuvToRgb<Rgb24>(src)`.
template <class Pixel, class Source>
Image<Pixel> yuvToRgb(const Source& src, OnError onError = {}) {
  return detail::made<Image<Pixel>>(src.size(), onError,
                                    [&](auto& dst) { return yuvToRgb(src, dst.view(), onError); });
}

/// RGB24 to interleaved 4:4:4 (vekiRGBToYUV_8u_C3R).
VEK_INLINE VekStatus rgbToYuv(View<const Rgb24> src, View<Yuv24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToYuv", onError}, vekiRGBToYUV_8u_C3R, src, dst);
}

/// RGB24 to interleaved 4:2:2 (vekiRGBToYUV422_8u_C3C2R).
VEK_INLINE VekStatus rgbToYuv(View<const Rgb24> src, View<Yuy2> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToYuv", onError}, vekiRGBToYUV422_8u_C3C2R, src, dst);
}

/// RGB24 to planar 4:2:0 (vekiRGBToYUV420_8u_C3P3R).
VEK_INLINE VekStatus rgbToYuv(View<const Rgb24> src, const Planes420<>& dst, OnError onError = {}) {
  return detail::toPlanes(detail::Call{"rgbToYuv", onError}, vekiRGBToYUV420_8u_C3P3R, src, dst);
}

/// RGB24 to planar 4:2:2 (vekiRGBToYUV422_8u_C3P3R).
VEK_INLINE VekStatus rgbToYuv(View<const Rgb24> src, const Planes422<>& dst, OnError onError = {}) {
  return detail::toPlanes(detail::Call{"rgbToYuv", onError}, vekiRGBToYUV422_8u_C3P3R, src, dst);
}

/// RGB24 to planar 4:4:4, all planes with the same step (vekiRGBToYUV_8u_C3P3R).
VEK_INLINE VekStatus rgbToYuv(View<const Rgb24> src, const Planes444<>& dst, OnError onError = {}) {
  const detail::Call call{"rgbToYuv", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  if (!detail::oneStep(call, "dst", dst)) return vekStsStepErr;
  return call.done(vekiRGBToYUV_8u_C3P3R(src.data(), src.stepBytes(), detail::listed(dst).data,
                                         dst.y().stepBytes(), src.size()));
}
/// Any of these in a new image, the type of which is named: `rgbToYuv<Image420>(src)`.
template <class Result>
Result rgbToYuv(Same<View<const Rgb24>> src, OnError onError = {}) {
  return detail::made<Result>(src.size(), onError,
                              [&](auto& dst) { return rgbToYuv(src, dst.view(), onError); });
}

/// RGB24 to planar 4:2:0 or 4:2:2, all without padding (vekiRGBToYUV420_8u_C3P3, vekiRGBToYUV422_8u_C3P3).
template <Chroma chroma>
VEK_INLINE std::enable_if_t<chroma != Chroma::c444, VekStatus> rgbToYuvUnpadded(
    View<const Rgb24> src, const Planes<Vek8u, chroma>& dst, OnError onError = {}) {
  const detail::Call call{"rgbToYuvUnpadded", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  if (!detail::unpadded(call, "src", src) || !detail::unpadded<chroma>(call, "dst", dst))
    return vekStsStepErr;
  return call.done((chroma == Chroma::c420 ? vekiRGBToYUV420_8u_C3P3 : vekiRGBToYUV422_8u_C3P3)(
      src.data(), detail::listed(dst).data, src.size()));
}
/// Planar 4:2:0 or 4:2:2 to RGB24, all without padding (vekiYUV420ToRGB_8u_P3C3, vekiYUV422ToRGB_8u_P3C3).
template <Chroma chroma>
VEK_INLINE std::enable_if_t<chroma != Chroma::c444, VekStatus> yuvToRgbUnpadded(
    const Planes<const Vek8u, chroma>& src, View<Rgb24> dst, OnError onError = {}) {
  const detail::Call call{"yuvToRgbUnpadded", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  if (!detail::unpadded(call, "src", src) || !detail::unpadded(call, "dst", dst))
    return vekStsStepErr;
  return call.done((chroma == Chroma::c420 ? vekiYUV420ToRGB_8u_P3C3 : vekiYUV422ToRGB_8u_P3C3)(
      detail::listed(src).data, dst.data(), src.size()));
}

/// RGB24 to XYZ (vekiRGBToXYZ_8u_C3R).
VEK_INLINE VekStatus rgbToXyz(View<const Rgb24> src, View<Xyz24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToXyz", onError}, vekiRGBToXYZ_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Xyz24> rgbToXyz(View<const Rgb24> src, OnError onError = {}) {
  return detail::made<Image<Xyz24>>(src.size(), onError,
                                    [&](auto& dst) { return rgbToXyz(src, dst, onError); });
}

/// XYZ to RGB24 (vekiXYZToRGB_8u_C3R).
VEK_INLINE VekStatus xyzToRgb(View<const Xyz24> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"xyzToRgb", onError}, vekiXYZToRGB_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Rgb24> xyzToRgb(View<const Xyz24> src, OnError onError = {}) {
  return detail::made<Image<Rgb24>>(src.size(), onError,
                                    [&](auto& dst) { return xyzToRgb(src, dst, onError); });
}

/// RGB24 to YCC (vekiRGBToYCC_8u_C3R).
VEK_INLINE VekStatus rgbToYcc(View<const Rgb24> src, View<Ycc24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToYcc", onError}, vekiRGBToYCC_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Ycc24> rgbToYcc(View<const Rgb24> src, OnError onError = {}) {
  return detail::made<Image<Ycc24>>(src.size(), onError,
                                    [&](auto& dst) { return rgbToYcc(src, dst, onError); });
}

/// YCC to RGB24 (vekiYCCToRGB_8u_C3R).
VEK_INLINE VekStatus yccToRgb(View<const Ycc24> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"yccToRgb", onError}, vekiYCCToRGB_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Rgb24> yccToRgb(View<const Ycc24> src, OnError onError = {}) {
  return detail::made<Image<Rgb24>>(src.size(), onError,
                                    [&](auto& dst) { return yccToRgb(src, dst, onError); });
}

/// RGB24 to LUV (vekiRGBToLUV_8u_C3R).
VEK_INLINE VekStatus rgbToLuv(View<const Rgb24> src, View<Luv24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToLuv", onError}, vekiRGBToLUV_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Luv24> rgbToLuv(View<const Rgb24> src, OnError onError = {}) {
  return detail::made<Image<Luv24>>(src.size(), onError,
                                    [&](auto& dst) { return rgbToLuv(src, dst, onError); });
}

/// LUV to RGB24 (vekiLUVToRGB_8u_C3R).
VEK_INLINE VekStatus luvToRgb(View<const Luv24> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"luvToRgb", onError}, vekiLUVToRGB_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Rgb24> luvToRgb(View<const Luv24> src, OnError onError = {}) {
  return detail::made<Image<Rgb24>>(src.size(), onError,
                                    [&](auto& dst) { return luvToRgb(src, dst, onError); });
}

/// RGB24 to HLS (vekiRGBToHLS_8u_C3R).
VEK_INLINE VekStatus rgbToHls(View<const Rgb24> src, View<Hls24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToHls", onError}, vekiRGBToHLS_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Hls24> rgbToHls(View<const Rgb24> src, OnError onError = {}) {
  return detail::made<Image<Hls24>>(src.size(), onError,
                                    [&](auto& dst) { return rgbToHls(src, dst, onError); });
}

/// HLS to RGB24 (vekiHLSToRGB_8u_C3R).
VEK_INLINE VekStatus hlsToRgb(View<const Hls24> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"hlsToRgb", onError}, vekiHLSToRGB_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Rgb24> hlsToRgb(View<const Hls24> src, OnError onError = {}) {
  return detail::made<Image<Rgb24>>(src.size(), onError,
                                    [&](auto& dst) { return hlsToRgb(src, dst, onError); });
}

/// RGB24 to HSV (vekiRGBToHSV_8u_C3R).
VEK_INLINE VekStatus rgbToHsv(View<const Rgb24> src, View<Hsv24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToHsv", onError}, vekiRGBToHSV_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Hsv24> rgbToHsv(View<const Rgb24> src, OnError onError = {}) {
  return detail::made<Image<Hsv24>>(src.size(), onError,
                                    [&](auto& dst) { return rgbToHsv(src, dst, onError); });
}

/// HSV to RGB24 (vekiHSVToRGB_8u_C3R).
VEK_INLINE VekStatus hsvToRgb(View<const Hsv24> src, View<Rgb24> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"hsvToRgb", onError}, vekiHSVToRGB_8u_C3R, src, dst);
}

/// The same in a new image.
inline Image<Rgb24> hsvToRgb(View<const Hsv24> src, OnError onError = {}) {
  return detail::made<Image<Rgb24>>(src.size(), onError,
                                    [&](auto& dst) { return hsvToRgb(src, dst, onError); });
}

/// Luma of RGB24 (vekiRGBToGray_8u_C3C1R).
VEK_INLINE VekStatus rgbToGray(View<const Rgb24> src, View<Vek8u> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"rgbToGray", onError}, vekiRGBToGray_8u_C3C1R, src, dst);
}

/// The same in a new image.
inline Image<Vek8u> rgbToGray(View<const Rgb24> src, OnError onError = {}) {
  return detail::made<Image<Vek8u>>(src.size(), onError,
                                    [&](auto& dst) { return rgbToGray(src, dst, onError); });
}

/// A weighted sum of the channels, with weights in 1/16384 (vekiColorToGrayQ14_8u_C3C1R).
VEK_INLINE VekStatus colorToGray(View<const Vek8u, 3> src, View<Vek8u> dst,
                                 const std::array<Vek32s, 3>& weights, OnError onError = {}) {
  return detail::unary(detail::Call{"colorToGray", onError}, vekiColorToGrayQ14_8u_C3C1R, src, dst,
                       weights.data());
}
/// The same in a new image.
inline Image<Vek8u> colorToGray(View<const Vek8u, 3> src, const std::array<Vek32s, 3>& weights,
                                OnError onError = {}) {
  return detail::made<Image<Vek8u>>(
      src.size(), onError, [&](auto& dst) { return colorToGray(src, dst, weights, onError); });
}

/// A linear map of the channels: for each result three coefficients and an offset, in 1/16384
/// (vekiColorTwistQ14_8u_C3R).
using Twist = Vek32s[3][4];
/// Applies a linear map of the channels.
VEK_INLINE VekStatus colorTwist(View<const Vek8u, 3> src, View<Vek8u, 3> dst, const Twist& twist,
                                OnError onError = {}) {
  return detail::unary(detail::Call{"colorTwist", onError}, vekiColorTwistQ14_8u_C3R, src, dst,
                       twist);
}
/// The same in a new image.
inline Image<Vek8u, 3> colorTwist(View<const Vek8u, 3> src, const Twist& twist,
                                  OnError onError = {}) {
  return detail::made<Image<Vek8u, 3>>(
      src.size(), onError, [&](auto& dst) { return colorTwist(src, dst, twist, onError); });
}

/// Channel i of `dst` is channel order[i] of `src` (vekiPermuteChannels_8u_C3R). In place as well.
VEK_INLINE VekStatus permuteChannels(View<const Vek8u, 3> src, View<Vek8u, 3> dst,
                                     const std::array<int, 3>& order, OnError onError = {}) {
  return detail::unary(detail::Call{"permuteChannels", onError}, vekiPermuteChannels_8u_C3R, src,
                       dst, order.data());
}
/// The same for four channels (vekiPermuteChannels_8u_C4R). In place as well.
VEK_INLINE VekStatus permuteChannels(View<const Vek8u, 4> src, View<Vek8u, 4> dst,
                                     const std::array<int, 4>& order, OnError onError = {}) {
  return detail::unary(detail::Call{"permuteChannels", onError}, vekiPermuteChannels_8u_C4R, src,
                       dst, order.data());
}
/// The same from four channels to three (vekiPermuteChannels_8u_C4C3R).
VEK_INLINE VekStatus permuteChannels(View<const Vek8u, 4> src, View<Vek8u, 3> dst,
                                     const std::array<int, 3>& order, OnError onError = {}) {
  return detail::unary(detail::Call{"permuteChannels", onError}, vekiPermuteChannels_8u_C4C3R, src,
                       dst, order.data());
}
/// The same from three channels to four, where an order of 3 stands for `value`
/// (vekiPermuteChannels_8u_C3C4R).
VEK_INLINE VekStatus permuteChannels(View<const Vek8u, 3> src, View<Vek8u, 4> dst,
                                     const std::array<int, 4>& order, Vek8u value,
                                     OnError onError = {}) {
  return detail::unary(detail::Call{"permuteChannels", onError}, vekiPermuteChannels_8u_C3C4R, src,
                       dst, order.data(), value);
}

/// Any of these in a new image of as many channels as `order` has entries. `value` is what an order of 3
/// stands for, from three channels to four alone.
template <int channels, std::size_t count>
detail::Supported<channels == 4 ? 3 : channels, Image<Vek8u, static_cast<int>(count)>>
permuteChannels(View<const Vek8u, channels> src, const std::array<int, count>& order,
                Vek8u value = 255, OnError onError = {}) {
  return detail::made<Image<Vek8u, static_cast<int>(count)>>(src.size(), onError, [&](auto& dst) {
    if constexpr (channels == 3 && count == 4) {
      return permuteChannels(src, dst, order, value, onError);
    } else {
      return permuteChannels(src, dst, order, onError);
    }
  });
}

/// Planar 4:2:0 to semi-planar (vekiYCbCr420ToNV12_8u_P3P2R).
VEK_INLINE VekStatus toNv12(const Planes420<const Vek8u>& src, const Nv12<>& dst,
                            OnError onError = {}) {
  const detail::Call call{"toNv12", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  const auto from = detail::listed(src);
  Vek8u* const to[] = {dst.y().data(), dst.pairs().data()};
  const int steps[] = {dst.y().stepBytes(), dst.pairs().stepBytes()};
  return call.done(vekiYCbCr420ToNV12_8u_P3P2R(from.data, from.steps, to, steps, src.size()));
}
/// The same in a new image.
inline ImageNv12 toNv12(const Planes420<const Vek8u>& src, OnError onError = {}) {
  return detail::made<ImageNv12>(src.size(), onError,
                                 [&](auto& dst) { return toNv12(src, dst.view(), onError); });
}
/// Semi-planar 4:2:0 to planar (vekiNV12ToYCbCr420_8u_P2P3R).
VEK_INLINE VekStatus toPlanes(const Nv12<const Vek8u>& src, const Planes420<>& dst,
                              OnError onError = {}) {
  const detail::Call call{"toPlanes", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  const Vek8u* const from[] = {src.y().data(), src.pairs().data()};
  const int steps[] = {src.y().stepBytes(), src.pairs().stepBytes()};
  const auto to = detail::listed(dst);
  return call.done(vekiNV12ToYCbCr420_8u_P2P3R(from, steps, to.data, to.steps, src.size()));
}
/// The same in a new image.
inline Image420 toPlanes(const Nv12<const Vek8u>& src, OnError onError = {}) {
  return detail::made<Image420>(src.size(), onError,
                                [&](auto& dst) { return toPlanes(src, dst.view(), onError); });
}

/** @} */
/** @defgroup cppfilters C++: borders, filters
 *  The functions of the groups `pad`, `filters`, `convolution` and `neighbourhood`.
 *
 *  A filter reads nothing but its source, which therefore has the pixels around the destination, too:
 *  with a neighbourhood of w x h pixels the destination is w - 1 columns and h - 1 rows smaller, and its
 *  first pixel is the one whose neighbourhood begins at the source's first pixel. pad() makes a source
 *  that is large enough.
 *  @{ */

/// The pixel of a mask or kernel that lies on the destination's pixel: that in the middle, (width / 2,
/// height / 2).
inline constexpr Point atCentre = {-1, -1};

/// A kernel of whole numbers, row after row.
struct Kernel {
  const Vek32s* entries;  ///< all of them
  Size size;              ///< columns and rows
  /// `entries_` has size_.width * size_.height entries.
  constexpr Kernel(const Vek32s* entries_, Size size_) : entries(entries_), size(size_) {}
  /// An array of rows.
  template <std::size_t rows, std::size_t columns>
  constexpr Kernel(const Vek32s (&array)[rows][columns])
      : entries(array[0]), size{static_cast<Vek32s>(columns), static_cast<Vek32s>(rows)} {}
};

/// A kernel of one row or column.
struct Taps {
  const Vek32s* entries;  ///< all of them
  int count;              ///< how many they are
  /// `entries_` has count_ entries.
  constexpr Taps(const Vek32s* entries_, int count_) : entries(entries_), count(count_) {}
  /// An array.
  template <std::size_t size>
  constexpr Taps(const Vek32s (&array)[size]) : entries(array), count(static_cast<int>(size)) {}
};

/// @cond
namespace detail {

constexpr Point anchorOf(Size mask, Point anchor) {
  return anchor.x == atCentre.x && anchor.y == atCentre.y ? Point{mask.width / 2, mask.height / 2}
                                                          : anchor;
}

VEK_COLD inline void refuseMask(Call call, Size src, Size dst, Size mask) {
  OnError::refuse(call.onError, vekStsSizeErr, call.function, "dst",
                  "is %d x %d, but a neighbourhood of %d x %d in %d x %d leaves %d x %d", dst.width,
                  dst.height, mask.width, mask.height, src.width, src.height,
                  src.width - mask.width + 1, src.height - mask.height + 1);
}

/// Columns and rows of the source that a destination of `dst` pixels needs.
VEK_INLINE bool neighbourhoodFits(Call call, Size src, Size dst, Size mask) {
  if (mask.width < 1 || mask.height < 1) {
    OnError::refuse(call.onError, vekStsMaskSizeErr, call.function, "mask", "is %d x %d",
                    mask.width, mask.height);
    return false;
  }
  if (src.width - dst.width == mask.width - 1 && src.height - dst.height == mask.height - 1)
    return true;
  refuseMask(call, src, dst, mask);
  return false;
}

/// f(source at the anchor's place, destination, size, rest...), where the anchor's place is `before`.
template <int channels, class F, class... Rest>
VEK_INLINE VekStatus neighbours(Call call, F f, View<const Vek8u, channels> src,
                                View<Vek8u, channels> dst, Size mask, Point before, Rest... rest) {
  if (!neighbourhoodFits(call, src.size(), dst.size(), mask)) {
    return mask.width < 1 || mask.height < 1 ? vekStsMaskSizeErr : vekStsSizeErr;
  }
  if (before.x < 0 || before.y < 0 || before.x >= mask.width || before.y >= mask.height) {
    return OnError::refuse(call.onError, vekStsAnchorErr, call.function, "anchor",
                           "is outside a mask of %d x %d", mask.width, mask.height);
  }
  return call.done(f(src.row(before.y) + before.x * channels, src.stepBytes(), dst.data(),
                     dst.stepBytes(), dst.size(), rest...));
}

/// A new image of the pixels whose neighbourhoods of `mask` pixels are inside the source.
template <class Image, class Fill>
Image madeInside(Call call, Size src, Size mask, Fill fill) {
  if (mask.width < 1 || mask.height < 1 || mask.width > src.width || mask.height > src.height) {
    OnError::refuse(call.onError, vekStsMaskSizeErr, call.function, "mask",
                    "of %d x %d does not fit into %d x %d pixels", mask.width, mask.height,
                    src.width, src.height);
    return {};
  }
  const Size size = {src.width - mask.width + 1, src.height - mask.height + 1};
  return made<Image>(size, call.onError, fill);
}

}  // namespace detail
/// @endcond

/// What pad() puts around an image.
struct Margins {
  int left;    ///< columns at the left
  int top;     ///< rows above
  int right;   ///< columns at the right
  int bottom;  ///< rows below
};

/// Puts `src` at `place` of `dst` and fills the rest as `border` says; `value` is for a constant one
/// (vekiPad_8u_C1R). `src` may already lie there.
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> pad(
    View<const Vek8u, channels> src, Same<View<Vek8u, channels>> dst, Point place, PadBorder border,
    const Same<Value<Vek8u, channels>>& value = {}, OnError onError = {}) {
  const detail::Call call{"pad", onError};
  const auto f = detail::byChannels<channels>(vekiPad_8u_C1R, vekiPad_8u_C3R);
  return call.done(f(src.data(), src.stepBytes(), src.size(), dst.data(), dst.stepBytes(),
                     dst.size(), place.x, place.y, static_cast<int>(border), detail::passed(value)),
                   [&](VekStatus status) {
                     return OnError::refuse(onError, status, "pad", "place",
                                            "(%d, %d) does not put %d x %d pixels into %d x %d",
                                            place.x, place.y, src.width(), src.height(),
                                            dst.width(), dst.height());
                   });
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> pad(
    View<const Vek8u, channels> src, Margins margins, PadBorder border,
    const Same<Value<Vek8u, channels>>& value = {}, OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      {margins.left + src.width() + margins.right, margins.top + src.height() + margins.bottom},
      onError, [&](auto& dst) {
        return pad<channels>(src, dst, {margins.left, margins.top}, border, value, onError);
      });
}

/// The mean of `mask` pixels (vekiFilterBox_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> filterBox(View<const Vek8u, channels> src,
                                                            Same<View<Vek8u, channels>> dst,
                                                            Size mask, Point anchor = atCentre,
                                                            OnError onError = {}) {
  const Point at = detail::anchorOf(mask, anchor);
  return detail::neighbours<channels>(
      detail::Call{"filterBox", onError},
      detail::byChannels<channels>(vekiFilterBox_8u_C1R, vekiFilterBox_8u_C3R), src, dst, mask, at,
      mask, at);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> filterBox(View<const Vek8u, channels> src,
                                                              Size mask, Point anchor = atCentre,
                                                              OnError onError = {}) {
  return detail::madeInside<Image<Vek8u, channels>>(
      detail::Call{"filterBox", onError}, src.size(), mask,
      [&](auto& dst) { return filterBox<channels>(src, dst, mask, anchor, onError); });
}

/// The median of `mask` pixels, in each channel (vekiFilterMedian_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> filterMedian(View<const Vek8u, channels> src,
                                                               Same<View<Vek8u, channels>> dst,
                                                               Size mask, Point anchor = atCentre,
                                                               OnError onError = {}) {
  const Point at = detail::anchorOf(mask, anchor);
  return detail::neighbours<channels>(
      detail::Call{"filterMedian", onError},
      detail::byChannels<channels>(vekiFilterMedian_8u_C1R, vekiFilterMedian_8u_C3R), src, dst,
      mask, at, mask, at);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> filterMedian(View<const Vek8u, channels> src,
                                                                 Size mask, Point anchor = atCentre,
                                                                 OnError onError = {}) {
  return detail::madeInside<Image<Vek8u, channels>>(
      detail::Call{"filterMedian", onError}, src.size(), mask,
      [&](auto& dst) { return filterMedian<channels>(src, dst, mask, anchor, onError); });
}

/// The convolution with a kernel, divided by `divisor` (vekiFilter_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> filter(View<const Vek8u, channels> src,
                                                         Same<View<Vek8u, channels>> dst,
                                                         Kernel kernel, int divisor,
                                                         Point anchor = atCentre,
                                                         OnError onError = {}) {
  const Point at = detail::anchorOf(kernel.size, anchor);
  return detail::neighbours<channels>(
      detail::Call{"filter", onError},
      detail::byChannels<channels>(vekiFilter_8u_C1R, vekiFilter_8u_C3R), src, dst, kernel.size,
      Point{kernel.size.width - 1 - at.x, kernel.size.height - 1 - at.y}, kernel.entries,
      kernel.size, at, divisor);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> filter(View<const Vek8u, channels> src,
                                                           Kernel kernel, int divisor,
                                                           Point anchor = atCentre,
                                                           OnError onError = {}) {
  return detail::madeInside<Image<Vek8u, channels>>(
      detail::Call{"filter", onError}, src.size(), kernel.size,
      [&](auto& dst) { return filter<channels>(src, dst, kernel, divisor, anchor, onError); });
}

/// The convolution along rows, divided by `divisor` (vekiFilterRow_8u_C1R). An anchor of -1 is the middle.
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> filterRow(View<const Vek8u, channels> src,
                                                            Same<View<Vek8u, channels>> dst,
                                                            Taps taps, int divisor, int anchor = -1,
                                                            OnError onError = {}) {
  const int at = anchor == -1 ? taps.count / 2 : anchor;
  return detail::neighbours<channels>(
      detail::Call{"filterRow", onError},
      detail::byChannels<channels>(vekiFilterRow_8u_C1R, vekiFilterRow_8u_C3R), src, dst,
      Size{taps.count, 1}, Point{taps.count - 1 - at, 0}, taps.entries, taps.count, at, divisor);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> filterRow(View<const Vek8u, channels> src,
                                                              Taps taps, int divisor,
                                                              int anchor = -1,
                                                              OnError onError = {}) {
  return detail::madeInside<Image<Vek8u, channels>>(
      detail::Call{"filterRow", onError}, src.size(), Size{taps.count, 1},
      [&](auto& dst) { return filterRow<channels>(src, dst, taps, divisor, anchor, onError); });
}

/// The convolution along columns, divided by `divisor` (vekiFilterColumn_8u_C1R). An anchor of -1 is the middle.
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> filterColumn(View<const Vek8u, channels> src,
                                                               Same<View<Vek8u, channels>> dst,
                                                               Taps taps, int divisor,
                                                               int anchor = -1,
                                                               OnError onError = {}) {
  const int at = anchor == -1 ? taps.count / 2 : anchor;
  return detail::neighbours<channels>(
      detail::Call{"filterColumn", onError},
      detail::byChannels<channels>(vekiFilterColumn_8u_C1R, vekiFilterColumn_8u_C3R), src, dst,
      Size{1, taps.count}, Point{0, taps.count - 1 - at}, taps.entries, taps.count, at, divisor);
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> filterColumn(View<const Vek8u, channels> src,
                                                                 Taps taps, int divisor,
                                                                 int anchor = -1,
                                                                 OnError onError = {}) {
  return detail::madeInside<Image<Vek8u, channels>>(
      detail::Call{"filterColumn", onError}, src.size(), Size{1, taps.count},
      [&](auto& dst) { return filterColumn<channels>(src, dst, taps, divisor, anchor, onError); });
}

/// The least sample of 3 x 3 pixels, in each channel (vekiErode3x3_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> erode(View<const Vek8u, channels> src,
                                                        Same<View<Vek8u, channels>> dst,
                                                        OnError onError = {}) {
  return detail::neighbours<channels>(
      detail::Call{"erode", onError},
      detail::byChannels<channels>(vekiErode3x3_8u_C1R, vekiErode3x3_8u_C3R), src, dst, Size{3, 3},
      Point{1, 1});
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> erode(View<const Vek8u, channels> src,
                                                          OnError onError = {}) {
  return detail::madeInside<Image<Vek8u, channels>>(
      detail::Call{"erode", onError}, src.size(), Size{3, 3},
      [&](auto& dst) { return erode<channels>(src, dst, onError); });
}

/// The greatest sample of 3 x 3 pixels, in each channel (vekiDilate3x3_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> dilate(View<const Vek8u, channels> src,
                                                         Same<View<Vek8u, channels>> dst,
                                                         OnError onError = {}) {
  return detail::neighbours<channels>(
      detail::Call{"dilate", onError},
      detail::byChannels<channels>(vekiDilate3x3_8u_C1R, vekiDilate3x3_8u_C3R), src, dst,
      Size{3, 3}, Point{1, 1});
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> dilate(View<const Vek8u, channels> src,
                                                           OnError onError = {}) {
  return detail::madeInside<Image<Vek8u, channels>>(
      detail::Call{"dilate", onError}, src.size(), Size{3, 3},
      [&](auto& dst) { return dilate<channels>(src, dst, onError); });
}

/// The vector median of 3 x 3 or 5 x 5 pixels (vekiFilterMedianColor_8u_C3R).
VEK_INLINE VekStatus filterMedianColor(View<const Vek8u, 3> src, View<Vek8u, 3> dst,
                                       MedianMask mask, OnError onError = {}) {
  const int side = mask == MedianMask::square3 ? 3 : 5;
  return detail::neighbours<3>(detail::Call{"filterMedianColor", onError},
                               vekiFilterMedianColor_8u_C3R, src, dst, {side, side},
                               {side / 2, side / 2}, static_cast<int>(mask));
}
/// The same in a new image.
inline Image<Vek8u, 3> filterMedianColor(View<const Vek8u, 3> src, MedianMask mask,
                                         OnError onError = {}) {
  const int side = mask == MedianMask::square3 ? 3 : 5;
  return detail::madeInside<Image<Vek8u, 3>>(
      detail::Call{"filterMedianColor", onError}, src.size(), {side, side},
      [&](auto& dst) { return filterMedianColor(src, dst, mask, onError); });
}

/// The image mirrored about an axis (vekiMirror_8u_C1R). Not in place.
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> mirror(View<const Vek8u, channels> src,
                                                         Same<View<Vek8u, channels>> dst,
                                                         MirrorAxis axis, OnError onError = {}) {
  return detail::unary(detail::Call{"mirror", onError},
                       detail::byChannels<channels>(vekiMirror_8u_C1R, vekiMirror_8u_C3R), src, dst,
                       static_cast<int>(axis));
}
/// The same in a new image.
template <int channels>
detail::Supported<channels, Image<Vek8u, channels>> mirror(View<const Vek8u, channels> src,
                                                           MirrorAxis axis, OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(
      src.size(), onError, [&](auto& dst) { return mirror<channels>(src, dst, axis, onError); });
}

/// From linear light by the curve of BT.709 (vekiGammaFwd_8u_C3R). In place as well.
VEK_INLINE VekStatus gammaForward(View<const Vek8u, 3> src, View<Vek8u, 3> dst,
                                  OnError onError = {}) {
  return detail::unary(detail::Call{"gammaForward", onError}, vekiGammaFwd_8u_C3R, src, dst);
}
/// The same in a new image.
inline Image<Vek8u, 3> gammaForward(View<const Vek8u, 3> src, OnError onError = {}) {
  return detail::made<Image<Vek8u, 3>>(src.size(), onError,
                                       [&](auto& dst) { return gammaForward(src, dst, onError); });
}

/// To linear light by the curve of BT.709 (vekiGammaInv_8u_C3R). In place as well.
VEK_INLINE VekStatus gammaInverse(View<const Vek8u, 3> src, View<Vek8u, 3> dst,
                                  OnError onError = {}) {
  return detail::unary(detail::Call{"gammaInverse", onError}, vekiGammaInv_8u_C3R, src, dst);
}
/// The same in a new image.
inline Image<Vek8u, 3> gammaInverse(View<const Vek8u, 3> src, OnError onError = {}) {
  return detail::made<Image<Vek8u, 3>>(src.size(), onError,
                                       [&](auto& dst) { return gammaInverse(src, dst, onError); });
}

/** @} */
/** @defgroup cppdither C++: dithering
 *  The functions of the group `dither`. `origin` is where the image's first pixel is in the picture that
 *  the thresholds are laid over.
 *  @{ */

/// How what rounding loses is spread.
enum class Dither : int {
  ordered = vekiDitherOrdered,     ///< by 8 x 8 thresholds: for moving pictures
  diffusion = vekiDitherDiffusion  ///< by error diffusion: for stills, at most 16384 pixels wide
};

/// @cond
namespace detail {
template <class F, class Source, class Destination, class... Rest>
VEK_INLINE VekStatus dithered(Call call, F f, const Source& src, const Destination& dst,
                              Dither method, Rest... rest) {
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  return call.done(
      f(src.data(), src.stepBytes(), dst.data(), dst.stepBytes(), src.size(), rest...),
      [&](VekStatus status) {
        return status == vekStsSizeErr && method == Dither::diffusion && src.width() > 16384
                   ? OnError::refuse(call.onError, status, call.function, "src",
                                     "is %d pixels wide, and error diffusion takes 16384",
                                     src.width())
                   : OnError::refuse(call.onError, status, call.function, "levels",
                                     "is not 2..256");
      });
}
}  // namespace detail
/// @endcond

/// To `levels` levels, 2..256, each as the byte that it stands for (vekiDither_8u_C1R). In place as well.
VEK_INLINE VekStatus dither(View<const Vek8u> src, View<Vek8u> dst, int levels, Dither method,
                            Point origin = {0, 0}, OnError onError = {}) {
  return detail::dithered(detail::Call{"dither", onError}, vekiDither_8u_C1R, src, dst, method,
                          levels, static_cast<int>(method), origin);
}
/// The same in a new image.
inline Image<Vek8u> dither(View<const Vek8u> src, int levels, Dither method, Point origin = {0, 0},
                           OnError onError = {}) {
  return detail::made<Image<Vek8u>>(src.size(), onError, [&](auto& dst) {
    return dither(src, dst, levels, method, origin, onError);
  });
}
/// To samples of 1, 2 or 4 bits (vekiDitherPacked_8u_C1R).
template <int bits>
VEK_INLINE VekStatus dither(Same<View<const Vek8u>> src, View<Packed<bits>> dst, Dither method,
                            Point origin = {0, 0}, OnError onError = {}) {
  return detail::dithered(detail::Call{"dither", onError}, vekiDitherPacked_8u_C1R, src, dst,
                          method, bits, static_cast<int>(method), origin);
}

/// @cond
namespace detail {
template <Fields fields>
constexpr auto ditherFunction() {
  constexpr bool is565 = fields == Fields::rgb565 || fields == Fields::bgr565;
  constexpr bool is555 = fields == Fields::rgb555 || fields == Fields::bgr555;
  return is565   ? vekiDitherRGB565_8u16u_C3R
         : is555 ? vekiDitherRGB555_8u16u_C3R
                 : vekiDitherRGB444_8u16u_C3R;
}
}  // namespace detail
/// @endcond

/// RGB24 to 16-bit pixels with red in the high field (vekiDitherRGB565_8u16u_C3R and its kin).
template <Fields fields>
VEK_INLINE std::enable_if_t<fields <= Fields::rgb444, VekStatus> dither(Same<View<const Rgb24>> src,
                                                                        View<Pixel16<fields>> dst,
                                                                        Dither method,
                                                                        Point origin = {0, 0},
                                                                        OnError onError = {}) {
  return detail::dithered(detail::Call{"dither", onError}, detail::ditherFunction<fields>(), src,
                          dst, method, static_cast<int>(method), origin);
}
/// BGR24 to 16-bit pixels with blue in the high field.
template <Fields fields>
VEK_INLINE std::enable_if_t<(fields > Fields::rgb444), VekStatus> dither(
    Same<View<const Bgr24>> src, View<Pixel16<fields>> dst, Dither method, Point origin = {0, 0},
    OnError onError = {}) {
  return detail::dithered(detail::Call{"dither", onError}, detail::ditherFunction<fields>(), src,
                          dst, method, static_cast<int>(method), origin);
}
/// Any of the last three in a new image, whose pixels are named: `dither<Rgb565>(src, method)`.
template <class Pixel, class Source>
Image<Pixel> dither(const Source& src, Dither method, Point origin = {0, 0}, OnError onError = {}) {
  return detail::made<Image<Pixel>>(src.size(), onError, [&](auto& dst) {
    return dither(src, dst.view(), method, origin, onError);
  });
}

/** @} */
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

/** @defgroup cppfront C++: raw front end
 *  The functions of the group `frontend`. The width of a view of a raw frame counts bytes, as it comes
 *  from the sensor; rawRowBytes() says how many a row needs.
 *  @{ */

/// How a frame is stored, and what is done to its samples. Arrays are in the order R, Gr, Gb, B.
struct RawFrontEnd {
  Raw format = Raw::plain16;                              ///< how samples lie in memory
  int bits = 10;                                          ///< of a sample
  Bayer order = Bayer::rggb;                              ///< of the frame's top left 2 x 2 samples
  std::array<Vek16u, 4> black = {0, 0, 0, 0};             ///< black levels, in the source's units
  std::array<Vek16u, 4> gain = {4096, 4096, 4096, 4096};  ///< gains, 4096 for 1
};

/// The largest region of a frame of `size` samples that begins on a red sample and has even sizes
/// (vekiRawRegion).
VEK_INLINE VekStatus rawRegion(Size size, Bayer order, Rect& region, OnError onError = {}) {
  return detail::Call{"rawRegion", onError}.done(
      vekiRawRegion(size, static_cast<int>(order), &region), [&](VekStatus status) {
        return OnError::refuse(onError, status, "rawRegion", "size",
                               "%d x %d has no 2 x 2 samples that begin with a red one", size.width,
                               size.height);
      });
}
/// The same, returned.
inline Rect rawRegion(Size size, Bayer order, OnError onError = {}) {
  Rect region = {0, 0, 0, 0};
  rawRegion(size, order, region, onError);
  return region;
}

/// Unpacks the samples from `first` on, which is a red one, into all of `dst`, subtracts black levels
/// and multiplies by gains (vekiRawTo10RGGB_8u16u_C1R).
VEK_INLINE VekStatus rawTo10Rggb(View<const RawByte> src, View<Raw10> dst,
                                 const RawFrontEnd& frontEnd, Point first, OnError onError = {}) {
  const detail::Call call{"rawTo10Rggb", onError};
  if (first.x < 0 || first.y < 0 || dst.height() > src.height() - first.y ||
      rawRowBytes(frontEnd.format, first.x) + rawRowBytes(frontEnd.format, dst.width()) >
          src.width()) {
    // The sum above may be a group too many.
    if (first.x < 0 || first.y < 0 || dst.height() > src.height() - first.y ||
        first.x > std::numeric_limits<int>::max() - dst.width() ||
        rawRowBytes(frontEnd.format, first.x + dst.width()) > src.width()) {
      return OnError::refuse(onError, vekStsBadArgErr, "rawTo10Rggb", "src",
                             "of %d rows of %d bytes does not hold %d x %d samples at (%d, %d)",
                             src.height(), src.width(), dst.width(), dst.height(), first.x,
                             first.y);
    }
  }
  VekiRawFrontEnd record = {static_cast<Vek32s>(frontEnd.format),
                            frontEnd.bits,
                            static_cast<Vek32s>(frontEnd.order),
                            {},
                            {}};
  for (std::size_t i = 0; i < 4; ++i) {
    record.black[i] = frontEnd.black[i];
    record.gain[i] = frontEnd.gain[i];
  }
  return call.done(
      vekiRawTo10RGGB_8u16u_C1R(src.data(), src.stepBytes(),
                                {first.x, first.y, dst.width(), dst.height()}, dst.data(),
                                dst.stepBytes(), &record),
      [&](VekStatus status) {
        const bool onRed =
            ((first.x ^ record.order) & 1) == 0 && ((first.y ^ (record.order >> 1)) & 1) == 0;
        return !onRed ? OnError::refuse(onError, status, "rawTo10Rggb", "first",
                                        "(%d, %d) is not a red sample", first.x, first.y)
               : dst.width() % 2 != 0 || dst.height() % 2 != 0
                   ? OnError::refuse(onError, status, "rawTo10Rggb", "dst",
                                     "is %d x %d, which must be even", dst.width(), dst.height())
               : dst.empty() || reinterpret_cast<std::uintptr_t>(dst.data()) % 2 != 0 ||
                       dst.stepBytes() % 2 != 0
                   ? OnError::refuse(onError, status, "rawTo10Rggb", "dst",
                                     "is not aligned to 2 bytes")
                   : OnError::refuse(onError, status, "rawTo10Rggb", "frontEnd",
                                     "has a format that has no %d bits", frontEnd.bits);
      });
}
/// The same from the first red sample on.
VEK_INLINE VekStatus rawTo10Rggb(View<const RawByte> src, View<Raw10> dst,
                                 const RawFrontEnd& frontEnd, OnError onError = {}) {
  const int order = static_cast<int>(frontEnd.order);
  return rawTo10Rggb(src, dst, frontEnd, Point{order & 1, order >> 1}, onError);
}
/// All of a frame of `size` samples but what lies before the first red one, in a new image.
inline Image<Raw10> rawTo10Rggb(View<const RawByte> src, Size size, const RawFrontEnd& frontEnd,
                                OnError onError = {}) {
  const Rect region = rawRegion(size, frontEnd.order, onError);
  if (region.width == 0) return {};
  return detail::made<Image<Raw10>>({region.width, region.height}, onError, [&](auto& dst) {
    return rawTo10Rggb(src, dst, frontEnd, Point{region.x, region.y}, onError);
  });
}

/** @} */
/** @defgroup cppstates C++: states
 *  The exposure, the white balance and the raw pipeline as objects. They own all that the states of the C
 *  interface only point at, can be moved, and release everything. An object that is empty, because it was
 *  made so, moved from or refused, refuses its calls.
 *  @{ */

/// @cond
namespace detail {

template <class State, VekStatus (*release)(State*)>
struct Release {
  void operator()(State* state) const { release(state); }
};
template <class State, VekStatus (*release)(State*)>
using Owned = std::unique_ptr<State, Release<State, release>>;

inline VekStatus refuseEmpty(Call call) {
  return OnError::refuse(call.onError, vekStsBadArgErr, call.function, "this", "is empty");
}

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

/// Built-in gamma curves.
enum class GammaCurve : Vek32u {
  linear = vekiGammaCurveLinear,  ///< a straight line: 1023 becomes 255
  bt709 = vekiGammaCurveStandard  ///< the transfer function of BT.709
};

/// Colour part of a raw pipeline; VekiRggbColorParam says what the numbers do.
struct RawColor {
  GammaCurve curve = GammaCurve::bt709;  ///< the gamma curve, if there is no table
  std::vector<Vek8u> table;              ///< a gamma table of 1024 entries, or none
  std::array<Vek16s, 9> matrix = {256, 0, 0, 0, 256, 0, 0, 0, 256};  ///< in 1/256, row after row
  /// In coordinates of the sensor. Those that the region, with its valid border, does not have are
  /// left out.
  std::vector<VekiDeadPixel> deadPixels;
  int rowOffset = 0;     ///< sensor row of the region's first row
  int columnOffset = 0;  ///< sensor column of the region's first column
};

/// The raw pipeline: frames of one size to planes of one size. Calls do not change it, so that threads
/// may share one for distinct frames.
class RawPipeline {
 public:
  /// An empty one.
  RawPipeline() noexcept = default;

  /// For regions of `frameSize` samples, at frames with this step, to planes of `dstSize` with these
  /// steps (vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R). The destination is the rotated region, or a half or
  /// a quarter of it. With `borderValid` one more sample on every side of the region is valid; see
  /// process().
  RawPipeline(const RawColor& color, Size frameSize, Bytes frameStep, Chroma chroma, Size dstSize,
              const std::array<int, 3>& dstSteps, Rotation rotation = Rotation::none,
              bool borderValid = false, OnError onError = {}) {
    const detail::Call call{"RawPipeline", onError};
    const Size turned = rotated(frameSize, rotation);
    const int scale = scaleOf(turned, dstSize);
    if (!isAccepted(call, color, frameSize, frameStep, chroma, dstSize, dstSteps, rotation, scale))
      return;

    RawPipeline made;
    made.table_ = color.table;
    const bool border = borderValid && scale == 1;
    for (const VekiDeadPixel& pixel : color.deadPixels) {
      const Vek32s row = pixel.row - color.rowOffset, column = pixel.column - color.columnOffset;
      if (pixel.row >= color.rowOffset && pixel.column >= color.columnOffset &&
          row < frameSize.height + border && column < frameSize.width + border) {
        made.deadPixels_.push_back({row, column});
      }
    }
    made.geometry_ = {frameStep.count,
                      frameSize.width,
                      frameSize.height,
                      {dstSteps[0], dstSteps[1], dstSteps[2]},
                      dstSize.width,
                      dstSize.height,
                      scale == 1 ? vekiFilterModeDemosaic : vekiFilterModeReduce,
                      static_cast<Vek32s>(rotation),
                      chroma == Chroma::c420 ? vekiChroma420 : vekiChroma422,
                      border};
    // Offsets of 0 make the state use the list where it lies; a copy of the library's would be lost.
    const VekiRggbColorParam record = {
        color.table.empty() ? 0U + vekiGammaModeCurve : 0U + vekiGammaModeTable,
        {static_cast<Vek32u>(color.curve), 0, 0},
        {made.table_.data(), nullptr, nullptr},
        made.deadPixels_.empty() ? nullptr : made.deadPixels_.data(),
        static_cast<Vek32s>(made.deadPixels_.size()),
        0,
        0,
        0,
        color.matrix.data()};
    VekiRggbToYCbCrState* state = nullptr;
    const VekStatus status =
        vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(&record, &made.geometry_, &state);
    made.state_.reset(state);
    if (call.done(status) == vekStsNoErr) *this = std::move(made);
  }
  /// For frames and planes like these.
  template <Chroma chroma>
  RawPipeline(const RawColor& color, View<const Raw10> frame,
              const Planes<const Vek8u, chroma>& dst, Rotation rotation = Rotation::none,
              OnError onError = {})
      : RawPipeline(color, frame.size(), Bytes(frame.stepBytes()), chroma, dst.size(),
                    {dst.y().stepBytes(), dst.cb().stepBytes(), dst.cr().stepBytes()}, rotation,
                    false, onError) {}

  /// Whether there is none.
  bool empty() const noexcept { return state_ == nullptr; }

  /// Planes that this pipeline writes to: those of `size` whose second column is aligned where it asks
  /// for that.
  template <Chroma chroma>
  PlanarImage<chroma> destination(OnError onError = {}) const {
    return PlanarImage<chroma>(
        {geometry_.dstWidth, geometry_.dstHeight},
        geometry_.filterMode == vekiFilterModeDemosaic && geometry_.srcBorderValid == 0 ? 1 : 0,
        onError);
  }

  /// Converts a frame and corrects its dead pixels in place (veki10RGGBtoYCbCr_RotRsz_8u_P3R). A view of
  /// samples that may not be changed, or an image that is const, is refused if there are dead pixels.
  /// With a valid border the frame has it: the region begins two samples to the right and two below the
  /// frame's first sample, and ends two before its last column and row.
  template <class Frame, Chroma chroma>
  VEK_INLINE VekStatus process(Frame&& frame, const Planes<Vek8u, chroma>& dst,
                               OnError onError = {}) const {
    return run(frame.view(), dst, onError);
  }

 private:
  template <Chroma chroma>
  VEK_INLINE VekStatus run(View<const Raw10> frame, const Planes<Vek8u, chroma>& dst,
                           OnError onError) const {
    if (!deadPixels_.empty()) {
      return OnError::refuse(onError, vekStsBadArgErr, "RawPipeline::process", "frame",
                             "may not be changed, but it has %zu dead pixels", deadPixels_.size());
    }
    // Without dead pixels frames are only read.
    return run(detail::Access::view<View<Raw10>>(frame), dst, onError);
  }
  template <Chroma chroma>
  VEK_INLINE VekStatus run(View<Raw10> frame, const Planes<Vek8u, chroma>& dst,
                           OnError onError) const {
    static_assert(chroma != Chroma::c444, "the raw pipeline makes 4:2:0 and 4:2:2");
    const detail::Call call{"RawPipeline::process", onError};
    const VekiRggbGeometry& g = geometry_;
    if (empty()) return detail::refuseEmpty(call);
    const int border = g.srcBorderValid;
    const bool frameFits =
        border != 0 ? frame.width() == g.srcWidth + 4 && frame.height() == g.srcHeight + 4
                    : frame.width() == g.srcWidth && frame.height() == g.srcHeight;
    if (!frameFits || frame.stepBytes() != g.srcStep) {
      return OnError::refuse(onError, vekStsBadArgErr, "RawPipeline::process", "frame",
                             "is %d x %d with a step of %d bytes, but the pipeline is for %d x %d, "
                             "a border of %d, and %d bytes",
                             frame.width(), frame.height(), frame.stepBytes(), g.srcWidth,
                             g.srcHeight, border, g.srcStep);
    }
    if ((chroma == Chroma::c420) != (g.chromaFormat == vekiChroma420)) {
      return OnError::refuse(onError, vekStsBadArgErr, "RawPipeline::process", "dst",
                             "has another chroma format than the pipeline");
    }
    if (dst.width() != g.dstWidth || dst.height() != g.dstHeight ||
        dst.y().stepBytes() != g.dstStep[0] || dst.cb().stepBytes() != g.dstStep[1] ||
        dst.cr().stepBytes() != g.dstStep[2]) {
      return OnError::refuse(onError, vekStsBadArgErr, "RawPipeline::process", "dst",
                             "is %d x %d with steps of %d, %d and %d bytes, but the pipeline is "
                             "for %d x %d with %d, %d and %d",
                             dst.width(), dst.height(), dst.y().stepBytes(), dst.cb().stepBytes(),
                             dst.cr().stepBytes(), g.dstWidth, g.dstHeight, g.dstStep[0],
                             g.dstStep[1], g.dstStep[2]);
    }
    return call.done(veki10RGGBtoYCbCr_RotRsz_8u_P3R(border != 0 ? frame.row(2) + 2 : frame.data(),
                                                     detail::listed(dst).data, state_.get()),
                     [&](VekStatus status) {
                       return OnError::refuse(
                           onError, status, "RawPipeline::process", "dst",
                           "is not aligned as destination() is, or the frame is at an odd address");
                     });
  }

  static int scaleOf(Size turned, Size dst) {
    for (const int scale : {1, 2, 4}) {
      if (turned.width == std::int64_t{dst.width} * scale &&
          turned.height == std::int64_t{dst.height} * scale)
        return scale;
    }
    return 0;
  }

  /// All that the library checks: it keeps memory of calls that it refuses.
  static bool isAccepted(detail::Call call, const RawColor& color, Size frame, Bytes step,
                         Chroma chroma, Size dst, const std::array<int, 3>& steps,
                         Rotation rotation, int scale) {
    const auto refuse = [&](const char* argument, const char* why) {
      OnError::refuse(call.onError, vekStsBadArgErr, call.function, argument, "%s", why);
      return false;
    };
    const int unit = scale == 1 ? 8 : 4;
    if (!color.table.empty() && color.table.size() != 1024)
      return refuse("color", "has a table that has not 1024 entries");
    if (color.table.empty() && color.curve != GammaCurve::linear &&
        color.curve != GammaCurve::bt709)
      return refuse("color", "has an unknown curve");
    if (color.rowOffset < 0 || color.columnOffset < 0)
      return refuse("color", "has a negative offset");
    if ((step.count & 1) != 0) return refuse("frameStep", "is odd");
    if (frame.width < 2 || frame.height < 2 || ((frame.width | frame.height) & 1) != 0)
      return refuse("frameSize", "is odd or below 2 x 2");
    if (static_cast<unsigned>(rotation) > static_cast<unsigned>(Rotation::half))
      return refuse("rotation", "is a mirror");
    if (chroma == Chroma::c444) return refuse("chroma", "is not 4:2:0 or 4:2:2");
    if (dst.width < 1 || dst.height < 1 || scale == 0) {
      const Size turned = rotated(frame, rotation);
      OnError::refuse(call.onError, vekStsBadArgErr, call.function, "dstSize",
                      "is %d x %d, which is not %d x %d, half or a quarter of it", dst.width,
                      dst.height, turned.width, turned.height);
      return false;
    }
    if (scale != 1 && (dst.width % 4 != 0 || dst.height % 2 != 0))
      return refuse("dstSize",
                    "is reduced and has a width that is not a multiple of 4 or an odd height");
    for (std::size_t i = 0; i < 3; ++i) {
      const int least = i == 0 ? dst.width : dst.width / 2;
      if (steps[i] < least || steps[i] % (i == 0 ? unit : unit / 2) != 0)
        return refuse("dstSteps",
                      "are less than the rows, or not multiples of 8, 4 and 4 (reduced: of 4, 2 "
                      "and 2) bytes");
    }
    return true;
  }

  std::vector<Vek8u> table_;
  std::vector<VekiDeadPixel> deadPixels_;
  VekiRggbGeometry geometry_ = {};
  detail::Owned<VekiRggbToYCbCrState, vekiFree_10RGGBtoYCbCr_RotRsz_P3R> state_;
};

/** @} */
/** @defgroup cpppreview C++: resize, rotate, convert
 *  The functions of the group `preview`. The destination's size decides the scale: it is the scaled size,
 *  rotated. What the C functions write or read beyond such images, as their comments say, is refused here.
 *  @{ */

/// @cond
namespace detail {

/// An image as the preview functions want it aligned.
struct Placement {
  const char* name;
  const void* data;
  int unit;
  int step;
  int stepUnit;
};
template <class V>
Placement placed(const char* name, const V& view, int unit, int stepUnit) {
  return {name, view.data(), unit, view.stepBytes(), stepUnit};
}

/// Says why a preview function has refused its arguments.
template <std::size_t count>
VEK_COLD VekStatus refusePreview(Call call, const Placement (&images)[count], Size src, Size scaled,
                                 Steps steps, bool evenHeight) {
  for (const Placement& image : images) {
    if (reinterpret_cast<std::uintptr_t>(image.data) % static_cast<unsigned>(image.unit) != 0) {
      return OnError::refuse(call.onError, vekStsBadArgErr, call.function, image.name,
                             "begins at %p, which is not a multiple of %d bytes", image.data,
                             image.unit);
    }
    if (image.step % image.stepUnit != 0) {
      return OnError::refuse(call.onError, vekStsBadArgErr, call.function, image.name,
                             "has a step of %d bytes, not a multiple of %d", image.step,
                             image.stepUnit);
    }
  }
  if (evenHeight && ((scaled.width | scaled.height) & 1) != 0) {
    return OnError::refuse(call.onError, vekStsBadArgErr, call.function, "dst",
                           "is %d x %d before it is rotated, which must be even", scaled.width,
                           scaled.height);
  }
  return OnError::refuse(call.onError, vekStsBadArgErr, call.function, "steps",
                         "are %d and %d; from %d x %d to %d x %d they are at most %lld and %lld",
                         steps.x, steps.y, src.width, src.height, scaled.width, scaled.height,
                         static_cast<long long>(stepLimit(src.width, scaled.width)),
                         static_cast<long long>(stepLimit(src.height, scaled.height)));
}

template <Fields fields>
inline constexpr bool redFirst =
    fields == Fields::rgb565 || fields == Fields::rgb555 || fields == Fields::rgb444;

template <class Destination>
VEK_INLINE VekStatus resize420(Call call, const Planes420<const Vek8u>& src, const Destination& dst,
                               int format, int unit, Rotation rotation, Interpolation interpolation,
                               Steps steps) {
  const Size scaled = rotated(dst.size(), rotation);
  const auto from = listed(src);
  return call.done(
      vekiYCbCr420RszCscRotRGB_8u_P3C3R(
          from.data, from.steps, src.width(), src.height(), reinterpret_cast<Vek8u*>(dst.data()),
          dst.stepBytes(), scaled.width, scaled.height, format, static_cast<int>(interpolation),
          static_cast<int>(rotation), steps.x, steps.y),
      [&](VekStatus) {
        const Placement images[] = {placed("src.y", src.y(), 4, 4),
                                    placed("src.cb", src.cb(), 2, 2),
                                    placed("src.cr", src.cr(), 2, 2), placed("dst", dst, 8, unit)};
        return refusePreview(call, images, src.size(), scaled, steps, false);
      });
}

/// Whether every even column is sampled inside the source; odd ones are kept there.
VEK_INLINE bool evenColumnsInside(int from, int to, Interpolation interpolation, int step) {
  const std::int64_t last = (std::int64_t{to} - 1) / 2 * 2 * step;
  return interpolation == Interpolation::nearest ? (last + 32768) >> 16 <= from - 1
                                                 : last <= (std::int64_t{from} - 1) * 65536;
}

template <class Destination>
VEK_INLINE VekStatus resize422(Call call, const Planes422<const Vek8u>& src, const Destination& dst,
                               int format, bool is16, Rotation rotation,
                               Interpolation interpolation, Steps steps) {
  const Size scaled = rotated(dst.size(), rotation);
  const auto from = listed(src);
  if (from.steps[1] != from.steps[0] / 2 || from.steps[2] != from.steps[0] / 2) {
    return OnError::refuse(call.onError, vekStsBadArgErr, call.function, "src",
                           "has chroma steps of %d and %d bytes, which must be half the luma's %d",
                           from.steps[1], from.steps[2], from.steps[0]);
  }
  if (is16 && dst.width() != dst.height() &&
      (rotation == Rotation::ccw90 || rotation == Rotation::cw90)) {
    return OnError::refuse(call.onError, vekStsBadArgErr, call.function, "rotation",
                           "is a quarter turn, but 16-bit pixels of %d x %d are not square",
                           dst.width(), dst.height());
  }
  if (dst.empty() || !evenColumnsInside(src.width(), scaled.width, interpolation, steps.x)) {
    return OnError::refuse(call.onError, vekStsBadArgErr, call.function,
                           dst.empty() ? "dst" : "steps",
                           "of %d put the last of %d columns beyond the source's %d", steps.x,
                           scaled.width, src.width());
  }
  return call.done(
      vekiYCbCr422RszCscRotRGB_8u_P3C3R(
          from.data, from.steps, src.width(), src.height(), reinterpret_cast<Vek8u*>(dst.data()),
          dst.stepBytes(), dst.width(), dst.height(), format, static_cast<int>(interpolation),
          static_cast<int>(rotation), steps.x, steps.y),
      [&](VekStatus) {
        const Placement images[] = {
            placed("src.y", src.y(), 1, 4), placed("src.cb", src.cb(), 1, 2),
            placed("src.cr", src.cr(), 1, 2), placed("dst", dst, 1, is16 ? 8 : 2)};
        return refusePreview(call, images, src.size(), scaled, steps, false);
      });
}

}  // namespace detail
/// @endcond

/// Resizes and rotates 4:2:0 (vekiYCbCr420RszRot_8u_P3R). The scaled size is even.
VEK_INLINE VekStatus resize(const Planes420<const Vek8u>& src, const Planes420<>& dst,
                            Rotation rotation, Interpolation interpolation, Steps steps,
                            OnError onError = {}) {
  const detail::Call call{"resize", onError};
  const Size scaled = rotated(dst.size(), rotation);
  const auto from = detail::listed(src);
  const auto to = detail::listed(dst);
  // Reductions by 2 and 4 read Cr, and a mirror writes it, at the step of Cb.
  if (from.steps[1] != from.steps[2] && interpolation == Interpolation::nearest &&
      rotation == Rotation::none) {
    return OnError::refuse(onError, vekStsBadArgErr, "resize", "src",
                           "has chroma steps of %d and %d bytes, which must be equal here",
                           from.steps[1], from.steps[2]);
  }
  if (to.steps[1] != to.steps[2] && rotation == Rotation::mirrorTopBottom) {
    return OnError::refuse(onError, vekStsBadArgErr, "resize", "dst",
                           "has chroma steps of %d and %d bytes, which must be equal here",
                           to.steps[1], to.steps[2]);
  }
  return call.done(
      vekiYCbCr420RszRot_8u_P3R(from.data, from.steps, src.width(), src.height(), to.data, to.steps,
                                scaled.width, scaled.height, static_cast<int>(interpolation),
                                static_cast<int>(rotation), steps.x, steps.y),
      [&](VekStatus) {
        const detail::Placement images[] = {
            detail::placed("src.y", src.y(), 8, 8),   detail::placed("src.cb", src.cb(), 8, 8),
            detail::placed("src.cr", src.cr(), 8, 8), detail::placed("dst.y", dst.y(), 4, 4),
            detail::placed("dst.cb", dst.cb(), 2, 2), detail::placed("dst.cr", dst.cr(), 2, 2)};
        return detail::refusePreview(call, images, src.size(), scaled, steps, true);
      });
}
/// Resizes and rotates 4:2:2 (vekiYCbCr422RszRot_8u_P3R). The scaled size is even.
VEK_INLINE VekStatus resize(const Planes422<const Vek8u>& src, const Planes422<>& dst,
                            Rotation rotation, Interpolation interpolation, Steps steps,
                            OnError onError = {}) {
  const detail::Call call{"resize", onError};
  const Size scaled = rotated(dst.size(), rotation);
  const auto from = detail::listed(src);
  const auto to = detail::listed(dst);
  // With an odd height a row more would be written.
  if (scaled.height % 2 != 0) {
    return OnError::refuse(onError, vekStsBadArgErr, "resize", "dst",
                           "is %d rows high before it is rotated, which must be even",
                           scaled.height);
  }
  return call.done(
      vekiYCbCr422RszRot_8u_P3R(from.data, from.steps, src.width(), src.height(), to.data, to.steps,
                                scaled.width, scaled.height, static_cast<int>(interpolation),
                                static_cast<int>(rotation), steps.x, steps.y),
      [&](VekStatus) {
        const detail::Placement images[] = {detail::placed("src.y", src.y(), 4, 4),
                                            detail::placed("dst.y", dst.y(), 4, 4)};
        return detail::refusePreview(call, images, src.size(), scaled, steps, true);
      });
}
/// Resizes and rotates 4:2:0 and converts it to 16-bit pixels with red in the high field
/// (vekiYCbCr420RszCscRotRGB_8u_P3C3R).
template <Fields fields>
VEK_INLINE std::enable_if_t<detail::redFirst<fields>, VekStatus> resize(
    const Planes420<const Vek8u>& src, View<Pixel16<fields>> dst, Rotation rotation,
    Interpolation interpolation, Steps steps, OnError onError = {}) {
  return detail::resize420(detail::Call{"resize", onError}, src, dst,
                           vekiCsc420RGB565 + static_cast<int>(fields), 8, rotation, interpolation,
                           steps);
}
/// Resizes and rotates 4:2:0 and converts it to BGR24 (vekiYCbCr420RszCscRotRGB_8u_P3C3R).
VEK_INLINE VekStatus resize(const Planes420<const Vek8u>& src, View<Bgr24> dst, Rotation rotation,
                            Interpolation interpolation, Steps steps, OnError onError = {}) {
  return detail::resize420(detail::Call{"resize", onError}, src, dst, vekiCsc420BGR24, 2, rotation,
                           interpolation, steps);
}
/// Resizes and rotates 4:2:2 and converts it to 16-bit pixels with red in the high field
/// (vekiYCbCr422RszCscRotRGB_8u_P3C3R). Chroma steps are half the luma's, as in an Image422, and quarter
/// turns are of squares.
template <Fields fields>
VEK_INLINE std::enable_if_t<detail::redFirst<fields>, VekStatus> resize(
    const Planes422<const Vek8u>& src, View<Pixel16<fields>> dst, Rotation rotation,
    Interpolation interpolation, Steps steps, OnError onError = {}) {
  return detail::resize422(detail::Call{"resize", onError}, src, dst,
                           vekiCsc422RGB565 + static_cast<int>(fields), true, rotation,
                           interpolation, steps);
}
/// Resizes and rotates 4:2:2 and converts it to BGR24 (vekiYCbCr422RszCscRotRGB_8u_P3C3R). Chroma steps
/// are half the luma's, as in an Image422.
VEK_INLINE VekStatus resize(const Planes422<const Vek8u>& src, View<Bgr24> dst, Rotation rotation,
                            Interpolation interpolation, Steps steps, OnError onError = {}) {
  return detail::resize422(detail::Call{"resize", onError}, src, dst, vekiCsc422BGR24, false,
                           rotation, interpolation, steps);
}
/// Any of these with the sampling steps that fit the sizes.
template <Chroma chroma, class Destination>
VEK_INLINE VekStatus resize(const Planes<const Vek8u, chroma>& src, Destination&& dst,
                            Rotation rotation = Rotation::none,
                            Interpolation interpolation = Interpolation::linear,
                            OnError onError = {}) {
  const auto view = dst.view();
  return resize(src, view, rotation, interpolation,
                samplingSteps(src.size(), rotated(view.size(), rotation)), onError);
}
/// Any of these to a new image, the type of which is named: `resize<Image420>(src, {640, 360})`. `scaled`
/// is the size before the rotation.
template <class Result, Chroma chroma>
Result resize(const Planes<const Vek8u, chroma>& src, Size scaled,
              Rotation rotation = Rotation::none,
              Interpolation interpolation = Interpolation::linear, OnError onError = {}) {
  return detail::made<Result>(rotated(scaled, rotation), onError, [&](auto& dst) {
    return resize(src, dst.view(), rotation, interpolation, samplingSteps(src.size(), scaled),
                  onError);
  });
}

/// Reduces interleaved 4:2:2 by 2, 4 or 8, converts it to RGB565 or RGB555 and rotates it by quarter turns
/// (vekiResizeCscRotate_8u_C2R).
template <Fields fields>
VEK_INLINE std::enable_if_t<fields == Fields::rgb565 || fields == Fields::rgb555, VekStatus> reduce(
    Same<View<const Uyvy>> src, View<Pixel16<fields>> dst, int factor,
    Reduction reduction = Reduction::average, Rotation rotation = Rotation::none,
    OnError onError = {}) {
  const detail::Call call{"reduce", onError};
  const int by = factor == 2 || factor == 4 || factor == 8 ? factor : 1;
  if (!call.fits("dst", dst.size(), "the reduced and rotated src",
                 rotated({src.width() / by, src.height() / by}, rotation)))
    return vekStsSizeErr;
  return call.done(
      vekiResizeCscRotate_8u_C2R(src.data(), src.stepBytes(), dst.data(), dst.stepBytes(),
                                 src.width(), src.height(), factor, static_cast<int>(reduction),
                                 static_cast<int>(fields), static_cast<int>(rotation)),
      [&](VekStatus status) {
        const auto isOff = [](const auto& view) {
          return reinterpret_cast<std::uintptr_t>(view.data()) % 8 != 0 ||
                 view.stepBytes() % 8 != 0;
        };
        return by == 1 ? OnError::refuse(onError, status, "reduce", "factor",
                                         "is %d, not 2, 4 or 8", factor)
               : isOff(src)
                   ? OnError::refuse(onError, status, "reduce", "src", "is not aligned to 8 bytes")
               : isOff(dst)
                   ? OnError::refuse(onError, status, "reduce", "dst", "is not aligned to 8 bytes")
                   : OnError::refuse(onError, status, "reduce", "rotation",
                                     "is a mirror, or the image has less than a block");
      });
}
/// The same in a new image, whose pixels are named: `reduce<Rgb565>(src, 2)`.
template <class Pixel>
Image<Pixel> reduce(Same<View<const Uyvy>> src, int factor,
                    Reduction reduction = Reduction::average, Rotation rotation = Rotation::none,
                    OnError onError = {}) {
  const int by = factor < 1 ? 1 : factor;
  return detail::made<Image<Pixel>>(
      rotated({src.width() / by, src.height() / by}, rotation), onError,
      [&](auto& dst) { return reduce(src, dst.view(), factor, reduction, rotation, onError); });
}

/// @cond
namespace detail {
/// Whether a rotation from 4:2:2 to 4:2:0 fits.
template <class Source>
VEK_INLINE bool fits420(Call call, const Source& src, const Planes420<>& dst, Rotation rotation) {
  if (((src.width() | src.height()) & 1) == 0)
    return call.fits("dst", dst.size(), "the rotated src", rotated(src.size(), rotation));
  OnError::refuse(call.onError, vekStsBadArgErr, call.function, "src",
                  "is %d x %d, which must be even", src.width(), src.height());
  return false;
}
}  // namespace detail
/// @endcond

/// Rotates interleaved 4:2:2 and makes it 4:2:0 (vekiYCbCr422ToYCbCr420Rotate_8u_C2P3R). Sizes are even.
VEK_INLINE VekStatus to420(View<const Uyvy> src, const Planes420<>& dst,
                           Rotation rotation = Rotation::none, OnError onError = {}) {
  const detail::Call call{"to420", onError};
  if (!detail::fits420(call, src, dst, rotation)) return vekStsBadArgErr;
  const auto to = detail::listed(dst);
  return call.done(vekiYCbCr422ToYCbCr420Rotate_8u_C2P3R(src.data(), src.stepBytes(), to.data,
                                                         to.steps, src.width(), src.height(),
                                                         static_cast<int>(rotation)));
}
/// Rotates planar 4:2:2 and makes it 4:2:0 (vekiYCbCr422ToYCbCr420Rotate_8u_P3R). Sizes are even.
VEK_INLINE VekStatus to420(const Planes422<const Vek8u>& src, const Planes420<>& dst,
                           Rotation rotation = Rotation::none, OnError onError = {}) {
  const detail::Call call{"to420", onError};
  if (!detail::fits420(call, src, dst, rotation)) return vekStsBadArgErr;
  const auto from = detail::listed(src);
  const auto to = detail::listed(dst);
  return call.done(vekiYCbCr422ToYCbCr420Rotate_8u_P3R(from.data, from.steps, to.data, to.steps,
                                                       src.width(), src.height(),
                                                       static_cast<int>(rotation)));
}
/// Either of these in a new image.
template <class Source>
Image420 to420(const Source& src, Rotation rotation = Rotation::none, OnError onError = {}) {
  return detail::made<Image420>(rotated(src.size(), rotation), onError, [&](auto& dst) {
    return to420(src, dst.view(), rotation, onError);
  });
}

/** @} */
/** @defgroup cppwarp C++: warps
 *  The functions of the group `warps`.
 *  @{ */

/// What the coefficients of a warp say.
enum class WarpDirection : int {
  forward = vekiWarpForward,  ///< where the source's pixels go; the map is inverted first
  inverse = vekiWarpInverse   ///< where the destination's pixels come from
};

/// What lies outside of a warp's source.
enum class WarpBorder : int {
  constant = vekiBorderConstant,       ///< a value of the caller's
  replicate = vekiBorderReplicate,     ///< the nearest sample
  transparent = vekiBorderTransparent  ///< what the destination holds
};

/// The six coefficients of an affine map, row after row.
using AffineMap = std::array<Vek64f, 6>;
/// The nine coefficients of a projective map, row after row.
using PerspectiveMap = std::array<Vek64f, 9>;

/// @cond
namespace detail {
template <int channels, class F, class Map>
VEK_INLINE VekStatus warp(Call call, F f, View<const Vek8u, channels> src,
                          View<Vek8u, channels> dst, Point place, const Map& map,
                          WarpDirection direction, Interpolation interpolation, WarpBorder border,
                          const Value<Vek8u, channels>& value) {
  return call.done(
      f(src.data(), src.stepBytes(), src.size(), dst.data(), dst.stepBytes(),
        {place.x, place.y, dst.width(), dst.height()}, map.data(), static_cast<int>(direction),
        static_cast<int>(interpolation), static_cast<int>(border), passed(value)),
      [&](VekStatus status) {
        return status == vekStsCoeffRangeErr
                   ? OnError::refuse(call.onError, status, call.function, "map",
                                     "has no inverse, or numbers that are too large")
               : src.empty() || src.width() > 32767 || src.height() > 32767
                   ? OnError::refuse(call.onError, status, call.function, "src",
                                     "is %d x %d, and sides are 1..32767", src.width(),
                                     src.height())
                   : OnError::refuse(call.onError, status, call.function, "dst",
                                     "of %d x %d at (%d, %d) is not within -32768..32767",
                                     dst.width(), dst.height(), place.x, place.y);
      });
}
}  // namespace detail
/// @endcond

/// Writes `src` under an affine map (vekiAffineWarp_8u_C1R). `place` has the coordinates of the first
/// pixel of `dst`.
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> warp(
    View<const Vek8u, channels> src, Same<View<Vek8u, channels>> dst, const AffineMap& map,
    WarpDirection direction, Interpolation interpolation, WarpBorder border,
    const Same<Value<Vek8u, channels>>& value = {}, Point place = {0, 0}, OnError onError = {}) {
  return detail::warp<channels>(
      detail::Call{"warp", onError},
      detail::byChannels<channels>(vekiAffineWarp_8u_C1R, vekiAffineWarp_8u_C3R), src, dst, place,
      map, direction, interpolation, border, value);
}
/// Writes `src` under a projective map (vekiPerspectiveWarp_8u_C1R).
template <int channels>
VEK_INLINE detail::Supported<channels, VekStatus> warp(
    View<const Vek8u, channels> src, Same<View<Vek8u, channels>> dst, const PerspectiveMap& map,
    WarpDirection direction, Interpolation interpolation, WarpBorder border,
    const Same<Value<Vek8u, channels>>& value = {}, Point place = {0, 0}, OnError onError = {}) {
  return detail::warp<channels>(
      detail::Call{"warp", onError},
      detail::byChannels<channels>(vekiPerspectiveWarp_8u_C1R, vekiPerspectiveWarp_8u_C3R), src,
      dst, place, map, direction, interpolation, border, value);
}
/// Either in a new image of `size`. With WarpBorder::transparent what is outside is 0.
template <int channels, std::size_t count>
detail::Supported<channels, Image<Vek8u, channels>> warp(
    View<const Vek8u, channels> src, Size size, const std::array<Vek64f, count>& map,
    WarpDirection direction, Interpolation interpolation, WarpBorder border,
    const Same<Value<Vek8u, channels>>& value = {}, Point place = {0, 0}, OnError onError = {}) {
  return detail::made<Image<Vek8u, channels>>(size, onError, [&](auto& dst) {
    if (border == WarpBorder::transparent) set(dst, {});
    return warp<channels>(src, dst, map, direction, interpolation, border, value, place, onError);
  });
}

/** @} */
/** @defgroup cpptransform C++: transforms
 *  The functions of the group `transforms`.
 *  @{ */

/// Memory that a call works in.
struct Work {
  void* data;         ///< it, of any alignment
  std::size_t bytes;  ///< how much
};

/// Fourier transforms of one size, whose sides are powers of two up to 1024. Spectra have half as many
/// columns, and one more: see spectrumSize().
class RealFft {
 public:
  /// An empty one.
  RealFft() noexcept = default;
  /// For images of `size` (vekiInitAlloc_RealFFT_32s), with a buffer of its own.
  explicit RealFft(Size size, OnError onError = {}) {
    const detail::Call call{"RealFft", onError};
    RealFft made;
    if (!made.prepare(call, size)) return;
    made.work_ = detail::Memory(static_cast<std::size_t>(made.bufferBytes_));
    VekiRealFFTSpec* spec = nullptr;
    if (made.work_.data() != nullptr)
      vekiInitAlloc_RealFFT_32s(orderOf(size.width), orderOf(size.height), &spec);
    if (spec == nullptr) {
      OnError::refuse(onError, vekStsMemAllocErr, "RealFft", "size",
                      "of %d x %d needs more memory than there is", size.width, size.height);
      return;
    }
    made.owned_.reset(spec);
    made.spec_ = spec;
    onError.success();
    *this = std::move(made);
  }
  /// For images of `size`, in memory of the caller's that must stay where it is (vekiInit_RealFFT_32s).
  /// It has no buffer of its own.
  RealFft(Size size, Work memory, OnError onError = {}) {
    const detail::Call call{"RealFft", onError};
    RealFft made;
    if (!made.prepare(call, size)) return;
    if (memory.data == nullptr || memory.bytes < static_cast<std::size_t>(made.specBytes_)) {
      OnError::refuse(onError, vekStsSizeErr, "RealFft", "memory",
                      "has %zu bytes, but %d are needed", memory.bytes, made.specBytes_);
      return;
    }
    auto* const spec = static_cast<VekiRealFFTSpec*>(memory.data);
    if (call.done(vekiInit_RealFFT_32s(orderOf(size.width), orderOf(size.height), spec)) < 0)
      return;
    made.spec_ = spec;
    *this = std::move(made);
  }
  /// The transform of another one, which is empty afterwards.
  RealFft(RealFft&& other) noexcept { *this = std::move(other); }
  /// Takes the transform of another one, which is empty afterwards.
  RealFft& operator=(RealFft&& other) noexcept {
    owned_ = std::move(other.owned_);
    work_ = std::move(other.work_);
    spec_ = std::exchange(other.spec_, nullptr);
    size_ = std::exchange(other.size_, Size{0, 0});
    specBytes_ = other.specBytes_;
    bufferBytes_ = other.bufferBytes_;
    return *this;
  }

  bool empty() const noexcept { return spec_ == nullptr; }  ///< whether there is none
  Size size() const noexcept { return size_; }              ///< of images
  /// Of spectra, in complex numbers.
  Size spectrumSize() const noexcept { return {size_.width / 2 + 1, size_.height}; }
  /// Bytes that a transform works in (vekiGetSpecSize_RealFFT_32s).
  int workBytes() const noexcept { return bufferBytes_; }
  /// Bytes of a transform in memory of the caller's for images of `size`; 0 if there is none.
  static int bytesFor(Size size) noexcept {
    RealFft made;
    return made.prepare(detail::Call{"RealFft", std::nothrow}, size) ? made.specBytes_ : 0;
  }

  /// The spectrum of an image, times 2^-scale (vekiRealFFTFwd_8u32s_C1RSfs), calculated in `work`. Threads
  /// that share a transform have a `work` each.
  VEK_INLINE VekStatus forward(View<const Vek8u> src, View<Complex32s> dst, int scale, Work work,
                               OnError onError = {}) const {
    return run(detail::Call{"RealFft::forward", onError}, vekiRealFFTFwd_8u32s_C1RSfs, "src", src,
               size_, "dst", dst, spectrumSize(), scale, work);
  }
  /// The same of 32-bit samples (vekiRealFFTFwd_32s_C1RSfs).
  VEK_INLINE VekStatus forward(View<const Vek32s> src, View<Complex32s> dst, int scale, Work work,
                               OnError onError = {}) const {
    return run(detail::Call{"RealFft::forward", onError}, vekiRealFFTFwd_32s_C1RSfs, "src", src,
               size_, "dst", dst, spectrumSize(), scale, work);
  }
  /// The image of a spectrum, times 2^-scale (vekiRealFFTInv_32s8u_C1RSfs). The image comes back with the
  /// sum of both orders as scale.
  VEK_INLINE VekStatus inverse(View<const Complex32s> src, View<Vek8u> dst, int scale, Work work,
                               OnError onError = {}) const {
    return run(detail::Call{"RealFft::inverse", onError}, vekiRealFFTInv_32s8u_C1RSfs, "src", src,
               spectrumSize(), "dst", dst, size_, scale, work);
  }
  /// The same to 32-bit samples (vekiRealFFTInv_32s_C1RSfs).
  VEK_INLINE VekStatus inverse(View<const Complex32s> src, View<Vek32s> dst, int scale, Work work,
                               OnError onError = {}) const {
    return run(detail::Call{"RealFft::inverse", onError}, vekiRealFFTInv_32s_C1RSfs, "src", src,
               spectrumSize(), "dst", dst, size_, scale, work);
  }

  /// Any of these in the buffer of this object, which therefore is not shared by threads.
  template <class Source, class Destination>
  VEK_INLINE VekStatus forward(const Source& src, Destination&& dst, int scale = 0,
                               OnError onError = {}) {
    return forward(src.view(), dst.view(), scale, own(), onError);
  }
  /// The inverse likewise.
  template <class Source, class Destination>
  VEK_INLINE VekStatus inverse(const Source& src, Destination&& dst, int scale,
                               OnError onError = {}) {
    return inverse(src.view(), dst.view(), scale, own(), onError);
  }
  /// The spectrum of an image, in a new one.
  template <class Source>
  Image<Complex32s> forward(const Source& src, int scale = 0, OnError onError = {}) {
    return detail::made<Image<Complex32s>>(spectrumSize(), onError, [&](auto& dst) {
      return forward(src.view(), dst.view(), scale, own(), onError);
    });
  }
  /// The image of a spectrum, of samples of the type that is named: `fft.inverse<Vek8u>(spectrum, 16)`.
  template <class Sample>
  Image<Sample> inverse(Same<View<const Complex32s>> src, int scale, OnError onError = {}) {
    return detail::made<Image<Sample>>(
        size_, onError, [&](auto& dst) { return inverse(src, dst.view(), scale, own(), onError); });
  }

 private:
  /// -1 if it is no power of two.
  static int orderOf(int side) {
    for (int order = 0; order <= 10; ++order) {
      if (side == 1 << order) return order;
    }
    return -1;
  }
  bool prepare(detail::Call call, Size size) {
    const VekStatus status = vekiGetSpecSize_RealFFT_32s(orderOf(size.width), orderOf(size.height),
                                                         &specBytes_, &bufferBytes_);
    if (status == vekStsNoErr) {
      size_ = size;
      return true;
    }
    OnError::refuse(call.onError, status, call.function, "size",
                    "is %d x %d, not powers of two up to 1024", size.width, size.height);
    return false;
  }
  Work own() const {
    return {work_.data(), work_.data() == nullptr ? 0 : static_cast<std::size_t>(bufferBytes_)};
  }

  template <class F, class Source, class Destination>
  VEK_INLINE VekStatus run(detail::Call call, F f, const char* srcName, const Source& src,
                           Size srcSize, const char* dstName, const Destination& dst, Size dstSize,
                           int scale, Work work) const {
    if (empty()) return detail::refuseEmpty(call);
    if (!call.fits(srcName, src.size(), "the transform's", srcSize) ||
        !call.fits(dstName, dst.size(), "the transform's", dstSize))
      return vekStsSizeErr;
    if (work.data == nullptr || work.bytes < static_cast<std::size_t>(bufferBytes_)) {
      return OnError::refuse(call.onError, vekStsSizeErr, call.function, "work",
                             "has %zu bytes, but %d are needed", work.bytes, bufferBytes_);
    }
    return call.done(f(src.data(), src.stepBytes(), dst.data(), dst.stepBytes(), scale, spec_,
                       static_cast<Vek8u*>(work.data)));
  }

  detail::Owned<VekiRealFFTSpec, vekiFree_RealFFT_32s> owned_;
  detail::Memory work_;
  const VekiRealFFTSpec* spec_ = nullptr;
  Size size_ = {0, 0};
  int specBytes_ = 0;
  int bufferBytes_ = 0;
};

/// A block of 8 x 8 samples or coefficients, row after row.
using Block = std::array<Vek16s, 64>;

/// The cosine transform of a block (vekiBlockDCTFwd_16s_C1). In place as well.
VEK_INLINE VekStatus dctForward(const Block& src, Block& dst, OnError onError = {}) {
  return detail::Call{"dctForward", onError}.done(vekiBlockDCTFwd_16s_C1(src.data(), dst.data()));
}
/// The inverse (vekiBlockDCTInv_16s_C1). In place as well.
VEK_INLINE VekStatus dctInverse(const Block& src, Block& dst, OnError onError = {}) {
  return detail::Call{"dctInverse", onError}.done(vekiBlockDCTInv_16s_C1(src.data(), dst.data()));
}
/// The cosine transforms of all blocks of an image, whose sides are multiples of 8
/// (vekiBlockDCTFwd_16s_C1R). In place as well.
VEK_INLINE VekStatus dctForward(View<const Vek16s> src, View<Vek16s> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"dctForward", onError}, vekiBlockDCTFwd_16s_C1R, src, dst);
}
/// The inverse (vekiBlockDCTInv_16s_C1R). In place as well.
VEK_INLINE VekStatus dctInverse(View<const Vek16s> src, View<Vek16s> dst, OnError onError = {}) {
  return detail::unary(detail::Call{"dctInverse", onError}, vekiBlockDCTInv_16s_C1R, src, dst);
}
/// The cosine transforms in a new image.
inline Image<Vek16s> dctForward(View<const Vek16s> src, OnError onError = {}) {
  return detail::made<Image<Vek16s>>(src.size(), onError,
                                     [&](auto& dst) { return dctForward(src, dst, onError); });
}
/// The inverse in a new image.
inline Image<Vek16s> dctInverse(View<const Vek16s> src, OnError onError = {}) {
  return detail::made<Image<Vek16s>>(src.size(), onError,
                                     [&](auto& dst) { return dctInverse(src, dst, onError); });
}

/** @} */
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
  MomentList spatial(int channel, Point origin = {0, 0}, OnError onError = {}) const {
    MomentList moments = {};
    spatial(channel, &moments, origin, onError);
    return moments;
  }
  /// The central moments, returned.
  MomentList central(int channel, OnError onError = {}) const {
    MomentList moments = {};
    central(channel, &moments, onError);
    return moments;
  }
  /// The normalised moments, returned. They are 0 where there is only black.
  MomentList normalized(int channel, OnError onError = {}) const {
    MomentList moments = {};
    normalized(channel, &moments, onError);
    return moments;
  }
  /// The moments of Hu, returned. They are 0 where there is only black.
  HuMoments hu(int channel, OnError onError = {}) const {
    HuMoments moments = {};
    hu(channel, &moments, onError);
    return moments;
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
/** @defgroup cpplibrary C++: the library itself
 *  Versions, levels, memory and the division helpers.
 *  @{ */

/// The version of the library that the program runs with (vekVersionString).
inline const char* version() noexcept {
  return vekVersionString();
}
/// The interface that the image functions follow (vekiGetLibVersion).
inline const VekLibraryVersion& imageVersion() noexcept {
  return *vekiGetLibVersion();
}
/// The interface that the camera functions follow (_vekGetLibVersion_VekCam).
inline const VekLibraryVersion& cameraVersion() noexcept {
  return *_vekGetLibVersion_VekCam();
}

/// The level that functions run at (vekLevel).
inline int cpuLevelNow() noexcept {
  return vekLevel();
}
/// The highest level that functions may run at (vekLevelLimit).
inline int cpuLevelLimit() noexcept {
  return vekLevelLimit();
}
/// The name of a level, or null (vekLevelName).
inline const char* cpuLevelName(int level) noexcept {
  return vekLevelName(level);
}

/// Releases memory of allocate() or allocateCamera().
template <void (*release)(void*)>
struct ReleaseMemory {
  /// Releases it.
  void operator()(void* memory) const noexcept { release(memory); }
};
/// Memory from where the states of the image functions have theirs; null if there is none (vekMalloc,
/// vekFree).
inline std::unique_ptr<void, ReleaseMemory<vekFree>> allocate(int bytes) noexcept {
  return std::unique_ptr<void, ReleaseMemory<vekFree>>(vekMalloc(bytes));
}
/// Memory from where the states of the camera functions have theirs; null if there is none (vekiMalloc,
/// vekiFree).
inline std::unique_ptr<void, ReleaseMemory<vekiFree>> allocateCamera(int bytes) noexcept {
  return std::unique_ptr<void, ReleaseMemory<vekiFree>>(vekiMalloc(bytes));
}

/// What a division leaves.
template <class Number>
struct Division {
  Number quotient;   ///< truncated; 0 if the divisor is 0
  Number remainder;  ///< the dividend if the divisor is 0
};
/// Divides 8-bit numbers (_vekDiv_8u).
inline Division<Vek8u> divide(Vek8u n, Vek8u d) noexcept {
  Division<Vek8u> result = {0, 0};
  result.quotient = static_cast<Vek8u>(_vekDiv_8u(n, d, &result.remainder));
  return result;
}
/// Divides 16-bit numbers (_vekDiv_16u).
inline Division<Vek16u> divide(Vek16u n, Vek16u d) noexcept {
  Division<Vek16u> result = {0, 0};
  result.quotient = static_cast<Vek16u>(_vekDiv_16u(n, d, &result.remainder));
  return result;
}
/// Divides 32-bit numbers (_vekDiv_32u).
inline Division<Vek32u> divide(Vek32u n, Vek32u d) noexcept {
  Division<Vek32u> result = {0, 0};
  result.quotient = _vekDiv_32u(n, d, &result.remainder);
  return result;
}

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_VEK_HPP
