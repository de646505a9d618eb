#include "vek/image.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

using Bytes = std::vector<Vek8u>;

TEST(Channels, KnownOrders) {
  const VekiSize pixels = {2, 1};
  const int reversed[] = {2, 1, 0}, opaque[] = {2, 1, 0, 3}, rotated[] = {3, 0, 1, 1};
  Bytes bgr = {1, 2, 3, 4, 5, 6}, bgra(8);
  EXPECT_EQ(vekiPermuteChannels_8u_C3C4R(bgr.data(), 6, bgra.data(), 8, pixels, opaque, 255), 0);
  EXPECT_EQ(bgra, (Bytes{3, 2, 1, 255, 6, 5, 4, 255}));
  EXPECT_EQ(vekiPermuteChannels_8u_C3R(bgr.data(), 6, bgr.data(), 6, pixels, reversed), 0);
  EXPECT_EQ(bgr, (Bytes{3, 2, 1, 6, 5, 4}));
  EXPECT_EQ(vekiPermuteChannels_8u_C4R(bgra.data(), 8, bgra.data(), 8, pixels, rotated), 0);
  EXPECT_EQ(bgra, (Bytes{255, 3, 2, 2, 255, 6, 5, 5}));
  EXPECT_EQ(vekiPermuteChannels_8u_C4C3R(bgra.data(), 8, bgr.data(), 6, pixels, rotated), 0);
  EXPECT_EQ(bgr, (Bytes{2, 255, 3, 5, 255, 6}));
}

TEST(SemiPlanar, OddSizes) {
  const VekiSize size = {3, 3};
  Vek8u y[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9}, cb[4] = {10, 11, 12, 13}, cr[4] = {20, 21, 22, 23};
  const Vek8u* planes[3] = {y, cb, cr};
  const int planeSteps[3] = {3, 2, 2}, pairSteps[2] = {3, 4};
  Bytes luma(9), pairs(8), back(9), backCb(4), backCr(4);
  Vek8u* semiPlanar[2] = {luma.data(), pairs.data()};
  Vek8u* planar[3] = {back.data(), backCb.data(), backCr.data()};
  EXPECT_EQ(vekiYCbCr420ToNV12_8u_P3P2R(planes, planeSteps, semiPlanar, pairSteps, size), 0);
  EXPECT_EQ(luma, Bytes(y, y + 9));
  EXPECT_EQ(pairs, (Bytes{10, 20, 11, 21, 12, 22, 13, 23}));
  EXPECT_EQ(vekiNV12ToYCbCr420_8u_P2P3R(semiPlanar, pairSteps, planar, planeSteps, size), 0);
  EXPECT_EQ(back, Bytes(y, y + 9));
  EXPECT_EQ(backCb, Bytes(cb, cb + 4));
  EXPECT_EQ(backCr, Bytes(cr, cr + 4));
}

}  // namespace
