#include "vekcam/raw_frame.h"

#include <cstring>

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

}  // namespace vekcam
