// What pointwise functions write: a formula of the samples, constants and scale factor.
#pragma once

#include "vek/vek.h"

#include <algorithm>
#include <cmath>

#include "tests/campaign/packed.h"

namespace vek::test::definition {

/// The result for a sample, from those of the sources and then the constants and the scale factor,
/// in the order of the parameters.
using Formula = int (*)(const int* x);

/// What an argument is to sample x of row y, which belongs to `channel`.
inline int operand(Part part, const Value& v, const Value& next, ptrdiff_t x, ptrdiff_t y,
                   int channel) {
  switch (part) {
    case Part::source:
      return as<const Vek8u*>(v)[y * as<int>(next) + x];
    case Part::bytes:
      return as<const Vek8u*>(v)[channel];
    case Part::amounts:
      return static_cast<int>(as<const Vek32u*>(v)[channel]);
    default:
      return as<int>(v);
  }
}

inline Call pointwise(const std::vector<Part>& parts, int channels, Formula formula) {
  const auto place = [&](Part part) {
    return std::find(parts.begin(), parts.end(), part) - parts.begin();
  };
  return [=, roiAt = place(Part::roi), dstAt = place(Part::destination)](const Value* v) {
    const auto roi = as<VekiSize>(v[roiAt]);
    for (ptrdiff_t y = 0; y < roi.height; ++y) {
      std::vector<Vek8u> row;
      for (ptrdiff_t x = 0; x < roi.width * channels; ++x) {
        int operands[5], count = 0;
        for (size_t i = 0; i < parts.size(); ++i) {
          const bool image = parts[i] == Part::destination || parts[i] == Part::step;
          if (image || parts[i] == Part::roi) continue;
          operands[count++] = operand(parts[i], v[i], v[i + 1], x, y, int(x % channels));
        }
        row.push_back(static_cast<Vek8u>(formula(operands)));
      }
      std::copy(row.begin(), row.end(), as<Vek8u*>(v[dstAt]) + y * as<int>(v[dstAt + 1]));
    }
    return vekStsNoErr;
  };
}

/// Rounds half up and saturates.
inline int scaled(int exact, int scaleFactor) {
  const int factor = std::clamp(scaleFactor, -30, 30);
  return static_cast<int>(std::min(255.0, std::floor(std::ldexp(exact, -factor) + 0.5)));
}

// Of two images, or of an image and a constant.
inline int sum(const int* x) {
  return scaled(x[0] + x[1], x[2]);
}
inline int firstFromSecond(const int* x) {
  return scaled(std::max(x[1] - x[0], 0), x[2]);
}
inline int constantFromImage(const int* x) {
  return scaled(std::max(x[0] - x[1], 0), x[2]);
}
inline int product(const int* x) {
  return scaled(x[0] * x[1], x[2]);
}
inline int square(const int* x) {
  return scaled(x[0] * x[0], x[1]);
}
inline int scaledBy255(const int* x) {
  const int p = x[0] * x[1];
  return (p + (p >> 8) + 1) >> 8;
}

}  // namespace vek::test::definition
