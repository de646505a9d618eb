/** @file preview.hpp
 *  Resizing, rotation and conversion of previews in C++. vek.hpp includes it. */
#ifndef VEK_CPP_PREVIEW_HPP
#define VEK_CPP_PREVIEW_HPP

#include "vek/cpp/call.hpp"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace vek {
inline namespace v0 {

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

/// Whether rows are pairs of the scaled image; an odd last one goes with the pair above it.
VEK_INLINE bool arePairs(Call call, Band rows, Size scaled) {
  const std::int64_t end = std::int64_t{rows.first} + rows.count;
  if (rows.first >= 0 && rows.first % 2 == 0 && rows.count >= 1 && end <= scaled.height &&
      (end == scaled.height ? rows.first < (scaled.height & ~1) : rows.count % 2 == 0)) {
    return true;
  }
  OnError::refuse(call.onError, vekStsBadArgErr, call.function, "rows",
                  "are %d from row %d on, not pairs of the scaled image's %d", rows.count,
                  rows.first, scaled.height);
  return false;
}

/// f(planes, sizes, pixels, manner, rest...).
template <class F, class Destination, class... Rest>
VEK_INLINE VekStatus resize420(Call call, F f, const Planes420<const Vek8u>& src,
                               const Destination& dst, int format, int unit, Rotation rotation,
                               Interpolation interpolation, Steps steps, Rest... rest) {
  const Size scaled = rotated(dst.size(), rotation);
  const auto from = listed(src);
  return call.done(
      f(from.data, from.steps, src.width(), src.height(), reinterpret_cast<Vek8u*>(dst.data()),
        dst.stepBytes(), scaled.width, scaled.height, format, static_cast<int>(interpolation),
        static_cast<int>(rotation), steps.x, steps.y, rest...),
      [&](VekStatus) {
        const Placement images[] = {placed("src.y", src.y(), 4, 4),
                                    placed("src.cb", src.cb(), 2, 2),
                                    placed("src.cr", src.cr(), 2, 2), placed("dst", dst, 8, unit)};
        return refusePreview(call, images, src.size(), scaled, steps, false);
      });
}

/// The same to planes.
template <class F, class... Rest>
VEK_INLINE VekStatus resize420(Call call, F f, const Planes420<const Vek8u>& src,
                               const Planes420<>& dst, Rotation rotation,
                               Interpolation interpolation, Steps steps, Rest... rest) {
  const Size scaled = rotated(dst.size(), rotation);
  const auto from = listed(src);
  const auto to = listed(dst);
  // Reductions by 2 and 4 read Cr, and a mirror writes it, at the step of Cb.
  if (from.steps[1] != from.steps[2] && interpolation == Interpolation::nearest &&
      rotation == Rotation::none) {
    return OnError::refuse(call.onError, vekStsBadArgErr, call.function, "src",
                           "has chroma steps of %d and %d bytes, which must be equal here",
                           from.steps[1], from.steps[2]);
  }
  if (to.steps[1] != to.steps[2] && rotation == Rotation::mirrorTopBottom) {
    return OnError::refuse(call.onError, vekStsBadArgErr, call.function, "dst",
                           "has chroma steps of %d and %d bytes, which must be equal here",
                           to.steps[1], to.steps[2]);
  }
  return call.done(f(from.data, from.steps, src.width(), src.height(), to.data, to.steps,
                     scaled.width, scaled.height, static_cast<int>(interpolation),
                     static_cast<int>(rotation), steps.x, steps.y, rest...),
                   [&](VekStatus) {
                     const Placement images[] = {
                         placed("src.y", src.y(), 8, 8),   placed("src.cb", src.cb(), 8, 8),
                         placed("src.cr", src.cr(), 8, 8), placed("dst.y", dst.y(), 4, 4),
                         placed("dst.cb", dst.cb(), 2, 2), placed("dst.cr", dst.cr(), 2, 2)};
                     return refusePreview(call, images, src.size(), scaled, steps, true);
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
  return detail::resize420(detail::Call{"resize", onError}, vekiYCbCr420RszRot_8u_P3R, src, dst,
                           rotation, interpolation, steps);
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
  return detail::resize420(detail::Call{"resize", onError}, vekiYCbCr420RszCscRotRGB_8u_P3C3R, src,
                           dst, vekiCsc420RGB565 + static_cast<int>(fields), 8, rotation,
                           interpolation, steps);
}
/// Resizes and rotates 4:2:0 and converts it to BGR24 (vekiYCbCr420RszCscRotRGB_8u_P3C3R).
VEK_INLINE VekStatus resize(const Planes420<const Vek8u>& src, View<Bgr24> dst, Rotation rotation,
                            Interpolation interpolation, Steps steps, OnError onError = {}) {
  return detail::resize420(detail::Call{"resize", onError}, vekiYCbCr420RszCscRotRGB_8u_P3C3R, src,
                           dst, vekiCsc420BGR24, 2, rotation, interpolation, steps);
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

/// Makes some rows of what resize() makes of 4:2:0, for instance in several threads
/// (vekiYCbCr420RszRotRows_8u_P3R). `dst` is the whole picture; `rows` are those of the scaled one, before
/// its rotation, in pairs.
VEK_INLINE VekStatus resizeRows(const Planes420<const Vek8u>& src, const Planes420<>& dst,
                                Band rows, Rotation rotation, Interpolation interpolation,
                                Steps steps, OnError onError = {}) {
  const detail::Call call{"resizeRows", onError};
  if (!detail::arePairs(call, rows, rotated(dst.size(), rotation))) return vekStsBadArgErr;
  return detail::resize420(call, vekiYCbCr420RszRotRows_8u_P3R, src, dst, rotation, interpolation,
                           steps, rows.first, rows.count);
}
/// The same to 16-bit pixels with red in the high field (vekiYCbCr420RszCscRotRGBRows_8u_P3C3R). An odd
/// last row goes with the pair above it.
template <Fields fields>
VEK_INLINE std::enable_if_t<detail::redFirst<fields>, VekStatus> resizeRows(
    const Planes420<const Vek8u>& src, View<Pixel16<fields>> dst, Band rows, Rotation rotation,
    Interpolation interpolation, Steps steps, OnError onError = {}) {
  const detail::Call call{"resizeRows", onError};
  if (!detail::arePairs(call, rows, rotated(dst.size(), rotation))) return vekStsBadArgErr;
  return detail::resize420(call, vekiYCbCr420RszCscRotRGBRows_8u_P3C3R, src, dst,
                           vekiCsc420RGB565 + static_cast<int>(fields), 8, rotation, interpolation,
                           steps, rows.first, rows.count);
}
/// The same to BGR24 (vekiYCbCr420RszCscRotRGBRows_8u_P3C3R).
VEK_INLINE VekStatus resizeRows(const Planes420<const Vek8u>& src, View<Bgr24> dst, Band rows,
                                Rotation rotation, Interpolation interpolation, Steps steps,
                                OnError onError = {}) {
  const detail::Call call{"resizeRows", onError};
  if (!detail::arePairs(call, rows, rotated(dst.size(), rotation))) return vekStsBadArgErr;
  return detail::resize420(call, vekiYCbCr420RszCscRotRGBRows_8u_P3C3R, src, dst, vekiCsc420BGR24,
                           2, rotation, interpolation, steps, rows.first, rows.count);
}

/// Any of these with the sampling steps that fit the sizes, as forBands() calls it:
/// `forBands(480, executor, [&](Band rows) { resizeRows(src, dst, rows); })`.
template <class Destination>
VEK_INLINE VekStatus resizeRows(const Planes420<const Vek8u>& src, Destination&& dst, Band rows,
                                Rotation rotation = Rotation::none,
                                Interpolation interpolation = Interpolation::linear,
                                OnError onError = {}) {
  const auto view = dst.view();
  return resizeRows(src, view, rows, rotation, interpolation,
                    samplingSteps(src.size(), rotated(view.size(), rotation)), onError);
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

}  // namespace v0
}  // namespace vek

#endif  // VEK_CPP_PREVIEW_HPP
