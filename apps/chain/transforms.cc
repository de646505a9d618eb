// Fourier and cosine transforms as pictures, and as filters.
#include <algorithm>
#include <bit>

#include "chain/larger.h"

namespace chain {
namespace {

using vek::Image;
using vek::Size;
using vek::View;

constexpr int largestTransform = 1024;

/// log2(value + 1) in 1/256, rounded down. In integers, so that it is the same on every machine.
int logarithm(uint64_t value) {
  const int whole = 63 - std::countl_zero(value + 1);
  uint64_t mantissa = (value + 1) << (63 - whole) >> 32;  // 2^31..2^32 - 1 stands for 1..2
  int result = whole;
  for (int bit = 0; bit < 8; ++bit) {
    mantissa = mantissa * mantissa >> 31;
    const bool isSet = mantissa >> 32 != 0;
    if (isSet) mantissa >>= 1;
    result = 2 * result + (isSet ? 1 : 0);
  }
  return result;
}

Vek8u clamped(int value) {
  return static_cast<Vek8u>(std::clamp(value, 0, 255));
}

/// The picture as a part of one whose sides are `size`, continued at its right and lower edge.
Picture continued(const Picture& picture, Size size, vek::PadBorder border) {
  return toNew(picture, size, [&](auto src, auto dst) {
    vek::pad<viewChannels(dst)>(src, dst, {0, 0}, border);
  });
}

Picture part(const Picture& picture, vek::Point at, Size size) {
  return toNew(picture, size, [&](auto src, auto dst) {
    vek::copy<viewChannels(dst)>(src.sub({at.x, at.y, size.width, size.height}), dst);
  });
}

void showSpectrum(View<const Vek8u> src, View<Vek8u> dst) {
  const int width = src.width(), height = src.height();
  vek::RealFft fft(src.size());
  const Image<vek::Complex32s> complex = fft.forward(src);
  const auto power = [&](int y, int x) {
    const Vek32s* const number = complex.row(y) + 2 * static_cast<ptrdiff_t>(x);
    const auto square = [](int64_t n) { return static_cast<uint64_t>(n * n); };
    return square(number[0]) + square(number[1]);
  };
  int largest = 1;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x <= width / 2; ++x) largest = std::max(largest, logarithm(power(y, x)));
  }
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      // Frequency 0 comes to the middle. Those at the left are conjugates of those at the right.
      const int kx = x - width / 2, ky = y - height / 2;
      const int row = (kx < 0 ? -ky : ky) & (height - 1);
      dst.row(y)[x] = clamped(255 * logarithm(power(row, std::abs(kx))) / largest);
    }
  }
}

/// Samples less 128, in whole blocks of 8 x 8.
Image<Vek16s> blocks(View<const Vek8u> src) {
  const Size size = {(src.width() + 7) / 8 * 8, (src.height() + 7) / 8 * 8};
  const Image<Vek8u> whole = vek::pad<1>(
      src, {0, 0, size.width - src.width(), size.height - src.height()}, vek::PadBorder::replicate);
  Image<Vek16s> result(size);
  for (int y = 0; y < size.height; ++y) {
    std::transform(whole.row(y), whole.row(y) + size.width, result.row(y),
                   [](int sample) { return static_cast<Vek16s>(sample - 128); });
  }
  return result;
}

/// The place of each coefficient in the zigzag order of JPEG.
constexpr std::array<int, 64> zigzag = [] {
  std::array<int, 64> places = {};
  int next = 0;
  for (int sum = 0; sum < 15; ++sum) {
    for (int i = std::max(0, sum - 7); i <= std::min(7, sum); ++i) {
      const int row = sum % 2 == 0 ? sum - i : i;
      places[static_cast<size_t>(8 * row + sum - row)] = next++;
    }
  }
  return places;
}();

}  // namespace

Picture spectrum(Call& call) {
  const auto side = [](int n) {
    return std::min(largestTransform, static_cast<int>(std::bit_floor(static_cast<unsigned>(n))));
  };
  const Size all = call.size(), size = {side(all.width), side(all.height)};
  const Picture middle =
      part(call.picture, {(all.width - size.width) / 2, (all.height - size.height) / 2}, size);
  return byChannels(middle, showSpectrum);
}

Picture bandPass(const Call& call, bool isLow) {
  const Size all = call.size();
  const auto side = [](int n) { return static_cast<int>(std::bit_ceil(static_cast<unsigned>(n))); };
  if (std::max(all.width, all.height) > largestTransform) {
    throw Refusal("the picture is " + Call::text(all) + ", and transforms have sides of up to " +
                  std::to_string(largestTransform));
  }
  const Size size = {side(all.width), side(all.height)};
  const double limit = call.number(0) / std::max(all.width, all.height);  // periods per pixel
  const auto order = [](int n) { return std::countr_zero(static_cast<unsigned>(n)); };
  const int scale = order(size.width) + order(size.height);
  vek::RealFft fft(size);
  const Picture filtered = byChannels(continued(call.picture, size, vek::PadBorder::mirror),
                                      [&](View<const Vek8u> src, View<Vek8u> dst) {
                                        Image<vek::Complex32s> complex = fft.forward(src);
                                        for (int ky = 0; ky < size.height; ++ky) {
                                          Vek32s* const row = complex.row(ky);
                                          const double y =
                                              double(std::min(ky, size.height - ky)) / size.height;
                                          for (int kx = 0; kx <= size.width / 2; ++kx) {
                                            const double x = double(kx) / size.width;
                                            if ((x * x + y * y <= limit * limit) == isLow) continue;
                                            std::fill_n(row + 2 * static_cast<ptrdiff_t>(kx), 2, 0);
                                          }
                                        }
                                        if (!isLow)
                                          complex.row(0)[0] = 128 * size.width * size.height;
                                        fft.inverse(complex, dst, scale);
                                      });
  return part(filtered, {0, 0}, all);
}

Picture cosineSpectrum(Call& call) {
  return byChannels(call.picture, [](View<const Vek8u> src, View<Vek8u> dst) {
    Image<Vek16s> image = blocks(src);
    vek::dctForward(image, image);
    constexpr uint64_t largest = 1024;
    const int white = logarithm(largest);
    for (int y = 0; y < dst.height(); ++y) {
      for (int x = 0; x < dst.width(); ++x) {
        const int coefficient = std::abs(int{image.row(y)[x]});
        dst.row(y)[x] = clamped(255 * logarithm(static_cast<uint64_t>(coefficient)) / white);
      }
    }
  });
}

Picture keptCoefficients(Call& call) {
  return byChannels(call.picture, [&](View<const Vek8u> src, View<Vek8u> dst) {
    Image<Vek16s> image = blocks(src);
    vek::dctForward(image, image);
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        if (zigzag[static_cast<size_t>(y % 8 * 8 + x % 8)] >= call.integer(0)) image.row(y)[x] = 0;
      }
    }
    vek::dctInverse(image, image);
    for (int y = 0; y < dst.height(); ++y) {
      for (int x = 0; x < dst.width(); ++x) dst.row(y)[x] = clamped(image.row(y)[x] + 128);
    }
  });
}

}  // namespace chain
