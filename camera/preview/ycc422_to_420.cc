// YCbCr 4:2:2, planar or interleaved, to planar 4:2:0 with rotation.
#include "vek/camera.h"

#include "camera/preview/halve_kernels.h"
#include "camera/preview/plane_resize.h"
#include "camera/preview/tile_walk.h"
#include "core/check.h"
#include "core/kernel/place_kernels.h"
#include "core/level.h"
#include "core/orientation.h"
#include "core/region.h"

namespace vek {
namespace {

/// The destination of a call as it was made.
struct Planes420 {
  Vek8u* const* planes;  ///< Y, Cb, Cr
  const int* step;
  int width, height;  ///< of the source
  int rotation;

  bool isRefused() const {
    return anyPlaneNull(planes) || step == nullptr || width < 2 || isOdd(width) || height < 2 ||
           isOdd(height) || rotation < vekiRotNone || rotation > vekiMirrorTopBottom;
  }

  /// Asked last, after the source's rows.
  bool hasShortRow() const {
    const int row = isTransposed(rotation) ? height : width;
    return step[0] < row || step[1] < row / 2 || step[2] < row / 2;
  }

  OrientedPlane luma() const {
    return {Plane{planes[0], step[0]}, orientationOf(rotation), width, height};
  }
  OrientedPlane chroma(int i) const {
    return {Plane{planes[i], step[i]}, orientationOf(rotation), width / 2, height / 2};
  }
};

void fromPlanes(Plane<const Vek8u> const (&src)[3], const Planes420& dst,
                const HalveKernels& kernels, const PlaceKernels& place) {
  orientPlane(place, src[0], dst.luma(), dst.width, {0, dst.height});
  for (int i : {1, 2}) {
    walkSamples(dst.chroma(i), place, dst.width / 2, {0, dst.height / 2},
                [&](const Tile& tile, Vek8u* out, ptrdiff_t step) {
                  const Vek8u* top = src[i].row(2 * tile.y) + tile.x;
                  for (ptrdiff_t y = 0; y < tile.rows; ++y, top += 2 * src[i].step, out += step) {
                    kernels.averageRows(top, top + src[i].step, tile.columns, out);
                  }
                });
  }
}

void fromGroups(Plane<const Vek8u, 2> src, const Planes420& dst, const HalveKernels& kernels,
                const PlaceKernels& place) {
  const OrientedPlane luma = dst.luma(), cb = dst.chroma(1), cr = dst.chroma(2);
  const bool direct = !luma.transposed && luma.dx == 1;
  const ptrdiff_t step = luma.transposed ? wideTile.columns : stripColumns;
  SampleBuffer<tileSamples, 1> buffer;
  forEachTile(luma, 1, dst.width, {0, dst.height}, wideTile, [&](const Tile& tile) {
    const ptrdiff_t chromaX = tile.x / 2, chromaY = tile.y / 2;
    for (ptrdiff_t y = 0; y < tile.rows; y += 2) {
      const Vek8u* const top = src.row(tile.y + y) + 2 * tile.x;
      if (direct) {
        kernels.splitRows(top, top + src.step, tile.columns, luma.at(tile.x, tile.y + y),
                          luma.at(tile.x, tile.y + y + 1), cb.at(chromaX, chromaY + y / 2),
                          cr.at(chromaX, chromaY + y / 2));
      } else {
        Vek8u* const topLuma = buffer.y + y * step;
        const ptrdiff_t chroma = y / 2 * (step / 2);
        kernels.splitRows(top, top + src.step, tile.columns, topLuma, topLuma + step,
                          buffer.cb + chroma, buffer.cr + chroma);
      }
    }
    if (direct) return;
    const ptrdiff_t columns = tile.columns / 2, rows = tile.rows / 2;
    place.bytes1(buffer.y, step, tile.columns, tile.rows, luma.at(tile.x, tile.y), luma.dx,
                 luma.dy);
    place.bytes1(buffer.cb, step / 2, columns, rows, cb.at(chromaX, chromaY), cb.dx, cb.dy);
    place.bytes1(buffer.cr, step / 2, columns, rows, cr.at(chromaX, chromaY), cr.dx, cr.dy);
  });
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiYCbCr422ToYCbCr420Rotate_8u_C2P3R(const Vek8u* pSrc, int srcStep,
                                                Vek8u* const pDst[3], const int dstStep[3],
                                                int width, int height, int rotation) {
  using namespace vek;
  const Planes420 dst = {pDst, dstStep, width, height, rotation};
  if (pSrc == nullptr || dst.isRefused() || srcStep / 2 < width || dst.hasShortRow()) {
    return vekStsBadArgErr;
  }
  const Level level = cpuLevel();
  fromGroups({pSrc, srcStep}, dst, select(halveKernels, level), select(placeKernels, level));
  return vekStsNoErr;
}

VekStatus vekiYCbCr422ToYCbCr420Rotate_8u_P3R(VekConstPlanes pSrc, const int srcStep[3],
                                              Vek8u* const pDst[3], const int dstStep[3], int width,
                                              int height, int rotation) {
  using namespace vek;
  const Planes420 dst = {pDst, dstStep, width, height, rotation};
  if (anyPlaneNull(pSrc) || srcStep == nullptr || dst.isRefused() || srcStep[0] < width ||
      srcStep[1] < width / 2 || srcStep[2] < width / 2 || dst.hasShortRow()) {
    return vekStsBadArgErr;
  }
  const Level level = cpuLevel();
  fromPlanes({{pSrc[0], srcStep[0]}, {pSrc[1], srcStep[1]}, {pSrc[2], srcStep[2]}}, dst,
             select(halveKernels, level), select(placeKernels, level));
  return vekStsNoErr;
}

}  // extern "C"
