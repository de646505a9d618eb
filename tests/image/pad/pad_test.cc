#include "vek/image.h"

#include <climits>
#include <gtest/gtest.h>
#include <vector>

namespace {

using Bytes = std::vector<Vek8u>;

/// A row with `left` samples before and `right` behind it.
Bytes padded(const Bytes& row, int left, int right, int border) {
  const int width = static_cast<int>(row.size()), all = left + width + right;
  Bytes dst(static_cast<size_t>(all));
  EXPECT_EQ(
      vekiPad_8u_C1R(row.data(), width, {width, 1}, dst.data(), all, {all, 1}, left, 0, border, 9),
      0);
  return dst;
}

TEST(Pad, KnownRows) {
  EXPECT_EQ(padded({1, 2, 3}, 2, 1, vekiBorderConstant), (Bytes{9, 9, 1, 2, 3, 9}));
  EXPECT_EQ(padded({1, 2, 3}, 2, 2, vekiBorderReplicate), (Bytes{1, 1, 1, 2, 3, 3, 3}));
  EXPECT_EQ(padded({1, 2, 3, 4}, 3, 3, vekiBorderMirror), (Bytes{4, 3, 2, 1, 2, 3, 4, 3, 2, 1}));
  // As often as needed.
  EXPECT_EQ(padded({1, 2}, 3, 4, vekiBorderMirror), (Bytes{2, 1, 2, 1, 2, 1, 2, 1, 2}));
  EXPECT_EQ(padded({1, 2, 3}, 5, 6, vekiBorderMirror),
            (Bytes{2, 1, 2, 3, 2, 1, 2, 3, 2, 1, 2, 3, 2, 1}));
  EXPECT_EQ(padded({7}, 2, 1, vekiBorderMirror), (Bytes{7, 7, 7, 7}));
}

TEST(Pad, CornersInPlace) {
  Bytes image(6 * 4, 0);
  Vek8u* const inner = &image[1 * 6 + 2];
  inner[0] = 1, inner[1] = 2, inner[6] = 3, inner[7] = 4;
  EXPECT_EQ(vekiPad_8u_C1R(inner, 6, {2, 2}, image.data(), 6, {6, 4}, 2, 1, vekiBorderMirror, 0),
            0);
  EXPECT_EQ(image, (Bytes{3, 4, 3, 4, 3, 4,  //
                          1, 2, 1, 2, 1, 2,  //
                          3, 4, 3, 4, 3, 4,  //
                          1, 2, 1, 2, 1, 2}));
}

TEST(Pad, WhatDoesNotFit) {
  Vek8u src[4] = {}, dst[16] = {};
  const auto status = [&](VekiSize size, VekiSize dstSize, int left, int top, int step) {
    return vekiPad_8u_C1R(src, 2, size, dst, step, dstSize, left, top, 3, 0);
  };
  const VekiSize two = {2, 2};
  EXPECT_EQ(status(two, {4, 4}, 2, 2, 4), vekStsBadArgErr);  // only the border is wrong
  EXPECT_EQ(status(two, {4, 4}, 3, 2, 0), vekStsSizeErr);
  EXPECT_EQ(status(two, {4, 4}, 2, 3, 0), vekStsSizeErr);
  EXPECT_EQ(status(two, {4, 4}, 2, 2, 0), vekStsStepErr);
  EXPECT_EQ(status(two, {4, 4}, 3, -1, 0), vekStsBadArgErr);
  EXPECT_EQ(status(two, {INT_MAX, INT_MAX}, INT_MAX, 0, 4), vekStsSizeErr);
  EXPECT_EQ(status(two, {INT_MAX, INT_MAX}, 0, INT_MAX - 1, 4), vekStsSizeErr);
}

}  // namespace
