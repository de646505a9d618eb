// Between RGB bytes and YCbCr or YUV.
#include "vek/image.h"

#include "core/check.h"
#include "image/color/pixel_rows.h"
#include "image/color/ycbcr_kernels.h"

namespace vek {
namespace {

// Images by the bytes that their rows take.
template <class Bytes>
using Samples = PixelRows<Bytes, 1>;
template <class Bytes>
using Samples422 = PixelRows<Bytes, 1, 2>;
template <class Bytes>
using Triples = PixelRows<Bytes, 3>;
template <class Bytes>
using Pairs422 = PixelRows<Bytes, 4, 2>;

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

// One interleaved image to another.

template <template <class> class Source, template <class> class Destination>
VekStatus interleaved(InterleavedRow YcbcrRgbKernels::*row, const Vek8u* pSrc, int srcStep,
                      Vek8u* pDst, int dstStep, VekiSize roi) {
  const VekStatus status = checkPointersSizeSteps({pDst, pSrc}, roi, {srcStep, dstStep});
  if (status != vekStsNoErr) return status;
  forEachPixelRow(roi, select(ycbcrRgbKernels).*row, Source<const Vek8u>{{pSrc, srcStep}},
                  Destination<Vek8u>{{pDst, dstStep}});
  return vekStsNoErr;
}

// RGB to planes, for valid arguments.

template <template <class> class Chroma>
void toPlanes(ToPlanesRow YcbcrRgbKernels::*row, const Vek8u* pSrc, ptrdiff_t srcStep,
              Vek8u* const* pDst, Steps dstStep, VekiSize roi) {
  forEachPixelRow(roi, select(ycbcrRgbKernels).*row, Triples<const Vek8u>{{pSrc, srcStep}},
                  Samples<Vek8u>{{pDst[0], dstStep.y}}, Chroma<Vek8u>{{pDst[1], dstStep.u}},
                  Chroma<Vek8u>{{pDst[2], dstStep.v}});
}

void RGB_YUV422_8u_C3P3R(const Vek8u* pSrc, ptrdiff_t srcStep, Vek8u* const* pDst, Steps dstStep,
                         VekiSize roi) {
  toPlanes<Samples422>(&YcbcrRgbKernels::lineRGBToYUV422_8u_C3P3R, pSrc, srcStep, pDst, dstStep,
                       roi);
}

/// A last row without a partner shares its chroma as a 4:2:2 row does.
void RGB_YUV420_8u_C3P3R(const Vek8u* pSrc, ptrdiff_t srcStep, Vek8u* const* pDst, Steps dstStep,
                         VekiSize roi) {
  const YcbcrRgbKernels& rows = select(ycbcrRgbKernels);
  const Plane<const Vek8u> rgb = {pSrc, srcStep};
  const Plane<Vek8u> luma = {pDst[0], dstStep.y}, u = {pDst[1], dstStep.u},
                     v = {pDst[2], dstStep.v};
  const ptrdiff_t pairs = roi.height / 2;
  // Rows that overlap are written two pixels at a time, in the same order at every level.
  const ptrdiff_t run = dstStep.y < roi.width ? 2 : roi.width;
  for (ptrdiff_t j = 0; j < pairs; ++j) {
    for (ptrdiff_t x = 0; x < roi.width; x += run) {
      const ptrdiff_t n = roi.width - x < run ? roi.width - x : run;
      rows.rgbToYuv420Pair(n, rgb.row(2 * j) + 3 * x, rgb.row(2 * j + 1) + 3 * x,
                           luma.row(2 * j) + x, luma.row(2 * j + 1) + x, u.row(j) + x / 2,
                           v.row(j) + x / 2);
    }
  }
  if (isOdd(roi.height)) {
    rows.lineRGBToYUV422_8u_C3P3R(roi.width, rgb.row(2 * pairs), luma.row(2 * pairs), u.row(pairs),
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

/// 4:2:0 and 4:2:2 rows are alike.
template <int chromaShift>
void fromSharedPlanes(const Vek8u* const* pSrc, Steps srcStep, Vek8u* pDst, ptrdiff_t dstStep,
                      VekiSize roi) {
  convertRegion<2>(select(ycbcrRgbKernels).lineYUV422ToRGB_8u_P3C3R,
                   {{pSrc[0], srcStep.y}, {pSrc[1], srcStep.u}, {pSrc[2], srcStep.v}, chromaShift},
                   roi, pDst, dstStep, 3);
}

constexpr auto YUV422_RGB_8u_P3C3R = fromSharedPlanes<0>;
constexpr auto YUV420_RGB_8u_P3C3R = fromSharedPlanes<1>;

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

using namespace vek;
using Rows = vek::YcbcrRgbKernels;

extern "C" {

// Interleaved to interleaved.

VekStatus vekiRGBToYCbCr_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                VekiSize roiSize) {
  return interleaved<Triples, Triples>(&Rows::lineRGBToYCbCr_8u_C3R, pSrc, srcStep, pDst, dstStep,
                                       roiSize);
}

VekStatus vekiYCbCrToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                VekiSize roiSize) {
  return interleaved<Triples, Triples>(&Rows::lineYCbCrToRGB_8u_C3R, pSrc, srcStep, pDst, dstStep,
                                       roiSize);
}

VekStatus vekiRGBToYCbCr422_8u_C3C2R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                     VekiSize roiSize) {
  return interleaved<Triples, Pairs422>(&Rows::lineRGBToYCbCr422_8u_C3C2R, pSrc, srcStep, pDst,
                                        dstStep, roiSize);
}

VekStatus vekiYCbCr422ToRGB_8u_C2C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                     VekiSize roiSize) {
  return interleaved<Pairs422, Triples>(&Rows::lineYCbCr422ToRGB_8u_C2C3R, pSrc, srcStep, pDst,
                                        dstStep, roiSize);
}

VekStatus vekiRGBToYUV_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return interleaved<Triples, Triples>(&Rows::lineRGBToYUV_8u_C3R, pSrc, srcStep, pDst, dstStep,
                                       roiSize);
}

VekStatus vekiYUVToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return interleaved<Triples, Triples>(&Rows::lineYUVToRGB_8u_C3R, pSrc, srcStep, pDst, dstStep,
                                       roiSize);
}

