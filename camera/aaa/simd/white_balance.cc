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

/// What has to move by a sample is loaded from there, which takes no more than a copy of a register.
Columns loadColumns(const Vek8u* samples) {
  const auto load = [=](ptrdiff_t sample) {
    return hn::BitCast(u16, hn::LoadU(u8, samples + sample * ptrdiff_t{sizeof(Vek16u)}));
  };
  constexpr ptrdiff_t lanes = hn::MaxLanes(u16);
  return {hn::OddEven(load(lanes - 1), load(0)), hn::OddEven(load(lanes), load(1))};
}

/// 0 in the lanes where a and b, modulo 65536, are less than the limit apart.
V16u outside(V16u a, V16u b, Vek16u limit) {
  const V16s distance = hn::Abs(hn::BitCast(s16, hn::Sub(a, b)));
  return hn::SaturatedSub(hn::BitCast(u16, distance), hn::Set(u16, static_cast<Vek16u>(limit - 1)));
}

/// 16-bit lanes are enough for samples of any value. A white point's four samples sum to less than 4092,
/// so none of them, nor a difference between them, is larger. Any other quad fails the test of the
/// saturated sum. All tests give 0 where they are passed, which takes fewer instructions than
/// comparisons; what is added up is multiplied by -1, the mask of the lanes that passed all.
ColorSums sumWhitePoints(const Vek16u* pWin, int srcStep, int w, int h,
                         const WhitePointLimits& limits, Vek32u* pCount) {
  VEK_ASSERT(w % 2 == 0 && h % 2 == 0);
  *pCount = 0;
  if (limits.high4 < limits.low4 + 2) return {0, 0, 0};
  constexpr int block = static_cast<int>(hn::MaxLanes(s16));
  const V16u lowest = hn::Set(u16, static_cast<Vek16u>(limits.low4 + 1));
  const V16u range = hn::Set(u16, static_cast<Vek16u>(limits.high4 - limits.low4 - 2));
  V32s red = hn::Zero(s32), green = hn::Zero(s32), blue = hn::Zero(s32), quads = hn::Zero(s32);
  forEachQuadBlock<block>(pWin, srcStep, w, h, [&](const Vek8u* top, const Vek8u* bottom) {
    const Columns redGreen = loadColumns(top);
    const Columns greenBlue = loadColumns(bottom);
    const V16u greens = hn::SaturatedAdd(redGreen.second, greenBlue.first);
    const V16u average = hn::AverageRound(redGreen.second, greenBlue.first);
    const V16u redBlue = hn::SaturatedAdd(redGreen.first, greenBlue.second);
    const V16u all = hn::SaturatedAdd(greens, redBlue);
    const V16u failed = hn::Or(hn::Or(outside(average, redGreen.first, limits.redLimit),
                                      outside(average, greenBlue.second, limits.blueLimit)),
                               hn::Or(outside(redBlue, greens, limits.greenLimit),
                                      hn::SaturatedSub(hn::Sub(all, lowest), range)));
    const V16s isWhite = hn::BitCast(s16, hn::VecFromMask(u16, hn::Eq(failed, hn::Zero(u16))));
    red = plusProducts(red, hn::BitCast(s16, redGreen.first), isWhite);
    green = plusProducts(green, hn::BitCast(s16, greens), isWhite);
    blue = plusProducts(blue, hn::BitCast(s16, greenBlue.second), isWhite);
    quads = plusProducts(quads, isWhite, isWhite);
  });
  *pCount = 4 * sumOfLanes(s32, quads);
  return {sumOfLanes(s32, hn::Neg(red)), sumOfLanes(s32, hn::Neg(green)),
          sumOfLanes(s32, hn::Neg(blue))};
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr WhiteBalanceKernels whiteBalanceKernels = {.sumAll = sumAll,
                                                     .sumWhitePoints = sumWhitePoints};

}  // namespace vek::VEK_LEVEL
