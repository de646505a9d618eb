#include "vek/vek.h"

#include <gtest/gtest.h>

#include "tests/support/random.h"

namespace {

TEST(Division, KnownQuotients) {
  Vek32u r32 = 0;
  EXPECT_EQ(_vekDiv_32u(7, 9, &r32), 0u);
  EXPECT_EQ(r32, 7u);
  EXPECT_EQ(_vekDiv_32u(0xFFFFFFFFu, 1, &r32), 0xFFFFFFFFu);
  EXPECT_EQ(r32, 0u);
  Vek16u r16 = 0;
  EXPECT_EQ(_vekDiv_16u(0x12345, 0x10003, &r16), 3009u);  // 0x2345 / 3
  EXPECT_EQ(r16, 2u);
  Vek8u r8 = 0;
  EXPECT_EQ(_vekDiv_8u(300, 7, &r8), 6u);  // 44 / 7
  EXPECT_EQ(r8, 2u);
}

TEST(Division, ZeroDivisorReturns) {
  Vek32u r32 = 1;
  EXPECT_EQ(_vekDiv_32u(0x80000001u, 0, &r32), 0u);
  EXPECT_EQ(r32, 0x80000001u);
  Vek8u r8 = 1;
  EXPECT_EQ(_vekDiv_8u(0x1FE, 0x100, &r8), 0u);  // both reduced to 8 bits: 254 / 0
  EXPECT_EQ(r8, 254u);
}

TEST(Division, EqualsTheProcessors) {
  for (unsigned n = 0; n < 256; ++n) {
    for (unsigned d = 1; d < 256; ++d) {
      Vek8u r = 0;
      ASSERT_EQ(_vekDiv_8u(n, d, &r), n / d);
      ASSERT_EQ(r, n % d);
    }
  }
  vek::test::Random random(1);
  for (int i = 0; i < 100000; ++i) {
    const Vek32u n = static_cast<Vek32u>(random.bits()) >> random.in(0, 31);
    const Vek32u d = (static_cast<Vek32u>(random.bits()) >> random.in(0, 31)) | 1u;
    Vek32u r = 0;
    ASSERT_EQ(_vekDiv_32u(n, d, &r), n / d) << n << " / " << d;
    ASSERT_EQ(r, n % d);
    ASSERT_EQ(_vekDiv_16u(n, d, nullptr), (n & 0xFFFF) / (d & 0xFFFF));
  }
}

}  // namespace
