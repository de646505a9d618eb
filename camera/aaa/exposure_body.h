// The plain loop behind ExposureRows::wnd.
#pragma once

#include "camera/aaa/quads_body.h"

namespace vek::VEK_LEVEL {
namespace {

Vek32u _vekiAEWnd_10RGGB(const Vek16u* pWin, int srcStep, int w, int h) {
  Vek32u sum = 0;
  forEachQuad(pWin, srcStep, w, h,
              [&](Vek32u, Vek32u green1, Vek32u green2, Vek32u) { sum += green1 + green2; });
  return sum;
}

}  // namespace
}  // namespace vek::VEK_LEVEL
