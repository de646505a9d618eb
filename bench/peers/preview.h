// What the preview peers share: the images of a case.
#pragma once

#include "bench/support.h"
#include "tests/campaign/preview_cases.h"

namespace vek::bench {

using test::Pixels;
using test::PreviewCase;
using test::previewCases;

inline Image imageOf(const PreviewCase& c, int rowBytes, int height) {
  return {rowBytes, height, (rowBytes + c.stepMultiple - 1) / c.stepMultiple * c.stepMultiple};
}

/// Y, Cb and Cr; chroma has half the columns.
struct Planes {
  Image y, cb, cr;

  Planes(const PreviewCase& c, VekiSize size)
      : y(imageOf(c, size.width, size.height)),
        cb(imageOf(c, size.width / 2, size.height / c.chromaRows)),
        cr(imageOf(c, size.width / 2, size.height / c.chromaRows)) {}
};

}  // namespace vek::bench
