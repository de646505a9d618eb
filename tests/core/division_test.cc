#include "vek/vek.h"

#include <gtest/gtest.h>

#include "tests/support/random.h"

namespace {

TEST(Division, EqualsTheProcessors) {
  vek::test::Random random(1);
  for (int i = 0; i < 200000; ++i) {
    const Vek32u n = static_cast<Vek32u>(random.bits()) >> random.in(0, 31);
    const Vek32u d = static_cast<Vek32u>(random.bits()) >> random.in(0, 31);
    const auto expectEqual = [](auto divide, Vek32u num, Vek32u den, auto rem) {
      ASSERT_EQ(divide(num, den, &rem), den == 0 ? 0 : num / den) << num << " / " << den;
      ASSERT_EQ(rem, den == 0 ? num : num % den) << num << " / " << den;
    };
    expectEqual(_vekDiv_32u, n, d, Vek32u{1});
    expectEqual(_vekDiv_16u, n & 0xFFFF, d & 0xFFFF, Vek16u{1});
    expectEqual(_vekDiv_8u, n & 0xFF, d & 0xFF, Vek8u{1});
  }
}

TEST(Division, ReducesArguments) {
  EXPECT_EQ(_vekDiv_16u(0x12345, 0x10003, nullptr), 3009u);  // 0x2345 / 3
  Vek8u r = 0;
  EXPECT_EQ(_vekDiv_8u(300, 7, &r), 6u);  // 44 / 7
  EXPECT_EQ(r, 2u);
  EXPECT_EQ(_vekDiv_8u(0x1FE, 0x100, &r), 0u);  // 254 / 0
  EXPECT_EQ(r, 254u);
}

}  // namespace
