// Between RGB bytes and YCbCr or YUV.
#include "vek/image.h"

#include "core/check.h"
#include "image/color/ycbcr_kernels.h"

namespace vek {
namespace {

template <class Bytes>
using Samples = Plane<Bytes>;
template <class Bytes>
using Samples422 = Plane<Bytes, 1, 2>;

const YcbcrRgbKernels& kernels() {
  return select(ycbcrRgbKernels);
}

/// Steps of the planes of an image, in bytes.
struct Steps {
  ptrdiff_t y, u, v;
};

Steps steps(const int* step) {
  return {step[0], step[1], step[2]};
}

/// Steps of images without padding.
Steps tightSteps(VekiSize roi) {
  const ptrdiff_t chroma = (ptrdiff_t{roi.width} + 1) / 2;
  return {roi.width, chroma, chroma};
}

ptrdiff_t tightRgbStep(VekiSize roi) {
  return ptrdiff_t{roi.width} * 3;
}

// One interleaved image to another. `Source` and `Destination` are Triples or Pairs422.

template <template <class> class Source, template <class> class Destination>
VekStatus interleaved(ConvertRow row, const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                      VekiSize roi) {
  const VekStatus status = checkPointersSizeSteps({pDst, pSrc}, roi, {srcStep, dstStep});
  if (status != vekStsNoErr) return status;
  forEachRow(roi.width, roi.height, row, Source<const Vek8u>{pSrc, srcStep},
             Destination<Vek8u>{pDst, dstStep});
  return vekStsNoErr;
}

// RGB to planes, for valid arguments.

/// `Chroma` is Samples or Samples422.
template <template <class> class Chroma>
void toPlanes(ToPlanesRow row, const Vek8u* pSrc, ptrdiff_t srcStep, Vek8u* const* pDst,
              Steps dstStep, VekiSize roi) {
  forEachRow(roi.width, roi.height, row, Triples<const Vek8u>{pSrc, srcStep},
             Samples<Vek8u>{pDst[0], dstStep.y}, Chroma<Vek8u>{pDst[1], dstStep.u},
             Chroma<Vek8u>{pDst[2], dstStep.v});
}

void rgbToYuv422(const Vek8u* pSrc, ptrdiff_t srcStep, Vek8u* const* pDst, Steps dstStep,
                 VekiSize roi) {
  toPlanes<Samples422>(kernels().rgbToYuv422Planes, pSrc, srcStep, pDst, dstStep, roi);
}

/// A last row without a partner shares its chroma as a 4:2:2 row does.
void rgbToYuv420(const Vek8u* pSrc, ptrdiff_t srcStep, Vek8u* const* pDst, Steps dstStep,
                 VekiSize roi) {
  const YcbcrRgbKernels& level = kernels();
  const Triples<const Vek8u> rgb = {pSrc, srcStep};
  const Plane<Vek8u> luma = {pDst[0], dstStep.y}, u = {pDst[1], dstStep.u},
                     v = {pDst[2], dstStep.v};
  const ptrdiff_t pairs = roi.height / 2;
  // Rows that overlap are written two pixels at a time, so that every level stores in the same order.
  const ptrdiff_t run = dstStep.y < roi.width ? 2 : roi.width;
  for (ptrdiff_t j = 0; j < pairs; ++j) {
    for (ptrdiff_t x = 0; x < roi.width; x += run) {
      const ptrdiff_t n = roi.width - x < run ? roi.width - x : run;
      level.rgbToYuv420Planes(n, rgb.row(2 * j) + 3 * x, rgb.row(2 * j + 1) + 3 * x,
                              luma.row(2 * j) + x, luma.row(2 * j + 1) + x, u.row(j) + x / 2,
                              v.row(j) + x / 2);
    }
  }
  if (isOdd(roi.height)) {
    level.rgbToYuv422Planes(roi.width, rgb.row(2 * pairs), luma.row(2 * pairs), u.row(pairs),
                            v.row(pairs));
  }
}

using ToPlanes = void (*)(const Vek8u* pSrc, ptrdiff_t srcStep, Vek8u* const* pDst, Steps dstStep,
                          VekiSize roi);

VekStatus toSteppedPlanes(ToPlanes convert, const Vek8u* pSrc, int srcStep, Vek8u* const* pDst,
                          const int* dstStep, VekiSize roi) {
  if (isEmpty(roi)) return vekStsSizeErr;
  if (pSrc == nullptr) return vekStsNullPtrErr;
  if (srcStep < 1) return vekStsStepErr;
  if (dstStep == nullptr || anyPlaneNull(pDst)) return vekStsNullPtrErr;
  if (anyBelowOne({dstStep[0], dstStep[1], dstStep[2]})) return vekStsStepErr;
  convert(pSrc, srcStep, pDst, steps(dstStep), roi);
  return vekStsNoErr;
}

VekStatus toTightPlanes(ToPlanes convert, const Vek8u* pSrc, Vek8u* const* pDst, VekiSize roi) {
  if (pSrc == nullptr || anyPlaneNull(pDst)) return vekStsNullPtrErr;
  if (isEmpty(roi)) return vekStsSizeErr;
  convert(pSrc, tightRgbStep(roi), pDst, tightSteps(roi), roi);
  return vekStsNoErr;
}

// Planes to RGB, for valid arguments.

/// 4:2:2 has a chroma row for each row, 4:2:0 one for two rows.
template <int chromaShift>
void yuvToRgb(const Vek8u* const* pSrc, Steps srcStep, Vek8u* pDst, ptrdiff_t dstStep,
              VekiSize roi) {
  convertRegion<2>(kernels().yuvSharedPlanesToRgb,
                   {{pSrc[0], srcStep.y}, {pSrc[1], srcStep.u}, {pSrc[2], srcStep.v}, chromaShift},
                   roi, Triples<Vek8u>{pDst, dstStep});
}

constexpr auto yuv422ToRgb = yuvToRgb<0>;
constexpr auto yuv420ToRgb = yuvToRgb<1>;

using FromPlanes = void (*)(const Vek8u* const* pSrc, Steps srcStep, Vek8u* pDst, ptrdiff_t dstStep,
                            VekiSize roi);

VekStatus fromSteppedPlanes(FromPlanes convert, const Vek8u* const* pSrc, const int* srcStep,
                            Vek8u* pDst, int dstStep, VekiSize roi) {
  if (isEmpty(roi)) return vekStsSizeErr;
  if (srcStep == nullptr || anyPlaneNull(pSrc) || pDst == nullptr) return vekStsNullPtrErr;
  if (anyBelowOne({srcStep[0], srcStep[1], srcStep[2], dstStep})) return vekStsStepErr;
  convert(pSrc, steps(srcStep), pDst, dstStep, roi);
  return vekStsNoErr;
}

VekStatus fromTightPlanes(FromPlanes convert, const Vek8u* const* pSrc, Vek8u* pDst, VekiSize roi) {
  if (pDst == nullptr || anyPlaneNull(pSrc)) return vekStsNullPtrErr;
  if (isEmpty(roi)) return vekStsSizeErr;
  convert(pSrc, tightSteps(roi), pDst, tightRgbStep(roi), roi);
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

// Interleaved to interleaved.

extern "C" VekStatus vekiRGBToYCbCr_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                           VekiSize roiSize) {
  return vek::interleaved<vek::Triples, vek::Triples>(vek::kernels().rgbToYcbcr444, pSrc, srcStep,
                                                      pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCrToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                           VekiSize roiSize) {
  return vek::interleaved<vek::Triples, vek::Triples>(vek::kernels().ycbcr444ToRgb, pSrc, srcStep,
                                                      pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiRGBToYCbCr422_8u_C3C2R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                int dstStep, VekiSize roiSize) {
  return vek::interleaved<vek::Triples, vek::Pairs422>(vek::kernels().rgbToYcbcr422, pSrc, srcStep,
                                                       pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCr422ToRGB_8u_C2C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                int dstStep, VekiSize roiSize) {
  return vek::interleaved<vek::Pairs422, vek::Triples>(vek::kernels().ycbcr422ToRgb, pSrc, srcStep,
                                                       pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiRGBToYUV_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::interleaved<vek::Triples, vek::Triples>(vek::kernels().rgbToYuv444, pSrc, srcStep,
                                                      pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYUVToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::interleaved<vek::Triples, vek::Triples>(vek::kernels().yuv444ToRgb, pSrc, srcStep,
                                                      pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiRGBToYUV422_8u_C3C2R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                              int dstStep, VekiSize roiSize) {
  return vek::interleaved<vek::Triples, vek::Pairs422>(vek::kernels().rgbToYuv422, pSrc, srcStep,
                                                       pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYUV422ToRGB_8u_C2C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                              int dstStep, VekiSize roiSize) {
  return vek::interleaved<vek::Pairs422, vek::Triples>(vek::kernels().yuv422ToRgb, pSrc, srcStep,
                                                       pDst, dstStep, roiSize);
}

// Interleaved RGB to planes and back.

extern "C" VekStatus vekiRGBToYUV420_8u_C3P3R(const Vek8u* pSrc, int srcStep, Vek8u* const pDst[3],
                                              const int dstStep[3], VekiSize roiSize) {
  return vek::toSteppedPlanes(vek::rgbToYuv420, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiRGBToYUV422_8u_C3P3R(const Vek8u* pSrc, int srcStep, Vek8u* const pDst[3],
                                              const int dstStep[3], VekiSize roiSize) {
  return vek::toSteppedPlanes(vek::rgbToYuv422, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiRGBToYUV420_8u_C3P3(const Vek8u* pSrc, Vek8u* const pDst[3],
                                             VekiSize roiSize) {
  return vek::toTightPlanes(vek::rgbToYuv420, pSrc, pDst, roiSize);
}

extern "C" VekStatus vekiRGBToYUV422_8u_C3P3(const Vek8u* pSrc, Vek8u* const pDst[3],
                                             VekiSize roiSize) {
  return vek::toTightPlanes(vek::rgbToYuv422, pSrc, pDst, roiSize);
}

extern "C" VekStatus vekiYUV420ToRGB_8u_P3C3R(const Vek8u* const pSrc[3], const int srcStep[3],
                                              Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::fromSteppedPlanes(vek::yuv420ToRgb, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYUV422ToRGB_8u_P3C3R(const Vek8u* const pSrc[3], const int srcStep[3],
                                              Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::fromSteppedPlanes(vek::yuv422ToRgb, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYUV420ToRGB_8u_P3C3(const Vek8u* const pSrc[3], Vek8u* pDst,
                                             VekiSize roiSize) {
  return vek::fromTightPlanes(vek::yuv420ToRgb, pSrc, pDst, roiSize);
}

extern "C" VekStatus vekiYUV422ToRGB_8u_P3C3(const Vek8u* const pSrc[3], Vek8u* pDst,
                                             VekiSize roiSize) {
  return vek::fromTightPlanes(vek::yuv422ToRgb, pSrc, pDst, roiSize);
}

// 4:4:4 planes with one step for all.

extern "C" VekStatus vekiRGBToYUV_8u_C3P3R(const Vek8u* pSrc, int srcStep, Vek8u* const pDst[3],
                                           int dstStep, VekiSize roiSize) {
  if (pSrc == nullptr || vek::anyPlaneNull(pDst)) return vekStsNullPtrErr;
  if (vek::isEmpty(roiSize)) return vekStsSizeErr;
  if (vek::anyBelowOne({srcStep, dstStep})) return vekStsStepErr;
  vek::toPlanes<vek::Samples>(vek::kernels().rgbToYuv444Planes, pSrc, srcStep, pDst,
                              {dstStep, dstStep, dstStep}, roiSize);
  return vekStsNoErr;
}

extern "C" VekStatus vekiYUVToRGB_8u_P3C3R(const Vek8u* const pSrc[3], int srcStep, Vek8u* pDst,
                                           int dstStep, VekiSize roiSize) {
  if (vek::isEmpty(roiSize)) return vekStsSizeErr;
  if (vek::anyPlaneNull(pSrc)) return vekStsNullPtrErr;
  if (srcStep < 1) return vekStsStepErr;
  if (pDst == nullptr) return vekStsNullPtrErr;
  if (dstStep < 1) return vekStsStepErr;
  vek::convertRegion<1>(vek::kernels().yuv444PlanesToRgb,
                        {{pSrc[0], srcStep}, {pSrc[1], srcStep}, {pSrc[2], srcStep}, 0}, roiSize,
                        vek::Triples<Vek8u>{pDst, dstStep});
  return vekStsNoErr;
}
