// A page that was photographed at an angle is straightened.
#include <algorithm>
#include <cmath>
#include <random>
#include <utility>
#include <vek/image.h>

#include "picture.h"

namespace gallery {
namespace {

struct Corner {
  double x, y;
};

/// The nine coefficients that take four corners to four others, the last one 1: eight equations, by
/// elimination with the largest pivot.
std::array<double, 9> perspective(const Corner (&from)[4], const Corner (&to)[4]) {
  double rows[8][9] = {};
  for (int i = 0; i < 4; ++i) {
    const auto [x, y] = from[i];
    const double equation[2][9] = {{x, y, 1, 0, 0, 0, -x * to[i].x, -y * to[i].x, to[i].x},
                                   {0, 0, 0, x, y, 1, -x * to[i].y, -y * to[i].y, to[i].y}};
    for (int k = 0; k < 2; ++k) std::copy_n(equation[k], 9, rows[2 * i + k]);
  }
  for (int pivot = 0; pivot < 8; ++pivot) {
    int largest = pivot;
    for (int row = pivot; row < 8; ++row) {
      if (std::abs(rows[row][pivot]) > std::abs(rows[largest][pivot])) largest = row;
    }
    std::swap_ranges(rows[pivot], rows[pivot] + 9, rows[largest]);
    for (int row = 0; row < 8; ++row) {
      if (row == pivot) continue;
      const double factor = rows[row][pivot] / rows[pivot][pivot];
      for (int k = pivot; k < 9; ++k) rows[row][k] -= factor * rows[pivot][k];
    }
  }
  std::array<double, 9> coeffs = {};
  for (size_t i = 0; i < 8; ++i) coeffs[i] = rows[i][8] / rows[i][i];
  coeffs[8] = 1;
  return coeffs;
}

/// Lines of words, a heading and a small chart.
Picture page(int width, int height) {
  Picture paper(width, height, {250, 248, 240});
  std::minstd_rand random(7);
  paper.rectangle(width / 8, height / 16, width / 2, 10, {60, 60, 90});
  for (int y = height / 7; y < height * 15 / 16; y += 16) {
    if (y > height / 2 && y < height * 3 / 4) continue;
    for (int x = width / 8; x < width * 7 / 8;) {
      const int word = 8 + static_cast<int>(random() % 28);
      paper.rectangle(x, y, std::min(word, width * 7 / 8 - x), 7, {70, 70, 70});
      x += word + 6;
    }
  }
  for (int i = 0; i < 8; ++i) {
    const int bar = 10 + static_cast<int>(random() % 60);
    paper.rectangle(width / 8 + i * width / 11, height * 3 / 4 - 6 - bar, width / 16, bar,
                    {static_cast<Vek8u>(60 + 20 * i), 120, 190});
  }
  return paper;
}

Picture warped(const Picture& src, const std::array<double, 9>& coeffs, VekiSize size,
               Color outside, int direction) {
  Picture result(size.width, size.height);
  check(vekiPerspectiveWarp_8u_C3R(src.data(), src.step(), src.size(), result.data(), result.step(),
                                   {0, 0, size.width, size.height}, coeffs.data(), direction,
                                   vekiWarpCubic, vekiBorderConstant, outside.data()));
  return result;
}

}  // namespace

Picture perspectivePicture() {
  constexpr int width = 390, height = 520;
  const Corner upright[4] = {{0, 0}, {width - 1, 0}, {width - 1, height - 1}, {0, height - 1}};
  const Corner seen[4] = {{170, 40}, {560, 92}, {640, 540}, {36, 480}};
  Picture photograph = warped(page(width, height), perspective(upright, seen), {680, 580},
                              {96, 78, 62}, vekiWarpForward);
  const Picture straight =
      warped(photograph, perspective(upright, seen), {width, height}, {0, 0, 0}, vekiWarpInverse);
  for (int i = 0; i < 4; ++i) {
    const Corner &a = seen[i], &b = seen[(i + 1) % 4];
    photograph.line(a.x, a.y, b.x, b.y, {255, 80, 60});
  }
  Picture result(680 + 8 + width, 580);
  result.paste(photograph, 0, 0);
  result.paste(straight, 688, 30);
  return result;
}

}  // namespace gallery
