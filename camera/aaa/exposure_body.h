// The plain loops behind ExposureKernels.
#pragma once

#include "camera/aaa/histogram_body.h"
#include "camera/aaa/quads_body.h"

namespace vek::VEK_LEVEL {
namespace {

GreenHistogram _vekiAEHist_10RGGB(const Vek16u* pSrc, int srcStep, int width, int height,
                                  Vek32u countThresh, Vek32u* pHist) {
  return countAllGreens(pSrc, srcStep, width, height, countThresh, pHist);
}

Vek32u _vekiAEWnd_10RGGB(const Vek16u* pWin, int srcStep, int w, int h) {
  Vek32u sum = 0;
  forEachQuad(pWin, srcStep, w, h,
              [&](Vek32u, Vek32u green1, Vek32u green2, Vek32u) { sum += green1 + green2; });
  return sum;
}

}  // namespace
}  // namespace vek::VEK_LEVEL
