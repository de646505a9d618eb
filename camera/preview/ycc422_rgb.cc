// YCbCr 4:2:2 to packed RGB with resize and rotate.
#include "vek/camera.h"

#include "camera/preview/preview_call.h"
#include "camera/preview/preview_kernels.h"
#include "camera/preview/sampling.h"
#include "camera/preview/tile_walk.h"
#include "core/check.h"
#include "core/level.h"
#include "core/region.h"

namespace vek {
namespace {

/// @quirk Of the row steps of 24-bit pixels only bit 1 is tested, as callers know it: 33 is accepted,
/// 30 is not.
bool isPixelStepMisaligned(int dstStep, int dstFormat) {
  return dstFormat == vekiCsc422BGR24 ? (dstStep & 2) != 0 : isMisaligned(dstStep, 8);
}

bool isRefused(const PreviewCall& c) {
  return c.dst[0] == nullptr || anyPlaneNull(c.src) || c.srcStep == nullptr ||
         c.hasSamplingStepBelowOne() || anyMisaligned(c.srcStep, 4, 2) ||
         c.hasSourceStepBelowOne() || c.dstStep[0] < 1 || c.srcStep[0] < c.srcWidth ||
         Vek64s{2} * c.srcStep[1] < c.srcWidth || Vek64s{2} * c.srcStep[2] < c.srcWidth ||
         c.dstFormat < vekiCsc422RGB565 || c.dstFormat > vekiCsc422BGR24 ||
         c.hasUnknownInterpolation() || c.hasUnknownRotation() ||
         isPixelStepMisaligned(c.dstStep[0], c.dstFormat);
}

/// Phases start + i * step of one direction, in 64 bits since nothing bounds them. From where a phase
/// reaches `limit` it is clamped to just below it, or to 0 if there is no room below the limit.
struct Phases {
  Vek64s start, step, limit;
  bool evenClamped;  ///< otherwise only odd samples are clamped

  Vek64s at(Vek64s i) const {
    const Vek64s phase = start + i * step;
    if (phase < limit || ((i & 1) == 0 && !evenClamped)) return phase;
    return limit > 0 ? limit - 1 : 0;
  }

  /// How many of the samples from i on, `n` at most, lie below the limit at phases of 32 bits.
  ptrdiff_t regular(ptrdiff_t i, ptrdiff_t n) const {
    constexpr Vek64s end = Vek64s{1} << 32;
    const Vek64s bound = limit < end ? limit : end;
    const Vek64s phase = start + i * step;
    const Vek64s count = phase < bound ? (bound - 1 - phase) / step + 1 : 0;
    return count < n ? static_cast<ptrdiff_t>(count) : n;
  }
};

/// A source and how it is sampled.
struct Sampler {
  Plane<const Vek8u> y, cb, cr;
  int width;
  bool bilinear;
  Phases columns, chromaColumns, rows;

  /// @quirk Chroma rows lie half a luma row step apart, whatever the chroma steps are: rows of all
  /// three planes advance together. @quirk Luma columns are clamped in the second pixel of a pair
  /// alone; callers provide the samples that the first one reads.
  explicit Sampler(const PreviewCall& call)
      : y(call.srcPlane(0)),
        cb{call.src[1], call.srcStep[0] / 2},
        cr{call.src[2], call.srcStep[0] / 2},
        width(call.srcWidth),
        bilinear(call.isBilinear()) {
    const int behind = bilinear ? 1 : 0;  // a blend reaches one sample further
    const Vek64s right = Vek64s{call.srcWidth - behind} << 16;
    const Vek64s bottom = Vek64s{call.srcHeight - behind} << 16;
    columns = {.start = bilinear ? 0 : Vek64s{halfSample},
               .step = call.xStep,
               .limit = right,
               .evenClamped = false};
    chromaColumns = {
        .start = halfSample, .step = call.xStep, .limit = right / 2, .evenClamped = true};
    rows = {.start = 0, .step = call.yStep, .limit = bottom, .evenClamped = true};
  }
};

/// The `n` columns of a strip from column x on. The regular ones, which kernels can prepare, come first.
struct Strip {
  const Phases& phases;
  Columns& columns;
  ptrdiff_t x = 0, n = -1, regular = 0;

