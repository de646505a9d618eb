// Pictures as files: PNG, JPEG and the binary PGM and PPM.
#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vek/view.hpp>

#include "vekcam/picture.h"

namespace vekcam {

/// What pictures are read as. Samples of more than 8 bits are rounded to 8, palettes looked up,
/// transparent pixels laid over white, and what a camera held askew says to be turned is turned.
using StoredPicture = std::variant<vek::Image<Vek8u>, vek::Image<vek::Rgb24>>;

/// Pictures have sides of up to 32767 pixels, as many as the library's warps take, and up to 2^27
/// pixels: 400 MB.
constexpr int largestPictureSide = 32767;
constexpr int largestPictureArea = 1 << 27;

/// Decodes a picture, whatever its name may be; all of `bytes` that follows the picture is passed over.
/// What is no picture, is incomplete or too large is a Failure whose message begins with `name`.
StoredPicture decodePicture(std::string_view bytes, const std::string& name);

/// Reads a picture; "-" is standard input.
StoredPicture readPicture(const std::string& path);

/// The same in color, whether or not it was stored so.
vek::Image<vek::Rgb24> readColorPicture(const std::string& path);

enum class PictureFormat { png, jpeg, ppm, pgm };

/// The format that a file's extension stands for, in capitals or not: .png, .jpg, .jpeg, .ppm, .pgm.
/// Anything else is a Failure.
PictureFormat formatOf(const std::string& path);

/// A picture to be stored, whatever it is: grey, or in color in either order.
class PictureView {
 public:
  enum class Order { gray, rgb, bgr };

  PictureView(vek::View<const Vek8u> gray) : PictureView(gray, Order::gray) {}
  PictureView(vek::View<const vek::Rgb24> rgb) : PictureView(rgb, Order::rgb) {}
  PictureView(vek::View<const vek::Bgr24> bgr) : PictureView(bgr, Order::bgr) {}
  PictureView(const Picture& picture)
      : PictureView(vek::View<const vek::Bgr24>(
            vek::View<const Vek8u, 3>(picture.bgr.data(), {picture.width, picture.height}))) {}
  PictureView(const StoredPicture& picture)
      : PictureView(
            std::visit([](const auto& image) { return PictureView(image.view()); }, picture)) {}

  vek::Size size() const { return size_; }
  Order order() const { return order_; }
  int step() const { return step_; }  ///< in bytes
  const Vek8u* row(int y) const { return data_ + static_cast<ptrdiff_t>(y) * step_; }

 private:
  template <class View>
  PictureView(const View& view, Order order)
      : data_(view.data()), step_(view.stepBytes()), size_(view.size()), order_(order) {}

  const Vek8u* data_;
  int step_;
  vek::Size size_;
  Order order_;
};

constexpr int defaultJpegQuality = 92;

/// The bytes of a picture's file. `quality`, 1..100, is that of a JPEG. A color picture as PGM is a
/// Failure.
std::string encodePicture(const PictureView& picture, PictureFormat format,
                          int quality = defaultJpegQuality);

}  // namespace vekcam
