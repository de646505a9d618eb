// What the colour conversions read and write, plane by plane.
#pragma once

#include "vek/vek.h"

#include "tests/support/area.h"

namespace vek::test::footprint {

/// How an image lies in memory: bytes of a row for `pixels` pixels, in each plane.
enum class Layout { triples, pairs422, words, planes444, planes422, planes420 };

/// How the row steps are given: one for the image, one for each plane, or none as rows follow each
/// other without padding.
enum class RowSteps { one, each, none };

inline int planeCount(Layout layout) {
  return layout < Layout::planes444 ? 1 : 3;
}

/// The image's rows and nothing else. A 4:2:2 row of odd width ends in a whole group of four bytes.
inline Area colorPlane(Layout layout, int plane, VekiSize size, int step) {
  const ptrdiff_t width = size.width, halfWidth = (width + 1) / 2;
  const ptrdiff_t height = size.height, halfHeight = (height + 1) / 2;
  const bool chroma = plane > 0;
  switch (layout) {
    case Layout::triples:
      return {3 * width, height, step};
    case Layout::pairs422:
      return {4 * halfWidth, height, step};
    case Layout::words:
      return {2 * width, height, step};
    case Layout::planes444:
      return {width, height, step};
    case Layout::planes422:
      return {chroma ? halfWidth : width, height, step};
    default:
      return {chroma ? halfWidth : width, chroma ? halfHeight : height, step};
  }
}

}  // namespace vek::test::footprint
