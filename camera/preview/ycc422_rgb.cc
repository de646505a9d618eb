// YCbCr 4:2:2 to packed RGB with resize and rotate.
#include "vek/camera.h"

#include "camera/preview/csc_rows.h"
#include "camera/preview/sampling.h"
#include "camera/preview/tile_walk.h"
#include "core/check.h"
#include "core/region.h"

namespace vek {
namespace {

enum Format { rgb565 = 0, rgb555 = 1, rgb444 = 2, bgr24 = 3 };

VekStatus check(const Vek8u* const* pSrc, const int* srcStep, int srcWidth, const Vek8u* pDst,
                int dstStep, int dstFormat, int interpolation, int rotation, int xStep, int yStep) {
  if (pDst == nullptr || anyPlaneNull(pSrc) || srcStep == nullptr || anyBelowOne({xStep, yStep})) {
    return vekStsBadArgErr;
  }
  if (isMisaligned(srcStep[0], 4) || isOdd(srcStep[1]) || isOdd(srcStep[2]) ||
      anyBelowOne({srcStep[0], srcStep[1], srcStep[2], dstStep}) || srcStep[0] < srcWidth ||
      Vek64s{2} * srcStep[1] < srcWidth || Vek64s{2} * srcStep[2] < srcWidth) {
    return vekStsBadArgErr;
  }
  if (dstFormat < rgb565 || dstFormat > bgr24 || interpolation < 0 || interpolation > 1 ||
      rotation < vekiRotNone || rotation > vekiMirrorTopBottom) {
    return vekStsBadArgErr;
  }
  const bool stepFits = dstFormat == bgr24 ? (dstStep & 2) == 0 : !isMisaligned(dstStep, 8);
  return stepFits ? vekStsNoErr : vekStsBadArgErr;
}

/// Phases start + i * step of one direction, in 64 bits since nothing bounds them. A held phase
/// stays just below `limit` once it reaches it; without room below the limit it stays at 0.
struct Phases {
  Vek64s start, step, limit;

  Vek64s at(Vek64s i) const { return start + i * step; }
  Vek64s held(Vek64s i) const {
    const Vek64s phase = at(i);
    return phase < limit ? phase : limit > 0 ? limit - 1 : 0;
  }

  /// How many of the phases from i on, `n` at most, lie below the limit and fit 32 bits.
  ptrdiff_t regular(ptrdiff_t i, ptrdiff_t n) const {
    constexpr Vek64s most = Vek64s{1} << 32;
    const Vek64s bound = limit < most ? limit : most;
    const Vek64s count = at(i) < bound ? (bound - 1 - at(i)) / step + 1 : 0;
    return count < n ? static_cast<ptrdiff_t>(count) : n;
  }
};

/// A source and how it is sampled. Chroma rows lie half a luma row step apart, whatever the chroma
/// steps are.
struct Sampler {
  Plane<const Vek8u> y, cb, cr;
  int width;
  Phases columns, chromaColumns, rows;

