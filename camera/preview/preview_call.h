// The arguments of the four functions that resize planar YCbCr, and what they refuse.
#pragma once

#include "vek/camera.h"

#include <stdint.h>

#include "core/check.h"
#include "core/orientation.h"
#include "core/region.h"

namespace vek {

/// Whether one of three planes or row steps is not at a multiple of `luma` bytes (the first) or of
/// `chroma` bytes (the others).
inline bool anyMisaligned(const Vek8u* const* planes, uintptr_t luma, uintptr_t chroma) {
  return isMisaligned(planes[0], luma) || isMisaligned(planes[1], chroma) ||
         isMisaligned(planes[2], chroma);
}
inline bool anyMisaligned(const int* steps, int luma, int chroma) {
  return isMisaligned(steps[0], luma) || isMisaligned(steps[1], chroma) ||
         isMisaligned(steps[2], chroma);
}

/// A call as it was made. Each function names the predicates that it refuses in an order of its own,
/// in which a pointer is tested before anything is read through it.
struct PreviewCall {
  const Vek8u* const* src;  ///< the planes Y, Cb, Cr
  const int* srcStep;
  int srcWidth, srcHeight;
  Vek8u* const* dst;  ///< the planes Y, Cb, Cr, or one plane of pixels
  const int* dstStep;
  int dstWidth, dstHeight;
  int dstFormat = 0;  ///< of pixels
  int interpolation, rotation;
  int xStep, yStep;

  // ---- What functions refuse.

  bool hasEmptyImage() const { return anyBelowOne({srcWidth, srcHeight, dstWidth, dstHeight}); }

  bool hasSamplingStepBelowOne() const { return anyBelowOne({xStep, yStep}); }

  /// Whether the last sample would lie past the end of the source.
  bool hasSamplingStepAboveLimit() const {
    return isAboveLimit(xStep, srcWidth, dstWidth) || isAboveLimit(yStep, srcHeight, dstHeight);
  }

  bool hasSourceStepBelowOne() const { return anyBelowOne({srcStep[0], srcStep[1], srcStep[2]}); }
  bool hasPlaneStepBelowOne() const { return anyBelowOne({dstStep[0], dstStep[1], dstStep[2]}); }

  bool hasShortSourceRow() const {
    return srcStep[0] < srcWidth || srcStep[1] < srcWidth / 2 || srcStep[2] < srcWidth / 2;
  }

  /// Of three destination planes.
  bool hasShortPlaneRow() const {
    const int width = orientedWidth();
    return dstStep[0] < width || dstStep[1] < width / 2 || dstStep[2] < width / 2;
  }

  /// Of the scaled image. An odd last row repeats the one above it, and goes with it.
  bool hasWrongRows(int first, int count) const {
    const Vek64s end = Vek64s{first} + count;
    return first < 0 || isOdd(first) || count < 1 || end > dstHeight ||
           (end == dstHeight ? first >= (dstHeight & ~1) : isOdd(count));
  }

  bool hasUnknownInterpolation() const {
    return interpolation < vekiInterpolateNearest || interpolation > vekiInterpolateLinear;
  }

  bool hasUnknownRotation() const {
    return rotation < vekiRotNone || rotation > vekiMirrorTopBottom;
  }

  // ---- What the arguments mean.

  Plane<const Vek8u> srcPlane(int i) const { return {src[i], srcStep[i]}; }
  Plane<Vek8u> dstPlane(int i) const { return {dst[i], dstStep[i]}; }

  bool isBilinear() const { return interpolation == vekiInterpolateLinear; }

  /// 16.16 distances between samples.
  Vek32u columnStep() const { return static_cast<Vek32u>(xStep); }
  Vek32u rowStep() const { return static_cast<Vek32u>(yStep); }

  /// The width of the scaled image as it is stored, after its rotation.
  int orientedWidth() const { return isTransposed(rotation) ? dstHeight : dstWidth; }

 private:
  /// The limit is ((srcSize & ~1) - 1) * 65536 / ((dstSize & ~1) - 1), the product taken modulo 2^32
  /// and read as signed; sizes below 2 have no second sample and are always refused. From 640 to 320
  /// samples, for example, it is 639 * 65536 / 319 = 131277.
  static bool isAboveLimit(int step, int srcSize, int dstSize) {
    if (srcSize < 2 || dstSize < 2) return true;
    const Vek32u last = static_cast<Vek32u>((srcSize & ~1) - 1);
    return step > static_cast<Vek32s>(last << 16) / ((dstSize & ~1) - 1);
  }
};

}  // namespace vek
