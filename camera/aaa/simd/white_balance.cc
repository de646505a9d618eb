#include "camera/aaa/simd/quad_blocks.h"
#include "camera/aaa/white_balance_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

V32u loadHalfQuads(const Vek8u* samples) {
  return hn::BitCast(u32, hn::LoadU(u8, samples));
}

ColorSums sumAll(const Vek16u* pWin, int srcStep, int w, int h) {
  VEK_ASSERT(w % 2 == 0 && h % 2 == 0);
  constexpr int block = static_cast<int>(hn::MaxLanes(u32));
  const auto lowHalf = hn::Set(u32, 0xFFFF);
  auto red = hn::Zero(u32);
  auto green = hn::Zero(u32);
  auto blue = hn::Zero(u32);
  forEachQuadBlock<block>(pWin, srcStep, w, h, [&](const Vek8u* top, const Vek8u* bottom) {
    const auto redGreen = loadHalfQuads(top);
    const auto greenBlue = loadHalfQuads(bottom);
    red = hn::Add(red, hn::And(redGreen, lowHalf));
    green = hn::Add(green, hn::Add(hn::ShiftRight<16>(redGreen), hn::And(greenBlue, lowHalf)));
    blue = hn::Add(blue, hn::ShiftRight<16>(greenBlue));
  });
  return {sumOfLanes(u32, red), sumOfLanes(u32, green), sumOfLanes(u32, blue)};
}

/// Two vectors' first and second samples, one per 16-bit lane, in the same order in both.
struct Columns {
  V16u first, second;
};

Columns loadColumns(const Vek8u* samples) {
  const auto a = loadHalfQuads(samples);
  const auto b = loadHalfQuads(samples + sizeof(Vek32u) * hn::MaxLanes(u32));
  return {hn::OddEven(hn::BitCast(u16, hn::ShiftLeft<16>(b)), hn::BitCast(u16, a)),
          hn::OddEven(hn::BitCast(u16, b), hn::BitCast(u16, hn::ShiftRight<16>(a)))};
}

/// |a - b|, right if the difference fits 16 signed bits.
V16s distance(V16u a, V16u b) {
  return hn::Abs(hn::BitCast(s16, hn::Sub(a, b)));
}

/// sum += the products of lanes, in adjacent pairs.
void accumulate(V32s& sum, V16s values, V16s counted) {
  auto upper = hn::Zero(s32);
  sum = hn::ReorderWidenMulAccumulate(s32, values, counted, sum, upper);
  sum = hn::Add(sum, upper);
}

/// Signed 16-bit lanes are enough for samples of any value. A white point's four samples sum to less
/// than 4092, so none of them, nor a difference between them, is larger. Any other quad fails the test
/// of the saturated sum, which as a signed number is then either at least 4092 or negative.
ColorSums sumWhitePoints(const Vek16u* pWin, int srcStep, int w, int h,
                         const WhitePointLimits& limits, Vek32u* pCount) {
  VEK_ASSERT(w % 2 == 0 && h % 2 == 0);
  constexpr int block = static_cast<int>(hn::MaxLanes(s16));
  const auto limit = [](Vek16u v) { return hn::Set(s16, static_cast<Vek16s>(v)); };
  const auto redLimit = limit(limits.redLimit);
  const auto blueLimit = limit(limits.blueLimit);
  const auto greenLimit = limit(limits.greenLimit);
  const auto low4 = limit(limits.low4);
  const auto high4 = limit(limits.high4);
  auto red = hn::Zero(s32);
  auto green = hn::Zero(s32);
  auto blue = hn::Zero(s32);
  auto quads = hn::Zero(s32);
  forEachQuadBlock<block>(pWin, srcStep, w, h, [&](const Vek8u* top, const Vek8u* bottom) {
    const Columns redGreen = loadColumns(top);
    const Columns greenBlue = loadColumns(bottom);
    const auto greens = hn::SaturatedAdd(redGreen.second, greenBlue.first);
    const auto average = hn::AverageRound(redGreen.second, greenBlue.first);
    const auto redBlue = hn::SaturatedAdd(redGreen.first, greenBlue.second);
    const auto all = hn::BitCast(s16, hn::SaturatedAdd(greens, redBlue));
    const auto isNeutral = hn::And(hn::Lt(distance(redGreen.first, average), redLimit),
                                   hn::Lt(distance(greenBlue.second, average), blueLimit));
    const auto isModerate = hn::And(hn::Lt(low4, all), hn::Lt(all, high4));
    const auto isWhite =
        hn::And(hn::And(isNeutral, isModerate), hn::Lt(distance(greens, redBlue), greenLimit));
    const auto counted = hn::IfThenElseZero(isWhite, hn::Set(s16, 1));
    accumulate(red, hn::BitCast(s16, redGreen.first), counted);
    accumulate(green, hn::BitCast(s16, greens), counted);
    accumulate(blue, hn::BitCast(s16, greenBlue.second), counted);
    accumulate(quads, counted, counted);
  });
  *pCount = 4 * sumOfLanes(s32, quads);
  return {sumOfLanes(s32, red), sumOfLanes(s32, green), sumOfLanes(s32, blue)};
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr WhiteBalanceKernels whiteBalanceKernels = {.sumAll = sumAll,
                                                     .sumWhitePoints = sumWhitePoints};

}  // namespace vek::VEK_LEVEL
