// Raw samples to pixels of three bytes.
#include "vek/camera.h"

#include "camera/raw/mapped_rows.h"
#include "core/check.h"
#include "core/region.h"

namespace vek {
namespace {

/// The samples of a region, of which those around it are there or mirrored.
struct RawRegion {
  Plane<const Vek8u> plane;
  int columns, rows;  ///< of quads
  bool hasBorder;

  /// Row -1 is row 1, and the one below the last one is the one above it, unless there is a border.
  const Vek16u* row(int y) const {
    const int last = 2 * rows - 1;
    if (!hasBorder) y = y < 0 ? 1 : y > last ? last - 1 : y;
    return reinterpret_cast<const Vek16u*>(plane.row(y));
  }
};

/// The n quads from column x on of every row.
void demosaicStrip(const RawRegion& src, int x, int n, const Vek8u* gamma, bool isBgr,
                   const RggbKernels& kernels, Plane<Vek8u> dst) {
  MappedRows mapped;
  const bool hasLeft = src.hasBorder || x > 0, hasRight = src.hasBorder || x + n < src.columns;
  const auto map = [&](int y) {
    mapped.map(kernels, gamma, src.row(y) + 2 * ptrdiff_t{x}, n, y, hasLeft, hasRight);
    mapped.mirror(n, y, !hasLeft, !hasRight);
  };
  map(-1);
  map(0);
  for (int y = 0; y < 2 * src.rows; y += 2) {
    map(y + 1);
    map(y + 2);
    const SplitRow rows[4] = {mapped.row(y - 1), mapped.row(y), mapped.row(y + 1),
                              mapped.row(y + 2)};
    kernels.demosaicPixels[isBgr ? 1 : 0](rows, n, dst.row(y) + 6 * ptrdiff_t{x},
                                          dst.row(y + 1) + 6 * ptrdiff_t{x});
  }
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiDemosaic_10RGGB_16u8u_C1C3R(const Vek16u* pSrc, int srcStep, Vek8u* pDst,
                                                     int dstStep, VekiSize roiSize,
                                                     const Vek8u pTable[1024], int channelOrder,
                                                     int srcBorderValid) {
  using namespace vek;
  if (anyNull({pSrc, pDst, pTable}) || roiSize.width < 2 || roiSize.height < 2 ||
      isOdd(roiSize.width | roiSize.height) || channelOrder < vekiChannelsRGB ||
      channelOrder > vekiChannelsBGR || isOdd(srcStep) || srcStep < 2 * Vek64s{roiSize.width} ||
      dstStep < 3 * Vek64s{roiSize.width} || isMisaligned(pSrc, 2)) {
    return vekStsBadArgErr;
  }
  const RggbKernels& kernels = select(rggbKernels);
  const RawRegion src = {{reinterpret_cast<const Vek8u*>(pSrc), srcStep},
                         roiSize.width / 2,
                         roiSize.height / 2,
                         srcBorderValid != 0};
  for (int x = 0; x < src.columns; x += maxStripQuads) {
    const int n = src.columns - x < maxStripQuads ? src.columns - x : maxStripQuads;
    demosaicStrip(src, x, n, pTable, channelOrder == vekiChannelsBGR, kernels, {pDst, dstStep});
  }
  return vekStsNoErr;
}
