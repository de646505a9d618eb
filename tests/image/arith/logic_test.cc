// Logic, shifts, thresholds, set and copy.
#include <climits>

#include "tests/image/arith/pointwise_test.h"

namespace vek::test {
namespace {

/// Constants of every kind, one a channel; C1 forms take the first.
struct Constants {
  Vek8u v[3], t[3], w[3], high[3];  ///< high is not below t
  Vek32u shift[3];
};

/// Every function with the given constants, which must outlive the result.
std::vector<Pointwise> logicAndShifts(const Constants& k) {
  const auto andOp = [](int a, int b, int) { return a & b; };
  const auto orOp = [](int a, int b, int) { return a | b; };
  const auto xorOp = [](int a, int b, int) { return a ^ b; };
  const auto withValue = [&k](auto op) {
    return [=, &k](int a, int, int c) { return op(a, k.v[c], c); };
  };
  const auto notOp = [](int a, int, int) { return 255 - a; };
  const auto right = [&k](int a, int, int c) { return k.shift[c] > 7 ? 0 : a >> k.shift[c]; };
  const auto left = [&k](int a, int, int c) {
    return k.shift[c] > 7 ? 0 : (a << k.shift[c]) & 255;
  };
  return {{"And C1", 2, 1, onTwo(vekiAnd_8u_C1R), andOp},
          {"And C3", 2, 3, onTwo(vekiAnd_8u_C3R), andOp},
          {"Or C1", 2, 1, onTwo(vekiOr_8u_C1R), orOp},
          {"Or C3", 2, 3, onTwo(vekiOr_8u_C3R), orOp},
          {"Xor C1", 2, 1, onTwo(vekiXor_8u_C1R), xorOp},
          {"Xor C3", 2, 3, onTwo(vekiXor_8u_C3R), xorOp},
          {"AndC C1", 1, 1, onValue(vekiAndC_8u_C1R, k.v[0]), withValue(andOp)},
          {"AndC C3", 1, 3, onValue(vekiAndC_8u_C3R, k.v), withValue(andOp)},
          {"OrC C1", 1, 1, onValue(vekiOrC_8u_C1R, k.v[0]), withValue(orOp)},
          {"OrC C3", 1, 3, onValue(vekiOrC_8u_C3R, k.v), withValue(orOp)},
          {"XorC C1", 1, 1, onValue(vekiXorC_8u_C1R, k.v[0]), withValue(xorOp)},
          {"XorC C3", 1, 3, onValue(vekiXorC_8u_C3R, k.v), withValue(xorOp)},
          {"Not C1", 1, 1, onOne(vekiNot_8u_C1R), notOp},
          {"Not C3", 1, 3, onOne(vekiNot_8u_C3R), notOp},
          {"RShiftC C1", 1, 1, onValue(vekiRShiftC_8u_C1R, k.shift[0]), right},
          {"RShiftC C3", 1, 3, onValue(vekiRShiftC_8u_C3R, k.shift), right},
          {"LShiftC C1", 1, 1, onValue(vekiLShiftC_8u_C1R, k.shift[0]), left},
          {"LShiftC C3", 1, 3, onValue(vekiLShiftC_8u_C3R, k.shift), left}};
}

std::vector<Pointwise> thresholds(const Constants& k) {
  const auto gt = [&k](int a, int, int c) { return a > k.t[c] ? k.t[c] : a; };
  const auto lt = [&k](int a, int, int c) { return a < k.t[c] ? k.t[c] : a; };
  const auto gtVal = [&k](int a, int, int c) { return a > k.t[c] ? k.v[c] : a; };
  const auto ltVal = [&k](int a, int, int c) { return a < k.t[c] ? k.v[c] : a; };
  const auto both = [&k](int a, int, int c) {
    return a < k.t[c] ? k.v[c] : a > k.high[c] ? k.w[c] : a;
  };
  return {
      {"GT C1", 1, 1, onOne(vekiThreshold_GT_8u_C1R, k.t[0]), gt},
      {"GT C3", 1, 3, onOne(vekiThreshold_GT_8u_C3R, k.t), gt},
      {"LT C1", 1, 1, onOne(vekiThreshold_LT_8u_C1R, k.t[0]), lt},
      {"LT C3", 1, 3, onOne(vekiThreshold_LT_8u_C3R, k.t), lt},
      {"GTVal C1", 1, 1, onOne(vekiThreshold_GTVal_8u_C1R, k.t[0], k.v[0]), gtVal},
      {"GTVal C3", 1, 3, onOne(vekiThreshold_GTVal_8u_C3R, k.t, k.v), gtVal},
      {"LTVal C1", 1, 1, onOne(vekiThreshold_LTVal_8u_C1R, k.t[0], k.v[0]), ltVal},
      {"LTVal C3", 1, 3, onOne(vekiThreshold_LTVal_8u_C3R, k.t, k.v), ltVal},
      {"LTValGTVal C1", 1, 1,
       onOne(vekiThreshold_LTValGTVal_8u_C1R, k.t[0], k.v[0], k.high[0], k.w[0]), both},
      {"LTValGTVal C3", 1, 3, onOne(vekiThreshold_LTValGTVal_8u_C3R, k.t, k.v, k.high, k.w), both}};
}

std::vector<Pointwise> setAndCopy(const Constants& k) {
  const auto same = [](int a, int, int) { return a; };
  const auto value = [&k](int, int, int c) { return k.v[c]; };
  const auto set = [](auto function, auto v) {
    return [=](const Images& i) { return function(v, i.dst, i.dstStep, i.roi); };
  };
  return {{"Set C1", 0, 1, set(vekiSet_8u_C1R, k.v[0]), value},
          {"Set C3", 0, 3, set(vekiSet_8u_C3R, k.v), value},
          {"Copy C1", 1, 1, onOne(vekiCopy_8u_C1R), same},
          {"Copy C3", 1, 3, onOne(vekiCopy_8u_C3R), same}};
}

Constants randomConstants(Random& random) {
  Constants k;
  const Vek8u likely[] = {0, 1, 127, 128, 254, 255};
  const Vek32u amounts[] = {0, 1, 3, 5, 7, 8, 9, 31, 32, 256, UINT_MAX};
  const bool equal = random.chance(25);
  const auto byte = [&] {
    return random.chance(40) ? likely[random.in(0, 5)] : static_cast<Vek8u>(random.bits());
  };
  for (int c = 0; c < 3; ++c) {
    k.v[c] = equal && c > 0 ? k.v[0] : byte();
    k.w[c] = byte();
    k.t[c] = byte();
    k.high[c] = std::max(k.t[c], byte());
    k.shift[c] = equal && c > 0 ? k.shift[0] : amounts[random.in(0, 10)];
  }
  return k;
}

TEST(Logic, EqualsTheDefinition) {
  Random random(baseSeed());
  for (int round = 0; round < 40; ++round) {
    const Constants k = randomConstants(random);
    for (const auto& functions : {logicAndShifts(k), thresholds(k), setAndCopy(k)}) {
      for (const Pointwise& op : functions) compare(op, random, 2);
    }
  }
}

/// Every sample against every amount, threshold or value, which the vectors treat each in a lane.
TEST(Logic, AllSamplesAndConstants) {
  Vek8u all[256], dst[256];
  for (int i = 0; i < 256; ++i) all[i] = static_cast<Vek8u>(i);
  for (int i = 0; i < 256; ++i) {
    const Vek8u b = static_cast<Vek8u>(i), top = static_cast<Vek8u>(std::min(i + 1, 255));
    const Vek32u n = static_cast<Vek32u>(i % 10);
    const Constants k = {{7, 8, 9}, {b, 1, b}, {91, 92, 93}, {top, 9, b}, {n, n + 1, n / 2}};
    for (const auto& functions : {logicAndShifts(k), thresholds(k)}) {
      for (const Pointwise& op : functions) {
        if (op.sources != 1) continue;
        for (Level level : levels()) {
          const LevelScope scope(level);
          const int width = 256 / op.channels;
          ASSERT_EQ(op.call({all, 256, nullptr, 0, dst, 256, {width, 1}}), 0);
          for (int x = 0; x < width * op.channels; ++x) {
            ASSERT_EQ(dst[x], op.formula(x, 0, x % op.channels)) << op.name << ' ' << x << ' ' << i;
          }
        }
      }
    }
  }
}

TEST(Logic, RefusesBadArguments) {
  const Constants k = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {4, 6, 6}, {1, 9, 1}};
  const Constants allOut = {{1, 1, 1}, {0, 0, 0}, {7, 8, 9}, {0, 0, 0}, {8, 9, UINT_MAX}};
  for (const Constants* c : {&k, &allOut}) {
    for (const Pointwise& op : logicAndShifts(*c)) expectChecks(op, false);
    for (const Pointwise& op : thresholds(*c)) expectChecks(op, true, false);
    for (const Pointwise& op : setAndCopy(*c)) expectChecks(op, true);
  }
  Vek8u m[16] = {};
  const VekiSize good = {2, 2}, empty = {0, 2};
  EXPECT_EQ(vekiAndC_8u_C3R(m, 0, nullptr, m, 6, good), -8);
  EXPECT_EQ(vekiLShiftC_8u_C3R(m, 6, nullptr, m, 0, good), -8);
  EXPECT_EQ(vekiRShiftC_8u_C3R(m, 6, nullptr, m, 6, empty), -8);
  EXPECT_EQ(vekiThreshold_GT_8u_C3R(m, 6, m, 6, empty, nullptr), -8);
  EXPECT_EQ(vekiThreshold_LTVal_8u_C3R(m, 6, m, 6, empty, m, nullptr), -8);
  EXPECT_EQ(vekiThreshold_LTValGTVal_8u_C3R(m, 6, m, 6, empty, m, m, nullptr, m), -8);
  // The value pointer of Set comes last, the order of the thresholds too.
  EXPECT_EQ(vekiSet_8u_C3R(nullptr, nullptr, 6, good), -8);
  EXPECT_EQ(vekiSet_8u_C3R(nullptr, m, 0, empty), -6);
  EXPECT_EQ(vekiSet_8u_C3R(nullptr, m, 0, good), -14);
  EXPECT_EQ(vekiSet_8u_C3R(nullptr, m, 6, good), -8);
  EXPECT_EQ(vekiThreshold_LTValGTVal_8u_C1R(m, 2, m, 2, empty, 50, 1, 49, 2), -6);
  EXPECT_EQ(vekiThreshold_LTValGTVal_8u_C1R(m, 2, m, 2, good, 50, 1, 49, 2), -18);
  EXPECT_EQ(vekiThreshold_LTValGTVal_8u_C1R(m, 2, m, 2, good, 50, 1, 50, 2), 0);
  const Vek8u low[3] = {5, 5, 5}, high[3] = {5, 9, 4};
  EXPECT_EQ(vekiThreshold_LTValGTVal_8u_C3R(m, 6, m, 6, good, low, m, high, m), -18);
}

/// Thresholds walk any steps: upwards, or every row onto the same one, in which the last row stays.
TEST(Threshold, AcceptsAnyStep) {
  Vek8u src[3][100], dst[3][100];
  for (int i = 0; i < 300; ++i) src[i / 100][i % 100] = static_cast<Vek8u>(i);
  for (Level level : levels()) {
    const LevelScope scope(level);
    EXPECT_EQ(vekiThreshold_GT_8u_C1R(src[0], 100, dst[2], -100, {100, 3}, 77), 0);
    for (int y = 0; y < 3; ++y) {
      for (int x = 0; x < 100; ++x) EXPECT_EQ(dst[2 - y][x], std::min<int>(src[y][x], 77));
    }
    EXPECT_EQ(vekiThreshold_LTVal_8u_C1R(src[2], -100, dst[1], 0, {100, 3}, 50, 9), 0);
    for (int x = 0; x < 100; ++x) EXPECT_EQ(dst[1][x], src[0][x] < 50 ? 9 : src[0][x]);
    EXPECT_EQ(vekiThreshold_GT_8u_C1R(src[0], INT_MIN, dst[0], INT_MAX, {100, 1}, 77), 0);
  }
}

TEST(Logic, KnownResults) {
  const Vek8u src[3] = {200, 50, 129};
  const Vek32u amounts[3] = {1, 9, 1};
  Vek8u dst[3];
  const VekiSize pixel = {1, 1};
  EXPECT_EQ(vekiLShiftC_8u_C1R(src, 1, 1, dst, 1, pixel), 0);
  EXPECT_EQ(dst[0], 144);
  EXPECT_EQ(vekiRShiftC_8u_C3R(src, 3, amounts, dst, 3, pixel), 0);
  EXPECT_EQ(dst[0] << 16 | dst[1] << 8 | dst[2], 100 << 16 | 0 << 8 | 64);
}

}  // namespace
}  // namespace vek::test
