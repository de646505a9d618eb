// YCbCr 4:2:2 to packed RGB with resize and rotate.
#include "vek/camera.h"

#include "camera/preview/csc_kernels.h"
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
  bool evenHeld;  ///< otherwise only odd samples are held

  Vek64s at(Vek64s i) const {
    const Vek64s phase = start + i * step;
    if (phase < limit || ((i & 1) == 0 && !evenHeld)) return phase;
    return limit > 0 ? limit - 1 : 0;
  }

  /// How many of the samples from i on, `n` at most, lie below the limit at phases of 32 bits.
  ptrdiff_t regular(ptrdiff_t i, ptrdiff_t n) const {
    constexpr Vek64s most = Vek64s{1} << 32;
    const Vek64s bound = limit < most ? limit : most;
    const Vek64s phase = start + i * step;
    const Vek64s count = phase < bound ? (bound - 1 - phase) / step + 1 : 0;
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
    columns = {bilinear ? 0 : Vek64s{halfSample}, xStep, right, false};
    chromaColumns = {halfSample, xStep, right / 2, true};
    rows = {0, yStep, bottom, true};
  }
};

/// The columns of a strip: those that are not held, and may be prepared, come first.
struct Strip {
  const Phases* phases;
  ptrdiff_t x, n, regular;
  Columns columns;

  void prepare(const ResampleKernels& kernels, const Phases& along, bool blended,
               ptrdiff_t lastColumn, ptrdiff_t from, ptrdiff_t count) {
    phases = &along;
    x = from, n = count, regular = along.regular(from, count);
    const Vek32u step = static_cast<Vek32u>(along.step);
    if (blended) {
      blendedColumns(kernels, step, x, regular, lastColumn, columns);
    } else {
      nearestColumns(kernels, step, x, regular, columns);
    }
  }
};

/// The samples of a row at the nearest columns.
void nearest(const ResampleKernels& kernels, const Strip& strip, const Vek8u* row, Vek8u* out) {
  putRow(nearestRow(kernels, row, strip.columns, out), strip.regular, out);
  for (ptrdiff_t i = strip.regular; i < strip.n; ++i) {
    out[i] = row[strip.phases->at(strip.x + i) >> 16];
  }
}

/// Luma samples at the nearest columns.
void nearestLuma(const ResampleKernels& kernels, const Sampler& src, const Strip& strip,
                 Vek64s rowPhase, Vek8u* out) {
  nearest(kernels, strip, src.y.row(static_cast<ptrdiff_t>(rowPhase >> 16)), out);
}

/// Luma samples blended from the four around each phase.
void bilinearLuma(const ResampleKernels& kernels, const Sampler& src, const Strip& strip,
                  Vek64s rowPhase, Vek8u* out) {
  const Plane<const Vek8u> plane = {src.y.row(static_cast<ptrdiff_t>(rowPhase >> 16)), src.y.step};
  const Vek32s fy = static_cast<Vek32s>(rowPhase & 0xFFFF);
  putRow(blendedRow(kernels, plane, static_cast<Vek32u>(fy), strip.columns, out), strip.regular,
         out);
  const auto blend = [](Vek32s a, Vek32s b, Vek32s f) { return a + (((b - a) * f) >> 16); };
  for (ptrdiff_t i = strip.regular; i < strip.n; ++i) {
    const Vek64s phase = strip.phases->at(strip.x + i);
    const Vek8u* left = plane.data + (phase >> 16);
    const Vek32s fx = static_cast<Vek32s>(phase & 0xFFFF);
    const auto across = [&](const Vek8u* at) { return blend(at[0], at[fx != 0], fx); };
    out[i] =
        static_cast<Vek8u>(blend(across(left), across(fy != 0 ? left + plane.step : left), fy));
  }
}

using LumaRow = decltype(&nearestLuma);

