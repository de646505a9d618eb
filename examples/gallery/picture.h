// Pictures in memory, what is drawn into them, and PNG files of them.
#pragma once

#include <array>
#include <stdexcept>
#include <string>
#include <vector>
#include <vek/vek.h>

namespace gallery {

using Color = std::array<Vek8u, 3>;  ///< R, G, B

/// R, G, B of each pixel, rows without padding.
class Picture {
 public:
  Picture(int width, int height, Color color = {255, 255, 255})
      : size_{width, height}, pixels_(size_t(3) * size_t(width) * size_t(height)) {
    for (size_t i = 0; i < pixels_.size(); ++i) pixels_[i] = color[i % 3];
  }

  VekiSize size() const { return size_; }
  int step() const { return 3 * size_.width; }
  Vek8u* data() { return pixels_.data(); }
  const Vek8u* data() const { return pixels_.data(); }
  bool contains(int x, int y) const {
    return x >= 0 && x < size_.width && y >= 0 && y < size_.height;
  }
  Vek8u* at(int x, int y) { return data() + y * step() + 3 * x; }

  void set(int x, int y, Color color) {
    if (!contains(x, y)) return;
    for (size_t c = 0; c < 3; ++c) at(x, y)[c] = color[c];
  }
  void rectangle(int x, int y, int width, int height, Color color);
  void line(double x0, double y0, double x1, double y1, Color color);
  /// `other` with its upper left corner at (x, y), each of its pixels `zoom` x `zoom`.
  void paste(const Picture& other, int x, int y, int zoom = 1);

 private:
  VekiSize size_;
  std::vector<Vek8u> pixels_;
};

/// Grey samples, rows without padding.
struct Grey {
  int width, height;
  std::vector<Vek8u> samples;

  Grey(int w, int h, Vek8u value = 0)
      : width(w), height(h), samples(size_t(w) * size_t(h), value) {}
  VekiSize size() const { return {width, height}; }
  Vek8u& at(int x, int y) { return samples[size_t(y) * size_t(width) + size_t(x)]; }
  Vek8u at(int x, int y) const { return samples[size_t(y) * size_t(width) + size_t(x)]; }

  Picture picture() const;
};

/// Spheres on a floor, with the soft gradients that a photograph has.
Picture scene(int width, int height);
Grey greyOf(const Picture& picture);

void writePng(const Picture& picture, const std::string& file);

/// Throws the text of a status that is an error.
inline void check(VekStatus status) {
  if (status < 0) throw std::runtime_error(vekStatusString(status));
}

Picture fourierPicture();
Picture cosinePicture();
Picture momentsPicture();
Picture perspectivePicture();
Picture ditherPicture();

}  // namespace gallery
