#include "camera/aaa/exposure_kernels.h"
#include "camera/aaa/histogram_body.h"
#include "camera/aaa/quads_portable.h"

namespace vek::portable {
namespace {

GreenHistogram measureGreens(const Vek16u* pSrc, int srcStep, int width, int height,
                             Vek32u countThresh, Vek32u* pHist) {
  return countAllGreens(pSrc, srcStep, width, height, countThresh, pHist);
}

Vek32u sumGreens(const Vek16u* pWin, int srcStep, int w, int h) {
  Vek32u sum = 0;
  forEachQuad(pWin, srcStep, w, h,
              [&](Vek32u, Vek32u green1, Vek32u green2, Vek32u) { sum += green1 + green2; });
  return sum;
}

}  // namespace

constexpr ExposureKernels exposureKernels = {.measureGreens = measureGreens,
                                             .sumGreens = sumGreens};

}  // namespace vek::portable
