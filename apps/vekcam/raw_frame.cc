#include "vekcam/raw_frame.h"

#include <algorithm>
#include <cstring>
#include <tuple>

namespace vekcam {
namespace {

ptrdiff_t roundUp(ptrdiff_t n, ptrdiff_t multiple) {
  return (n + multiple - 1) / multiple * multiple;
}

}  // namespace

RawFrame::RawFrame(VekiSize size)
    : size_(size),
      rowSamples_(roundUp(lead + size.width + border, lead)),
      samples_(static_cast<size_t>(rowSamples_ * (size.height + 2 * border))) {}

void RawFrame::mirrorBorder() {
  const int w = size_.width;
  const int h = size_.height;
  for (int y = 0; y < h; ++y) {
    Vek16u* const r = row(y);
    for (int i = 1; i <= border; ++i) {
      r[-i] = r[i];
      r[w - 1 + i] = r[w - 1 - i];
    }
  }
  const size_t bytes = static_cast<size_t>(w + 2 * border) * sizeof(Vek16u);
  for (int i = 1; i <= border; ++i) {
    std::memcpy(row(-i) - border, row(i) - border, bytes);
    std::memcpy(row(h - 1 + i) - border, row(h - 1 - i) - border, bytes);
  }
}

std::vector<VekiDeadPixel> withMirroredEntries(const std::vector<VekiDeadPixel>& dead,
                                               VekiSize size) {
  // Only the nearest border samples are ever read: the images of the second row and column.
  const auto images = [](int at, int count) {
    std::vector<int> all = {at};
    if (at == 1) all.push_back(-1);
    if (at == count - 2) all.push_back(count);
    return all;
  };
  std::vector<VekiDeadPixel> list;
  for (const VekiDeadPixel& pixel : dead) {
    for (const int row : images(pixel.row, size.height)) {
      for (const int column : images(pixel.column, size.width)) list.push_back({row, column});
    }
  }
  const auto key = [](const VekiDeadPixel& p) { return std::tuple(p.row, p.column); };
  std::ranges::sort(list, {}, key);
  const auto same = [key](const auto& a, const auto& b) { return key(a) == key(b); };
  list.erase(std::unique(list.begin(), list.end(), same), list.end());
  return list;
}

}  // namespace vekcam
