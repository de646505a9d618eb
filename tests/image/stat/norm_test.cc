#include "vek/image.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>

#include "image/stat/norm_scale.h"
#include "tests/campaign/definition.h"

namespace vek::test {
namespace {

__extension__ typedef unsigned __int128 Wide;

constexpr Vek32s top = 0x7fffffff;
constexpr int factors[] = {INT_MIN, -300, -257, -256, -63, -62, -61, -32, -31, -2,  -1,
                           0,       1,    2,    8,    15,  24,  31,  32,  256, 257, INT_MAX};

struct Result {
  VekStatus status;
  Vek32s value;
};

/// sqrt(d / r) * 2^-s to the nearest, by its meaning: the number of odd 2k - 1 up to twice the
/// root.
Result root(uint64_t d, uint64_t r, int s) {
  if (d == 0) return {0, 0};
  const int width = 2 + std::bit_width(d) - 2 * std::clamp(s, -100, 100);
  if (width > 127) return {3, top};
  const int shift = 2 - 2 * std::clamp(s, -100, 60);
  const Wide square = (shift >= 0 ? Wide{d} << shift : Wide{d} >> -shift) / r;
  uint64_t low = 0, high = uint64_t{1} << 32;
  while (high - low > 1) {
    const uint64_t k = (low + high) / 2;
    (Wide{2 * k - 1} * (2 * k - 1) <= square ? low : high) = k;
  }
  return low > uint64_t{top} ? Result{3, top} : Result{0, static_cast<Vek32s>(low)};
}

Result scaled(int kind, uint64_t total, int s) {
  if (kind == 2) return root(total, 1, s);
  const uint64_t v = total & 0xFFFFFFFF;
  if (s >= 0) return {0, static_cast<Vek32s>(v >> std::min(s % 256, 31))};
  const int64_t amount = -int64_t{s} % 256;
  return {0, static_cast<Vek32s>(static_cast<Vek32u>(amount < 32 ? v << amount : 0))};
}

Result quotient(int kind, uint64_t d, uint64_t r, int s) {
  if (kind == 1) d &= 0xFFFFFFFF, r &= 0xFFFFFFFF;
  if (r == 0) return {6, top};
  if (d == 0) return {0, 0};
  if (kind == 2) return root(d, r, s);
  if (kind == 0 && s >= 0) {
    return {0, static_cast<Vek32s>((d * 256 / r + 128) >> std::min(s + 8LL, 63LL))};
  }
  const int bits = std::bit_width(d);
  const int64_t shift = 1 - int64_t{s};
  if (kind == 0) {
    if (shift > 100) return {0, top};
    return {0, static_cast<Vek32s>(std::min<Wide>((((Wide{d} << shift) / r) + 1) / 2, Wide{top}))};
  }
  uint64_t t;
  if (bits - int64_t{s} < 63) {
    t = shift >= 0 ? d << shift : d >> std::min<int64_t>(-shift, 63);
  } else {
    t = d << (63 - bits);
    r >>= std::min<int64_t>(bits - int64_t{s} - 62, 63);
  }
  if (r == 0) return {0, top};
  return {0, static_cast<Vek32s>(static_cast<Vek32u>((t / r + 1) / 2))};
}

/// What a function computes follows from its name.
struct Norm {
  std::string name;

  bool has(const char* part) const { return name.find(part) != std::string::npos; }

  int kind = has("L2") ? 2 : has("L1") ? 1 : 0;
  int channels = has("_C1") ? 1 : 3;
  bool isOfTwo = !has("Norm_");

  struct Image {
    const Vek8u* data;
    ptrdiff_t step;
  };

  uint64_t total(Image a, Image b, VekiSize roi, int channel) const {
    uint64_t result = 0;
    for (int y = 0; y < roi.height; ++y) {
      for (int x = channel; x < roi.width * channels; x += channels) {
        const int other = b.data == nullptr ? 0 : b.data[y * b.step + x];
        const auto v = static_cast<uint64_t>(std::abs(a.data[y * a.step + x] - other));
        result = kind == 0 ? std::max(result, v) : result + (kind == 1 ? v : v * v);
      }
    }
    return result;
  }

