// Fewer levels: ordered dithering and error diffusion.
#include "vek/image.h"

#include "core/check.h"
#include "image/dither/dither_kernels.h"

namespace vek {
namespace {

constexpr int mostLevels = 256;

/// The checks that need valid steps, and then the call.
VekStatus dither(Dither DitherKernels::*kernel, int levels, const Picture& picture, Vek64s srcBytes,
                 Vek64s dstBytes, int method, VekiPoint origin) {
  if (picture.srcStep < srcBytes || picture.dstStep < dstBytes) return vekStsStrideErr;
  switch (method) {
    case vekiDitherOrdered:
      (select(orderKernels).*kernel)(picture, levels, origin);
      return vekStsNoErr;
    case vekiDitherDiffusion:
      if (picture.width > mostDiffusedWidth) return vekStsSizeErr;
      (select(diffuseKernels).*kernel)(picture, levels, origin);
      return vekStsNoErr;
    default:
      return vekStsNotSupportedModeErr;
  }
}

VekStatus ditherPixels(Dither DitherKernels::*kernel, const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                       int dstStep, VekiSize roi, int method, VekiPoint origin) {
  const VekStatus status = checkPointersSizeSteps({pSrc, pDst}, roi, {srcStep, dstStep});
  if (status != vekStsNoErr) return status;
  return dither(kernel, mostLevels,
                {pSrc, srcStep, reinterpret_cast<Vek8u*>(pDst), dstStep, roi.width, roi.height},
                Vek64s{roi.width} * 3, Vek64s{roi.width} * 2, method, origin);
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiDither_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                            VekiSize roiSize, int levels, int method, VekiPoint origin) {
  using namespace vek;
  const VekStatus status = checkPointersSizeSteps({pSrc, pDst}, roiSize, {srcStep, dstStep});
  if (status != vekStsNoErr) return status;
  if (levels < 2 || levels > mostLevels) return vekStsBadArgErr;
  return dither(&DitherKernels::bytes, levels,
                {pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height}, roiSize.width,
                roiSize.width, method, origin);
}

VekStatus vekiDitherPacked_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                  VekiSize roiSize, int bits, int method, VekiPoint origin) {
  using namespace vek;
  const VekStatus status = checkPointersSizeSteps({pSrc, pDst}, roiSize, {srcStep, dstStep});
  if (status != vekStsNoErr) return status;
  if (bits != 1 && bits != 2 && bits != 4) return vekStsBadArgErr;
  return dither(bits == 1   ? &DitherKernels::oneBit
                : bits == 2 ? &DitherKernels::twoBits
                            : &DitherKernels::fourBits,
                1 << bits, {pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height},
                roiSize.width, (Vek64s{roiSize.width} * bits + 7) / 8, method, origin);
}

VekStatus vekiDitherRGB565_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst, int dstStep,
                                     VekiSize roiSize, int method, VekiPoint origin) {
  return vek::ditherPixels(&vek::DitherKernels::rgb565, pSrc, srcStep, pDst, dstStep, roiSize,
                           method, origin);
}

VekStatus vekiDitherRGB555_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst, int dstStep,
                                     VekiSize roiSize, int method, VekiPoint origin) {
  return vek::ditherPixels(&vek::DitherKernels::rgb555, pSrc, srcStep, pDst, dstStep, roiSize,
                           method, origin);
}

VekStatus vekiDitherRGB444_8u16u_C3R(const Vek8u* pSrc, int srcStep, Vek16u* pDst, int dstStep,
                                     VekiSize roiSize, int method, VekiPoint origin) {
  return vek::ditherPixels(&vek::DitherKernels::rgb444, pSrc, srcStep, pDst, dstStep, roiSize,
                           method, origin);
}

}  // extern "C"
