// What random cases of the filters do not reach.
#include "tests/definition/filter.h"

#include "vek/image.h"

#include <sys/mman.h>
#include <utility>

#include "tests/support/differential.h"

namespace vek::test {
namespace {

/// Sums that just fit 32 bits, or do not, and a factor of 0, over memory whose rows overlap.
TEST(FilterBox, HugeMasks) {
  for (const auto& [width, side] : {std::pair{40, 4103}, {40, 4200}, {3, 92682}}) {
    std::vector<Vek8u> src(static_cast<size_t>(2 * side + 3 * width + 3));
    for (size_t i = 0; i < src.size(); ++i) src[i] = i % 23 == 0 ? Vek8u(i / 23) : 255;
    const VekiSize roi = {width, 1}, mask = {side, side};
    std::vector<Vek8u> expected(static_cast<size_t>(width));  // 0 where 2^32 / area rounds to 0
    if (side < 65536) {
      definition::box<1>(src.data(), 1, expected.data(), width, roi, mask, {0, 0});
    }
    runAtEveryLevel({{{width, 1, width}, 1, 0, expected}}, [&](auto dst) {
      EXPECT_EQ(vekiFilterBox_8u_C1R(src.data(), 1, dst[0], roi.width, roi, mask, {0, 0}), 0);
    });
  }
}

/// A counter of black samples that just fits, or does not, the bits that it has.
TEST(FilterMedian, CountsUniformWindows) {
  const std::vector<Vek8u> black(700, 0);
  const std::vector<uint8_t> expected(256, 0);
  for (VekiSize mask : {VekiSize{15, 17}, {7, 37}, {33, 85}, {129, 255}, {131, 255}}) {
    runAtEveryLevel({{{256, 1, 256}, 1, 0, expected}}, [&](auto dst) {
      EXPECT_EQ(vekiFilterMedian_8u_C1R(black.data(), 1, dst[0], 256, {256, 1}, mask, {0, 0}), 0);
    });
  }
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
      const std::vector<uint8_t> expected(3 * n, definition::scaledSum(255 * sum, divisor));
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
