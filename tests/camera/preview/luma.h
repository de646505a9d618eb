// Luma samples of the planar resizes, naively.
#pragma once

#include "vek/vek.h"

#include "tests/footprint/preview.h"

namespace vek::test {

/// The sample at two phases, or the blend of those around; neighbours without weight are not read.
inline int lumaAt(const Vek8u* plane, const footprint::Resize& a, int64_t row, int64_t column) {
  const ptrdiff_t step = a.srcStep[0];
  const Vek8u* const at = plane + (row >> 16) * step + (column >> 16);
  if (a.interpolation == 0) return *at;
  const int64_t fx = column & 0xFFFF, fy = row & 0xFFFF;
  const auto blend = [](int from, int to, int64_t f) {
    return from + static_cast<int>(((to - from) * f) >> 16);
  };
  const auto across = [&](const Vek8u* p) { return blend(p[0], fx == 0 ? p[0] : p[1], fx); };
  const int top = across(at);
  return blend(top, fy == 0 ? top : across(at + step), fy);
}

}  // namespace vek::test
