// The differential body of every pointwise function: a call against a formula for one sample.
#pragma once

#include "vek/image.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "tests/footprint/pointwise.h"
#include "tests/support/differential.h"

namespace vek::test {

/// The image arguments of a call; a function without a source, or with one, ignores the others.
struct Images {
  const Vek8u* a;
  int aStep;
  const Vek8u* b;
  int bStep;
  Vek8u* dst;
  int dstStep;
  VekiSize roi;
};

struct Pointwise {
  std::string name;
  int sources;
  int channels;
  std::function<VekStatus(const Images&)> call;
  std::function<int(int a, int b, int channel)> formula;
};

/// Calls of the usual argument lists; `tail` are the arguments behind the region.
template <class Function, class... Tail>
auto onTwo(Function function, Tail... tail) {
  return [=](const Images& i) {
    return function(i.a, i.aStep, i.b, i.bStep, i.dst, i.dstStep, i.roi, tail...);
  };
}
template <class Function, class... Tail>
auto onOne(Function function, Tail... tail) {
  return [=](const Images& i) { return function(i.a, i.aStep, i.dst, i.dstStep, i.roi, tail...); };
}
template <class Function, class Value, class... Tail>
auto onValue(Function function, Value value, Tail... tail) {
  return [=](const Images& i) {
    return function(i.a, i.aStep, value, i.dst, i.dstStep, i.roi, tail...);
  };
}

/// One call on random images: any step, any alignment, apart or in place on either source.
inline void compareOnce(const Pointwise& op, Random& random) {
  const VekiSize roi = {random.size(300), random.in(1, 5)};
  const int row = roi.width * op.channels;
  const auto step = [&] { return row + (random.chance(50) ? 0 : random.in(1, 70)); };
  const int aStep = step(), place = random.in(0, 3);
  const int bStep = random.chance(50) ? aStep : step();
  const int dstStep = place == 1 ? aStep : place == 2 ? bStep : random.chance(50) ? aStep : step();
  SCOPED_TRACE(testing::Message() << op.name << ' ' << roi.width << 'x' << roi.height << " steps "
                                  << aStep << ' ' << bStep << ' ' << dstStep << " place " << place);
  Buffer a(footprint::pointwise(roi, op.channels, aStep));
  Buffer b(footprint::pointwise(roi, op.channels, bStep));
  a.fill(random, allPatterns[random.in(0, 5)]);
  b.fill(random, allPatterns[random.in(0, 5)]);
  const std::vector<uint8_t> aBytes = a.contents(), bBytes = b.contents();
  std::vector<uint8_t> expected(aBytes.size());
  for (size_t i = 0; i < expected.size(); ++i) {
    const int channel = static_cast<int>(i % static_cast<size_t>(op.channels));
    expected[i] = static_cast<uint8_t>(op.formula(aBytes[i], bBytes[i], channel));
  }
  const Area area = footprint::pointwise(roi, op.channels, dstStep);
  const bool offset = random.chance(50);
  const size_t by = offset ? static_cast<size_t>(random.in(0, 63)) : 0;
  runAtEveryLevel({{area, offset ? size_t{64} : size_t{1}, by, expected}}, [&](auto dst) {
    Images images = {a.data(), aStep, b.data(), bStep, dst[0], dstStep, roi};
    const std::vector<uint8_t>& from = place == 1 ? aBytes : bBytes;
    for (int y = 0; place != 0 && y < roi.height; ++y) {
      memcpy(dst[0] + y * dstStep, from.data() + y * row, static_cast<size_t>(row));
    }
    if (place == 1) images.a = dst[0];
    if (place == 2) images.b = dst[0];
    EXPECT_EQ(op.call(images), vekStsNoErr);
  });
}

inline void compare(const Pointwise& op, Random& random, int rounds) {
  for (int i = 0; i < rounds && !testing::Test::HasFailure(); ++i) compareOnce(op, random);
}

/// Calls on a 2 x 2 image with one or two faults; each fault hides the ones after it in the order
/// that `sizeFirst` tells (sizes before steps). `stepChecked` tells whether steps are tested.
inline void expectChecks(const Pointwise& op, bool sizeFirst, bool stepChecked = true) {
  Vek8u a[64] = {}, b[64] = {}, dst[64] = {};
  const Images good = {a, 8, b, 8, dst, 8, {2, 2}};
  const auto status = [&](auto... change) {
    Images images = good;
    (change(images), ...);
    memset(dst, 0x5A, sizeof(dst));
    const VekStatus result = op.call(images);
    const auto touched = [](Vek8u byte) { return byte != 0x5A; };
    EXPECT_EQ(std::any_of(dst, dst + sizeof(dst), touched), result == 0);
    return result;
  };
  const auto noA = [](Images& i) { i.a = nullptr; };
  const auto noB = [](Images& i) { i.b = nullptr; };
  const auto noDst = [](Images& i) { i.dst = nullptr; };
  const auto stepA = [](Images& i) { i.aStep = 0; };
  const auto stepB = [](Images& i) { i.bStep = -8; };
  const auto stepDst = [](Images& i) { i.dstStep = -2147483647 - 1; };
  const auto width = [](Images& i) { i.roi.width = -2147483647 - 1; };
  const auto height = [](Images& i) { i.roi.height = 0; };
  SCOPED_TRACE(op.name);
  EXPECT_EQ(status(), 0);
  EXPECT_EQ(status(noDst), -8);
  EXPECT_EQ(status(noDst, stepDst, width), -8);
  if (op.sources >= 1) {
    EXPECT_EQ(status(noA, stepDst, height), -8);
  }
  if (op.sources >= 2) {
    EXPECT_EQ(status(noB, stepA), -8);
  }
  EXPECT_EQ(status(width), -6);
  EXPECT_EQ(status(height), -6);
  if (!stepChecked) return;
  const VekStatus both = sizeFirst ? -6 : -14;
  EXPECT_EQ(status(stepDst), -14);
  EXPECT_EQ(status(stepDst, width), both);
  if (op.sources >= 1) {
    EXPECT_EQ(status(stepA, height), both);
  }
  if (op.sources >= 2) {
    EXPECT_EQ(status(stepB, height), both);
  }
}

}  // namespace vek::test
