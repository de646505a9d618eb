// Pointwise functions against a formula for one sample.
#pragma once

#include "vek/image.h"

#include "tests/campaign/definition.h"
#include "tests/campaign/packed.h"

namespace vek::test {

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

template <class... A>
void expectPointwise(const char* name, VekStatus (*f)(A...), Formula formula) {
  const std::vector<Part> parts = partsOf(f);
  const auto place = [&](Part part) {
    return static_cast<size_t>(std::find(parts.begin(), parts.end(), part) - parts.begin());
  };
  const int channels = std::string(name).find("_C1") != std::string::npos ? 1 : 3;
  const auto define = [=](const Value* v) {
    const auto roi = as<VekiSize>(v[place(Part::roi)]);
    const Value* dst = &v[place(Part::destination)];
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
      std::copy(row.begin(), row.end(), as<Vek8u*>(dst[0]) + y * as<int>(dst[1]));
    }
    return vekStsNoErr;
  };
  expectDefinition(name, define, 120);
}

}  // namespace vek::test
