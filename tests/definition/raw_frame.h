// What the raw pipeline writes.
#pragma once

#include "vek/camera.h"

#include <algorithm>
#include <array>

#include "camera/raw/state.h"

namespace vek::test::definition {

using Rgb = std::array<int, 3>;

/// The picture, pixel by pixel, on gamma-mapped samples at (row, column) of the region.
struct RawPicture {
  const Vek16u* src;
  const VekiRggbToYCbCrState& g;

  int at(int row, int column) const {
    return g.gammaTable[0][src[row * (g.srcStep / 2) + column] & 1023];
  }

  static int mean(std::initializer_list<int> values) {
    const int n = static_cast<int>(values.size());
    int sum = n / 2;
    for (int v : values) sum += v;
    return sum / n;
  }

  Rgb quad(int redRow, int redColumn, int blueRow, int blueColumn) const {
    return {at(redRow, redColumn), mean({at(redRow, blueColumn), at(blueRow, redColumn)}),
            at(blueRow, blueColumn)};
  }

  /// The pixel (x, y) of the result before it is rotated.
  Rgb pixel(int x, int y) const {
    if (g.scale == 2) return quad(2 * y, 2 * x, 2 * y + 1, 2 * x + 1);
    if (g.scale == 4) return quad(4 * y + 2, 4 * x + 2, 4 * y + 1, 4 * x + 1);
    const int r = y & ~1, c = x & ~1;
    const bool edge = r == 0 || c == 0 || r == g.srcHeight - 2 || c == g.srcWidth - 2;
    if (g.srcBorderValid == 0 && edge) return quad(r, c, r + 1, c + 1);
    const int beside = mean({at(y, x - 1), at(y, x + 1)});
    const int above = mean({at(y - 1, x), at(y + 1, x)});
    if (x % 2 != y % 2) {
      return y % 2 == 0 ? Rgb{beside, at(y, x), above} : Rgb{above, at(y, x), beside};
    }
    const int cross = mean({at(y - 1, x), at(y + 1, x), at(y, x - 1), at(y, x + 1)});
    const int corners =
        mean({at(y - 1, x - 1), at(y - 1, x + 1), at(y + 1, x - 1), at(y + 1, x + 1)});
    return y % 2 == 0 ? Rgb{at(y, x), cross, corners} : Rgb{corners, cross, at(y, x)};
  }

  /// The pixel at a row and column of the destination.
  Rgb rotated(int row, int column) const {
    const int w = g.dstWidth - 1, h = g.dstHeight - 1;
    const int x[] = {column, h - row, row, w - column}, y[] = {row, column, w - column, h - row};
    return pixel(x[g.rotation], y[g.rotation]);
  }

  uint8_t component(int i, const Rgb& p) const {
    int sum = i == 0 ? 0 : 32768;
    for (int j = 0; j < 3; ++j) sum += g.yccMatrix[3 * i + j] * p[j];
    return static_cast<uint8_t>(std::clamp(sum >> 8, 0, 255));
  }

  void write(Vek8u* const* dst) const {
    for (int y = 0; y < g.dstHeight; ++y) {
      for (int x = 0; x < g.dstWidth; ++x) {
        dst[0][y * g.dstStep[0] + x] = component(0, rotated(y, x));
      }
    }
    const int down = g.chromaFormat == 8 ? 1 : 2;
    for (int y = 0; y < g.dstHeight; y += down) {
      for (int x = 0; x < g.dstWidth; x += 2) {
        const Rgb a = rotated(y, x), b = rotated(y, x + 1);
        // In 4:2:2 these are a and b again, which rounds as their average does.
        const Rgb c = rotated(y + down - 1, x), d = rotated(y + down - 1, x + 1);
        Rgb p;
        for (int j = 0; j < 3; ++j) p[j] = mean({a[j], b[j], c[j], d[j]});
        for (int i : {1, 2}) dst[i][y / down * g.dstStep[i] + x / 2] = component(i, p);
      }
    }
  }
};

inline void rawFrame(Vek16u* src, Vek8u* const* dst, const VekiRggbToYCbCrState* state) {
  for (int i = 0; state->deadPixels != nullptr && i < state->numDeadPixels; ++i) {
    const auto [row, column] = state->deadPixels[i];
    Vek16u* const pixel = src + row * (state->srcStep / 2) + column;
    if (column > 1) {
      *pixel = pixel[-2];
    } else if (row > 1) {
      *pixel = pixel[-state->srcStep];
    }
  }
  RawPicture{src, *state}.write(dst);
}

/// Each component from the samples of its color that are nearest to the site.
inline VekStatus demosaic(const Vek16u* pSrc, int srcStep, Vek8u* pDst, int dstStep, VekiSize size,
                          const Vek8u* table, int channelOrder, int borderValid) {
  const auto sample = [&](int x, int y) -> int {
    if (borderValid == 0) {
      x = x < 0 ? 1 : x == size.width ? x - 2 : x;
      y = y < 0 ? 1 : y == size.height ? y - 2 : y;
    }
    return table[pSrc[ptrdiff_t{y} * (srcStep / 2) + x] & 1023];
  };
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      for (int color = 0; color < 3; ++color) {
        int sum[3] = {}, count[3] = {};  // by distance
        for (int dy = -1; dy <= 1; ++dy) {
          for (int dx = -1; dx <= 1; ++dx) {
            if (((x + dx) & 1) + ((y + dy) & 1) != color) continue;
            const int distance = dx * dx + dy * dy;
            sum[distance] += sample(x + dx, y + dy), ++count[distance];
          }
        }
        const int nearest = count[0] != 0 ? 0 : count[1] != 0 ? 1 : 2;
        const int channel = channelOrder == 0 ? color : 2 - color;
        pDst[ptrdiff_t{y} * dstStep + 3 * x + channel] =
            static_cast<Vek8u>((sum[nearest] + count[nearest] / 2) / count[nearest]);
      }
    }
  }
  return vekStsNoErr;
}

}  // namespace vek::test::definition
