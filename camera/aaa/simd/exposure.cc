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

/// What measureGreensBy() wants.
ptrdiff_t measureOutside(const GreenRows& rows, ptrdiff_t y, ptrdiff_t most, Vek32u countThresh,
                         Vek32u* pHist, GreenHistogram& greens) {
  constexpr ptrdiff_t block = 2 * blockSamples;
  const V16u one = hn::Set(u16, 1);
  V32s sum = hn::Zero(s32), samples = hn::Zero(s32);
  V16s low, high;  // of values minus 32768 and of values plus 1
  const auto setBounds = [&] {
    low = hn::Set(s16, static_cast<Vek16s>(greens.lowest - 32768));
    high = hn::Set(s16, static_cast<Vek16s>(greens.highest + 1));
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
  // Neither comparison finds a saturated sample: plus 32767 it is the largest number, and as it is 0.
  const auto measure = [&](V16u a, V16u b) {
    sum = plusLanes(sum, hn::Add(a, b));
    samples = plusLanes(samples, hn::Add(hn::Min(a, one), hn::Min(b, one)));
    const V16s va = hn::BitCast(s16, a), vb = hn::BitCast(s16, b);
    const V16s biased = hn::Set(s16, 0x7FFF);
    const V16s least = hn::Min(hn::Add(va, biased), hn::Add(vb, biased));
    const auto outside = hn::Or(hn::Lt(least, low), hn::Gt(hn::Max(va, vb), high));
    if (HWY_LIKELY(hn::AllFalse(s16, outside))) return;
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

GreenHistogram measureGreens(const Vek16u* pSrc, int srcStep, int width, int height,
                             Vek32u countThresh, Vek32u* pHist) {
  return measureGreensBy(measureOutside, pSrc, srcStep, width, height, countThresh, pHist);
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
