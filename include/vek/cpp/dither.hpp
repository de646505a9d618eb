/** @file dither.hpp
 *  Dithering in C++. vek.hpp includes it. */
#ifndef VEK_CPP_DITHER_HPP
#define VEK_CPP_DITHER_HPP

#include "vek/cpp/call.hpp"

#include <type_traits>

namespace vek {
inline namespace v0 {

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

}  // namespace v0
}  // namespace vek

#endif  // VEK_CPP_DITHER_HPP