  /// Counts the regular ones, which takes a division, if the strip is not above the same columns.
  void set(ptrdiff_t from, ptrdiff_t count) {
    if (x == from && n == count) return;
    x = from;
    n = count;
    regular = phases.regular(from, count);
  }

  Vek32u step() const { return static_cast<Vek32u>(phases.step); }
};

/// The samples of a row at the nearest columns.
inline void sampleNearest(const ResampleKernels& kernels, const Strip& strip, const Vek8u* row,
                          Vek8u* out) {
  putRow(nearestRow(kernels, row, strip.columns, out), strip.regular, out);
  for (ptrdiff_t i = strip.regular; i < strip.n; ++i) {
    out[i] = row[strip.phases.at(strip.x + i) >> 16];
  }
}

/// Samples blended from the four around each phase.
inline void sampleBilinear(const ResampleKernels& kernels, const Strip& strip,
                           const Plane<const Vek8u>& src, Vek64s rowPhase, Vek8u* out) {
  const Plane<const Vek8u> rows = {src.row(static_cast<ptrdiff_t>(rowPhase >> 16)), src.step};
  const Vek32s fy = static_cast<Vek32s>(rowPhase & 0xFFFF);
  putRow(blendedRow(kernels, rows, static_cast<Vek32u>(fy), strip.columns, out), strip.regular,
         out);
  const auto blend = [](Vek32s a, Vek32s b, Vek32s f) { return a + (((b - a) * f) >> 16); };
  for (ptrdiff_t i = strip.regular; i < strip.n; ++i) {
    const Vek64s phase = strip.phases.at(strip.x + i);
    const Vek8u* left = rows.data + (phase >> 16);
    const Vek32s fx = static_cast<Vek32s>(phase & 0xFFFF);
    const auto across = [&](const Vek8u* at) { return blend(at[0], at[fx != 0], fx); };
    out[i] = static_cast<Vek8u>(blend(across(left), across(fy != 0 ? left + rows.step : left), fy));
  }
}

/// Makes the `width` x `height` pixels of the scaled image. Not inlined, as the two orientations have
/// stacks of their own.
template <bool transposed>
[[gnu::noinline]] void resizeConvert(const Sampler& src, const PreviewKernels& kernels,
                                     const PixelConversion& convert, const OrientedPlane& dst,
                                     int width, int height) {
  const ResampleKernels& resample = kernels.resample;
  const bool unscaled =
      !src.bilinear && src.columns.step == oneSample && src.rows.step == oneSample;
  ColumnsOf<mostColumns<transposed>> columns;
  ColumnsOf<mostColumns<transposed> / 2> chromaColumns;
  Strip strip = {src.columns, columns}, chromaStrip = {src.chromaColumns, chromaColumns};
  const auto isMade = [&](const Tile& tile) {
    const ptrdiff_t pairs = (tile.columns + 1) / 2, lastRow = tile.y + tile.rows - 1;
    strip.set(tile.x, tile.columns);
    chromaStrip.set(tile.x / 2, pairs);
    return !unscaled || strip.regular < tile.columns || chromaStrip.regular < pairs ||
           src.rows.at(lastRow) >> 16 != lastRow;
  };
  const auto makeLuma = [&](const Tile& tile, Plane<Vek8u> out) {
    if (src.bilinear) {
      blendedColumns(resample, strip.step(), tile.x, strip.regular, src.width - 1, columns);
    } else {
      nearestColumns(resample, strip.step(), tile.x, strip.regular, columns);
    }
    for (ptrdiff_t i = 0; i < tile.rows; ++i) {
      const Vek64s phase = src.rows.at(tile.y + i);
      if (src.bilinear) {
        sampleBilinear(resample, strip, src.y, phase, out.row(i));
      } else {
        sampleNearest(resample, strip, src.y.row(static_cast<ptrdiff_t>(phase >> 16)), out.row(i));
      }
    }
  };
  const auto makeChroma = [&](const Tile& tile, const Plane<const Vek8u>& from, Plane<Vek8u> out) {
    nearestColumns(resample, chromaStrip.step(), tile.x / 2, chromaStrip.regular, chromaColumns);
    for (ptrdiff_t i = 0; i < tile.rows; ++i) {
      const ptrdiff_t row = static_cast<ptrdiff_t>(src.rows.at(tile.y + i) >> 16);
      sampleNearest(resample, chromaStrip, from.row(row), out.row(i));
    }
  };
  const auto makeSamples = [&](const Tile& tile, Samples what, const SampleRows& out) -> YccPlanes {
    if (!isMade(tile)) {
      return {{src.y.row(tile.y) + tile.x, src.y.step},
              {src.cb.row(tile.y) + tile.x / 2, src.cb.step},
              {src.cr.row(tile.y) + tile.x / 2, src.cr.step},
              0};
    }
    if (includes(what, Samples::luma)) makeLuma(tile, out.y);
    if (includes(what, Samples::cb)) makeChroma(tile, src.cb, out.cb);
    if (includes(what, Samples::cr)) makeChroma(tile, src.cr, out.cr);
    return out.planes(0);
  };
  walkPixels<transposed, 0, true>({.dst = dst,
                                   .convert = convert,
                                   .place = kernels.place,
                                   .width = width,
                                   .rows = {0, height},
                                   .shape = wideTile},
                                  isMade, makeSamples);
}

void resizeRotateConvert(const PreviewCall& call, const PreviewKernels& kernels) {
  const Orientation orientation = orientationOf(call.rotation);
  const bool is24Bit = call.dstFormat == vekiCsc422BGR24;
  const PixelConversion convert = {.paired = kernels.csc.paired.of(call.dstFormat),
                                   .single = kernels.csc.single.of(call.dstFormat),
                                   .bytes = is24Bit ? 3 : 2};
  // In 24 bits the destination's own size is given, so that a transposed image has dstHeight columns.
  const int width = orientation.transposed ? call.dstHeight : call.dstWidth;
  const int height = orientation.transposed ? call.dstWidth : call.dstHeight;
  OrientedPlane dst(call.dstPlane(0), orientation, width, height, convert.bytes);
  const auto resize = orientation.transposed ? resizeConvert<true> : resizeConvert<false>;
  if (!orientation.transposed || is24Bit) {
    return resize(Sampler(call), kernels, convert, dst, width, height);
  }
  // @quirk In 16 bits there are always dstWidth columns and dstHeight rows. A transposed image begins
  // where one of the destination's size does, and after each row it goes back by dstHeight pixels, not
  // by the dstWidth that it made: callers know the result as correct for squares alone.
  dst.dy += (ptrdiff_t{call.dstWidth} - call.dstHeight) * dst.dx;
  resize(Sampler(call), kernels, convert, dst, call.dstWidth, call.dstHeight);
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiYCbCr422RszCscRotRGB_8u_P3C3R(const Vek8u* const pSrc[3],
                                                       const int srcStep[3], int srcWidth,
                                                       int srcHeight, Vek8u* pDst, int dstStep,
                                                       int dstWidth, int dstHeight, int dstFormat,
                                                       int interpolation, int rotation, int xStep,
                                                       int yStep) {
  const vek::PreviewCall call = {.src = pSrc,
                                 .srcStep = srcStep,
                                 .srcWidth = srcWidth,
                                 .srcHeight = srcHeight,
                                 .dst = &pDst,
                                 .dstStep = &dstStep,
                                 .dstWidth = dstWidth,
                                 .dstHeight = dstHeight,
                                 .dstFormat = dstFormat,
                                 .interpolation = interpolation,
                                 .rotation = rotation,
                                 .xStep = xStep,
                                 .yStep = yStep};
  if (vek::isRefused(call)) return vekStsBadArgErr;
  // @quirk An empty image is accepted, and nothing is touched.
  if (call.hasEmptyImage()) return vekStsNoErr;
  vek::resizeRotateConvert(call, vek::previewKernels(vek::cpuLevel()));
  return vekStsNoErr;
}
