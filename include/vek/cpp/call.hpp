/** @file call.hpp
 *  What the C++ forms of functions are made with. vek.hpp includes it. */
#ifndef VEK_CPP_CALL_HPP
#define VEK_CPP_CALL_HPP

#include "vek/view.hpp"

#include <array>
#include <cstddef>
#include <memory>
#include <type_traits>

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

/// A number as a base class.
template <class T>
struct Number {
  T number = 0;
  constexpr operator T() const noexcept { return number; }
};

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

template <class State, VekStatus (*release)(State*)>
struct Release {
  void operator()(State* state) const { release(state); }
};
template <class State, VekStatus (*release)(State*)>
using Owned = std::unique_ptr<State, Release<State, release>>;

inline VekStatus refuseEmpty(Call call) {
  return OnError::refuse(call.onError, vekStsBadArgErr, call.function, "this", "is empty");
}

}  // namespace detail
/// @endcond

/// A number that was measured, or an array of them, with the status of the call: positive where the value has a
/// reservation (vekStsDivByZero, for example), negative where the call was refused, and all is 0. It is used like
/// the number or the array, and converts to it.
template <class T>
struct Measured : std::conditional_t<std::is_class_v<T>, T, detail::Number<T>> {
  VekStatus status = vekStsNoErr;  ///< of the call
};

/// A value for each channel: a Number for one channel, and an array of them for more.
template <class Number, int channels>
using Value = typename detail::ValueOf<Number, channels>::Type;

/// Memory that a call works in.
struct Work {
  void* data;         ///< it, of any alignment
  std::size_t bytes;  ///< how much
};

/// @cond
namespace detail {

/// What measure(T*) stores, with the status that it returns.
template <class T, class Measure>
Measured<T> measured(Measure measure) {
  T value = {};
  const VekStatus status = measure(&value);
  if constexpr (std::is_class_v<T>) {
    return {value, status};
  } else {
    return {{value}, status};
  }
}

}  // namespace detail
/// @endcond

}  // namespace v0
}  // namespace vek

#endif  // VEK_CPP_CALL_HPP
