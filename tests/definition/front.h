// What the raw front end writes.
#pragma once

#include "vek/camera.h"

#include <algorithm>
#include <stddef.h>

namespace vek::test::definition {

/// How a row lies in memory: groups of as many samples in as many bytes.
struct RawLayout {
  int samples, bytes;
};

inline constexpr RawLayout rawLayouts[] = {{1, 1}, {1, 2}, {4, 5}, {2, 3}, {4, 7}};

/// A packed group is the upper bytes of its samples and then a number of all their lower bits.
inline int64_t rawSample(const VekiRawFrontEnd& front, const Vek8u* row, int column) {
  const auto [samples, bytes] = rawLayouts[front.format];
  const Vek8u* const group = row + ptrdiff_t{column / samples} * bytes;
  int64_t rest = 0;
  for (int b = bytes - 1; b >= samples; --b) rest = rest * 256 + group[b];
  const int k = column % samples, restBits = front.bits - 8;
  if (front.format == vekiRawPlain16) return (group[0] + 256 * group[1]) % (1 << front.bits);
  return (int64_t{group[k]} << restBits) + (rest >> k * restBits) % (1 << restBits);
}

inline VekStatus rawFrontEnd(const Vek8u* pSrc, int srcStep, VekiRect region, Vek16u* pDst,
                             int dstStep, const VekiRawFrontEnd* front) {
  for (int y = 0; y < region.height; ++y) {
    const Vek8u* const row = pSrc + ptrdiff_t{region.y + y} * srcStep;
    Vek16u* const dst = pDst + ptrdiff_t{y} * (dstStep / 2);
    for (int x = 0; x < region.width; ++x) {
      const int c = y % 2 * 2 + x % 2;
      const int64_t sample = rawSample(*front, row, region.x + x);
      const int64_t product = std::max<int64_t>(0, sample - front->black[c]) * front->gain[c];
      const int64_t half = int64_t{2} << front->bits;
      dst[x] = static_cast<Vek16u>(std::min<int64_t>(1023, (product + half) / (2 * half)));
    }
  }
  return vekStsNoErr;
}

/// Four times the mean of the samples of a color among the 3 x 3 around a sample that are nearest to it.
inline VekStatus colorMatrix(const Vek16u* pSrc, int srcStep, Vek16u* pDst, int dstStep,
                             VekiSize size, const Vek16s* matrix, int order, int borderValid) {
  const auto colorAt = [&](int x, int y) { return ((x + order) & 1) + ((y + order / 2) & 1); };
  const auto sample = [&](int x, int y) -> int64_t {
    if (borderValid == 0) {
      x = x < 0 ? 1 : x == size.width ? x - 2 : x;
      y = y < 0 ? 1 : y == size.height ? y - 2 : y;
    }
    return pSrc[ptrdiff_t{y} * (srcStep / 2) + x];
  };
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const int own = colorAt(x, y);
      int64_t sum = 1 << 13;
      for (int color = 0; color < 3; ++color) {
        // Colors have their place by how far away samples are: 0, 1 or 2 steps.
        int64_t near[3] = {}, count[3] = {};
        for (int dy = -1; dy <= 1; ++dy) {
          for (int dx = -1; dx <= 1; ++dx) {
            const int distance = dx * dx + dy * dy;
            if (colorAt(x + dx, y + dy) != color) continue;
            near[distance] += sample(x + dx, y + dy), ++count[distance];
          }
        }
        const int nearest = count[0] != 0 ? 0 : count[1] != 0 ? 1 : 2;
        sum += matrix[3 * own + color] * (4 / count[nearest]) * near[nearest];
      }
      pDst[ptrdiff_t{y} * (dstStep / 2) + x] =
          static_cast<Vek16u>(std::clamp<int64_t>(sum >> 14, 0, 1023));
    }
  }
  return vekStsNoErr;
}

}  // namespace vek::test::definition