  Sampler(const Vek8u* const* pSrc, int srcStep, int srcWidth, int srcHeight, bool bilinear,
          int xStep, int yStep)
      : y{pSrc[0], srcStep}, cb{pSrc[1], srcStep / 2}, cr{pSrc[2], srcStep / 2}, width(srcWidth) {
    const Vek64s right = Vek64s{srcWidth - (bilinear ? 1 : 0)} << 16;
    const Vek64s bottom = Vek64s{srcHeight - (bilinear ? 1 : 0)} << 16;
    columns = {bilinear ? 0 : Vek64s{halfSample}, xStep, right};
    chromaColumns = {halfSample, xStep, right / 2};
    rows = {0, yStep, bottom};
  }
};

/// Luma at and beyond the right edge: only odd samples are held there.
Vek64s edgePhase(const Phases& columns, ptrdiff_t x) {
  return (x & 1) != 0 ? columns.held(x) : columns.at(x);
}

/// `n` luma samples at the nearest columns, beginning with sample x.
const Vek8u* nearestLuma(const ResampleRows& kernels, const Sampler& src, Vek64s rowPhase,
                         ptrdiff_t x, ptrdiff_t n, Vek8u* buffer) {
  const Vek8u* row = src.y.row(static_cast<ptrdiff_t>(rowPhase >> 16));
  const ptrdiff_t regular = src.columns.regular(x, n);
  const Vek8u* samples =
      nearestRow(kernels, row, static_cast<Vek32u>(src.columns.step), x, regular, buffer);
  if (regular == n) return samples;
  putRow(samples, regular, buffer);
  for (ptrdiff_t i = regular; i < n; ++i) buffer[i] = row[edgePhase(src.columns, x + i) >> 16];
  return buffer;
}

/// `n` luma samples blended from the four around each phase.
const Vek8u* bilinearLuma(const ResampleRows& kernels, const Sampler& src, Vek64s rowPhase,
                          ptrdiff_t x, ptrdiff_t n, Vek8u* buffer) {
  const Plane<const Vek8u> plane = {src.y.row(static_cast<ptrdiff_t>(rowPhase >> 16)), src.y.step};
  const Vek32u fy = static_cast<Vek32u>(rowPhase & 0xFFFF);
  const ptrdiff_t regular = src.columns.regular(x, n);
  const Vek8u* samples = bilinearRow(kernels, plane, src.width - 1, fy,
                                     static_cast<Vek32u>(src.columns.step), x, regular, buffer);
  if (regular == n) return samples;
  putRow(samples, regular, buffer);
  for (ptrdiff_t i = regular; i < n; ++i) {
    const Vek64s phase = edgePhase(src.columns, x + i);
    const Vek8u* left = plane.data + (phase >> 16);
    const Vek32u fx = static_cast<Vek32u>(phase & 0xFFFF);
    kernels.bilinear(left, fy == 0 ? left : left + plane.step, static_cast<Vek32s>(fy),
                     fx == 0 ? 0 : 1, fx, 0, 1, buffer + i);
  }
  return buffer;
}

/// `n` samples of a chroma row, beginning with sample x, all held at the right edge.
const Vek8u* chromaRow(const ResampleRows& kernels, const Phases& columns, const Vek8u* row,
                       ptrdiff_t x, ptrdiff_t n, Vek8u* buffer) {
  const ptrdiff_t regular = columns.regular(x, n);
  const Vek8u* samples =
      nearestRow(kernels, row, static_cast<Vek32u>(columns.step), x, regular, buffer);
  if (regular == n) return samples;
  putRow(samples, regular, buffer);
  for (ptrdiff_t i = regular; i < n; ++i) buffer[i] = row[columns.held(x + i) >> 16];
  return buffer;
}

using LumaRow = decltype(&nearestLuma);

/// Makes `width` x `height` pixels and puts them as `at` says.
template <LumaRow lumaRow, int pixelBytes>
void resizeRotateCsc(const Sampler& src, CscRow convert, Vek8u* pDst, const Orientation& at,
                     int width, int height) {
  const ResampleRows& kernels = select(resampleRows);
  alignas(64) Vek8u luma[stripColumns];
  alignas(64) Vek8u blue[stripColumns / 2];
  alignas(64) Vek8u red[stripColumns / 2];
  const auto makeTile = [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t count, Vek8u* out,
                            ptrdiff_t step) {
    const ptrdiff_t pairs = (n + 1) / 2;
    for (const ptrdiff_t end = y + count; y < end; ++y, out += step) {
      const Vek64s rowPhase = src.rows.held(y);
      const ptrdiff_t row = static_cast<ptrdiff_t>(rowPhase >> 16);
      const Vek8u* cb = chromaRow(kernels, src.chromaColumns, src.cb.row(row), x / 2, pairs, blue);
      const Vek8u* cr = chromaRow(kernels, src.chromaColumns, src.cr.row(row), x / 2, pairs, red);
      convert(lumaRow(kernels, src, rowPhase, x, n, luma), cb, cr, n, out);
    }
  };
  walkTiles(pDst, at, pixelBytes, width, {0, height}, makeTile);
}

constexpr auto _ResizeRotateCSCNN = resizeRotateCsc<nearestLuma, 2>;
constexpr auto _ResizeRotateCSCBilinear = resizeRotateCsc<bilinearLuma, 2>;
constexpr auto _ResizeRotateCSC888NN = resizeRotateCsc<nearestLuma, 3>;
constexpr auto _ResizeRotateCSC888Bilinear = resizeRotateCsc<bilinearLuma, 3>;

/// 24-bit pixels: the destination's own size is given, a quarter turn makes dstHeight columns.
void _vekiYCbCr422RszCscRotRGB888_8u_P3C3R(const Sampler& src, Vek8u* pDst, int dstStep,
                                           int dstWidth, int dstHeight, bool bilinear,
                                           int rotation) {
  const bool turned = isQuarterTurn(rotation);
  const int width = turned ? dstHeight : dstWidth;
  const int height = turned ? dstWidth : dstHeight;
  const Orientation at = orientation(rotation, width, height, 3, dstStep);
  const auto kernel = bilinear ? _ResizeRotateCSC888Bilinear : _ResizeRotateCSC888NN;
  kernel(src, select(cscRows).bgr24, pDst, at, width, height);
}

/// 16-bit pixels: always dstWidth columns and dstHeight rows. A quarter turn begins where one of a
/// square would, and after each row goes back by dstHeight pixels, not by the dstWidth that it
/// made.
void resize16(const Sampler& src, Vek8u* pDst, int dstStep, int dstWidth, int dstHeight,
              int dstFormat, bool bilinear, int rotation) {
  Orientation at = orientation(rotation, dstWidth, dstHeight, 2, dstStep);
  if (at.turned) {
    at = orientation(rotation, dstHeight, dstWidth, 2, dstStep);
    at.dy += (ptrdiff_t{dstWidth} - dstHeight) * at.dx;
  }
  const auto kernel = bilinear ? _ResizeRotateCSCBilinear : _ResizeRotateCSCNN;
  kernel(src, select(cscRows).of(dstFormat), pDst, at, dstWidth, dstHeight);
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiYCbCr422RszCscRotRGB_8u_P3C3R(const Vek8u* const pSrc[3],
                                                       const int srcStep[3], int srcWidth,
                                                       int srcHeight, Vek8u* pDst, int dstStep,
                                                       int dstWidth, int dstHeight, int dstFormat,
                                                       int interpolation, int rotation, int xStep,
                                                       int yStep) {
  const VekStatus status = vek::check(pSrc, srcStep, srcWidth, pDst, dstStep, dstFormat,
                                      interpolation, rotation, xStep, yStep);
  if (status != vekStsNoErr) return status;
  if (vek::anyBelowOne({srcWidth, srcHeight, dstWidth, dstHeight})) return vekStsNoErr;
  const bool bilinear = interpolation == 1;
  const vek::Sampler src(pSrc, srcStep[0], srcWidth, srcHeight, bilinear, xStep, yStep);
  if (dstFormat == vek::bgr24) {
    vek::_vekiYCbCr422RszCscRotRGB888_8u_P3C3R(src, pDst, dstStep, dstWidth, dstHeight, bilinear,
                                               rotation);
  } else {
    vek::resize16(src, pDst, dstStep, dstWidth, dstHeight, dstFormat, bilinear, rotation);
  }
  return vekStsNoErr;
}
