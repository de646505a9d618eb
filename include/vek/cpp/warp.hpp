/** @file warp.hpp
 *  Warps in C++. vek.hpp includes it. */
#ifndef VEK_CPP_WARP_HPP
#define VEK_CPP_WARP_HPP

#include "vek/cpp/arith.hpp"
#include "vek/cpp/call.hpp"

#include <array>
#include <cstddef>

namespace vek {
inline namespace v0 {

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
    if (border == WarpBorder::transparent) set(dst, Value<Vek8u, channels>{});
    return warp<channels>(src, dst, map, direction, interpolation, border, value, place, onError);
  });
}

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_CPP_WARP_HPP
