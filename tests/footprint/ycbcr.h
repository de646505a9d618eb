// What the colour conversions read and write, plane by plane.
#pragma once

#include "vek/vek.h"

#include <string>

#include "tests/support/area.h"

namespace vek::test::footprint {

/// How an image lies in memory: bytes of a row for `pixels` pixels, in each plane.
enum class Layout { triples, pairs422, words, planes444, planes422, planes420 };

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

/// What a conversion does follows from its name.
struct ColorNames {
  std::string name;

  bool has(const char* part) const { return name.find(part) != std::string::npos; }

  bool forward = has("RGBToY"), packed = has("8u16u"), planar = has("P3");
  bool rows2 = has("420"), shared = rows2 || has("422");
  bool oneStep = !shared || !planar, tight = name.back() == '3';
  Layout planes = rows2 ? Layout::planes420 : shared ? Layout::planes422 : Layout::planes444;
  Layout reduced = planar ? planes : shared ? Layout::pairs422 : Layout::triples;
  Layout src = forward ? Layout::triples : reduced;
  Layout dst = forward ? reduced : packed ? Layout::words : Layout::triples;
};

}  // namespace vek::test::footprint
