#include "camera/aaa/simd/quad_blocks.h"
#include "camera/aaa/white_balance_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

using Words = hn::ScalableTag<Vek16s>;
using Sums = hn::ScalableTag<Vek32s>;
using HalfQuads = hn::ScalableTag<Vek32u>;  ///< two samples of a row: the second one is on top
constexpr hn::ScalableTag<Vek8u> bytes;
constexpr Words words;
constexpr hn::RebindToUnsigned<Words> uwords;
constexpr Sums sums32;
constexpr HalfQuads halfQuads;

hn::Vec<HalfQuads> loadHalfQuads(const Vek8u* samples) {
  return hn::BitCast(halfQuads, hn::LoadU(bytes, samples));
}

ColourSums _vekiAWB_accum_10RGGB_WGA(const Vek16u* pWin, int srcStep, int w, int h) {
  constexpr int block = static_cast<int>(hn::MaxLanes(halfQuads));
  const auto lowHalf = hn::Set(halfQuads, 0xFFFF);
  auto red = hn::Zero(halfQuads);
  auto green = hn::Zero(halfQuads);
  auto blue = hn::Zero(halfQuads);
  forEachQuadBlock<block>(pWin, srcStep, w, h, [&](const Vek8u* top, const Vek8u* bottom) {
    const auto redGreen = loadHalfQuads(top);
    const auto greenBlue = loadHalfQuads(bottom);
    red = hn::Add(red, hn::And(redGreen, lowHalf));
    green = hn::Add(green, hn::Add(hn::ShiftRight<16>(redGreen), hn::And(greenBlue, lowHalf)));
    blue = hn::Add(blue, hn::ShiftRight<16>(greenBlue));
  });
  return {sumOfLanes(halfQuads, red), sumOfLanes(halfQuads, green), sumOfLanes(halfQuads, blue)};
}

/// Two vectors' first and second samples, one per 16-bit lane, in the same order in both.
struct Columns {
  hn::Vec<decltype(uwords)> first, second;
};

Columns loadColumns(const Vek8u* samples) {
  const auto a = loadHalfQuads(samples);
  const auto b = loadHalfQuads(samples + sizeof(Vek32u) * hn::MaxLanes(halfQuads));
  return {hn::OddEven(hn::BitCast(uwords, hn::ShiftLeft<16>(b)), hn::BitCast(uwords, a)),
          hn::OddEven(hn::BitCast(uwords, b), hn::BitCast(uwords, hn::ShiftRight<16>(a)))};
}

template <class V>
auto distance(V a, V b) {
  return hn::Abs(hn::BitCast(words, hn::Sub(a, b)));
}

/// sum += the products of lanes, in adjacent pairs.
void accumulate(hn::Vec<Sums>& sum, hn::Vec<Words> values, hn::Vec<Words> counted) {
  auto upper = hn::Zero(sums32);
  sum = hn::ReorderWidenMulAccumulate(sums32, values, counted, sum, upper);
  sum = hn::Add(sum, upper);
}

/// Signed 16-bit lanes serve for all samples: a quad whose sum lies below 4092 has no sample and no
/// difference above that, and any other one fails the test of the saturated sum, which as a signed
/// number is then either at least 4092 or negative.
ColourSums _vekiAWB_accum_10RGGB_WPD(const Vek16u* pWin, int srcStep, int w, int h,
                                     const WhitePointLimits& limits, Vek32u* pCount) {
  constexpr int block = static_cast<int>(hn::MaxLanes(words));
  const auto limit = [](Vek16u v) { return hn::Set(words, static_cast<Vek16s>(v)); };
  const auto redLimit = limit(limits.redLimit);
  const auto blueLimit = limit(limits.blueLimit);
  const auto greenLimit = limit(limits.greenLimit);
  const auto low4 = limit(limits.low4);
  const auto high4 = limit(limits.high4);
  auto red = hn::Zero(sums32);
  auto green = hn::Zero(sums32);
  auto blue = hn::Zero(sums32);
  auto quads = hn::Zero(sums32);
  forEachQuadBlock<block>(pWin, srcStep, w, h, [&](const Vek8u* top, const Vek8u* bottom) {
    const Columns redGreen = loadColumns(top);
    const Columns greenBlue = loadColumns(bottom);
    const auto greens = hn::SaturatedAdd(redGreen.second, greenBlue.first);
    const auto average = hn::AverageRound(redGreen.second, greenBlue.first);
    const auto redBlue = hn::SaturatedAdd(redGreen.first, greenBlue.second);
    const auto all = hn::BitCast(words, hn::SaturatedAdd(greens, redBlue));
    const auto isNeutral = hn::And(hn::Lt(distance(redGreen.first, average), redLimit),
                                   hn::Lt(distance(greenBlue.second, average), blueLimit));
    const auto isModerate = hn::And(hn::Lt(low4, all), hn::Lt(all, high4));
    const auto isWhite =
        hn::And(hn::And(isNeutral, isModerate), hn::Lt(distance(greens, redBlue), greenLimit));
    const auto counted = hn::IfThenElseZero(isWhite, hn::Set(words, 1));
    accumulate(red, hn::BitCast(words, redGreen.first), counted);
    accumulate(green, hn::BitCast(words, greens), counted);
    accumulate(blue, hn::BitCast(words, greenBlue.second), counted);
    accumulate(quads, counted, counted);
  });
  *pCount = 4 * sumOfLanes(sums32, quads);
  return {sumOfLanes(sums32, red), sumOfLanes(sums32, green), sumOfLanes(sums32, blue)};
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr WhiteBalanceKernels whiteBalanceKernels = {_vekiAWB_accum_10RGGB_WGA,
                                                     _vekiAWB_accum_10RGGB_WPD};

}  // namespace vek::VEK_LEVEL
