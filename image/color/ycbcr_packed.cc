// YCbCr and YUV to 16-bit packed pixels, which may lie at odd addresses: they are written as bytes.
#include "vek/image.h"

#include "core/check.h"
#include "image/color/pixel_rows.h"
#include "image/color/ycbcr_kernels.h"

namespace vek {
namespace {

/// Planar 4:2:0 with a step for each plane: each source argument, then the destination's, then the
/// size.
VekStatus from420(ConvertPlanes YcbcrPackedKernels::*row, const Vek8u* const* pSrc,
                  const int* srcStep, Vek16u* pDst, int dstStep, VekiSize roi) {
  if (anyPlaneNull(pSrc) || srcStep == nullptr) return vekStsNullPtrErr;
  if (anyBelowOne({srcStep[0], srcStep[1], srcStep[2]})) return vekStsStepErr;
  if (pDst == nullptr) return vekStsNullPtrErr;
  if (dstStep < 1) return vekStsStepErr;
  if (isEmpty(roi)) return vekStsSizeErr;
  convertRegion<2>(select(ycbcrPackedKernels).*row,
                   {{pSrc[0], srcStep[0]}, {pSrc[1], srcStep[1]}, {pSrc[2], srcStep[2]}, 1}, roi,
                   reinterpret_cast<Vek8u*>(pDst), dstStep, 2);
  return vekStsNoErr;
}

/// Planar 4:4:4 with one step for all planes.
VekStatus fromPlanes(ConvertPlanes YcbcrPackedKernels::*row, const Vek8u* const* pSrc, int srcStep,
                     Vek16u* pDst, int dstStep, VekiSize roi) {
  if (pDst == nullptr || anyPlaneNull(pSrc)) return vekStsNullPtrErr;
  if (anyBelowOne({srcStep, dstStep})) return vekStsStepErr;
  if (isEmpty(roi)) return vekStsSizeErr;
  convertRegion<1>(select(ycbcrPackedKernels).*row,
                   {{pSrc[0], srcStep}, {pSrc[1], srcStep}, {pSrc[2], srcStep}, 0}, roi,
                   reinterpret_cast<Vek8u*>(pDst), dstStep, 2);
  return vekStsNoErr;
}

/// Interleaved: three bytes a pixel, or four for two pixels.
template <int count, int pixels>
VekStatus fromInterleaved(InterleavedRow YcbcrPackedKernels::*row, const Vek8u* pSrc, int srcStep,
                          Vek16u* pDst, int dstStep, VekiSize roi) {
  const VekStatus status = checkPointersStepsSize({pDst, pSrc}, {srcStep, dstStep}, roi);
  if (status != vekStsNoErr) return status;
  forEachPixelRow(roi, select(ycbcrPackedKernels).*row,
                  PixelRows<const Vek8u, count, pixels>{{pSrc, srcStep}},
                  PixelRows<Vek8u, 2>{{reinterpret_cast<Vek8u*>(pDst), dstStep}});
  return vekStsNoErr;
}

constexpr auto from444 = fromInterleaved<3, 1>;
constexpr auto from422 = fromInterleaved<4, 2>;

}  // namespace
}  // namespace vek

// The members: exported function and the row kernel that it runs.

#define VEK_FROM_420(function, kernel)                                                            \
  extern "C" VekStatus function(const Vek8u* const pSrc[3], const int srcStep[3], Vek16u* pDst,   \
                                int dstStep, VekiSize roiSize) {                                  \
    return vek::from420(&vek::YcbcrPackedKernels::kernel, pSrc, srcStep, pDst, dstStep, roiSize); \
  }

#define VEK_FROM_PLANES(function, kernel)                                                  \
  extern "C" VekStatus function(const Vek8u* const pSrc[3], int srcStep, Vek16u* pDst,     \
                                int dstStep, VekiSize roiSize) {                           \
    return vek::fromPlanes(&vek::YcbcrPackedKernels::kernel, pSrc, srcStep, pDst, dstStep, \
                           roiSize);                                                       \
  }

#define VEK_FROM_INTERLEAVED(function, from, kernel)                                           \
  extern "C" VekStatus function(const Vek8u* pSrc, int srcStep, Vek16u* pDst, int dstStep,     \
                                VekiSize roiSize) {                                            \
    return vek::from(&vek::YcbcrPackedKernels::kernel, pSrc, srcStep, pDst, dstStep, roiSize); \
  }