VekStatus vekiRGBToYUV422_8u_C3C2R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                   VekiSize roiSize) {
  return interleaved<Triples, Pairs422>(&Rows::lineRGBToYUV422_8u_C3R, pSrc, srcStep, pDst, dstStep,
                                        roiSize);
}

VekStatus vekiYUV422ToRGB_8u_C2C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                   VekiSize roiSize) {
  return interleaved<Pairs422, Triples>(&Rows::lineYUV422ToRGB_8u_C3R, pSrc, srcStep, pDst, dstStep,
                                        roiSize);
}

// Interleaved RGB to planes and back.

VekStatus vekiRGBToYUV420_8u_C3P3R(const Vek8u* pSrc, int srcStep, Vek8u* const pDst[3],
                                   const int dstStep[3], VekiSize roiSize) {
  return toSteppedPlanes(RGB_YUV420_8u_C3P3R, pSrc, srcStep, pDst, dstStep, roiSize);
}

VekStatus vekiRGBToYUV422_8u_C3P3R(const Vek8u* pSrc, int srcStep, Vek8u* const pDst[3],
                                   const int dstStep[3], VekiSize roiSize) {
  return toSteppedPlanes(RGB_YUV422_8u_C3P3R, pSrc, srcStep, pDst, dstStep, roiSize);
}

VekStatus vekiRGBToYUV420_8u_C3P3(const Vek8u* pSrc, Vek8u* const pDst[3], VekiSize roiSize) {
  return toTightPlanes(RGB_YUV420_8u_C3P3R, pSrc, pDst, roiSize);
}

VekStatus vekiRGBToYUV422_8u_C3P3(const Vek8u* pSrc, Vek8u* const pDst[3], VekiSize roiSize) {
  return toTightPlanes(RGB_YUV422_8u_C3P3R, pSrc, pDst, roiSize);
}

VekStatus vekiYUV420ToRGB_8u_P3C3R(const Vek8u* const pSrc[3], const int srcStep[3], Vek8u* pDst,
                                   int dstStep, VekiSize roiSize) {
  return fromSteppedPlanes(YUV420_RGB_8u_P3C3R, pSrc, srcStep, pDst, dstStep, roiSize);
}

VekStatus vekiYUV422ToRGB_8u_P3C3R(const Vek8u* const pSrc[3], const int srcStep[3], Vek8u* pDst,
                                   int dstStep, VekiSize roiSize) {
  return fromSteppedPlanes(YUV422_RGB_8u_P3C3R, pSrc, srcStep, pDst, dstStep, roiSize);
}

VekStatus vekiYUV420ToRGB_8u_P3C3(const Vek8u* const pSrc[3], Vek8u* pDst, VekiSize roiSize) {
  return fromTightPlanes(YUV420_RGB_8u_P3C3R, pSrc, pDst, roiSize);
}

VekStatus vekiYUV422ToRGB_8u_P3C3(const Vek8u* const pSrc[3], Vek8u* pDst, VekiSize roiSize) {
  return fromTightPlanes(YUV422_RGB_8u_P3C3R, pSrc, pDst, roiSize);
}

// 4:4:4 planes with one step for all.

VekStatus vekiRGBToYUV_8u_C3P3R(const Vek8u* pSrc, int srcStep, Vek8u* const pDst[3], int dstStep,
                                VekiSize roiSize) {
  if (pSrc == nullptr || anyPlaneNull(pDst)) return vekStsNullPtrErr;
  if (isEmpty(roiSize)) return vekStsSizeErr;
  if (anyBelowOne({srcStep, dstStep})) return vekStsStepErr;
  toPlanes<Samples>(&Rows::lineRGBToYUV_8u_C3P3R, pSrc, srcStep, pDst, {dstStep, dstStep, dstStep},
                    roiSize);
  return vekStsNoErr;
}

VekStatus vekiYUVToRGB_8u_P3C3R(const Vek8u* const pSrc[3], int srcStep, Vek8u* pDst, int dstStep,
                                VekiSize roiSize) {
  if (isEmpty(roiSize)) return vekStsSizeErr;
  if (anyPlaneNull(pSrc)) return vekStsNullPtrErr;
  if (srcStep < 1) return vekStsStepErr;
  if (pDst == nullptr) return vekStsNullPtrErr;
  if (dstStep < 1) return vekStsStepErr;
  convertRegion<1>(select(ycbcrRgbKernels).lineYUVToRGB_8u_P3C3R,
                   {{pSrc[0], srcStep}, {pSrc[1], srcStep}, {pSrc[2], srcStep}, 0}, roiSize, pDst,
                   dstStep, 3);
  return vekStsNoErr;
}

}  // extern "C"
