/** @file front.hpp
 *  The raw front end in C++. vek.hpp includes it. */
#ifndef VEK_CPP_FRONT_HPP
#define VEK_CPP_FRONT_HPP

#include "vek/cpp/call.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace vek {
inline namespace v0 {

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

/// A matrix on the colours of a raw frame, from linear light to linear light: rows of three, in 1/4096, each
/// entry within -16383..16383.
using BayerMatrix = std::array<Vek16s, 9>;

/// Applies a matrix to the samples of a raw frame, in which the means of the nearest samples stand for the
/// colours that a sample does not have (vekiColorMatrix_10Bayer_16u_C1R). With `borderValid` one more sample
/// on every side of `src` is valid; without, neighbours outside of it are mirrored.
VEK_INLINE VekStatus colorMatrix(View<const Raw10> src, View<Raw10> dst, const BayerMatrix& matrix,
                                 Bayer order = Bayer::rggb, bool borderValid = false,
                                 OnError onError = {}) {
  const detail::Call call{"colorMatrix", onError};
  if (!call.same("dst", dst, "src", src)) return vekStsSizeErr;
  return call.done(vekiColorMatrix_10Bayer_16u_C1R(src.data(), src.stepBytes(), dst.data(),
                                                   dst.stepBytes(), src.size(), matrix.data(),
                                                   static_cast<int>(order), borderValid ? 1 : 0),
                   [&](VekStatus status) {
                     const bool isSmall = src.width() < 2 || src.height() < 2;
                     return OnError::refuse(
                         onError, status, "colorMatrix", isSmall ? "src" : "matrix",
                         isSmall ? "is smaller than 2 x 2, or misaligned"
                                 : "has an entry beyond 16383 in magnitude, or a step is odd");
                   });
}
/// The same in a new image.
inline Image<Raw10> colorMatrix(View<const Raw10> src, const BayerMatrix& matrix,
                                Bayer order = Bayer::rggb, bool borderValid = false,
                                OnError onError = {}) {
  return detail::made<Image<Raw10>>(src.size(), onError, [&](auto& dst) {
    return colorMatrix(src, dst, matrix, order, borderValid, onError);
  });
}

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_CPP_FRONT_HPP
