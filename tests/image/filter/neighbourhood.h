// Filters against what a neighbourhood gives.
#pragma once

#include <string>

#include "tests/campaign/definition.h"
#include "tests/campaign/packed.h"

namespace vek::test {

inline ptrdiff_t channelsOf(const std::string& name) {
  return name.find("_C1") != std::string::npos ? 1 : 3;
}

/// Writes naive(at) for every sample, where at(i, j) is that of the same channel in column i and
/// row j of the neighbourhood; `anchor` is the sample's own place there.
template <class Naive>
void fromNeighbourhoods(ptrdiff_t channels, const Vek8u* src, ptrdiff_t srcStep, Vek8u* dst,
                        ptrdiff_t dstStep, VekiSize roi, VekiPoint anchor, Naive naive) {
  for (int y = 0; y < roi.height; ++y) {
    for (ptrdiff_t x = 0; x < roi.width * channels; ++x) {
      const Vek8u* corner = src + (y - anchor.y) * srcStep + x - anchor.x * channels;
      const auto at = [&](int i, int j) { return int{corner[j * srcStep + i * channels]}; };
      dst[y * dstStep + x] = static_cast<Vek8u>(naive(at));
    }
  }
}

}  // namespace vek::test
