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

/// Makes the `columns` x `rows` pixels of the reduced image. Not inlined, as the two orientations have
/// stacks of their own.
template <bool transposed>
[[gnu::noinline]] void reduceConvert(const ReduceCall& call, const PreviewKernels& kernels,
                                     const PixelConversion& convert, const OrientedPlane& dst,
                                     ptrdiff_t columns, ptrdiff_t rows) {
  const auto averageBlocks = kernels.reduce.averageBlocks(call.factor);
  const auto pickLuma = kernels.reduce.pick(2 * call.factor);
  const auto pickChroma = kernels.reduce.pick(4 * call.factor);

  const Plane<const Vek8u> src = {call.src, call.srcStep};
  const ptrdiff_t factor = call.factor;
  const auto makeSamples = [&](const Tile& strip, Samples, const SampleRows& out) -> YccPlanes {
    const ptrdiff_t n = strip.columns, pairs = (n + 1) / 2;
    for (ptrdiff_t i = 0; i < strip.rows; ++i) {
      const Vek8u* const blocks = src.row(factor * (strip.y + i)) + 2 * factor * strip.x;
      if (call.interpolation == vekiReduceAverage) {
        averageBlocks({blocks, src.step}, n, out.y.row(i), out.cb.row(i), out.cr.row(i));
      } else {  // of groups Cb, Y0, Cr, Y1
        pickChroma(blocks, pairs, out.cb.row(i));
        pickLuma(blocks + 1, n, out.y.row(i));
        pickChroma(blocks + 2, pairs, out.cr.row(i));
      }
    }
    return out.planes(0);
  };
  walkPixels<transposed, 0, false>(
      {.dst = dst,
       .convert = convert,
       .place = kernels.place,
       .width = columns,
       .rows = {0, rows},
       .shape = wideTile},
      [](const Tile&) { return true; }, makeSamples);
}

void reduceConvertRotate(const ReduceCall& call, const PreviewKernels& kernels) {
  const auto format = call.dstFormat == vekiCscC2RGB565 ? &CscFormats::rgb565Q10  //
                                                        : &CscFormats::rgb555Q10;
  const PixelConversion convert = {
      .paired = kernels.csc.paired.*format, .single = kernels.csc.single.*format, .bytes = 2};
  const ptrdiff_t columns = call.width / call.factor, rows = call.height / call.factor;
  const OrientedPlane dst({reinterpret_cast<Vek8u*>(call.dst), call.dstStep},
                          orientationOf(call.rotation), columns, rows, convert.bytes);
  const auto reduce = dst.transposed ? reduceConvert<true> : reduceConvert<false>;
  reduce(call, kernels, convert, dst, columns, rows);
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
