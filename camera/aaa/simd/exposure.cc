#include "camera/aaa/exposure_kernels.h"
#include "camera/aaa/histogram_body.h"
#include "camera/aaa/simd/quad_blocks.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr ptrdiff_t blockSamples = static_cast<ptrdiff_t>(hn::MaxLanes(s16));

/// The greens of `blockSamples` columns of two rows, each plus 1 modulo 1024: 1 to 1023, or 0 if it is
/// saturated.
V16u greensAt(const Vek16u* top, const Vek16u* bottom) {
  const V16u samples = hn::OddEven(hn::LoadU(u16, top), hn::LoadU(u16, bottom));
  return hn::And(hn::Add(samples, hn::Set(u16, 1)), hn::Set(u16, saturatedSample));
}

/// The last blocks of two rows, `n` samples and then saturated ones, which count for nothing. (The
/// zeros that copiedBlocks() appends would be counted.)
V16u lastGreens(const Vek16u* top, const Vek16u* bottom, ptrdiff_t n) {
  alignas(64) Vek16u rows[2][blockSamples];
  memset(rows, 0xFF, sizeof rows);
  memcpy(rows[0], top, static_cast<size_t>(n) * sizeof *top);
  memcpy(rows[1], bottom, static_cast<size_t>(n - 1) * sizeof *bottom);
  return greensAt(rows[0], rows[1]);
}

/// Whether the fullest bin of `counted` row pairs would reach the threshold with `most` of them.
bool isPopulatedSoon(const Vek32u* hist, Vek32u countThresh, ptrdiff_t counted, ptrdiff_t most) {
  Vek32u fullest = 0;
  for (int i = 0; i < saturatedSample; ++i) fullest = fullest > hist[i] ? fullest : hist[i];
  return uint64_t{fullest} * static_cast<uint64_t>(most) >=
         uint64_t{countThresh} * static_cast<uint64_t>(counted);
}

/// Rows of groups of four columns.
struct GreenRows {
  const Vek16u* data;
  ptrdiff_t step;            ///< in samples
  ptrdiff_t columns, pairs;  ///< pairs of rows
};

/// Measures rows from pair `y` on, until all are or more than `most` samples had to be counted; returns
/// the first pair that is left. Samples between bins that are already known to be populated need not
/// be counted, nor saturated ones.
ptrdiff_t measureOutside(const GreenRows& rows, ptrdiff_t y, ptrdiff_t most, Vek32u countThresh,
                         Vek32u* pHist, GreenHistogram& greens) {
  constexpr ptrdiff_t block = 2 * blockSamples;
  const V16u one = hn::Set(u16, 1);
  V32s sum = hn::Zero(s32), samples = hn::Zero(s32);
  V16u low, high;  // the latter plus 1
  const auto setBounds = [&] {
    low = hn::Set(u16, static_cast<Vek16u>(greens.lowest));
    high = hn::Set(u16, static_cast<Vek16u>(greens.highest + 1));
  };
  setBounds();
  ptrdiff_t counted = 0;
  const auto count = [&](V16u v) {
    const V16s more = hn::BitCast(s16, v), values = hn::Sub(more, hn::Set(s16, 1));
    const auto isBelow = hn::And(hn::Lt(values, hn::Set(s16, static_cast<Vek16s>(greens.lowest))),
                                 hn::Gt(more, hn::Zero(s16)));
    const auto outside =
        hn::Or(isBelow, hn::Gt(values, hn::Set(s16, static_cast<Vek16s>(greens.highest))));
    counted += static_cast<ptrdiff_t>(hn::CountTrue(s16, outside));
    alignas(64) Vek16s bins[blockSamples];
    hn::Store(values, s16, bins);
    uint64_t uncounted = 0;
    hn::StoreMaskBits(s16, outside, reinterpret_cast<Vek8u*>(&uncounted));
    for (; uncounted != 0; uncounted &= uncounted - 1) {
      const Vek32s bin = bins[__builtin_ctzll(uncounted)];
      if (++pHist[bin] < countThresh) continue;
      greens.lowest = greens.lowest < bin ? greens.lowest : bin;
      greens.highest = greens.highest > bin ? greens.highest : bin;
    }
  };
  const auto plusLanes = [](V32s acc, V16u v) {
    return plusProducts(acc, hn::BitCast(s16, v), hn::Set(s16, 1));
  };
  // Neither comparison finds a saturated sample: minus 1 it is 65535, not below `low`, and as it is 0,
  // not above `high`.
  const auto measure = [&](V16u a, V16u b) {
    sum = plusLanes(sum, hn::Add(a, b));
    samples = plusLanes(samples, hn::Add(hn::Min(a, one), hn::Min(b, one)));
    const V16u below = hn::SaturatedSub(low, hn::Min(hn::Sub(a, one), hn::Sub(b, one)));
    const V16u above = hn::SaturatedSub(hn::Max(a, b), high);
    const V8u outside = hn::BitCast(u8, hn::Or(below, above));
    if (HWY_LIKELY(hn::AllTrue(u8, hn::Eq(outside, hn::Zero(u8))))) return;
    count(a);
    count(b);
    setBounds();
  };

  for (; y < rows.pairs && counted <= most; ++y) {
    const Vek16u* top = rows.data + 2 * y * rows.step;
    const Vek16u* bottom = top + rows.step;
    ptrdiff_t x = 0;
    // The last sample of the lower row must not be read, so the last block is always a copy.
    for (; x + block < rows.columns; x += block) {
      measure(greensAt(top + x, bottom + x),
              greensAt(top + x + blockSamples, bottom + x + blockSamples));
    }
    V16u last = hn::Zero(u16);
    if (x + blockSamples < rows.columns) {
      last = greensAt(top + x, bottom + x);
      x += blockSamples;
    }
    measure(last, lastGreens(top + x, bottom + x, rows.columns - x));
  }
  greens.samples += sumOfLanes(s32, samples);
  greens.sum += sumOfLanes(s32, hn::Sub(sum, samples));
  return y;
}

