// The raw front end: packed samples of a sensor to corrected 10-bit RGGB.
#include "vek/camera.h"

#include "camera/front/front_end_kernels.h"
#include "core/check.h"

namespace vek {
namespace {

bool isKnownOrder(int order) {
  return order >= vekiBayerRGGB && order <= vekiBayerBGGR;
}

/// Where the red sample of each 2 x 2 is.
int redColumn(int order) {
  return order & 1;
}
int redRow(int order) {
  return order >> 1;
}

bool isValidFormat(int format, int bits) {
  switch (format) {
    case vekiRaw8:
      return bits == 8;
    case vekiRawPlain16:
      return bits >= 9 && bits <= 16;
    case vekiRawCsi2_10:
      return bits == 10;
    case vekiRawCsi2_12:
      return bits == 12;
    case vekiRawCsi2_14:
      return bits == 14;
    default:
      return false;
  }
}

bool isValidRegion(const VekiRect& region, int order) {
  return region.width >= 2 && region.height >= 2 && !isOdd(region.width) && !isOdd(region.height) &&
         region.x >= 0 && region.y >= 0 && (region.x & 1) == redColumn(order) &&
         (region.y & 1) == redRow(order);
}

/// The bytes from the start of a row to the end of the group that holds sample `count` - 1.
Vek64s bytesOf(RawGroups groups, Vek64s count) {
  return (count + groups.samples - 1) / groups.samples * groups.bytes;
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiRawTo10RGGB_8u16u_C1R(const Vek8u* pSrc, int srcStep, VekiRect region, Vek16u* pDst,
                                    int dstStep, const VekiRawFrontEnd* pFrontEnd) {
  using namespace vek;
  if (anyNull({pSrc, pDst, pFrontEnd})) return vekStsBadArgErr;
  const VekiRawFrontEnd& front = *pFrontEnd;
  if (!isValidFormat(front.format, front.bits) || !isKnownOrder(front.order) ||
      !isValidRegion(region, front.order)) {
    return vekStsBadArgErr;
  }
  const RawGroups groups = rawGroups[front.format];
  if (srcStep < bytesOf(groups, Vek64s{region.x} + region.width) || isOdd(dstStep) ||
      dstStep < 2 * Vek64s{region.width} || isMisaligned(pDst, 2)) {
    return vekStsBadArgErr;
  }

  const RawRow row = select(frontEndKernels).rows[front.format];
  const Vek8u* src =
      pSrc + ptrdiff_t{region.y} * srcStep + ptrdiff_t{region.x / groups.samples} * groups.bytes;
  Vek16u* dst = pDst;
  for (int y = 0; y < region.height; ++y, src += srcStep, dst += dstStep / 2) {
    const int c = y % 2 * 2;  // R and Gr, or Gb and B
    row(src, region.x % groups.samples, region.width,
        {.black = {front.black[c], front.black[c + 1]},
         .gain = {front.gain[c], front.gain[c + 1]},
         .bits = front.bits},
        dst);
  }
  return vekStsNoErr;
}

VekStatus vekiRawRegion(VekiSize srcSize, int order, VekiRect* pRegion) {
  if (pRegion == nullptr || vek::isEmpty(srcSize) || !vek::isKnownOrder(order)) {
    return vekStsBadArgErr;
  }
  const int x = vek::redColumn(order), y = vek::redRow(order);
  const int width = (srcSize.width - x) & ~1, height = (srcSize.height - y) & ~1;
  if (width < 2 || height < 2) return vekStsBadArgErr;
  *pRegion = {x, y, width, height};
  return vekStsNoErr;
}

}  // extern "C"
