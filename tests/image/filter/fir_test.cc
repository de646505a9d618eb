#include "vek/image.h"

#include <sys/mman.h>

#include "tests/image/filter/neighbourhood.h"

namespace vek::test {
namespace {

uint8_t scaled(int64_t value, int divisor) {
  if (divisor & (divisor - 1)) {
    const int64_t one = int64_t{1} << 32;
    const int64_t multiplier = one / divisor + (2 * (one % divisor) > divisor);
    // The product may need more than 64 bits: by halves.
    const int64_t low = ((value & (one - 1)) * multiplier + (one >> 1)) >> 32;
    value = (value >> 32) * multiplier + low;
  } else if (divisor > 1) {
    const int shift = __builtin_ctz(static_cast<unsigned>(divisor));
    value = (value + (int64_t{1} << (shift - 1))) >> shift;
  }
  return value < 0 ? 0 : value > 255 ? 255 : static_cast<uint8_t>(value);
}

/// Kernel entry (i, j) lies on column x + anchor.x - i and row y + anchor.y - j.
void convolve(ptrdiff_t channels, const Vek8u* src, int srcStep, Vek8u* dst, int dstStep,
              VekiSize roi, const Vek32s* kernel, VekiSize size, VekiPoint anchor, int divisor) {
  const VekiPoint place = {size.width - 1 - anchor.x, size.height - 1 - anchor.y};
  fromNeighbourhoods(channels, src, srcStep, dst, dstStep, roi, place, [&](auto at) {
    int64_t sum = 0;
    for (int k = 0; k < size.width * size.height; ++k) {
      const int i = k % size.width, j = k / size.width;
      sum += int64_t{kernel[k]} * at(size.width - 1 - i, size.height - 1 - j);
    }
    return scaled(sum, divisor);
  });
}

using Plane = VekStatus(const Vek8u*, int, Vek8u*, int, VekiSize, const Vek32s*, VekiSize,
                        VekiPoint, int);
using Line = VekStatus(const Vek8u*, int, Vek8u*, int, VekiSize, const Vek32s*, int, int, int);

void expectPlane(const char* name, Plane f) {
  const auto define = [channels = channelsOf(name)](auto... a) { convolve(channels, a...); };
  expectDefinition(name, f, define, 250);
}

void expectLine(const char* name, Line f, bool row) {
  const auto define = [channels = channelsOf(name), row](
                          const Vek8u* src, int srcStep, Vek8u* dst, int dstStep, VekiSize roi,
                          const Vek32s* kernel, int n, int anchor, int divisor) {
    const VekiSize size = row ? VekiSize{n, 1} : VekiSize{1, n};
    const VekiPoint place = row ? VekiPoint{anchor, 0} : VekiPoint{0, anchor};
    convolve(channels, src, srcStep, dst, dstStep, roi, kernel, size, place, divisor);
  };
  expectDefinition(name, f, define, 250);
}

TEST(FilterLinear, EqualsTheNaiveConvolution) {
  VEK_C1_C3(expectPlane, vekiFilter, R);
  VEK_C1_C3(expectLine, vekiFilterRow, R, true);
  VEK_C1_C3(expectLine, vekiFilterColumn, R, false);
}

/// Sums beyond 32 bits, and at the limits of 15 and 31 bits: 128 and 8421504 are the largest sums
/// of magnitudes whose products with 255 fit. On white, every result is the same.
TEST(FilterLinear, WideSumsAndTheirLimits) {
  constexpr int n = 70;
  const std::vector<Vek8u> white(3 * n + 600, 255);
  std::vector<std::vector<Vek32s>> kernels = {std::vector<Vek32s>(600, -32768),
                                              std::vector<Vek32s>(600, 32767)};
  for (int more : {0, 1}) {
    kernels.push_back({128, more});
    kernels.push_back({60, 60, 4, 4 + more});
    for (int sign : {-1, 1}) {
      kernels.push_back(std::vector<Vek32s>(258, sign * 32767));
      kernels.back().back() = sign * (8421504 - 257 * 32767 + more);
    }
  }
  for (const std::vector<Vek32s>& kernel : kernels) {
    const int size = static_cast<int>(kernel.size());
    int64_t sum = 0;
    for (Vek32s entry : kernel) sum += entry;
    for (int divisor : {1, 2, 3, 64, 129, 1 << 20, 1 << 30, 50000001, 0x7FFFFFFF}) {
      const std::vector<uint8_t> expected(3 * n, scaled(255 * sum, divisor));
      runAtEveryLevel({{{3 * n, 1, 3 * n}, 1, 0, expected}}, [&](auto dst) {
        EXPECT_EQ(vekiFilterColumn_8u_C3R(white.data(), 1, dst[0], 3 * n, {n, 1}, kernel.data(),
                                          size, size - 1, divisor),
                  0);
      });
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

}  // namespace
}  // namespace vek::test