/// Only the lowest and the highest populated bin are wanted. The first rows are counted in a plain
/// histogram until a bin is populated; if the fullest one tells that none will be, so is everything.
/// From then on a sample is counted only if it lies outside of the populated bins, in most frames next
/// to none. One that is takes longer than in a plain histogram, which measures the rest of a frame in
/// which they do not become few.
GreenHistogram measureGreens(const Vek16u* pSrc, int srcStep, int width, int height,
                             Vek32u countThresh, Vek32u* pHist) {
  VEK_ASSERT(width >= 1 && height >= 1 && srcStep % 2 == 0);
  const GreenRows rows = {.data = pSrc,
                          .step = srcStep / 2,
                          .columns = (ptrdiff_t{width} + 3) / 4 * 4,
                          .pairs = (ptrdiff_t{height} + 1) / 2};
  GreenHistogram greens = {0, 0, saturatedSample, 0};
  ptrdiff_t y = 0;
  const auto countPlainly = [&](ptrdiff_t pairs) {
    const ptrdiff_t wanted = 2 * pairs, left = height - 2 * y;
    const GreenHistogram part =
        countAllGreens(pSrc + 2 * y * rows.step, srcStep, width,
                       static_cast<int>(wanted < left ? wanted : left), countThresh, pHist);
    greens.samples += part.samples;
    greens.sum += part.sum;
    greens.lowest = greens.lowest < part.lowest ? greens.lowest : part.lowest;
    greens.highest = greens.highest > part.highest ? greens.highest : part.highest;
    y += pairs;
  };
  const ptrdiff_t few = 8192 / rows.columns + rows.pairs / 128 + 1;  // then twice as many
  for (ptrdiff_t pairs = few; y < rows.pairs && greens.lowest > greens.highest; pairs = y) {
    const bool isFutile = y > 0 && !isPopulatedSoon(pHist, countThresh, y, rows.pairs);
    countPlainly(isFutile ? rows.pairs - y : pairs);
  }
  const ptrdiff_t mostCounted = rows.columns * rows.pairs / 8 + 16384;
  if (y < rows.pairs) y = measureOutside(rows, y, mostCounted, countThresh, pHist, greens);
  if (y < rows.pairs) countPlainly(rows.pairs - y);
  return greens;
}

Vek32u sumGreens(const Vek16u* pWin, int srcStep, int w, int h) {
  constexpr int block = static_cast<int>(hn::MaxLanes(u32));
  const auto lowHalf = hn::Set(u32, 0xFFFF);
  auto topGreen = hn::Zero(u32);
  auto bottomGreen = hn::Zero(u32);
  forEachQuadBlock<block>(pWin, srcStep, w, h, [&](const Vek8u* top, const Vek8u* bottom) {
    const auto redGreen = hn::BitCast(u32, hn::LoadU(u8, top));
    const auto greenBlue = hn::BitCast(u32, hn::LoadU(u8, bottom));
    topGreen = hn::Add(topGreen, hn::ShiftRight<16>(redGreen));
    bottomGreen = hn::Add(bottomGreen, hn::And(greenBlue, lowHalf));
  });
  return sumOfLanes(u32, hn::Add(topGreen, bottomGreen));
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr ExposureKernels exposureKernels = {.measureGreens = measureGreens,
                                             .sumGreens = sumGreens};

}  // namespace vek::VEK_LEVEL