// clang-format off
VEK_FROM_420(vekiYCbCr420ToRGB565_8u16u_P3C3R, YCBCR420_RGB565_8u16u_P3C3)
VEK_FROM_420(vekiYCbCr420ToRGB555_8u16u_P3C3R, YCBCR420_RGB555_8u16u_P3C3)
VEK_FROM_420(vekiYCbCr420ToRGB444_8u16u_P3C3R, YCBCR420_RGB444_8u16u_P3C3)
VEK_FROM_420(vekiYCbCr420ToBGR565_8u16u_P3C3R, YCBCR420_BGR565_8u16u_P3C3)
VEK_FROM_420(vekiYCbCr420ToBGR555_8u16u_P3C3R, YCBCR420_BGR555_8u16u_P3C3)
VEK_FROM_420(vekiYCbCr420ToBGR444_8u16u_P3C3R, YCBCR420_BGR444_8u16u_P3C3)
VEK_FROM_420(vekiYUV420ToRGB565_8u16u_P3C3R, YUV420_RGB565_8u16u_P3C3)
VEK_FROM_420(vekiYUV420ToRGB555_8u16u_P3C3R, YUV420_RGB555_8u16u_P3C3)
VEK_FROM_420(vekiYUV420ToRGB444_8u16u_P3C3R, YUV420_RGB444_8u16u_P3C3)
VEK_FROM_420(vekiYUV420ToBGR565_8u16u_P3C3R, YUV420_BGR565_8u16u_P3C3)
VEK_FROM_420(vekiYUV420ToBGR555_8u16u_P3C3R, YUV420_BGR555_8u16u_P3C3)
VEK_FROM_420(vekiYUV420ToBGR444_8u16u_P3C3R, YUV420_BGR444_8u16u_P3C3)

VEK_FROM_PLANES(vekiYCbCrToRGB565_8u16u_P3C3R, YCBCR_RGB565_8u16u_P3C3)
VEK_FROM_PLANES(vekiYCbCrToRGB555_8u16u_P3C3R, YCBCR_RGB555_8u16u_P3C3)
VEK_FROM_PLANES(vekiYCbCrToRGB444_8u16u_P3C3R, YCBCR_RGB444_8u16u_P3C3)
VEK_FROM_PLANES(vekiYCbCrToBGR565_8u16u_P3C3R, YCBCR_BGR565_8u16u_P3C3)
VEK_FROM_PLANES(vekiYCbCrToBGR555_8u16u_P3C3R, YCBCR_BGR555_8u16u_P3C3)
VEK_FROM_PLANES(vekiYCbCrToBGR444_8u16u_P3C3R, YCBCR_BGR444_8u16u_P3C3)

VEK_FROM_INTERLEAVED(vekiYCbCr422ToRGB565_8u16u_C2C3R, from422, YCBCR422_RGB565_8u16u_C2C3)
VEK_FROM_INTERLEAVED(vekiYCbCr422ToRGB555_8u16u_C2C3R, from422, YCBCR422_RGB555_8u16u_C2C3)
VEK_FROM_INTERLEAVED(vekiYCbCr422ToRGB444_8u16u_C2C3R, from422, YCBCR422_RGB444_8u16u_C2C3)
VEK_FROM_INTERLEAVED(vekiYCbCr422ToBGR565_8u16u_C2C3R, from422, YCBCR422_BGR565_8u16u_C2C3)
VEK_FROM_INTERLEAVED(vekiYCbCr422ToBGR555_8u16u_C2C3R, from422, YCBCR422_BGR555_8u16u_C2C3)
VEK_FROM_INTERLEAVED(vekiYCbCr422ToBGR444_8u16u_C2C3R, from422, YCBCR422_BGR444_8u16u_C2C3)
VEK_FROM_INTERLEAVED(vekiYCbCrToRGB565_8u16u_C3R, from444, YCBCR_RGB565_8u16u_C3)
VEK_FROM_INTERLEAVED(vekiYCbCrToRGB555_8u16u_C3R, from444, YCBCR_RGB555_8u16u_C3)
VEK_FROM_INTERLEAVED(vekiYCbCrToRGB444_8u16u_C3R, from444, YCBCR_RGB444_8u16u_C3)
VEK_FROM_INTERLEAVED(vekiYCbCrToBGR565_8u16u_C3R, from444, YCBCR_BGR565_8u16u_C3)
VEK_FROM_INTERLEAVED(vekiYCbCrToBGR555_8u16u_C3R, from444, YCBCR_BGR555_8u16u_C3)
VEK_FROM_INTERLEAVED(vekiYCbCrToBGR444_8u16u_C3R, from444, YCBCR_BGR444_8u16u_C3)
// clang-format on
