// A block of 8 x 8 samples, its coefficients, and the block again from ever more of them.
#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <vek/image.h>

#include "picture.h"

namespace gallery {
namespace {

using Block = std::array<Vek16s, 64>;
constexpr int zoom = 20, side = 8 * zoom, gap = 8;

/// `value(i)` is the grey of sample i.
template <class Value>
Picture blockPicture(Value value) {
  Picture picture(8, 8);
  for (int i = 0; i < 64; ++i) picture.set(i % 8, i / 8, value(static_cast<size_t>(i)));
  return picture;
}

Picture samplesPicture(const Block& samples) {
  return blockPicture([&](size_t i) -> Color {
    const Vek8u grey = static_cast<Vek8u>(std::clamp(samples[i] + 128, 0, 255));
    return {grey, grey, grey};
  });
}

/// Positive ones blue, negative ones red, 0 white; saturated from 64 on.
Picture coefficientsPicture(const Block& coefficients) {
  return blockPicture([&](size_t i) -> Color {
    const int value = coefficients[i];
    const Vek8u rest = static_cast<Vek8u>(255 - std::min(255, 4 * std::abs(value)));
    return value > 0 ? Color{rest, rest, 255} : Color{255, rest, rest};
  });
}

}  // namespace

Picture cosinePicture() {
  const Grey image = greyOf(scene(256, 256));
  Block samples, coefficients;  // at the edge of a sphere
  for (size_t i = 0; i < 64; ++i) {
    samples[i] = static_cast<Vek16s>(
        image.at(104 + 6 * static_cast<int>(i % 8), 140 + 6 * static_cast<int>(i / 8)) - 128);
  }
  check(vekiBlockDCTFwd_16s_C1(samples.data(), coefficients.data()));

  std::array<size_t, 64> largest;
  std::iota(largest.begin(), largest.end(), 0);
  std::stable_sort(largest.begin(), largest.end(), [&](size_t a, size_t b) {
    return std::abs(coefficients[a]) > std::abs(coefficients[b]);
  });

  Picture result(6 * side + 5 * gap, side);
  result.paste(samplesPicture(samples), 0, 0, zoom);
  result.paste(coefficientsPicture(coefficients), side + gap, 0, zoom);
  int x = 2 * (side + gap);
  constexpr size_t counts[] = {1, 4, 10, 24};
  for (size_t count : counts) {
    Block few = {}, restored;
    for (size_t i = 0; i < count; ++i) few[largest[i]] = coefficients[largest[i]];
    check(vekiBlockDCTInv_16s_C1(few.data(), restored.data()));
    result.paste(samplesPicture(restored), x, 0, zoom);
    x += side + gap;
  }
  return result;
}

}  // namespace gallery
