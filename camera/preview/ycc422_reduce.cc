// Interleaved YCbCr 4:2:2 to packed 16-bit RGB with reduction by a whole factor and rotation.
#include "vek/camera.h"

#include "camera/preview/csc_matrix.h"
#include "camera/preview/preview_kernels.h"
#include "camera/preview/tile_walk.h"
#include "core/check.h"
#include "core/level.h"
#include "core/orientation.h"
#include "core/region.h"

namespace vek {
namespace {

/// A call as it was made.
struct ReduceCall {
  const Vek8u* src;
  int srcStep;
  Vek16u* dst;
  int dstStep;
  int width, height;  ///< of the source
  int factor, interpolation, dstFormat, rotation;
};

bool isRefused(const ReduceCall& c) {
  return c.src == nullptr || c.dst == nullptr || isMisaligned(c.src, 8) || isMisaligned(c.dst, 8) ||
         anyBelowOne({c.srcStep, c.dstStep}) || isMisaligned(c.srcStep, 8) ||
         isMisaligned(c.dstStep, 8) || c.factor > c.width || c.factor > c.height ||
         (c.factor != 2 && c.factor != 4 && c.factor != 8) ||
         c.dstStep / 2 < (isTransposed(c.rotation) ? c.height : c.width) / c.factor ||
         c.srcStep / 2 < c.width || c.interpolation < vekiReduceFirst ||
         c.interpolation > vekiReduceAverage || c.dstFormat < vekiCscC2RGB565 ||
         c.dstFormat > vekiCscC2RGB555 || c.rotation < vekiRotNone || c.rotation > vekiRot180;
}

void reduceConvertRotate(const ReduceCall& call, const PreviewKernels& kernels) {
  const auto format = call.dstFormat == vekiCscC2RGB565 ? &CscFormats::rgb565Q10  //
                                                        : &CscFormats::rgb555Q10;
  const PixelConversion convert = {
      .paired = kernels.csc.paired.*format, .single = kernels.csc.single.*format, .bytes = 2};
  const auto averageBlocks = kernels.reduce.averageBlocks(call.factor);
  const auto pickLuma = kernels.reduce.pick(2 * call.factor);
  const auto pickChroma = kernels.reduce.pick(4 * call.factor);

  const Plane<const Vek8u> src = {call.src, call.srcStep};
  const ptrdiff_t factor = call.factor;
  const ptrdiff_t columns = call.width / factor, rows = call.height / factor;
  const auto makeSamples = [&](const Tile& tile, SampleTile& buffer, ptrdiff_t step) -> YccPlanes {
    const ptrdiff_t n = tile.columns, pairs = (n + 1) / 2, chromaStep = step / 2;
    for (ptrdiff_t i = 0; i < tile.rows; ++i) {
      const Vek8u* const blocks = src.row(factor * (tile.y + i)) + 2 * factor * tile.x;
      Vek8u* const y = buffer.y + i * step;
      Vek8u* const cb = buffer.cb + i * chromaStep;
      Vek8u* const cr = buffer.cr + i * chromaStep;
      if (call.interpolation == vekiReduceAverage) {
        averageBlocks({blocks, src.step}, n, y, cb, cr);
      } else {  // of groups Cb, Y0, Cr, Y1
        pickChroma(blocks, pairs, cb);
        pickLuma(blocks + 1, n, y);
        pickChroma(blocks + 2, pairs, cr);
      }
    }
    return {{buffer.y, step}, {buffer.cb, chromaStep}, {buffer.cr, chromaStep}, 0};
  };
  const OrientedPlane dst({reinterpret_cast<Vek8u*>(call.dst), call.dstStep},
                          orientationOf(call.rotation), columns, rows, convert.bytes);
  walkPixels(dst, convert, kernels.place, columns, {0, rows}, wideTile, makeSamples);
}

}  // namespace
}  // namespace vek

constexpr auto matrix = vek::VEK_LEVEL::matrixQ10.factor;

extern "C" const Vek32s _vekYCbCr_RGB[5] = {matrix[0][0], matrix[0][2], matrix[1][2], matrix[1][1],
                                            matrix[2][1]};

extern "C" VekStatus vekiResizeCscRotate_8u_C2R(const Vek8u* pSrc, int srcStep, Vek16u* pDst,
                                                int dstStep, int width, int height, int factor,
                                                int interpolation, int dstFormat, int rotation) {
  const vek::ReduceCall call = {.src = pSrc,
                                .srcStep = srcStep,
                                .dst = pDst,
                                .dstStep = dstStep,
                                .width = width,
                                .height = height,
                                .factor = factor,
                                .interpolation = interpolation,
                                .dstFormat = dstFormat,
                                .rotation = rotation};
  if (vek::isRefused(call)) return vekStsBadArgErr;
  vek::reduceConvertRotate(call, vek::previewKernels(vek::cpuLevel()));
  return vekStsNoErr;
}