/// Makes `width` x `height` pixels and puts them as `at` says.
template <LumaRow lumaRow, int pixelBytes>
void resizeRotateCsc(const Sampler& src, int format, const OrientedPlane& dst, int width,
                     int height) {
  const ResampleKernels& resample = select(resampleKernels);
  const CscKernels& csc = select(cscKernels);
  const PixelKernels kernels = {csc.paired.of(format), csc.single.of(format), pixelBytes};
  const bool blended = lumaRow == bilinearLuma;
  const bool unscaled = !blended && src.columns.step == oneSample && src.rows.step == oneSample;
  Strip strip, chromaStrip;
  const auto makeSamples = [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t count,
                               SampleTile& tile, ptrdiff_t step) -> YccPlanes {
    const ptrdiff_t pairs = (n + 1) / 2;
    if (unscaled && src.columns.regular(x, n) == n &&
        src.chromaColumns.regular(x / 2, pairs) == pairs &&
        src.rows.at(y + count - 1) >> 16 == y + count - 1) {
      return {{src.y.row(y) + x, src.y.step},
              {src.cb.row(y) + x / 2, src.cb.step},
              {src.cr.row(y) + x / 2, src.cr.step},
              0};
    }
    strip.prepare(resample, src.columns, blended, src.width - 1, x, n);
    chromaStrip.prepare(resample, src.chromaColumns, false, 0, x / 2, pairs);
    for (ptrdiff_t i = 0; i < count; ++i) {
      const Vek64s rowPhase = src.rows.at(y + i);
      const ptrdiff_t row = static_cast<ptrdiff_t>(rowPhase >> 16);
      lumaRow(resample, src, strip, rowPhase, tile.y + i * step);
      nearest(resample, chromaStrip, src.cb.row(row), tile.cb + i * (step / 2));
      nearest(resample, chromaStrip, src.cr.row(row), tile.cr + i * (step / 2));
    }
    return {{tile.y, step}, {tile.cb, step / 2}, {tile.cr, step / 2}, 0};
  };
  walkPixels(dst, kernels, width, {0, height}, wideTile, makeSamples);
}

constexpr auto _ResizeRotateCSCNN = resizeRotateCsc<nearestLuma, 2>;
constexpr auto _ResizeRotateCSCBilinear = resizeRotateCsc<bilinearLuma, 2>;
constexpr auto _ResizeRotateCSC888NN = resizeRotateCsc<nearestLuma, 3>;
constexpr auto _ResizeRotateCSC888Bilinear = resizeRotateCsc<bilinearLuma, 3>;

/// 24-bit pixels: the destination's own size is given, a quarter turn makes dstHeight columns.
void _vekiYCbCr422RszCscRotRGB888_8u_P3C3R(const Sampler& src, Vek8u* pDst, int dstStep,
                                           int dstWidth, int dstHeight, bool bilinear,
                                           int rotation) {
  const bool transposed = isTransposed(rotation);
  const int width = transposed ? dstHeight : dstWidth;
  const int height = transposed ? dstWidth : dstHeight;
  const OrientedPlane dst({pDst, dstStep}, orientationOf(rotation), width, height, 3);
  const auto kernel = bilinear ? _ResizeRotateCSC888Bilinear : _ResizeRotateCSC888NN;
  kernel(src, bgr24, dst, width, height);
}

/// 16-bit pixels: always dstWidth columns and dstHeight rows. A quarter turn begins where one of a
/// square would, and after each row goes back by dstHeight pixels, not by the dstWidth that it
/// made.
void resize16(const Sampler& src, Vek8u* pDst, int dstStep, int dstWidth, int dstHeight,
              int dstFormat, bool bilinear, int rotation) {
  const Orientation orientation = orientationOf(rotation);
  OrientedPlane dst({pDst, dstStep}, orientation, orientation.transposed ? dstHeight : dstWidth,
                    orientation.transposed ? dstWidth : dstHeight, 2);
  if (orientation.transposed) dst.dy += (ptrdiff_t{dstWidth} - dstHeight) * dst.dx;
  const auto kernel = bilinear ? _ResizeRotateCSCBilinear : _ResizeRotateCSCNN;
  kernel(src, dstFormat, dst, dstWidth, dstHeight);
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