  VekStatus define(const Value* v) const {
    const auto image = [&](int i) { return Image{as<const Vek8u*>(v[i]), as<int>(v[i + 1])}; };
    const Image a = image(0), none = {}, b = isOfTwo ? image(2) : none;
    v += isOfTwo ? 4 : 2;
    const auto roi = as<VekiSize>(v[0]);
    const int s = as<int>(v[2]);
    VekStatus worst = 0;
    for (int c = 0; c < channels; ++c) {
      const uint64_t d = total(a, b, roi, c);
      const Result result =
          has("Rel") ? quotient(kind, d, total(b, none, roi, c), s) : scaled(kind, d, s);
      as<Vek32s*>(v[1])[c] = result.value;
      worst = std::max(worst, result.status);
    }
    return worst;
  }
};

TEST(Norm, EqualsTheDefinition) {
  for (const Record& record : recordsOf("stat")) {
    const Norm norm = {record.name};
    expectDefinition(
        record.name, [&](const Value* v) { return norm.define(v); }, 200);
  }
}

/// Long enough for every intermediate sum to be emptied, in rows that overlap to save memory: white
/// against black, so that a lane that ran over would show.
TEST(Norm, DoesNotOverflow) {
  constexpr int width = 30000, height = 500;
  std::vector<Vek8u> white(91000, 255), black(91000, 0);
  const Value step = {nullptr, {1}}, roi = {nullptr, {width, height}};
  for (const Record& record : recordsOf("stat")) {
    const Norm norm = {record.name};
    if (norm.kind == 0 || norm.has("Rel")) continue;
    const uint64_t total = uint64_t{width} * height * (norm.kind == 1 ? 255 : 255 * 255);
    for (int s : {1, 32}) {
      for (Level level : levels()) {
        const LevelScope scope(level);
        Vek32s results[3] = {};
        std::vector<Value> v = {{white.data()}, step, roi, {results}, {nullptr, {s}}};
        if (norm.isOfTwo) v.insert(v.begin(), {{black.data()}, step});
        EXPECT_EQ(record.call(v.data()), 0);
        for (int c = 0; c < norm.channels; ++c) {
          EXPECT_EQ(results[c], scaled(norm.kind, total, s).value) << record.name;
        }
      }
    }
  }
}

/// Totals of every size, which images of a test cannot have.
TEST(Norm, ScalesAnyTotal) {
  Random random(baseSeed());
  for (int round = 0; round < 20000; ++round) {
    const int s = round % 3 == 0 ? factors[random.in(0, static_cast<int>(std::size(factors)) - 1)]
                                 : random.in(-70, 40);
    const auto number = [&](int most) {
      const uint64_t v = random.bits() >> random.in(64 - most, 63);
      const uint64_t near = (v & 0x7FFFFFFF) * (v & 0x7FFFFFFF) + static_cast<uint64_t>(round % 5);
      return most > 32 && random.chance(50) ? std::max<uint64_t>(near, 2) - 2 : v;
    };
    const uint64_t d = std::max<uint64_t>(number(63), 1), r = std::max<uint64_t>(number(63), 1);
    SCOPED_TRACE(testing::Message() << d << " / " << r << " scale " << s);
    const Result single = root(d, 1, s), expected = root(d, r, s);
    Vek32s result;
    ASSERT_EQ(scaleRoot(d, s, &result), single.status == 0);
    ASSERT_EQ(result, single.value);
    ASSERT_EQ(relativeL2(d, r, s, &result), expected.status);
    ASSERT_EQ(result, expected.value);
    const uint64_t d32 = std::max<uint64_t>(number(32), 1), r32 = std::max<uint64_t>(number(32), 1);
    relativeL1(d32, r32, s, &result);
    ASSERT_EQ(result, quotient(1, d32, r32, s).value) << d32 << " / " << r32;
    const uint64_t d8 = (d32 & 255) | 1, r8 = (r32 & 255) | 1;
    relativeInf(d8, r8, s, &result);
    ASSERT_EQ(result, quotient(0, d8, r8, s).value) << d8 << " / " << r8;
  }
}

TEST(Norm, KnownResults) {
  const Vek8u white[12] = {255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255};
  const Vek8u a[3] = {4, 0, 9}, b[3] = {3, 0, 9}, steps[3] = {8, 6, 0};
  const VekiSize square = {2, 2}, pixel = {1, 1};
  Vek32s n[3];
  const int infCases[][2] = {{0, 255}, {4, 15}, {-1, 510}, {32, 0}, {256, 255}, {INT_MIN, 255}};
  for (const auto& c : infCases) {
    EXPECT_EQ(vekiNorm_Inf_8u_C1RSfs(white, 2, square, n, c[0]), 0);
    EXPECT_EQ(n[0], c[1]) << c[0];
  }
  EXPECT_EQ(vekiNorm_L1_8u_C1RSfs(white, 2, square, n, 0), 0);
  EXPECT_EQ(n[0], 1020);
  EXPECT_EQ(vekiNorm_L1_8u_C1RSfs(white, 2, square, n, -30), 0);
  EXPECT_EQ(n[0], 0);
  EXPECT_EQ(vekiNorm_L2_8u_C3RSfs(steps, 3, pixel, n, 4), 0);  // 0.5, 0.375, 0
  EXPECT_EQ(n[0] * 100 + n[1] * 10 + n[2], 100);
  EXPECT_EQ(vekiNorm_L2_8u_C1RSfs(white, 2, square, n, -23), vekStsSqrtWrn);
  EXPECT_EQ(n[0], top);
  EXPECT_EQ(vekiNormRel_Inf_8u_C3RSfs(a, 3, b, 3, pixel, n, -2), vekStsDivByZero);
  EXPECT_EQ(n[0], 1);  // (8 / 3 + 1) >> 1
  EXPECT_EQ(n[1], top);
  EXPECT_EQ(n[2], 0);
  // One channel that does not fit, one of zeros: the zeros decide the status.
  EXPECT_EQ(vekiNormRel_L2_8u_C3RSfs(a, 3, b, 3, pixel, n, -40), vekStsDivByZero);
  EXPECT_EQ(vekiNormRel_L2_8u_C1RSfs(a, 1, b, 1, pixel, n, -40), vekStsSqrtWrn);
}

TEST(Norm, AnswersFaultsInOrder) {  // sizes before steps
  expectOrder("stat", {{"Norm_", "0210"}, {"", "020210"}});
}

}  // namespace
}  // namespace vek::test
