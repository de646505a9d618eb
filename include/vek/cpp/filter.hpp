/** @file filter.hpp
 *  Borders, filters, morphology, mirrors and gamma in C++. vek.hpp includes it. */
#ifndef VEK_CPP_FILTER_HPP
#define VEK_CPP_FILTER_HPP

#include "vek/cpp/call.hpp"

#include <cstddef>

namespace vek {
inline namespace v0 {

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

}  // namespace v0
}  // namespace vek

#endif  // VEK_CPP_FILTER_HPP
