#include "vek/image.h"

#include <sys/mman.h>

#include "tests/image/filter/neighbourhood.h"

namespace vek::test {
namespace {

enum class Form { plane, row, column };

/// A kernel with the neighbourhood it reads: entry (i, j) lies on column x + anchor.x - i.
struct Kernel {
  VekiSize size;
  VekiPoint anchor;
  int divisor;
  std::vector<Vek32s> entries;
};

VekStatus filter(Form form, const Neighbourhood& a, const Kernel& k, const Vek8u* src, Vek8u* dst) {
  if (form == Form::plane) {
    const auto f = a.channels == 1 ? vekiFilter_8u_C1R : vekiFilter_8u_C3R;
    return f(src, a.srcStep, dst, a.dstStep, a.roi, k.entries.data(), k.size, k.anchor, k.divisor);
  }
  const bool row = form == Form::row;
  const auto f = row ? (a.channels == 1 ? vekiFilterRow_8u_C1R : vekiFilterRow_8u_C3R)
                     : (a.channels == 1 ? vekiFilterColumn_8u_C1R : vekiFilterColumn_8u_C3R);
  return f(src, a.srcStep, dst, a.dstStep, a.roi, k.entries.data(),
           row ? k.size.width : k.size.height, row ? k.anchor.x : k.anchor.y, k.divisor);
}

uint8_t scaled(int64_t sum, int divisor) {
  __int128 value = sum;
  if (divisor & (divisor - 1)) {
    const int64_t one = int64_t{1} << 32;
    const int64_t multiplier = one / divisor + (2 * (one % divisor) > divisor);
    value = (value * multiplier + (one >> 1)) >> 32;
  } else if (divisor > 1) {
    const int shift = __builtin_ctz(static_cast<unsigned>(divisor));
    value = (value + (1 << (shift - 1))) >> shift;
  }
  return value < 0 ? 0 : value > 255 ? 255 : static_cast<uint8_t>(value);
}

void compareFilter(Form form, int channels, const Kernel& k, VekiSize most, Random& random,
                   Pattern pattern) {
  SCOPED_TRACE(testing::Message() << "divisor " << k.divisor);
  Neighbourhood a = randomNeighbourhood(random, channels, k.size, most.width, most.height);
  a.anchor = {k.size.width - 1 - k.anchor.x, k.size.height - 1 - k.anchor.y};
  const auto naive = [&](auto at, int c) {
    int64_t sum = 0;
    for (int j = 0; j < k.size.height; ++j) {
      for (int i = 0; i < k.size.width; ++i) {
        sum += int64_t{k.entries[static_cast<size_t>(j * k.size.width + i)]} *
               at(k.size.width - 1 - i, k.size.height - 1 - j, c);
      }
    }
    return scaled(sum, k.divisor);
  };
  compareWithNaive(a, random, pattern, naive,
                   [&](auto src, auto dst) { return filter(form, a, k, src, dst); });
}

Kernel randomKernel(Random& random, Form form, int side, int magnitude) {
  Kernel k;
  k.size = {form == Form::column ? 1 : random.in(2, side),
            form == Form::row ? 1 : random.in(2, side)};
  k.anchor = {random.in(0, k.size.width - 1), random.in(0, k.size.height - 1)};
  k.entries.resize(static_cast<size_t>(k.size.width * k.size.height));
  int sum = 0;
  for (Vek32s& entry : k.entries) {
    entry = random.chance(20) ? magnitude : random.in(-magnitude / 2 - 1, magnitude);
    sum += entry;
  }
  // Divisors that make mid-grey results, every power of two, and everything up to 2^31 - 1.
  const int shift = random.in(0, 30);
  const int choices[] = {sum > 0 ? sum : 1, 1 << shift, random.in(1, 50), random.in(1, 0x7FFFFFFF)};
  k.divisor = choices[random.in(0, 3)];
  return k;
}

TEST(FilterLinear, EqualsTheNaiveConvolution) {
  Random random(baseSeed());
  for (int round = 0; round < 600 && !HasFailure(); ++round) {
    const Form form = static_cast<Form>(random.in(0, 2));
    const int magnitudes[] = {2, 12, 300, 32767};
    const Kernel k =
        randomKernel(random, form, form == Form::plane ? 7 : 12, magnitudes[random.in(0, 3)]);
    compareFilter(form, random.in(0, 1) * 2 + 1, k, {150, 4}, random, allPatterns[random.in(0, 5)]);
  }
}

/// Sums beyond 32 bits, and at the limits of 15 and 31 bits: 128 and 8421504 are the largest sums
/// of magnitudes whose products with 255 fit.
TEST(FilterLinear, WideSumsAndTheirLimits) {
  Random random(baseSeed() + 1);
  for (int divisor : {1, 2, 3, 64, 1 << 20, 1 << 30, 50000001, 0x7FFFFFFF}) {
    for (Vek32s each : {-32768, 32767}) {
      const Kernel k = {{30, 20}, {3, 4}, divisor, std::vector<Vek32s>(600, each)};
      compareFilter(Form::plane, 1, k, {70, 2}, random, Pattern::ones);
    }
    for (int more : {0, 1}) {
      compareFilter(Form::row, 3, {{2, 1}, {0, 0}, divisor, {100, 28 + more}}, {70, 2}, random,
                    Pattern::ones);
      Kernel k = {{258, 1}, {0, 0}, divisor, std::vector<Vek32s>(258, -32767)};
      k.entries[257] = 8421504 - 257 * 32767 + more;
      compareFilter(Form::row, 1, k, {70, 2}, random, Pattern::ones);
      for (Vek32s& entry : k.entries) entry = -entry;
      k.entries[257] = -k.entries[257];
      compareFilter(Form::row, 1, k, {70, 2}, random, Pattern::ones);
    }
  }
}

TEST(FilterLinear, KernelIsReversedAndOnlyRead) {
  // In read-only memory that ends with the kernel.
  const size_t page = 4096;
  auto* memory = static_cast<Vek8u*>(
      mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  auto* kernel = reinterpret_cast<Vek32s*>(memory + page) - 4;
  kernel[0] = 1;
  kernel[3] = 2;
  mprotect(memory, page, PROT_READ);
  mprotect(memory + page, page, PROT_NONE);
  const Vek8u src[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  Vek8u dst = 0;
  ASSERT_EQ(vekiFilter_8u_C1R(src + 5, 4, &dst, 4, {1, 1}, kernel, {2, 2}, {1, 1}, 1), 0);
  EXPECT_EQ(dst, src[10 - 0 - 0] + 2 * src[5]);  // K[0][0] at (x + 1, y + 1), K[1][1] at (x, y)
  ASSERT_EQ(vekiFilterRow_8u_C1R(src + 5, 4, &dst, 4, {1, 1}, kernel, 3, 2, 1), 0);
  EXPECT_EQ(dst, src[7]);
  ASSERT_EQ(vekiFilterColumn_8u_C1R(src + 5, 4, &dst, 4, {1, 1}, kernel, 3, 1, 1), 0);
  EXPECT_EQ(dst, src[9]);
  munmap(memory, 2 * page);
}

TEST(FilterLinear, RefusesBadArguments) {
  const Vek8u src[256] = {};
  Vek8u dst[256] = {};
  const Vek32s good[4] = {-32768, 1, 2, 32767}, low[4] = {0, 0, 0, -32769}, high[4] = {0, 32768};
  struct Case {
    const Vek8u* src;
    int srcStep, dstStep;
    VekiSize roi;
    const Vek32s* kernel;
    int width, height, anchor, divisor;
    VekStatus status;
  };
  const Vek8u* const in = src + 100;
  const Case cases[] = {
      {in, 16, 16, {4, 4}, good, 2, 2, 1, 7, vekStsNoErr},
      {nullptr, 0, 16, {4, 4}, good, 2, 2, 0, 1, vekStsNullPtrErr},
      {in, 16, 0, {4, 4}, nullptr, 2, 2, 0, 1, vekStsNullPtrErr},
      {in, 0, 16, {0, 4}, good, 2, 2, 0, 1, vekStsStepErr},
      {in, 16, -16, {4, 4}, good, 1, 1, 0, 1, vekStsStepErr},
      {in, 16, 16, {4, 0}, good, 2, 2, 2, 1, vekStsSizeErr},
      {in, 16, 16, {4, 4}, good, 1, 1, 1, 0, vekStsSizeErr},
      {in, 16, 16, {4, 4}, good, 2, 2, 2, 0, vekStsAnchorErr},
      {in, 16, 16, {4, 4}, good, 2, 2, -1, 1, vekStsAnchorErr},
      {in, 16, 16, {4, 4}, low, 2, 2, 0, 0, vekStsDivisorErr},
      {in, 16, 16, {4, 4}, low, 2, 2, 0, 1, vekStsCoeffRangeErr},
      {in, 16, 16, {4, 4}, high, 2, 2, 0, 1, vekStsCoeffRangeErr},
  };
  for (const Case& c : cases) {
    for (auto f : {vekiFilter_8u_C1R, vekiFilter_8u_C3R}) {
      EXPECT_EQ(f(c.src, c.srcStep, dst, c.dstStep, c.roi, c.kernel, {c.width, c.height},
                  {c.anchor, 0}, c.divisor),
                c.status);
      EXPECT_EQ(f(c.src, c.srcStep, dst, c.dstStep, c.roi, c.kernel, {c.width, c.height},
                  {0, c.anchor}, c.divisor),
                c.status);
    }
    for (auto f : {vekiFilterRow_8u_C1R, vekiFilterRow_8u_C3R, vekiFilterColumn_8u_C1R,
                   vekiFilterColumn_8u_C3R}) {
      const int size = c.width == 2 ? 4 : 1;  // four entries, as the two-dimensional ones
      const int anchor = c.anchor == 2 ? 4 : c.anchor;
      EXPECT_EQ(f(c.src, c.srcStep, dst, c.dstStep, c.roi, c.kernel, size, anchor, c.divisor),
                c.status);
    }
  }
  for (VekiSize kernel : {VekiSize{1, 3}, VekiSize{3, 1}}) {
    EXPECT_EQ(vekiFilter_8u_C1R(in, 16, dst, 16, {4, 4}, good, kernel, {0, 0}, 1), vekStsSizeErr);
  }
}

}  // namespace
}  // namespace vek::test
