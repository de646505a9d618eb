/** @file view.hpp
 *  What the C++ interface is built from: errors, views of images, images that own their memory, planes,
 *  and helpers. C++17, header only; vek.hpp includes it.
 *
 *  A view says where an image is and what its pixels are, and owns nothing. It is made once, checked,
 *  and passed by value. `View<Vek8u, 3>` may change its pixels, `View<const Vek8u, 3>` may not, and the
 *  first is accepted wherever the second is. What a byte or word stands for is part of the type where
 *  it matters: `View<Bgr24>` is a `View<Vek8u, 3>`, but not the other way round, and neither is a
 *  `View<Rgb24>`. */
#ifndef VEK_VIEW_HPP
#define VEK_VIEW_HPP

#include "vek/camera.h"
#include "vek/image.h"

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <new>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>

/// @cond
#if defined(__GNUC__)
#define VEK_COLD __attribute__((cold, noinline))
#define VEK_INLINE inline __attribute__((always_inline))
#define VEK_PRINTF(text, values) __attribute__((format(printf, text, values)))
#else
#define VEK_COLD
#define VEK_INLINE inline
#define VEK_PRINTF(text, values)
#endif
/// @endcond

/// The C++ interface of the library.
namespace vek {
/// The names of this version, so that objects compiled against two versions can be in one program.
inline namespace v0 {

/** @defgroup cpperrors C++: errors
 *
 *  Every function and constructor that can fail takes an `OnError` as its last argument, which says
 *  what happens then:
 *
 *      vek::copy(src, dst);                  // throws vek::Error
 *      vek::copy(src, dst, std::nothrow);    // returns the negative status
 *      vek::copy(src, dst, code);            // a std::error_code, set or cleared
 *      vek::copy(src, dst, failure);         // a vek::Failure, which says more; set on errors alone
 *
 *  Without exceptions (`-fno-exceptions`) the first form prints what is wrong and calls std::abort.
 *  Positive statuses are no errors and are returned. After an error nothing has been written.
 *  Functions that return an image return an empty one instead.
 *  @{ */

/// What is wrong with a call.
struct Failure {
  VekStatus status = vekStsNoErr;  ///< one of VekStatusValue, negative
  const char* function = "";       ///< the C++ function, without its namespace
  const char* argument = "";  ///< the argument that was refused, by its name in the declaration
  char message[256] = "";     ///< function, argument and reason in one line
};

/// The category of `std::error_code` whose values are the library's statuses. Its codes compare equal
/// to std::errc::not_enough_memory or, all others, std::errc::invalid_argument.
inline const std::error_category& category() noexcept {
  struct Category final : std::error_category {
    const char* name() const noexcept override { return "vek"; }
    std::string message(int status) const override { return vekStatusString(status); }
    std::error_condition default_error_condition(int status) const noexcept override {
      if (status >= 0) return {status, *this};
      return status == vekStsMemAllocErr ? std::errc::not_enough_memory
                                         : std::errc::invalid_argument;
    }
  };
  static const Category instance;
  return instance;
}

/// A refused call.
class Error : public std::system_error {
 public:
  /// The error that `failure` describes.
  explicit Error(const Failure& failure)
      : std::system_error(failure.status, category(), failure.message), failure_(failure) {}

  /// One of VekStatusValue, negative.
  VekStatus status() const noexcept { return failure_.status; }
  /// The status's text, as vekStatusString() gives it.
  const char* text() const noexcept { return vekStatusString(failure_.status); }
  /// The C++ function, without its namespace.
  const char* function() const noexcept { return failure_.function; }
  /// The argument that was refused, by its name in the declaration.
  const char* argument() const noexcept { return failure_.argument; }

 private:
  Failure failure_;
};

/// What a function does when it fails. An `OnError` is not written out by callers: it is made from
/// `std::nothrow`, a `std::error_code` or a `Failure`, or left out.
class OnError {
 public:
  /// Throws.
  constexpr OnError() noexcept = default;
  /// Returns the status alone.
  constexpr OnError(const std::nothrow_t&) noexcept : to_(To::nothing) {}
  /// Sets `code`, and clears it on success.
  constexpr OnError(std::error_code& code) noexcept : to_(To::code), where_(&code) {}
  /// Sets `failure`, and leaves it alone on success.
  constexpr OnError(Failure& failure) noexcept : to_(To::failure), where_(&failure) {}

  /// Whether nothing is told but the status that is returned.
  constexpr bool isSilent() const noexcept { return to_ == To::nothing; }

  /// To be called when all went well. Returns `status`, which is not negative.
  VekStatus success(VekStatus status = vekStsNoErr) const noexcept {
    if (to_ == To::code) static_cast<std::error_code*>(where_)->clear();
    return status;
  }

  /// To be called when a call is refused; `text`, as printf takes it, and what follows say why.
  /// Returns `status`.
  VEK_COLD VEK_PRINTF(5, 6) VekStatus failure(VekStatus status, const char* function,
                                              const char* argument, const char* text, ...) const {
    Failure failure{status, function, argument, {}};
    std::va_list values;
    va_start(values, text);
    describe(failure, text, values);
    va_end(values);
    return deliver(failure);
  }

  /// The same for an `onError` that is handed over by value, and so need not be in memory when all goes
  /// well.
  VEK_COLD VEK_PRINTF(5, 6) static VekStatus
      refuse(OnError onError, VekStatus status, const char* function, const char* argument,
             const char* text, ...) {
    Failure failure{status, function, argument, {}};
    std::va_list values;
    va_start(values, text);
    describe(failure, text, values);
    va_end(values);
    return onError.deliver(failure);
  }

 private:
  enum class To { exception, nothing, code, failure };

  static void describe(Failure& failure, const char* text, std::va_list values) {
    constexpr int room = sizeof failure.message;
    const int head =
        std::snprintf(failure.message, room, "vek::%s: %s ", failure.function, failure.argument);
    if (head < 0 || head >= room) return;
    std::vsnprintf(failure.message + head, static_cast<std::size_t>(room - head), text, values);
  }

  VekStatus deliver(const Failure& failure) const {
    if (to_ == To::exception) {
#if defined(__cpp_exceptions) || defined(_CPPUNWIND)
      throw Error(failure);
#else
      std::fprintf(stderr, "%s: %s\n", failure.message, vekStatusString(failure.status));
      std::abort();
#endif
    }
    if (to_ == To::code) {
      static_cast<std::error_code*>(where_)->assign(failure.status, category());
    } else if (to_ == To::failure) {
      *static_cast<Failure*>(where_) = failure;
    }
    return failure.status;
  }

  To to_ = To::exception;
  void* where_ = nullptr;
};

/** @} */
/** @defgroup cpptypes C++: geometry, selectors, pixels
 *  The enumerators have the values of those of the C interface.
 *  @{ */

using Size = VekiSize;    ///< width and height in pixels
using Rect = VekiRect;    ///< x, y, width and height in pixels
using Point = VekiPoint;  ///< x and y in pixels

/// A number of bytes, for row steps: never written as a plain number, which could be one of pixels.
struct Bytes {
  int count;  ///< how many
  /// `count` bytes.
  constexpr explicit Bytes(int count_) noexcept : count(count_) {}
};

/// Raw formats of sensors.
enum class Raw : Vek32s {
  bytes = vekiRaw8,          ///< one byte a sample
  plain16 = vekiRawPlain16,  ///< little-endian words of 9 to 16 valid bits
  csi2_10 = vekiRawCsi2_10,  ///< RAW10: 4 samples in 5 bytes
  csi2_12 = vekiRawCsi2_12,  ///< RAW12: 2 samples in 3 bytes
  csi2_14 = vekiRawCsi2_14   ///< RAW14: 4 samples in 7 bytes
};

/// The colours of the 2 x 2 samples at the top left of a raw frame.
enum class Bayer : Vek32s {
  rggb = vekiBayerRGGB,  ///< R G, G B
  grbg = vekiBayerGRBG,  ///< G R, B G
  gbrg = vekiBayerGBRG,  ///< G B, R G
  bggr = vekiBayerBGGR   ///< B G, G R
};

/// Orientations.
enum class Rotation : int {
  none = vekiRotNone,                     ///< as it is
  ccw90 = vekiRot90Ccw,                   ///< a quarter turn counter-clockwise
  cw90 = vekiRot90Cw,                     ///< a quarter turn clockwise
  half = vekiRot180,                      ///< half a turn
  mirrorLeftRight = vekiMirrorLeftRight,  ///< columns in reverse order
  mirrorTopBottom = vekiMirrorTopBottom   ///< rows in reverse order
};

/// How samples between pixels are made.
enum class Interpolation : int {
  nearest = vekiInterpolateNearest,  ///< the nearest sample
  linear = vekiInterpolateLinear,    ///< a blend of the four samples around
  cubic = 2                          ///< of the sixteen around; warps alone
};

/// How a block of pixels becomes one.
enum class Reduction : int {
  first = vekiReduceFirst,     ///< its first luma sample
  average = vekiReduceAverage  ///< its average
};

/// What lies beyond the edges of a padded image.
enum class PadBorder : int {
  constant = vekiBorderConstant,    ///< a value of the caller's
  replicate = vekiBorderReplicate,  ///< the nearest sample: aaa|abc|ccc
  mirror = vekiBorderMirror         ///< the samples mirrored, the edge itself once: dcb|abcd|cba
};

/// Axes of a mirror.
enum class MirrorAxis : int {
  horizontal = vekiMirrorHorizontalAxis,  ///< rows in reverse order
  vertical = vekiMirrorVerticalAxis,      ///< columns in reverse order
  both = vekiMirrorBothAxes               ///< both: half a turn
};

/// Neighbourhoods of the vector median.
enum class MedianMask : int {
  square3 = vekiMask3x3,  ///< 3 x 3 pixels
  square5 = vekiMask5x5   ///< 5 x 5 pixels
};

/// How often chroma is sampled.
enum class Chroma : int {
  c420,  ///< once for 2 x 2 pixels
  c422,  ///< once for two pixels of a row
  c444   ///< for every pixel
};

/// A 10-bit raw sample of 0..1023 in a 16-bit word. A view of these is a frame in the order RGGB: it
/// begins with a red sample.
struct Raw10 {};
/// A byte of a raw frame in any format. The width of a view of these is one of bytes.
struct RawByte {};

/// The fields of a 16-bit pixel.
enum class Fields {
  rgb565,  ///< red in bits 15..11, green 10..5, blue 4..0
  rgb555,  ///< bit 15 zero, red in bits 14..10, green 9..5, blue 4..0
  rgb444,  ///< bits 15..12 zero, red in bits 11..8, green 7..4, blue 3..0
  bgr565,  ///< rgb565 with red and blue exchanged
  bgr555,  ///< rgb555 with red and blue exchanged
  bgr444   ///< rgb444 with red and blue exchanged
};
/// A little-endian 16-bit pixel.
template <Fields fields>
struct Pixel16 {};
using Rgb565 = Pixel16<Fields::rgb565>;  ///< see Fields
using Rgb555 = Pixel16<Fields::rgb555>;  ///< see Fields
using Rgb444 = Pixel16<Fields::rgb444>;  ///< see Fields
using Bgr565 = Pixel16<Fields::bgr565>;  ///< see Fields
using Bgr555 = Pixel16<Fields::bgr555>;  ///< see Fields
using Bgr444 = Pixel16<Fields::bgr444>;  ///< see Fields

/// What `count` interleaved bytes of a pixel are. A view of such pixels is a `View<Vek8u, count>`, too.
template <int count>
struct Interleaved {
  static constexpr int channels = count;  ///< bytes of a pixel
};
struct Rgb24 : Interleaved<3> {};    ///< R, G, B
struct Bgr24 : Interleaved<3> {};    ///< B, G, R
struct Rgbx32 : Interleaved<4> {};   ///< R, G, B and a byte that is alpha or nothing
struct Bgrx32 : Interleaved<4> {};   ///< B, G, R and a byte that is alpha or nothing
struct YCbCr24 : Interleaved<3> {};  ///< Y, Cb, Cr: studio-range BT.601
struct Yuv24 : Interleaved<3> {};    ///< Y, U, V: full range
struct Xyz24 : Interleaved<3> {};    ///< CIE X, Y, Z
struct Luv24 : Interleaved<3> {};    ///< CIE L, u, v
struct Ycc24 : Interleaved<3> {};    ///< photo YCC
struct Hls24 : Interleaved<3> {};    ///< hue, lightness, saturation
struct Hsv24 : Interleaved<3> {};    ///< hue, saturation, value

/// Interleaved 4:2:2 in the order Y0, Cb, Y1, Cr (YUYV). Rows hold whole pairs of pixels.
struct Yuy2 {};
/// Interleaved 4:2:2 in the order Cb, Y0, Cr, Y1. Rows hold whole pairs of pixels.
struct Uyvy {};
/// Real and imaginary part, 32 bits each, of half a spectrum.
struct Complex32s {};
/// Samples of `bits` bits (1, 2 or 4), the first one in a byte's highest bits.
template <int bits>
struct Packed {
  static_assert(bits == 1 || bits == 2 || bits == 4, "1, 2 or 4 bits");
};

/// @cond
namespace detail {

/// How pixels lie in memory: `Storage` is what a pointer to them points at; columns and rows of a part
/// of an image begin at multiples of `columns` and `rows`.
template <class S, std::int64_t bytes, int columns_ = 1, int rows_ = 1>
struct Layout {
  using Storage = S;
  static constexpr int columns = columns_;
  static constexpr int rows = rows_;
  static constexpr std::int64_t offset(std::int64_t x) { return x * bytes; }
  static constexpr std::int64_t rowBytes(std::int64_t width) { return width * bytes; }
};
struct PairLayout : Layout<Vek8u, 2, 2> {
  static constexpr std::int64_t rowBytes(std::int64_t width) { return (width + 1) / 2 * 4; }
};
template <int bits>
struct PackedLayout : Layout<Vek8u, 1, 8 / bits> {
  static constexpr std::int64_t offset(std::int64_t x) { return x * bits / 8; }
  static constexpr std::int64_t rowBytes(std::int64_t width) { return (width * bits + 7) / 8; }
};

template <class Pixel, class = void>
struct LayoutOf;
template <class Sample>
struct LayoutOf<Sample, std::enable_if_t<std::is_arithmetic_v<Sample>>> {
  template <int channels>
  using Type = Layout<Sample, static_cast<std::int64_t>(sizeof(Sample)) * channels>;
};
template <class Pixel>
struct LayoutOf<Pixel, std::void_t<decltype(Pixel::channels)>> {
  template <int channels>
  using Type = Layout<Vek8u, Pixel::channels>;
};
/// Of a pixel that is no number of channels.
template <class L>
struct WholePixel {
  template <int channels>
  using Type = std::enable_if_t<channels == 1, L>;
};
template <>
struct LayoutOf<Raw10> : WholePixel<Layout<Vek16u, 2, 2, 2>> {};
template <>
struct LayoutOf<RawByte> : WholePixel<Layout<Vek8u, 1, 1, 2>> {};
template <Fields fields>
struct LayoutOf<Pixel16<fields>> : WholePixel<Layout<Vek16u, 2>> {};
template <>
struct LayoutOf<Yuy2> : WholePixel<PairLayout> {};
template <>
struct LayoutOf<Uyvy> : WholePixel<PairLayout> {};
template <>
struct LayoutOf<Complex32s> : WholePixel<Layout<Vek32s, 8>> {};
template <int bits>
struct LayoutOf<Packed<bits>> : WholePixel<PackedLayout<bits>> {};

template <class Pixel, class = void>
inline constexpr bool isInterleaved = false;
template <class Pixel>
inline constexpr bool isInterleaved<Pixel, std::void_t<decltype(Pixel::channels)>> = true;

template <class Container, class Storage, class = void>
inline constexpr bool holds = false;
template <class Container, class Storage>
inline constexpr bool holds<Container, Storage,
                            std::enable_if_t<std::is_convertible_v<
                                decltype(std::data(std::declval<Container&>())), Storage*>>> =
    std::is_same_v<
        std::remove_cv_t<std::remove_pointer_t<decltype(std::data(std::declval<Container&>()))>>,
        std::remove_cv_t<Storage>>;

/// `memory` is how many bytes there are, or -1 if that is not known.
template <class L>
VEK_INLINE constexpr bool rowsAreValid(const void* data, Size size, std::int64_t step,
                                       std::int64_t memory) {
  if (data == nullptr || size.width < 1 || size.height < 1) return false;
  constexpr std::int64_t most = std::numeric_limits<std::ptrdiff_t>::max();
  const std::int64_t row = L::rowBytes(size.width);
  return step >= row && step <= std::numeric_limits<int>::max() &&
         step * (size.height - 1) + row <= (memory < 0 ? most : memory);
}

template <class L>
VEK_COLD void refuseRows(OnError onError, const void* data, Size size, std::int64_t step,
                         std::int64_t memory) {
  const long long row = L::rowBytes(size.width);
  const long long steps = step;
  if (data == nullptr) {
    OnError::refuse(onError, vekStsNullPtrErr, "View", "data", "is null");
  } else if (size.width < 1 || size.height < 1) {
    OnError::refuse(onError, vekStsSizeErr, "View", "size", "is %d x %d", size.width, size.height);
  } else if (steps < row || steps > std::numeric_limits<int>::max()) {
    OnError::refuse(onError, vekStsStrideErr, "View", "step",
                    "is %lld bytes, but rows of %d pixels take %lld", steps, size.width, row);
  } else {
    OnError::refuse(
        onError, vekStsSizeErr, "View", "data",
        "has %lld bytes, too few for %d rows of %lld bytes, %lld bytes apart",
        static_cast<long long>(memory < 0 ? std::numeric_limits<std::ptrdiff_t>::max() : memory),
        size.height, row, steps);
  }
}

/// What is wrong with a part of an image of `all` pixels that come in groups.
VEK_COLD inline void refusePart(OnError onError, Rect part, Size all, int columns, int rows) {
  if (part.x < 0 || part.y < 0 || part.width < 1 || part.height < 1 ||
      part.width > all.width - part.x || part.height > all.height - part.y) {
    OnError::refuse(onError, vekStsSizeErr, "sub", "part",
                    "at (%d, %d), %d x %d, is not inside %d x %d", part.x, part.y, part.width,
                    part.height, all.width, all.height);
  } else {
    OnError::refuse(onError, vekStsBadArgErr, "sub", "part",
                    "at (%d, %d), %d x %d, cuts a group of %d x %d pixels", part.x, part.y,
                    part.width, part.height, columns, rows);
  }
}

/// Whether `part` is inside an image of `all` pixels and cuts none of their groups.
inline bool holdsPart(OnError onError, Rect part, Size all, int columns, int rows) {
  const bool inside = part.x >= 0 && part.y >= 0 && part.width >= 1 && part.height >= 1 &&
                      part.width <= all.width - part.x && part.height <= all.height - part.y;
  if (!inside || part.x % columns != 0 || part.y % rows != 0 ||
      (part.width % columns != 0 && part.x + part.width != all.width) ||
      (part.height % rows != 0 && part.y + part.height != all.height)) {
    refusePart(onError, part, all, columns, rows);
    return false;
  }
  onError.success();
  return true;
}

struct Access;

}  // namespace detail
/// @endcond

/** @} */
/** @defgroup cppviews C++: views and images
 *  @{ */

/// What all views of pixels of one layout share.
template <class Layout>
class Area {
 public:
  constexpr int width() const noexcept { return width_; }             ///< pixels in a row
  constexpr int height() const noexcept { return height_; }           ///< rows
  constexpr Size size() const noexcept { return {width_, height_}; }  ///< both
  /// Bytes between the starts of two rows.
  constexpr int stepBytes() const noexcept { return step_; }
  /// Bytes from the start to the end of a row.
  constexpr std::int64_t rowBytes() const noexcept { return Layout::rowBytes(width_); }
  /// Whether this is no image: null, 0 x 0.
  constexpr bool empty() const noexcept { return data_ == nullptr; }

 protected:
  /// @cond
  friend struct detail::Access;
  using Stored = typename Layout::Storage;

  constexpr Area() noexcept = default;
  VEK_INLINE constexpr Area(const Stored* data, Size size, std::int64_t step, std::int64_t memory,
                            OnError onError) {
    if (!detail::rowsAreValid<Layout>(data, size, step, memory)) {
      detail::refuseRows<Layout>(onError, data, size, step, memory);
      return;
    }
    onError.success();
    data_ = data;
    width_ = size.width;
    height_ = size.height;
    step_ = static_cast<int>(step);
  }

  const Stored* at(int x, int y) const noexcept {
    return reinterpret_cast<const Stored*>(reinterpret_cast<const char*>(data_) +
                                           static_cast<std::ptrdiff_t>(y) * step_ +
                                           static_cast<std::ptrdiff_t>(Layout::offset(x)));
  }

  const Stored* data_ = nullptr;
  int width_ = 0;
  int height_ = 0;
  int step_ = 0;
  /// @endcond
};

template <class Pixel, int channels = 1>
class View;
template <class Pixel, int channels = 1>
class Image;

/// @cond
namespace detail {

/// What a view is besides itself: of pixels that may not be changed any longer, or of plain bytes.
template <class Pixel, int channels, bool = isInterleaved<std::remove_const_t<Pixel>>,
          bool = std::is_const_v<Pixel>>
struct BaseOf {
  using Type = View<const Pixel, channels>;
};
template <class Pixel, int channels>
struct BaseOf<Pixel, channels, false, true> {
  using Type = Area<typename LayoutOf<std::remove_const_t<Pixel>>::template Type<channels>>;
};
template <class Pixel, int channels, bool isConst>
struct BaseOf<Pixel, channels, true, isConst> {
  static_assert(channels == 1, "the pixel says how many channels it has");
  using Type = View<std::conditional_t<isConst, const Vek8u, Vek8u>, Pixel::channels>;
};

template <class T>
struct Identity {
  using Type = T;
};

/// Makes views of what is known to be valid.
struct Access {
  template <class V>
  static constexpr V view(const typename V::Storage* data, int width, int height, int step) {
    V result;
    result.data_ = data;
    result.width_ = width;
    result.height_ = height;
    result.step_ = step;
    return result;
  }
  template <class V, class A>
  static constexpr V view(const A& area) {
    return view<V>(area.data_, area.width_, area.height_, area.step_);
  }
  template <class V, class A>
  static V part(const A& area, Rect part) {
    return view<V>(area.at(part.x, part.y), part.width, part.height, area.step_);
  }
};

}  // namespace detail
/// @endcond

/// A parameter of this type takes whatever converts to T, and does not take part in the choice of
/// template arguments.
template <class T>
using Same = typename detail::Identity<T>::Type;

/// Rows of pixels, `stepBytes()` apart, in somebody else's memory. `Pixel` is a number type, of which
/// each pixel has `channels`, or one of the pixel types above. If it is const, the pixels may not be
/// changed.
///
/// A view of pixels that may be changed is a view of pixels that may not, and a view of `Rgb24` and its
/// kin is a view of their bytes. The other way round a view of bytes is made one of pixels explicitly:
/// `View<Rgb24>(bytes)`.
template <class Pixel, int channels>
class View : public detail::BaseOf<Pixel, channels>::Type {
  static_assert(channels >= 1, "a pixel has one channel at least");
  using Base = typename detail::BaseOf<Pixel, channels>::Type;
  static constexpr bool isTagged = detail::isInterleaved<std::remove_const_t<Pixel>>;

 public:
  /// How a pixel lies in memory.
  using Layout = typename detail::LayoutOf<std::remove_const_t<Pixel>>::template Type<channels>;
  /// What a pointer to samples points at.
  using Storage = std::conditional_t<std::is_const_v<Pixel>, const typename Layout::Storage,
                                     typename Layout::Storage>;

  /// No image: null, 0 x 0.
  constexpr View() noexcept = default;

  /// `size.height` rows of `size.width` pixels at `data`, without padding.
  template <class T, std::enable_if_t<std::is_convertible_v<T*, Storage*>, int> = 0>
  constexpr View(T* const& data, Size size, OnError onError = {})
      : Base(data, size, Layout::rowBytes(size.width), -1, onError) {}

  /// `size.height` rows of `size.width` pixels at `data`, the starts of which are `step` apart.
  template <class T, std::enable_if_t<std::is_convertible_v<T*, Storage*>, int> = 0>
  constexpr View(T* const& data, Size size, Bytes step, OnError onError = {})
      : Base(data, size, step.count, -1, onError) {}

  /// The same in an array, vector or span, which must be large enough.
  template <class Container, std::enable_if_t<detail::holds<Container, Storage>, int> = 0>
  constexpr View(Container&& container, Size size, OnError onError = {})
      : Base(std::data(container), size, Layout::rowBytes(size.width), bytesOf(container),
             onError) {}

  /// The same in an array, vector or span, which must be large enough, with a step.
  template <class Container, std::enable_if_t<detail::holds<Container, Storage>, int> = 0>
  constexpr View(Container&& container, Size size, Bytes step, OnError onError = {})
      : Base(std::data(container), size, step.count, bytesOf(container), onError) {}

  /// The same pixels, which may not be changed.
  template <class P,
            std::enable_if_t<std::is_const_v<Pixel> && std::is_same_v<const P, Pixel>, int> = 0>
  constexpr View(const View<P, channels>& other) noexcept
      : View(detail::Access::view<View>(other)) {}

  /// Bytes whose meaning this says.
  template <class P, int n, std::enable_if_t<isTagged && std::is_same_v<View<P, n>, Base>, int> = 0>
  constexpr explicit View(const View<P, n>& bytes) noexcept
      : View(detail::Access::view<View>(bytes)) {}

  /// @cond
  // An image that is const, or about to end, is no image to write to.
  template <class P, int n,
            std::enable_if_t<!std::is_const_v<Pixel> && !std::is_const_v<P>, int> = 0>
  View(const Image<P, n>&) = delete;
  template <
      class P, int n,
      std::enable_if_t<!std::is_const_v<Pixel> && std::is_base_of_v<View, Image<P, n>>, int> = 0>
  constexpr View(Image<P, n>& image) noexcept : View(static_cast<const View&>(image)) {}
  /// @endcond

  /// All of it.
  constexpr View view() const noexcept { return *this; }
  /// The first row.
  constexpr Storage* data() const noexcept { return const_cast<Storage*>(this->data_); }
  /// Row `y`, which is not checked.
  Storage* row(int y) const noexcept { return const_cast<Storage*>(this->at(0, y)); }

  /// A part of the image. It begins and ends where pixels begin that share nothing with others: at an
  /// even column of an interleaved 4:2:2 image, for example, and on a red sample of a raw frame. At
  /// the right and lower edge it may end anywhere.
  View sub(Rect part, OnError onError = {}) const {
    if (!detail::holdsPart(onError, part, this->size(), Layout::columns, Layout::rows)) return {};
    return detail::Access::part<View>(*this, part);
  }
  /// `count` rows from row `first` on.
  View rows(int first, int count, OnError onError = {}) const {
    return sub({0, first, this->width(), count}, onError);
  }

 protected:
  /// @cond
  friend struct detail::Access;

  constexpr View(const typename Layout::Storage* data, Size size, std::int64_t step,
                 std::int64_t memory, OnError onError)
      : Base(data, size, step, memory, onError) {}

  template <class Container>
  static constexpr std::int64_t bytesOf(Container& container) {
    return static_cast<std::int64_t>(std::size(container) * sizeof(Storage));
  }
  /// @endcond
};

/// @cond
namespace detail {

/// Memory of rows that begin at multiples of 64 bytes.
class Memory {
 public:
  static constexpr int alignment = 64;

  Memory() noexcept = default;
  explicit Memory(std::size_t size) noexcept
      : data_(::operator new (size, std::align_val_t{alignment}, std::nothrow)) {}
  Memory(Memory&& other) noexcept : data_(std::exchange(other.data_, nullptr)) {}
  Memory& operator=(Memory&& other) noexcept {
    std::swap(data_, other.data_);
    return *this;
  }
  ~Memory() { ::operator delete (data_, std::align_val_t{alignment}); }

  void* data() const noexcept { return data_; }

 private:
  void* data_ = nullptr;
};

/// A step for rows of `bytes` bytes: whole cache lines, and no multiple of a page, at which columns of
/// many rows would share a few lines of the cache.
constexpr std::int64_t stepFor(std::int64_t bytes) {
  const std::int64_t step = (bytes + Memory::alignment - 1) / Memory::alignment * Memory::alignment;
  return step % 4096 == 0 ? step + Memory::alignment : step;
}

/// Gives `memory` `bytes` bytes for an image; null if that fails.
inline Vek8u* allocate(Memory& memory, const char* function, Size size, std::int64_t step,
                       std::int64_t bytes, OnError onError) {
  if (size.width < 1 || size.height < 1) {
    OnError::refuse(onError, vekStsSizeErr, function, "size", "is %d x %d", size.width,
                    size.height);
    return nullptr;
  }
  if (step <= std::numeric_limits<int>::max() &&
      bytes <= std::numeric_limits<std::ptrdiff_t>::max()) {
    memory = Memory(static_cast<std::size_t>(bytes));
  }
  if (memory.data() == nullptr) {
    OnError::refuse(onError, vekStsMemAllocErr, function, "size",
                    "of %d x %d is more than there is memory for", size.width, size.height);
  }
  return static_cast<Vek8u*>(memory.data());
}

}  // namespace detail
/// @endcond

/// An image that owns its memory. Rows begin at multiples of 64 bytes. It is a view of itself; a const
/// one is a view of pixels that may not be changed. Its samples are not initialised.
template <class Pixel, int channels>
class Image : public View<Pixel, channels> {
  static_assert(!std::is_const_v<Pixel>, "an image owns pixels that may be changed");

 public:
  using Mutable = View<Pixel, channels>;         ///< what it is a view of
  using Constant = View<const Pixel, channels>;  ///< and what a const one is
  using Storage = typename Mutable::Storage;     ///< what a pointer to samples points at

  /// No image: null, 0 x 0.
  Image() noexcept = default;

  /// An image of `size` pixels.
  explicit Image(Size size, OnError onError = {}) {
    const std::int64_t step = detail::stepFor(Mutable::Layout::rowBytes(size.width));
    void* const data = detail::allocate(memory_, "Image", size, step, step * size.height, onError);
    if (data == nullptr) return;
    static_cast<Mutable&>(*this) =
        Mutable(static_cast<Storage*>(data), size, Bytes(static_cast<int>(step)), onError);
  }

  /// The pixels of another one, which is empty afterwards.
  Image(Image&& other) noexcept
      : Mutable(std::exchange(static_cast<Mutable&>(other), Mutable())),
        memory_(std::move(other.memory_)) {}
  /// Takes the pixels of another one, which is empty afterwards.
  Image& operator=(Image&& other) noexcept {
    Image taken(std::move(other));
    std::swap(static_cast<Mutable&>(*this), static_cast<Mutable&>(taken));
    memory_ = std::move(taken.memory_);
    return *this;
  }

  Mutable view() noexcept { return *this; }         ///< all of it
  Constant view() const noexcept { return *this; }  ///< all of it
  /// The first row.
  Storage* data() noexcept { return Mutable::data(); }
  /// The first row.
  const Storage* data() const noexcept { return Mutable::data(); }
  /// Row `y`, which is not checked.
  Storage* row(int y) noexcept { return Mutable::row(y); }
  /// Row `y`, which is not checked.
  const Storage* row(int y) const noexcept { return Mutable::row(y); }
  /// A part of it, as View::sub().
  Mutable sub(Rect part, OnError onError = {}) { return Mutable::sub(part, onError); }
  /// A part of it, as View::sub().
  Constant sub(Rect part, OnError onError = {}) const { return view().sub(part, onError); }
  /// `count` rows from row `first` on.
  Mutable rows(int first, int count, OnError onError = {}) {
    return Mutable::rows(first, count, onError);
  }
  /// `count` rows from row `first` on.
  Constant rows(int first, int count, OnError onError = {}) const {
    return view().rows(first, count, onError);
  }

 private:
  detail::Memory memory_;
};

/// Three planes of bytes: Y, Cb, Cr or Y, U, V. Chroma has half the columns with c420 and c422, and
/// half the rows with c420, both rounded up. `Sample` is Vek8u or const Vek8u.
template <class Sample, Chroma chroma>
class Planes;

/// @cond
namespace detail {

constexpr int halfUp(int size) {
  return size / 2 + size % 2;
}

constexpr Size chromaSize(Size luma, Chroma chroma) {
  return {chroma == Chroma::c444 ? luma.width : halfUp(luma.width),
          chroma == Chroma::c420 ? halfUp(luma.height) : luma.height};
}

/// The part of a chroma plane that belongs to a part of the luma plane.
constexpr Rect chromaPart(Rect luma, Chroma chroma) {
  const Size size = chromaSize({luma.width, luma.height}, chroma);
  return {chroma == Chroma::c444 ? luma.x : luma.x / 2,
          chroma == Chroma::c420 ? luma.y / 2 : luma.y, size.width, size.height};
}

template <class V>
VEK_INLINE bool checkPlane(OnError onError, const char* name, const V& plane, Size size) {
  if (plane.width() == size.width && plane.height() == size.height && !plane.empty()) return true;
  OnError::refuse(onError, vekStsSizeErr, "Planes", name, "is %d x %d instead of %d x %d",
                  plane.width(), plane.height(), size.width, size.height);
  return false;
}

/// What planes have in common.
template <Chroma chroma>
class AllPlanes {
 public:
  constexpr Size size() const noexcept { return y_.size(); }
  constexpr int width() const noexcept { return y_.width(); }
  constexpr int height() const noexcept { return y_.height(); }
  constexpr bool empty() const noexcept { return y_.empty(); }

 protected:
  using Plane = View<const Vek8u>;

  constexpr AllPlanes() noexcept = default;
  VEK_INLINE AllPlanes(Plane y, Plane cb, Plane cr, OnError onError) {
    const Size half = chromaSize(y.size(), chroma);
    if (!checkPlane(onError, "y", y, y.size()) || !checkPlane(onError, "cb", cb, half) ||
        !checkPlane(onError, "cr", cr, half)) {
      return;
    }
    onError.success();
    y_ = y;
    cb_ = cb;
    cr_ = cr;
  }
  AllPlanes(const Vek8u* data, std::size_t bytes, Size luma, OnError onError) {
    const Size half = chromaSize(luma, chroma);
    const std::int64_t first = std::int64_t{luma.width} * luma.height;
    const std::int64_t second = std::int64_t{half.width} * half.height;
    if (data == nullptr || luma.width < 1 || luma.height < 1 ||
        static_cast<std::uint64_t>(first + 2 * second) > bytes) {
      OnError::refuse(onError, data == nullptr ? vekStsNullPtrErr : vekStsSizeErr, "Planes", "data",
                      "has %llu bytes, but the planes of %d x %d pixels take %lld",
                      static_cast<unsigned long long>(bytes), luma.width, luma.height,
                      static_cast<long long>(first + 2 * second));
      return;
    }
    onError.success();
    y_ = Access::view<Plane>(data, luma.width, luma.height, luma.width);
    cb_ = Access::view<Plane>(data + first, half.width, half.height, half.width);
    cr_ = Access::view<Plane>(data + first + second, half.width, half.height, half.width);
  }
  AllPlanes part(Rect part, OnError onError) const {
    AllPlanes result;
    if (holdsPart(onError, part, size(), chroma == Chroma::c444 ? 1 : 2,
                  chroma == Chroma::c420 ? 2 : 1)) {
      const Rect half = chromaPart(part, chroma);
      result.y_ = Access::part<Plane>(y_, part);
      result.cb_ = Access::part<Plane>(cb_, half);
      result.cr_ = Access::part<Plane>(cr_, half);
    }
    return result;
  }

  Plane y_, cb_, cr_;
};

}  // namespace detail
/// @endcond

/// Planes that may not be changed.
template <Chroma chroma>
class Planes<const Vek8u, chroma> : public detail::AllPlanes<chroma> {
 public:
  using Plane = View<const Vek8u>;  ///< one of them

  /// No image.
  constexpr Planes() noexcept = default;
  /// These three, the sizes of which must fit.
  VEK_INLINE Planes(Plane y, Plane cb, Plane cr, OnError onError = {})
      : detail::AllPlanes<chroma>(y, cb, cr, onError) {}
  /// The planes of `size` pixels that lie one after another, without padding, in `bytes` bytes at `data`.
  Planes(const Vek8u* data, std::size_t bytes, Size size, OnError onError = {})
      : detail::AllPlanes<chroma>(data, bytes, size, onError) {}

  constexpr Planes view() const noexcept { return *this; }   ///< all of it
  constexpr Plane y() const noexcept { return this->y_; }    ///< luma
  constexpr Plane cb() const noexcept { return this->cb_; }  ///< Cb or U
  constexpr Plane cr() const noexcept { return this->cr_; }  ///< Cr or V
  /// A part, which begins and ends where chroma samples do, or at the right and lower edge.
  Planes sub(Rect part, OnError onError = {}) const { return Planes(this->part(part, onError)); }
  /// `count` rows of luma from row `first` on, and the chroma that belongs to them.
  Planes rows(int first, int count, OnError onError = {}) const {
    return sub({0, first, this->width(), count}, onError);
  }

 protected:
  /// @cond
  explicit Planes(const detail::AllPlanes<chroma>& planes) : detail::AllPlanes<chroma>(planes) {}
  /// @endcond
};

template <Chroma chroma>
class PlanarImage;

/// Planes that may be changed. They are planes that may not, too.
template <Chroma chroma>
class Planes<Vek8u, chroma> : public Planes<const Vek8u, chroma> {
 public:
  using Plane = View<Vek8u>;  ///< one of them

  /// No image.
  constexpr Planes() noexcept = default;
  /// These three, the sizes of which must fit.
  VEK_INLINE Planes(Plane y, Plane cb, Plane cr, OnError onError = {})
      : Planes<const Vek8u, chroma>(y, cb, cr, onError) {}
  /// The planes of `size` pixels that lie one after another, without padding, in `bytes` bytes at `data`.
  Planes(Vek8u* data, std::size_t bytes, Size size, OnError onError = {})
      : Planes<const Vek8u, chroma>(data, bytes, size, onError) {}
  /// @cond
  Planes(const PlanarImage<chroma>&) = delete;
  Planes(PlanarImage<chroma>& image) noexcept;
  /// @endcond

  /// All of it.
  constexpr Planes view() const noexcept { return *this; }
  /// Luma.
  constexpr Plane y() const noexcept { return detail::Access::view<Plane>(this->y_); }
  /// Cb or U.
  constexpr Plane cb() const noexcept { return detail::Access::view<Plane>(this->cb_); }
  /// Cr or V.
  constexpr Plane cr() const noexcept { return detail::Access::view<Plane>(this->cr_); }
  /// A part, which begins and ends where chroma samples do, or at the right and lower edge.
  Planes sub(Rect part, OnError onError = {}) const { return Planes(this->part(part, onError)); }
  /// `count` rows of luma from row `first` on, and the chroma that belongs to them.
  Planes rows(int first, int count, OnError onError = {}) const {
    return sub({0, first, this->width(), count}, onError);
  }

 private:
  explicit Planes(const detail::AllPlanes<chroma>& planes) : Planes<const Vek8u, chroma>(planes) {}
};

/// Planes that own their memory. Rows begin at multiples of 64 bytes; chroma rows that have half the
/// samples are half the luma's step apart, which resize() wants of 4:2:2, and others as far as luma's.
template <Chroma chroma>
class PlanarImage : public Planes<Vek8u, chroma> {
 public:
  using Mutable = Planes<Vek8u, chroma>;         ///< what it is a view of
  using Constant = Planes<const Vek8u, chroma>;  ///< and what a const one is

  /// No image.
  PlanarImage() noexcept = default;
  /// Planes for `size` pixels.
  explicit PlanarImage(Size size, OnError onError = {}) : PlanarImage(size, 0, onError) {}
  /// Planes for `size` pixels, of which those in column `alignedColumn` (0..31) of chroma, and in the
  /// column of luma that belongs to it, lie at multiples of 64 bytes: column 1 for a RawPipeline without border.
  PlanarImage(Size size, int alignedColumn, OnError onError = {}) {
    const Size part = detail::chromaSize(size, chroma);
    const int halves = chroma == Chroma::c444 ? 1 : 2;
    const std::int64_t step = halves * detail::stepFor(part.width);
    const std::int64_t luma = step * size.height;
    const std::int64_t other = step / halves * part.height;
    // Planes begin in front of a multiple of 64 bytes, luma's farther than those behind it.
    const int front = alignedColumn & 31;
    Vek8u* const data = detail::allocate(memory_, "PlanarImage", size, step,
                                         luma + 2 * other + detail::Memory::alignment, onError);
    if (data == nullptr) return;
    const auto plane = [&](std::int64_t at, int before, Size of, std::int64_t apart) {
      return View<Vek8u>(data + at + (-before & 63), of, Bytes(static_cast<int>(apart)));
    };
    static_cast<Mutable&>(*this) =
        Mutable(plane(0, halves * front, size, step), plane(luma, front, part, step / halves),
                plane(luma + other, front, part, step / halves), onError);
  }
  /// The planes of another one, which is empty afterwards.
  PlanarImage(PlanarImage&& other) noexcept
      : Mutable(std::exchange(static_cast<Mutable&>(other), Mutable())),
        memory_(std::move(other.memory_)) {}
  /// Takes the planes of another one, which is empty afterwards.
  PlanarImage& operator=(PlanarImage&& other) noexcept {
    PlanarImage taken(std::move(other));
    std::swap(static_cast<Mutable&>(*this), static_cast<Mutable&>(taken));
    memory_ = std::move(taken.memory_);
    return *this;
  }

  Mutable view() noexcept { return *this; }                        ///< all of it
  Constant view() const noexcept { return *this; }                 ///< all of it
  View<Vek8u> y() noexcept { return Mutable::y(); }                ///< luma
  View<Vek8u> cb() noexcept { return Mutable::cb(); }              ///< Cb or U
  View<Vek8u> cr() noexcept { return Mutable::cr(); }              ///< Cr or V
  View<const Vek8u> y() const noexcept { return Mutable::y(); }    ///< luma
  View<const Vek8u> cb() const noexcept { return Mutable::cb(); }  ///< Cb or U
  View<const Vek8u> cr() const noexcept { return Mutable::cr(); }  ///< Cr or V
  /// A part of it, as Planes::sub().
  Mutable sub(Rect part, OnError onError = {}) { return Mutable::sub(part, onError); }
  /// A part of it, as Planes::sub().
  Constant sub(Rect part, OnError onError = {}) const { return view().sub(part, onError); }
  /// Rows of it, as Planes::rows().
  Mutable rows(int first, int count, OnError onError = {}) {
    return Mutable::rows(first, count, onError);
  }
  /// Rows of it, as Planes::rows().
  Constant rows(int first, int count, OnError onError = {}) const {
    return view().rows(first, count, onError);
  }

 private:
  detail::Memory memory_;
};

/// @cond
template <Chroma chroma>
Planes<Vek8u, chroma>::Planes(PlanarImage<chroma>& image) noexcept
    : Planes(static_cast<const Planes&>(image)) {}
/// @endcond

template <class Sample = Vek8u>
using Planes420 = Planes<Sample, Chroma::c420>;  ///< I420
template <class Sample = Vek8u>
using Planes422 = Planes<Sample, Chroma::c422>;  ///< I422
template <class Sample = Vek8u>
using Planes444 = Planes<Sample, Chroma::c444>;  ///< I444
using Image420 = PlanarImage<Chroma::c420>;      ///< I420 that owns its memory
using Image422 = PlanarImage<Chroma::c422>;      ///< I422 that owns its memory
using Image444 = PlanarImage<Chroma::c444>;      ///< I444 that owns its memory

/// Semi-planar 4:2:0: a plane Y and one of the pairs Cb, Cr. For NV21 the pairs are Cr, Cb, which is for
/// whoever uses them to know. `Sample` is Vek8u or const Vek8u.
template <class Sample = Vek8u>
class Nv12;

/// Semi-planar 4:2:0 that may not be changed.
template <>
class Nv12<const Vek8u> {
 public:
  /// No image.
  constexpr Nv12() noexcept = default;
  /// These two planes, the sizes of which must fit.
  Nv12(View<const Vek8u> y, View<const Vek8u, 2> pairs, OnError onError = {}) {
    if (!detail::checkPlane(onError, "y", y, y.size()) ||
        !detail::checkPlane(onError, "pairs", pairs, detail::chromaSize(y.size(), Chroma::c420))) {
      return;
    }
    onError.success();
    y_ = y;
    pairs_ = pairs;
  }

  constexpr Size size() const noexcept { return y_.size(); }     ///< of luma
  constexpr int width() const noexcept { return y_.width(); }    ///< of luma
  constexpr int height() const noexcept { return y_.height(); }  ///< of luma
  constexpr bool empty() const noexcept { return y_.empty(); }   ///< whether there is none
  constexpr View<const Vek8u> y() const noexcept { return y_; }  ///< luma
  constexpr View<const Vek8u, 2> pairs() const noexcept { return pairs_; }  ///< Cb, Cr
  /// A part that begins at even columns and rows, and ends there or at the right and lower edge.
  Nv12 sub(Rect part, OnError onError = {}) const {
    Nv12 result;
    if (detail::holdsPart(onError, part, size(), 2, 2)) {
      result.y_ = detail::Access::part<View<const Vek8u>>(y_, part);
      result.pairs_ = detail::Access::part<View<const Vek8u, 2>>(
          pairs_, detail::chromaPart(part, Chroma::c420));
    }
    return result;
  }
  /// `count` rows of luma from row `first` on, and the chroma that belongs to them.
  Nv12 rows(int first, int count, OnError onError = {}) const {
    return sub({0, first, width(), count}, onError);
  }

 protected:
  /// @cond
  View<const Vek8u> y_;
  View<const Vek8u, 2> pairs_;
  /// @endcond
};

class ImageNv12;

/// Semi-planar 4:2:0 that may be changed. It is some that may not, too.
template <>
class Nv12<Vek8u> : public Nv12<const Vek8u> {
 public:
  /// No image.
  constexpr Nv12() noexcept = default;
  /// These two planes, the sizes of which must fit.
  Nv12(View<Vek8u> y, View<Vek8u, 2> pairs, OnError onError = {})
      : Nv12<const Vek8u>(y, pairs, onError) {}
  /// @cond
  Nv12(const ImageNv12&) = delete;
  inline Nv12(ImageNv12& image) noexcept;
  /// @endcond

  /// All of it.
  constexpr Nv12 view() const noexcept { return *this; }
  /// Luma.
  constexpr View<Vek8u> y() const noexcept { return detail::Access::view<View<Vek8u>>(y_); }
  /// Cb, Cr.
  constexpr View<Vek8u, 2> pairs() const noexcept {
    return detail::Access::view<View<Vek8u, 2>>(pairs_);
  }
  /// A part that begins at even columns and rows, and ends there or at the right and lower edge.
  Nv12 sub(Rect part, OnError onError = {}) const {
    return Nv12(Nv12<const Vek8u>::sub(part, onError));
  }
  /// `count` rows of luma from row `first` on, and the chroma that belongs to them.
  Nv12 rows(int first, int count, OnError onError = {}) const {
    return sub({0, first, width(), count}, onError);
  }

 private:
  explicit Nv12(const Nv12<const Vek8u>& planes) : Nv12<const Vek8u>(planes) {}
};

/// Semi-planar 4:2:0 that owns its memory.
class ImageNv12 : public Nv12<Vek8u> {
 public:
  /// No image.
  ImageNv12() noexcept = default;
  /// Planes for `size` pixels.
  explicit ImageNv12(Size size, OnError onError = {}) {
    Image<Vek8u> luma(size, onError);
    if (luma.empty()) return;
    Image<Vek8u, 2> chroma(detail::chromaSize(size, Chroma::c420), onError);
    if (chroma.empty()) return;
    static_cast<Nv12<Vek8u>&>(*this) = Nv12<Vek8u>(luma.view(), chroma.view());
    luma_ = std::move(luma);
    chroma_ = std::move(chroma);
  }
  /// The planes of another one, which is empty afterwards.
  ImageNv12(ImageNv12&& other) noexcept { *this = std::move(other); }
  /// Takes the planes of another one, which is empty afterwards.
  ImageNv12& operator=(ImageNv12&& other) noexcept {
    static_cast<Nv12<Vek8u>&>(*this) =
        std::exchange(static_cast<Nv12<Vek8u>&>(other), Nv12<Vek8u>());
    luma_ = std::move(other.luma_);
    chroma_ = std::move(other.chroma_);
    return *this;
  }

  Nv12<Vek8u> view() noexcept { return *this; }                                 ///< all of it
  Nv12<const Vek8u> view() const noexcept { return *this; }                     ///< all of it
  View<Vek8u> y() noexcept { return Nv12<Vek8u>::y(); }                         ///< luma
  View<const Vek8u> y() const noexcept { return Nv12<Vek8u>::y(); }             ///< luma
  View<Vek8u, 2> pairs() noexcept { return Nv12<Vek8u>::pairs(); }              ///< Cb, Cr
  View<const Vek8u, 2> pairs() const noexcept { return Nv12<Vek8u>::pairs(); }  ///< Cb, Cr
  /// A part of it, as Nv12::sub().
  Nv12<Vek8u> sub(Rect part, OnError onError = {}) { return Nv12<Vek8u>::sub(part, onError); }
  /// A part of it, as Nv12::sub().
  Nv12<const Vek8u> sub(Rect part, OnError onError = {}) const { return view().sub(part, onError); }
  /// Rows of it, as Nv12::rows().
  Nv12<Vek8u> rows(int first, int count, OnError onError = {}) {
    return Nv12<Vek8u>::rows(first, count, onError);
  }
  /// Rows of it, as Nv12::rows().
  Nv12<const Vek8u> rows(int first, int count, OnError onError = {}) const {
    return view().rows(first, count, onError);
  }

 private:
  Image<Vek8u> luma_;
  Image<Vek8u, 2> chroma_;
};

/// @cond
inline Nv12<Vek8u>::Nv12(ImageNv12& image) noexcept : Nv12(static_cast<const Nv12&>(image)) {}
/// @endcond

/** @} */
/** @defgroup cpphelpers C++: sizes, sampling steps, bands
 *  @{ */

/// The size of an image of `size` pixels after a rotation.
constexpr Size rotated(Size size, Rotation rotation) noexcept {
  const bool quarter = rotation == Rotation::ccw90 || rotation == Rotation::cw90;
  return quarter ? Size{size.height, size.width} : size;
}

/// Distances between samples in the source with 16 fractional bits, for the functions that resize.
struct Steps {
  Vek32s x;  ///< from column to column
  Vek32s y;  ///< from row to row
};

/// @cond
namespace detail {

/// The largest step that is accepted. The product counts modulo 2^32, and as signed, there.
constexpr std::int64_t stepLimit(int from, int to) {
  const std::int64_t source = (from & ~1) - 1;
  const std::int64_t intervals = (to & ~1) - 1;
  if (intervals < 1) return 0;
  const auto product = static_cast<std::uint32_t>(source * 65536);
  return (product < 0x80000000U ? std::int64_t{product} : std::int64_t{product} - 0x100000000) /
         intervals;
}

/// from / to, and no more than puts the last sample on the source's last one. Beyond 32769 source
/// samples the limit is another one; then 0 is the result if no step serves.
constexpr Vek32s samplingStep(int from, int to) {
  if (from < 1 || to < 1) return 0;
  const std::int64_t natural = std::int64_t{from} * 65536 / to;
  const std::int64_t last = to == 1 ? natural : (std::int64_t{from} - 1) * 65536 / (to - 1);
  std::int64_t step = natural < last ? natural : last;
  const std::int64_t limit = stepLimit(from, to);
  if (to > 1 && from < 32770 && step > limit) step = limit;
  if (step < 1 && from == 1) step = 1;
  return static_cast<Vek32s>(step > 0x7FFFFFFF ? 0x7FFFFFFF : step);
}

}  // namespace detail
/// @endcond

/// Sampling steps from `source` to `scaled`, the size before a rotation: the ratio of the sizes, unless
/// the last sample would then lie beyond the source's last one.
constexpr Steps samplingSteps(Size source, Size scaled) noexcept {
  return {detail::samplingStep(source.width, scaled.width),
          detail::samplingStep(source.height, scaled.height)};
}

/// Bytes from the start of a raw frame's row to the end of the group that holds its last sample.
constexpr std::int64_t rawRowBytes(Raw format, int width) noexcept {
  const std::int64_t w = width;
  switch (format) {
    case Raw::bytes:
      return w;
    case Raw::plain16:
      return 2 * w;
    case Raw::csi2_10:
      return (w + 3) / 4 * 5;
    case Raw::csi2_12:
      return (w + 1) / 2 * 3;
    case Raw::csi2_14:
      return (w + 3) / 4 * 7;
  }
  return 0;
}

/// Some rows of an image.
struct Band {
  int first;  ///< the first of them
  int count;  ///< how many they are

  /// These rows of a view, or of planes.
  template <class Image>
  auto of(Image& image, OnError onError = {}) const {
    return image.rows(first, count, onError);
  }
  /// These rows of a view, or of planes, that is made where it is used.
  template <class Image, std::enable_if_t<!std::is_lvalue_reference_v<Image>, int> = 0>
  auto of(Image&& image, OnError onError = {}) const {
    return image.rows(first, count, onError);
  }
};

/// An executor that runs its jobs one after another, in their order.
struct OneAfterAnother {
  /// Runs job(0), job(1) and so on up to job(jobs - 1).
  template <class Job>
  void operator()(int jobs, Job&& job) const {
    for (int i = 0; i < jobs; ++i) job(i);
  }
};

/// Cuts `rows` rows into bands of `bandRows` rows (the last one may have fewer) and has `executor` call
/// f(Band) once for each. An executor is anything that can be called as executor(jobs, job), and then
/// calls job(i) once for each i in 0..jobs-1, in any order, in any threads, and returns when all are
/// done. What happens to an exception of f is up to it; ours lets it out. With an even `bandRows` all
/// bands begin on rows with chroma of their own.
template <class Executor, class Function>
void forBands(int rows, Executor&& executor, Function&& f, int bandRows = 64) {
  if (rows < 1) return;
  const int height = bandRows < 1 ? rows : bandRows;
  executor((rows - 1) / height + 1, [&](int i) {
    const int first = i * height;
    f(Band{first, rows - first < height ? rows - first : height});
  });
}

/// The same, one band after another.
template <class Function>
void forBands(int rows, Function&& f) {
  forBands(rows, OneAfterAnother(), f);
}

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_VIEW_HPP
