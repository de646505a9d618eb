// A finished picture: packed 24-bit pixels in the order blue, green, red.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>
#include <vek/vek.h>

namespace vekcam {

struct Picture {
  Picture() : Picture(0, 0) {}
  Picture(int w, int h)
      : width(w), height(h), bgr(static_cast<size_t>(w) * static_cast<size_t>(h) * 3) {}

  int step() const { return width * 3; }  ///< in bytes
  Vek8u* row(int y) { return bgr.data() + static_cast<ptrdiff_t>(y) * step(); }
  const Vek8u* row(int y) const { return bgr.data() + static_cast<ptrdiff_t>(y) * step(); }

  int width, height;
  std::vector<Vek8u> bgr;
};

std::string encodePng(const Picture& picture);
std::string encodePpm(const Picture& picture);

/// The mean of every factor x factor pixels.
Picture reduced(const Picture& picture, int factor);

/// Pictures of one size and a caption for each, in rows of `columns`.
Picture contactSheet(const std::vector<Picture>& pictures, const std::vector<std::string>& captions,
                     int columns);

}  // namespace vekcam
