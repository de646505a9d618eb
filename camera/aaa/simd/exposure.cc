#include "camera/aaa/exposure_kernels.h"
#include "camera/aaa/histogram_body.h"
#include "camera/aaa/simd/quad_blocks.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::ScalableTag<Vek8u> bytes;
constexpr hn::ScalableTag<Vek16s> samples;
constexpr hn::ScalableTag<Vek32s> sums;
constexpr hn::ScalableTag<Vek32u> halfQuads;  ///< two samples of a row: the second one is on top
constexpr ptrdiff_t blockSamples = static_cast<ptrdiff_t>(hn::MaxLanes(samples));

using Samples = hn::Vec<decltype(samples)>;

/// The greens of `blockSamples` columns of two rows.
Samples greensAt(const Vek16u* top, const Vek16u* bottom) {
  const auto at = [](const Vek16u* row) {
    return hn::LoadU(samples, reinterpret_cast<const Vek16s*>(row));
  };
  return hn::And(hn::OddEven(at(top), at(bottom)), hn::Set(samples, saturatedSample));
}

/// The last blocks of two rows, `n` samples and then saturated ones, which count for nothing.
Samples lastGreens(const Vek16u* top, const Vek16u* bottom, ptrdiff_t n) {
  alignas(64) Vek16u rows[2][blockSamples];
  memset(rows, 0xFF, sizeof rows);
  memcpy(rows[0], top, static_cast<size_t>(n) * sizeof *top);
  memcpy(rows[1], bottom, static_cast<size_t>(n - 1) * sizeof *bottom);
  return greensAt(rows[0], rows[1]);
}

/// Only bins outside of those already known to be populated are counted, since the others cannot
/// be the lowest or the highest: for most frames, next to none. One by one they take longer than in
/// a plain histogram, which measures the rest of a frame where they do not become few.
GreenHistogram _vekiAEHist_10RGGB(const Vek16u* pSrc, int srcStep, int width, int height,
                                  Vek32u countThresh, Vek32u* pHist) {
  Vek32s lowest = countThresh == 0 ? 0 : saturatedSample;
  Vek32s highest = countThresh == 0 ? saturatedSample - 1 : 0;
  auto low = hn::Set(samples, static_cast<Vek16s>(lowest));
  auto high = hn::Set(samples, static_cast<Vek16s>(highest));
  auto sum = hn::Zero(sums), sum2 = hn::Zero(sums);
  Vek32u saturatedCount = 0;
  ptrdiff_t counted = 0;
  const auto measure = [&](Samples greens) {
    sum = hn::ReorderWidenMulAccumulate(sums, greens, hn::Set(samples, 1), sum, sum2);
    const auto saturated = hn::Eq(greens, hn::Set(samples, saturatedSample));
    saturatedCount += static_cast<Vek32u>(hn::CountTrue(samples, saturated));
    const auto outside = hn::AndNot(saturated, hn::Or(hn::Lt(greens, low), hn::Gt(greens, high)));
    if (HWY_LIKELY(hn::AllFalse(samples, outside))) return;

    counted += static_cast<ptrdiff_t>(hn::CountTrue(samples, outside));
    alignas(64) Vek16s values[blockSamples];
    hn::Store(greens, samples, values);
    uint64_t lanes = 0;
    hn::StoreMaskBits(samples, outside, reinterpret_cast<Vek8u*>(&lanes));
    for (; lanes != 0; lanes &= lanes - 1) {
      const Vek32s value = values[__builtin_ctzll(lanes)];
      if (++pHist[value] < countThresh) continue;
      lowest = lowest < value ? lowest : value;
      highest = highest > value ? highest : value;
    }
    low = hn::Set(samples, static_cast<Vek16s>(lowest));
    high = hn::Set(samples, static_cast<Vek16s>(highest));
  };

  const ptrdiff_t columns = (ptrdiff_t{width} + 3) / 4 * 4;
  const ptrdiff_t rowPairs = (ptrdiff_t{height} + 1) / 2;
  const ptrdiff_t rowSamples = srcStep / 2;
  const ptrdiff_t mostCounted = columns * rowPairs / 8 + 16384;
  ptrdiff_t y = 0;
  for (; y < rowPairs && counted <= mostCounted; ++y) {
    const Vek16u* top = pSrc + 2 * y * rowSamples;
    const Vek16u* bottom = top + rowSamples;
    ptrdiff_t x = 0;
    // The very last sample of the lower row is not ours to read.
    for (; x + blockSamples < columns; x += blockSamples) measure(greensAt(top + x, bottom + x));
    measure(lastGreens(top + x, bottom + x, columns - x));
  }
  const Vek32u measured =
      static_cast<Vek32u>(y * ((columns - 1) / blockSamples + 1) * blockSamples);
  const auto total = hn::BitCast(halfQuads, hn::Add(sum, sum2));
  GreenHistogram greens = {measured - saturatedCount,
                           sumOfLanes(halfQuads, total) - Vek32u{saturatedSample} * saturatedCount,
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

Vek32u _vekiAEWnd_10RGGB(const Vek16u* pWin, int srcStep, int w, int h) {
  constexpr int block = static_cast<int>(hn::MaxLanes(halfQuads));
  const auto lowHalf = hn::Set(halfQuads, 0xFFFF);
  auto topGreen = hn::Zero(halfQuads);
  auto bottomGreen = hn::Zero(halfQuads);
  forEachQuadBlock<block>(pWin, srcStep, w, h, [&](const Vek8u* top, const Vek8u* bottom) {
    const auto redGreen = hn::BitCast(halfQuads, hn::LoadU(bytes, top));
    const auto greenBlue = hn::BitCast(halfQuads, hn::LoadU(bytes, bottom));
    topGreen = hn::Add(topGreen, hn::ShiftRight<16>(redGreen));
    bottomGreen = hn::Add(bottomGreen, hn::And(greenBlue, lowHalf));
  });
  return sumOfLanes(halfQuads, hn::Add(topGreen, bottomGreen));
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr ExposureKernels exposureKernels = {_vekiAEHist_10RGGB, _vekiAEWnd_10RGGB};

}  // namespace vek::VEK_LEVEL
