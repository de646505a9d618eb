#include "camera/aaa/exposure_kernels.h"
#include "camera/aaa/histogram_body.h"
#include "camera/aaa/simd/quad_blocks.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr ptrdiff_t blockSamples = static_cast<ptrdiff_t>(hn::MaxLanes(s16));

/// The greens of `blockSamples` columns of two rows.
V16s greensAt(const Vek16u* top, const Vek16u* bottom) {
  const auto at = [](const Vek16u* row) {
    return hn::LoadU(s16, reinterpret_cast<const Vek16s*>(row));
  };
  return hn::And(hn::OddEven(at(top), at(bottom)), hn::Set(s16, saturatedSample));
}

/// The last blocks of two rows, `n` samples and then saturated ones, which count for nothing. (The
/// zeros that copiedBlocks() appends would be counted.)
V16s lastGreens(const Vek16u* top, const Vek16u* bottom, ptrdiff_t n) {
  alignas(64) Vek16u rows[2][blockSamples];
  memset(rows, 0xFF, sizeof rows);
  memcpy(rows[0], top, static_cast<size_t>(n) * sizeof *top);
  memcpy(rows[1], bottom, static_cast<size_t>(n - 1) * sizeof *bottom);
  return greensAt(rows[0], rows[1]);
}

/// Whether the fullest bin of `counted` samples would reach the threshold with `most` of them.
bool isPopulatedSoon(const Vek32u* hist, Vek32u countThresh, ptrdiff_t counted, ptrdiff_t most) {
  Vek32u fullest = 0;
  for (int i = 0; i < saturatedSample; ++i) fullest = fullest > hist[i] ? fullest : hist[i];
  return uint64_t{fullest} * static_cast<uint64_t>(most) >=
         uint64_t{countThresh} * static_cast<uint64_t>(counted);
}

/// Only the lowest and the highest populated bin are wanted, so a sample between two bins that are
/// already known to be populated need not be counted. In most frames this soon leaves next to none. A
/// sample that is counted here takes longer than in a plain histogram; where they do not become few,
/// or the fullest bin of the first ones tells that they will not, a plain histogram measures the rest
/// of the frame.
GreenHistogram measureGreens(const Vek16u* pSrc, int srcStep, int width, int height,
                             Vek32u countThresh, Vek32u* pHist) {
  VEK_ASSERT(width >= 1 && height >= 1 && srcStep % 2 == 0);
  Vek32s lowest = countThresh == 0 ? 0 : saturatedSample;
  Vek32s highest = countThresh == 0 ? saturatedSample - 1 : 0;
  auto low = hn::Set(s16, static_cast<Vek16s>(lowest));
  auto high = hn::Set(s16, static_cast<Vek16s>(highest));
  auto sum = hn::Zero(s32), sum2 = hn::Zero(s32);
  Vek32u saturatedCount = 0;
  ptrdiff_t counted = 0;
  const auto measure = [&](V16s greens) {
    sum = hn::ReorderWidenMulAccumulate(s32, greens, hn::Set(s16, 1), sum, sum2);
    const auto saturated = hn::Eq(greens, hn::Set(s16, saturatedSample));
    saturatedCount += static_cast<Vek32u>(hn::CountTrue(s16, saturated));
    const auto outside = hn::AndNot(saturated, hn::Or(hn::Lt(greens, low), hn::Gt(greens, high)));
    if (HWY_LIKELY(hn::AllFalse(s16, outside))) return;

    counted += static_cast<ptrdiff_t>(hn::CountTrue(s16, outside));
    alignas(64) Vek16s values[blockSamples];
    hn::Store(greens, s16, values);
    uint64_t uncounted = 0;
    hn::StoreMaskBits(s16, outside, reinterpret_cast<Vek8u*>(&uncounted));
    for (; uncounted != 0; uncounted &= uncounted - 1) {
      const Vek32s value = values[__builtin_ctzll(uncounted)];
      if (++pHist[value] < countThresh) continue;
      lowest = lowest < value ? lowest : value;
      highest = highest > value ? highest : value;
    }
    low = hn::Set(s16, static_cast<Vek16s>(lowest));
    high = hn::Set(s16, static_cast<Vek16s>(highest));
  };

  const ptrdiff_t columns = (ptrdiff_t{width} + 3) / 4 * 4;
  const ptrdiff_t rowPairs = (ptrdiff_t{height} + 1) / 2;
  const ptrdiff_t rowSamples = srcStep / 2;
  const ptrdiff_t mostCounted = columns * rowPairs / 8 + 16384;
  const ptrdiff_t fewCounted = columns * rowPairs / 128 + 512;
  bool isForeseen = false;  // whether few have been counted, and the fullest bin looked at
  ptrdiff_t y = 0;
  for (; y < rowPairs && counted <= mostCounted; ++y) {
    if (!isForeseen && counted >= fewCounted) {
      isForeseen = true;
      if (lowest > highest && !isPopulatedSoon(pHist, countThresh, counted, mostCounted)) break;
    }
    const Vek16u* top = pSrc + 2 * y * rowSamples;
    const Vek16u* bottom = top + rowSamples;
    ptrdiff_t x = 0;
    // The last sample of the lower row must not be read, so the last block is always a copy.
    for (; x + blockSamples < columns; x += blockSamples) measure(greensAt(top + x, bottom + x));
    measure(lastGreens(top + x, bottom + x, columns - x));
  }
  const Vek32u measured =
      static_cast<Vek32u>(y * ((columns - 1) / blockSamples + 1) * blockSamples);
  const auto total = hn::BitCast(u32, hn::Add(sum, sum2));
  GreenHistogram greens = {measured - saturatedCount,
                           sumOfLanes(u32, total) - Vek32u{saturatedSample} * saturatedCount,
                           lowest, highest};
  if (y < rowPairs) {
    const GreenHistogram rest =
        countAllGreens(pSrc + 2 * y * rowSamples, srcStep, width, static_cast<int>(height - 2 * y),
                       countThresh, pHist);
    greens.samples += rest.samples;
    greens.sum += rest.sum;
    greens.lowest = lowest < rest.lowest ? lowest : rest.lowest;
    greens.highest = highest > rest.highest ? highest : rest.highest;
  }
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
