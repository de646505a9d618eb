// Interleaved YCbCr 4:2:2 to packed 16-bit RGB with reduction by a whole factor and rotation.
#include "vek/camera.h"

#include "camera/preview/csc_kernels.h"
#include "camera/preview/csc_matrix.h"
#include "camera/preview/reduce_kernels.h"
#include "camera/preview/tile_walk.h"
#include "core/check.h"
#include "core/region.h"

namespace vek {
namespace {

enum Format { rgb565 = 0, rgb555 = 1 };

VekStatus check(const Vek8u* pSrc, int srcStep, const Vek16u* pDst, int dstStep, int width,
                int height, int factor, int interpolation, int dstFormat, int rotation) {
  if (pSrc == nullptr || pDst == nullptr || isMisaligned(pSrc, 8) || isMisaligned(pDst, 8) ||
      anyBelowOne({srcStep, dstStep}) || isMisaligned(srcStep, 8) || isMisaligned(dstStep, 8) ||
      factor > width || factor > height || (factor != 2 && factor != 4 && factor != 8)) {
    return vekStsBadArgErr;
  }
  if (dstStep / 2 < (isTransposed(rotation) ? height : width) / factor || srcStep / 2 < width ||
      interpolation < 0 || interpolation > 1 || dstFormat < rgb565 || dstFormat > rgb555 ||
      rotation < vekiRotNone || rotation > vekiRot180) {
    return vekStsBadArgErr;
  }
  return vekStsNoErr;
}

/// Takes the first samples of the blocks of `n` output pixels.
template <int factor>
void pickBlocks(const ReduceKernels& kernels, const Vek8u* src, ptrdiff_t n, Vek8u* y, Vek8u* cb,
                Vek8u* cr) {
  kernels.pick(src + 1, 2 * factor, n, y);
  kernels.pick(src, 4 * factor, (n + 1) / 2, cb);
  kernels.pick(src + 2, 4 * factor, (n + 1) / 2, cr);
}

template <int factor>
void resizeCscRotate(Plane<const Vek8u> src, Vek8u* pDst, int dstStep, int width, int height,
                     bool average, int dstFormat, int rotation) {
  const ReduceKernels& kernels = select(reduceKernels);
  const CscKernels& csc = select(cscKernels);
  const auto format = dstFormat == rgb565 ? &CscFormats::rgb565Q10 : &CscFormats::rgb555Q10;
  const PixelKernels pixels = {csc.paired.*format, csc.single.*format, 2};
  const auto averageBlocks = factor == 2   ? kernels.averageBlocks2
                             : factor == 4 ? kernels.averageBlocks4
                                           : kernels.averageBlocks8;
  const ptrdiff_t columns = width / factor, rows = height / factor;
  const auto makeSamples = [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t count,
                               SampleTile& tile, ptrdiff_t step) -> YccPlanes {
    for (ptrdiff_t i = 0; i < count; ++i) {
      const Vek8u* blocks = src.row(factor * (y + i)) + 2 * factor * x;
      Vek8u* const luma = tile.y + i * step;
      Vek8u* const cb = tile.cb + i * (step / 2);
      Vek8u* const cr = tile.cr + i * (step / 2);
      if (average) {
        averageBlocks({blocks, src.step}, n, luma, cb, cr);
      } else {
        pickBlocks<factor>(kernels, blocks, n, luma, cb, cr);
      }
    }
    return {{tile.y, step}, {tile.cb, step / 2}, {tile.cr, step / 2}, 0};
  };
  walkPixels({{pDst, dstStep}, orientationOf(rotation), columns, rows, 2}, pixels, columns,
             {0, rows}, wideTile, makeSamples);
}

constexpr auto _vekiResize2CscRotate_8u_C2R = resizeCscRotate<2>;
constexpr auto _vekiResize4CscRotate_8u_C2R = resizeCscRotate<4>;
constexpr auto _vekiResize8CscRotate_8u_C2R = resizeCscRotate<8>;

}  // namespace
}  // namespace vek

constexpr auto matrix = vek::VEK_LEVEL::matrixQ10.factor;

extern "C" const Vek32s _vekYCbCr_RGB[5] = {matrix[0][0], matrix[0][2], matrix[1][2], matrix[1][1],
                                            matrix[2][1]};

extern "C" VekStatus vekiResizeCscRotate_8u_C2R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                int dstStep, int width, int height, int factor,
                                                int interpolation, int dstFormat, int rotation) {
  const VekStatus status = vek::check(pSrc, srcStep, pDst, dstStep, width, height, factor,
                                      interpolation, dstFormat, rotation);
  if (status != vekStsNoErr) return status;
  const auto kernel = factor == 2   ? vek::_vekiResize2CscRotate_8u_C2R
                      : factor == 4 ? vek::_vekiResize4CscRotate_8u_C2R
                                    : vek::_vekiResize8CscRotate_8u_C2R;
  kernel({pSrc, srcStep}, reinterpret_cast<Vek8u*>(pDst), dstStep, width, height,
         interpolation == 1, dstFormat, rotation);
  return vekStsNoErr;
}
