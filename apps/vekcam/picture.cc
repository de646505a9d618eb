#include "vekcam/picture.h"

#include <algorithm>

#include "vekcam/font.h"
#include "vekcam/picture_files.h"

namespace vekcam {

std::string encodePng(const Picture& picture) {
  return encodePicture(picture, PictureFormat::png);
}

std::string encodePpm(const Picture& picture) {
  return encodePicture(picture, PictureFormat::ppm);
}

Picture reduced(const Picture& picture, int factor) {
  Picture small(picture.width / factor, picture.height / factor);
  const int area = factor * factor;
  for (int y = 0; y < small.height; ++y) {
    for (int i = 0; i < small.step(); ++i) {
      int sum = area / 2;
      for (int dy = 0; dy < factor; ++dy) {
        const Vek8u* const row = picture.row(y * factor + dy) + i / 3 * factor * 3 + i % 3;
        for (int dx = 0; dx < factor; ++dx) sum += row[dx * 3];
      }
      small.row(y)[i] = static_cast<Vek8u>(sum / area);
    }
  }
  return small;
}

Picture contactSheet(const std::vector<Picture>& pictures, const std::vector<std::string>& captions,
                     int columns) {
  constexpr int margin = 6;
  constexpr int captionHeight = glyphRows + 4;
  constexpr Vek8u paper = 24;
  constexpr Vek8u ink = 200;
  if (pictures.empty()) return {};
  const int cellWidth = pictures[0].width + margin;
  const int cellHeight = pictures[0].height + captionHeight + margin;
  const int count = static_cast<int>(pictures.size());
  columns = std::min(columns, count);
  Picture sheet(columns * cellWidth + margin,
                (count + columns - 1) / columns * cellHeight + margin);
  std::ranges::fill(sheet.bgr, paper);
  for (int i = 0; i < count; ++i) {
    const Picture& picture = pictures[static_cast<size_t>(i)];
    const int left = margin + i % columns * cellWidth;
    const int top = margin + i / columns * cellHeight;
    for (int y = 0; y < picture.height; ++y) {
      std::copy_n(picture.row(y), picture.step(), sheet.row(top + y) + left * 3);
    }
    for (int y = 0; y < glyphRows; ++y) {
      for (int x = 0; x < picture.width; ++x) {
        if (!textDot(captions[static_cast<size_t>(i)], x, y)) continue;
        std::fill_n(sheet.row(top + picture.height + 3 + y) + (left + x) * 3, 3, ink);
      }
    }
  }
  return sheet;
}

}  // namespace vekcam
