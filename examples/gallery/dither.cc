// Fewer grey levels and 16-bit pixels, dithered in both ways beside plain truncation.
#include <vek/image.h>

#include "picture.h"

namespace gallery {
namespace {

constexpr int side = 224, gap = 8;

Grey dithered(const Grey& image, int levels, int method) {
  Grey result(side, side);
  check(vekiDither_8u_C1R(image.samples.data(), side, result.samples.data(), side, image.size(),
                          levels, method, {0, 0}));
  return result;
}

/// Only the highest bits of each sample.
Grey truncated(const Grey& image, int bits) {
  Grey result = image;
  const int levels = 1 << bits;
  for (Vek8u& sample : result.samples) {
    sample = static_cast<Vek8u>((sample >> (8 - bits)) * 255 / (levels - 1));
  }
  return result;
}

/// 5, 6 and 5 bits as a display shows them.
Picture ofWords(const std::vector<Vek16u>& words) {
  const auto* const bytes = reinterpret_cast<const Vek8u*>(words.data());  // the low one first
  Picture result(side, side);
  for (int i = 0; i < side * side; ++i) {
    const int word = bytes[2 * i] | bytes[2 * i + 1] << 8;
    const int r = word >> 11, g = word >> 5 & 63, b = word & 31;
    result.set(i % side, i / side,
               {static_cast<Vek8u>(r * 255 / 31), static_cast<Vek8u>(g * 255 / 63),
                static_cast<Vek8u>(b * 255 / 31)});
  }
  return result;
}

Picture dithered565(const Picture& picture, int method) {
  std::vector<Vek16u> words(side * side);
  check(vekiDitherRGB565_8u16u_C3R(picture.data(), picture.step(), words.data(), 2 * side,
                                   picture.size(), method, {0, 0}));
  return ofWords(words);
}

Picture truncated565(Picture picture) {
  constexpr int shifts[3] = {3, 2, 3}, most[3] = {31, 63, 31};
  for (int i = 0; i < 3 * side * side; ++i) {
    Vek8u& sample = picture.data()[i];
    sample = static_cast<Vek8u>((sample >> shifts[i % 3]) * 255 / most[i % 3]);
  }
  return picture;
}

}  // namespace

Picture ditherPicture() {
  const Picture colors = scene(side, side);
  const Grey image = greyOf(colors);
  Picture result(4 * side + 3 * gap, 3 * side + 2 * gap);
  for (int i = 0; i < 3; ++i) {
    const int bits = 1 << i, levels = 1 << bits, x = i * (side + gap);
    result.paste(truncated(image, bits).picture(), x, 0);
    result.paste(dithered(image, levels, vekiDitherOrdered).picture(), x, side + gap);
    result.paste(dithered(image, levels, vekiDitherDiffusion).picture(), x, 2 * (side + gap));
  }
  const int x = 3 * (side + gap);
  result.paste(truncated565(colors), x, 0);
  result.paste(dithered565(colors, vekiDitherOrdered), x, side + gap);
  result.paste(dithered565(colors, vekiDitherDiffusion), x, 2 * (side + gap));
  return result;
}

}  // namespace gallery
