// YCbCr and YUV to 16-bit packed pixels, which may lie at odd addresses: they are written as bytes.
#include "vek/image.h"

#include "core/check.h"
#include "image/color/ycbcr_kernels.h"

namespace vek {
namespace {

const YcbcrPackedKernels& kernels() {
  return select(ycbcrPackedKernels);
}

Plane<Vek8u, 2> packedPixels(Vek16u* pDst, int dstStep) {
  return {reinterpret_cast<Vek8u*>(pDst), dstStep};
}

/// Planar 4:2:0 with a step for each plane. The source arguments are checked first, then the
/// destination's, then the size.
VekStatus from420(ConvertPlanes convert, const Vek8u* const* pSrc, const int* srcStep, Vek16u* pDst,
                  int dstStep, VekiSize roi) {
  if (anyPlaneNull(pSrc) || srcStep == nullptr) return vekStsNullPtrErr;
  if (anyBelowOne({srcStep[0], srcStep[1], srcStep[2]})) return vekStsStepErr;
  if (pDst == nullptr) return vekStsNullPtrErr;
  if (dstStep < 1) return vekStsStepErr;
  if (isEmpty(roi)) return vekStsSizeErr;
  convertRegion<2>(convert,
                   {{pSrc[0], srcStep[0]}, {pSrc[1], srcStep[1]}, {pSrc[2], srcStep[2]}, 1}, roi,
                   packedPixels(pDst, dstStep));
  return vekStsNoErr;
}

/// Planar 4:4:4 with one step for all planes.
VekStatus from444(ConvertPlanes convert, const Vek8u* const* pSrc, int srcStep, Vek16u* pDst,
                  int dstStep, VekiSize roi) {
  if (pDst == nullptr || anyPlaneNull(pSrc)) return vekStsNullPtrErr;
  if (anyBelowOne({srcStep, dstStep})) return vekStsStepErr;
  if (isEmpty(roi)) return vekStsSizeErr;
  convertRegion<1>(convert, {{pSrc[0], srcStep}, {pSrc[1], srcStep}, {pSrc[2], srcStep}, 0}, roi,
                   packedPixels(pDst, dstStep));
  return vekStsNoErr;
}

/// `Source` is Triples or Pairs422.
template <template <class> class Source>
VekStatus fromInterleaved(ConvertRow row, const Vek8u* pSrc, int srcStep, Vek16u* pDst, int dstStep,
                          VekiSize roi) {
  const VekStatus status = checkPointersStepsSize({pDst, pSrc}, {srcStep, dstStep}, roi);
  if (status != vekStsNoErr) return status;
  forEachRow(roi.width, roi.height, row, Source<const Vek8u>{pSrc, srcStep},
             packedPixels(pDst, dstStep));
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

// Planar 4:2:0.

extern "C" VekStatus vekiYCbCr420ToRGB565_8u16u_P3C3R(const Vek8u* const pSrc[3],
                                                      const int srcStep[3], Vek16u* pDst,
                                                      int dstStep, VekiSize roiSize) {
  return vek::from420(vek::kernels().ycbcr420.rgb565, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCr420ToRGB555_8u16u_P3C3R(const Vek8u* const pSrc[3],
                                                      const int srcStep[3], Vek16u* pDst,
                                                      int dstStep, VekiSize roiSize) {
  return vek::from420(vek::kernels().ycbcr420.rgb555, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCr420ToRGB444_8u16u_P3C3R(const Vek8u* const pSrc[3],
                                                      const int srcStep[3], Vek16u* pDst,
                                                      int dstStep, VekiSize roiSize) {
  return vek::from420(vek::kernels().ycbcr420.rgb444, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCr420ToBGR565_8u16u_P3C3R(const Vek8u* const pSrc[3],
                                                      const int srcStep[3], Vek16u* pDst,
                                                      int dstStep, VekiSize roiSize) {
  return vek::from420(vek::kernels().ycbcr420.bgr565, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCr420ToBGR555_8u16u_P3C3R(const Vek8u* const pSrc[3],
                                                      const int srcStep[3], Vek16u* pDst,
                                                      int dstStep, VekiSize roiSize) {
  return vek::from420(vek::kernels().ycbcr420.bgr555, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCr420ToBGR444_8u16u_P3C3R(const Vek8u* const pSrc[3],
                                                      const int srcStep[3], Vek16u* pDst,
                                                      int dstStep, VekiSize roiSize) {
  return vek::from420(vek::kernels().ycbcr420.bgr444, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYUV420ToRGB565_8u16u_P3C3R(const Vek8u* const pSrc[3],
                                                    const int srcStep[3], Vek16u* pDst, int dstStep,
                                                    VekiSize roiSize) {
  return vek::from420(vek::kernels().yuv420.rgb565, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYUV420ToRGB555_8u16u_P3C3R(const Vek8u* const pSrc[3],
                                                    const int srcStep[3], Vek16u* pDst, int dstStep,
                                                    VekiSize roiSize) {
  return vek::from420(vek::kernels().yuv420.rgb555, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYUV420ToRGB444_8u16u_P3C3R(const Vek8u* const pSrc[3],
                                                    const int srcStep[3], Vek16u* pDst, int dstStep,
                                                    VekiSize roiSize) {
  return vek::from420(vek::kernels().yuv420.rgb444, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYUV420ToBGR565_8u16u_P3C3R(const Vek8u* const pSrc[3],
                                                    const int srcStep[3], Vek16u* pDst, int dstStep,
                                                    VekiSize roiSize) {
  return vek::from420(vek::kernels().yuv420.bgr565, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYUV420ToBGR555_8u16u_P3C3R(const Vek8u* const pSrc[3],
                                                    const int srcStep[3], Vek16u* pDst, int dstStep,
                                                    VekiSize roiSize) {
  return vek::from420(vek::kernels().yuv420.bgr555, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYUV420ToBGR444_8u16u_P3C3R(const Vek8u* const pSrc[3],
                                                    const int srcStep[3], Vek16u* pDst, int dstStep,
                                                    VekiSize roiSize) {
  return vek::from420(vek::kernels().yuv420.bgr444, pSrc, srcStep, pDst, dstStep, roiSize);
}

// Planar 4:4:4.

extern "C" VekStatus vekiYCbCrToRGB565_8u16u_P3C3R(const Vek8u* const pSrc[3], int srcStep,
                                                   Vek16u* pDst, int dstStep, VekiSize roiSize) {
  return vek::from444(vek::kernels().ycbcr444.rgb565, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCrToRGB555_8u16u_P3C3R(const Vek8u* const pSrc[3], int srcStep,
                                                   Vek16u* pDst, int dstStep, VekiSize roiSize) {
  return vek::from444(vek::kernels().ycbcr444.rgb555, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCrToRGB444_8u16u_P3C3R(const Vek8u* const pSrc[3], int srcStep,
                                                   Vek16u* pDst, int dstStep, VekiSize roiSize) {
  return vek::from444(vek::kernels().ycbcr444.rgb444, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCrToBGR565_8u16u_P3C3R(const Vek8u* const pSrc[3], int srcStep,
                                                   Vek16u* pDst, int dstStep, VekiSize roiSize) {
  return vek::from444(vek::kernels().ycbcr444.bgr565, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCrToBGR555_8u16u_P3C3R(const Vek8u* const pSrc[3], int srcStep,
                                                   Vek16u* pDst, int dstStep, VekiSize roiSize) {
  return vek::from444(vek::kernels().ycbcr444.bgr555, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCrToBGR444_8u16u_P3C3R(const Vek8u* const pSrc[3], int srcStep,
                                                   Vek16u* pDst, int dstStep, VekiSize roiSize) {
  return vek::from444(vek::kernels().ycbcr444.bgr444, pSrc, srcStep, pDst, dstStep, roiSize);
}

// Interleaved.

extern "C" VekStatus vekiYCbCr422ToRGB565_8u16u_C2C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                      int dstStep, VekiSize roiSize) {
  return vek::fromInterleaved<vek::Pairs422>(vek::kernels().ycbcrInterleaved422.rgb565, pSrc,
                                             srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCr422ToRGB555_8u16u_C2C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                      int dstStep, VekiSize roiSize) {
  return vek::fromInterleaved<vek::Pairs422>(vek::kernels().ycbcrInterleaved422.rgb555, pSrc,
                                             srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCr422ToRGB444_8u16u_C2C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                      int dstStep, VekiSize roiSize) {
  return vek::fromInterleaved<vek::Pairs422>(vek::kernels().ycbcrInterleaved422.rgb444, pSrc,
                                             srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCr422ToBGR565_8u16u_C2C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                      int dstStep, VekiSize roiSize) {
  return vek::fromInterleaved<vek::Pairs422>(vek::kernels().ycbcrInterleaved422.bgr565, pSrc,
                                             srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCr422ToBGR555_8u16u_C2C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                      int dstStep, VekiSize roiSize) {
  return vek::fromInterleaved<vek::Pairs422>(vek::kernels().ycbcrInterleaved422.bgr555, pSrc,
                                             srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCr422ToBGR444_8u16u_C2C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                      int dstStep, VekiSize roiSize) {
  return vek::fromInterleaved<vek::Pairs422>(vek::kernels().ycbcrInterleaved422.bgr444, pSrc,
                                             srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCrToRGB565_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                 int dstStep, VekiSize roiSize) {
  return vek::fromInterleaved<vek::Triples>(vek::kernels().ycbcrInterleaved444.rgb565, pSrc,
                                            srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCrToRGB555_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                 int dstStep, VekiSize roiSize) {
  return vek::fromInterleaved<vek::Triples>(vek::kernels().ycbcrInterleaved444.rgb555, pSrc,
                                            srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCrToRGB444_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                 int dstStep, VekiSize roiSize) {
  return vek::fromInterleaved<vek::Triples>(vek::kernels().ycbcrInterleaved444.rgb444, pSrc,
                                            srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCrToBGR565_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                 int dstStep, VekiSize roiSize) {
  return vek::fromInterleaved<vek::Triples>(vek::kernels().ycbcrInterleaved444.bgr565, pSrc,
                                            srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCrToBGR555_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                 int dstStep, VekiSize roiSize) {
  return vek::fromInterleaved<vek::Triples>(vek::kernels().ycbcrInterleaved444.bgr555, pSrc,
                                            srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCbCrToBGR444_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                 int dstStep, VekiSize roiSize) {
  return vek::fromInterleaved<vek::Triples>(vek::kernels().ycbcrInterleaved444.bgr444, pSrc,
                                            srcStep, pDst, dstStep, roiSize);
}
