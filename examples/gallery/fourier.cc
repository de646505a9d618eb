// A periodic disturbance is removed: in the spectrum it is a few points.
#include <algorithm>
#include <cmath>
#include <memory>
#include <vek/image.h>

#include "picture.h"

namespace gallery {
namespace {

constexpr int order = 8, side = 1 << order, columns = side / 2 + 1;

/// A spec and the buffer of the transforms.
class Transform {
 public:
  Transform() {
    int specSize = 0, bufferSize = 0;
    check(vekiGetSpecSize_RealFFT_32s(order, order, &specSize, &bufferSize));
    buffer_.resize(static_cast<size_t>(bufferSize));
    VekiRealFFTSpec* spec = nullptr;
    check(vekiInitAlloc_RealFFT_32s(order, order, &spec));
    spec_.reset(spec);
  }

  /// Real and imaginary parts of `columns` frequencies in each of `side` rows.
  std::vector<Vek32s> forward(const Grey& image) {
    std::vector<Vek32s> spectrum(2 * columns * side);
    check(vekiRealFFTFwd_8u32s_C1RSfs(image.samples.data(), side, spectrum.data(), rowBytes, 0,
                                      spec_.get(), buffer_.data()));
    return spectrum;
  }
  Grey inverse(const std::vector<Vek32s>& spectrum) {
    Grey image(side, side);
    check(vekiRealFFTInv_32s8u_C1RSfs(spectrum.data(), rowBytes, image.samples.data(), side,
                                      2 * order, spec_.get(), buffer_.data()));
    return image;
  }

 private:
  static constexpr int rowBytes = 2 * columns * static_cast<int>(sizeof(Vek32s));
  struct Release {
    void operator()(VekiRealFFTSpec* spec) const { vekiFree_RealFFT_32s(spec); }
  };
  std::unique_ptr<VekiRealFFTSpec, Release> spec_;
  std::vector<Vek8u> buffer_;
};

double magnitude(const std::vector<Vek32s>& spectrum, int kx, int ky) {
  const size_t at = 2 * (static_cast<size_t>(ky) * columns + static_cast<size_t>(kx));
  return std::hypot(spectrum[at], spectrum[at + 1]);
}

/// The whole plane of frequencies, 0 in its middle, on a logarithmic scale; points grow to 3 x 3.
Grey shown(const std::vector<Vek32s>& spectrum) {
  Grey image(side, side);
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const int kx = x - side / 2, ky = y - side / 2;
      const bool left = kx < 0;  // the conjugate of the frequency opposite
      const double m = magnitude(spectrum, left ? -kx : kx, (left ? side - ky : side + ky) % side);
      image.at(x, y) = static_cast<Vek8u>(std::min(255.0, 16 * std::log2(1 + m)));
    }
  }
  Grey grown = image;  // but for its edges, whose neighbours are not there
  check(vekiDilate3x3_8u_C1R(&image.at(1, 1), side, &grown.at(1, 1), side, {side - 2, side - 2}));
  return grown;
}

/// Frequencies that stand out from those around them, away from 0, and their neighbours become 0.
int removePeaks(std::vector<Vek32s>& spectrum) {
  std::vector<std::pair<int, int>> peaks;
  for (int ky = 0; ky < side; ++ky) {
    for (int kx = 0; kx < columns; ++kx) {
      const int fromZero = std::max(kx, std::min(ky, side - ky));
      if (fromZero < 12) continue;
      std::vector<double> around;
      for (int dy = -5; dy <= 5; ++dy) {
        for (int dx = -5; dx <= 5; ++dx) {
          const int x = kx + dx;
          if (x >= 0 && x < columns)
            around.push_back(magnitude(spectrum, x, (ky + dy + side) % side));
        }
      }
      std::nth_element(around.begin(), around.begin() + 30, around.end());
      if (magnitude(spectrum, kx, ky) > 20 * around[30] + 30000) peaks.push_back({kx, ky});
    }
  }
  for (const auto& [kx, ky] : peaks) {
    for (int dy = -2; dy <= 2; ++dy) {
      for (int x = std::max(0, kx - 2); x <= std::min(columns - 1, kx + 2); ++x) {
        const size_t row = static_cast<size_t>((ky + dy + side) % side);
        spectrum[2 * (row * columns + static_cast<size_t>(x))] = 0;
        spectrum[2 * (row * columns + static_cast<size_t>(x)) + 1] = 0;
      }
    }
  }
  return static_cast<int>(peaks.size());
}

}  // namespace

Picture fourierPicture() {
  Grey image = greyOf(scene(side, side));
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const double disturbance = 22 * std::sin(2 * M_PI * (40 * x + 21 * y) / side) +
                                 18 * std::sin(2 * M_PI * (-17 * x + 55 * y) / side);
      image.at(x, y) = static_cast<Vek8u>(
          std::clamp(std::lround(image.at(x, y) * 0.7 + 40 + disturbance), 0L, 255L));
    }
  }
  Transform transform;
  std::vector<Vek32s> spectrum = transform.forward(image);
  const Grey before = shown(spectrum);
  if (removePeaks(spectrum) == 0) throw std::runtime_error("the disturbance was not found");

  Picture result(4 * side + 3 * 8, side);
  result.paste(image.picture(), 0, 0);
  result.paste(before.picture(), side + 8, 0);
  result.paste(shown(spectrum).picture(), 2 * (side + 8), 0);
  result.paste(transform.inverse(spectrum).picture(), 3 * (side + 8), 0);
  return result;
}

}  // namespace gallery
