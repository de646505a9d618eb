// Interleaved YCbCr 4:2:2 to packed 16-bit RGB with reduction by a whole factor and rotation.
#include "vek/camera.h"

#include "camera/preview/csc_matrix.h"
#include "camera/preview/csc_rows.h"
#include "camera/preview/reduce_rows.h"
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
  if (dstStep / 2 < (isQuarterTurn(rotation) ? height : width) / factor || srcStep / 2 < width ||
      interpolation < 0 || interpolation > 1 || dstFormat < rgb565 || dstFormat > rgb555 ||
      rotation < vekiRotNone || rotation > vekiRot180) {
    return vekStsBadArgErr;
  }
  return vekStsNoErr;
}

/// Samples of a part of one output row.
struct Row {
  Vek8u *y, *cb, *cr;
};

/// Averages neighbours until `n` samples have become n / 2^times. `a` is used up, `b` is scratch.
void halveTimes(const ReduceRows& kernels, Vek8u* a, Vek8u* b, ptrdiff_t n, int times, Vek8u* dst) {
  for (; times > 1; --times) {
    kernels.halve(a, n, b);
    n = (n + 1) / 2;
    Vek8u* const swap = a;
    a = b;
    b = swap;
  }
  kernels.halve(a, n, dst);
}

/// Averages the blocks of `n` output pixels in one source row.
template <int factor>
void averageRow(const ReduceRows& kernels, const Vek8u* src, ptrdiff_t n, const Row& out) {
  constexpr int levels = factor == 2 ? 1 : factor == 4 ? 2 : 3;
  constexpr ptrdiff_t most = stripColumns * factor / 2;
  alignas(64) Vek8u y[most];
  alignas(64) Vek8u cb[most];
  alignas(64) Vek8u cr[most];
  alignas(64) Vek8u scratch[most];
  const ptrdiff_t pairs = n * factor / 2;
  if constexpr (levels == 1) {
    kernels.splitPairs(src, pairs, out.y, cb, cr);
  } else {
    kernels.splitPairs(src, pairs, y, cb, cr);
    halveTimes(kernels, y, scratch, pairs, levels - 1, out.y);
  }
  halveTimes(kernels, cb, scratch, pairs, levels, out.cb);
  halveTimes(kernels, cr, scratch, pairs, levels, out.cr);
}

/// Averages the blocks of `n` output pixels.
template <int factor>
void averageBlocks(const ReduceRows& kernels, Plane<const Vek8u> src, ptrdiff_t n, const Row& out) {
  alignas(64) Vek8u others[factor - 1][2 * stripColumns];
  Row rows[factor] = {out};
  for (int i = 1; i < factor; ++i) {
    Vek8u* const other = others[i - 1];
    rows[i] = {other, other + stripColumns, other + stripColumns + stripColumns / 2};
  }
  for (int i = 0; i < factor; ++i) averageRow<factor>(kernels, src.row(i), n, rows[i]);
  const ptrdiff_t pairs = (n + 1) / 2;
  for (int apart = 1; apart < factor; apart *= 2) {
    for (int i = 0; i < factor; i += 2 * apart) {
      const Row& other = rows[i + apart];
      kernels.average(other.y, n, rows[i].y);
      kernels.average(other.cb, pairs, rows[i].cb);
      kernels.average(other.cr, pairs, rows[i].cr);
    }
  }
}

/// Takes the first samples of the blocks of `n` output pixels.
template <int factor>
void pickBlocks(const ReduceRows& kernels, const Vek8u* src, ptrdiff_t n, const Row& out) {
  kernels.pick(src + 1, 2 * factor, n, out.y);
  kernels.pick(src, 4 * factor, (n + 1) / 2, out.cb);
  kernels.pick(src + 2, 4 * factor, (n + 1) / 2, out.cr);
}

template <int factor>
void resizeCscRotate(Plane<const Vek8u> src, Vek8u* pDst, int dstStep, int width, int height,
                     bool average, int dstFormat, int rotation) {
  const ReduceRows& kernels = select(reduceRows);
  const CscRows& csc = select(cscRows);
  const auto format = dstFormat == rgb565 ? &CscFormats::rgb565Q10 : &CscFormats::rgb555Q10;
  const PixelKernels pixels = {csc.paired.*format, csc.single.*format, 2};
  const ptrdiff_t columns = width / factor, rows = height / factor;
  const auto makeSamples = [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t count,
                               SampleTile& tile, ptrdiff_t step) -> Samples {
    for (ptrdiff_t i = 0; i < count; ++i) {
      const Vek8u* blocks = src.row(factor * (y + i)) + 2 * factor * x;
      const Row out = {tile.y + i * step, tile.cb + i * (step / 2), tile.cr + i * (step / 2)};
      if (average) {
        averageBlocks<factor>(kernels, {blocks, src.step}, n, out);
      } else {
        pickBlocks<factor>(kernels, blocks, n, out);
      }
    }
    return {{tile.y, step}, {tile.cb, step / 2}, {tile.cr, step / 2}, 0};
  };
  walkPixels(pDst, orientation(rotation, columns, rows, 2, dstStep), pixels, columns, {0, rows},
             wideTile, makeSamples);
}

constexpr auto _vekiResize2CscRotate_8u_C2R = resizeCscRotate<2>;
constexpr auto _vekiResize4CscRotate_8u_C2R = resizeCscRotate<4>;
constexpr auto _vekiResize8CscRotate_8u_C2R = resizeCscRotate<8>;

}  // namespace
}  // namespace vek

using Coefficients = vek::VEK_LEVEL::MatrixQ10;

extern "C" const Vek32s _vekYCbCr_RGB[5] = {Coefficients::luma, Coefficients::redCr,
                                            Coefficients::greenCr, Coefficients::greenCb,
                                            Coefficients::blueCb};

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
