// What the conversions between RGB, YCbCr and YUV write.
#pragma once

#include "vek/vek.h"

#include <algorithm>
#include <array>

#include "tests/campaign/campaign.h"
#include "tests/footprint/ycbcr.h"

namespace vek::test::definition {

using footprint::Layout;
using footprint::RowSteps;
using Color = std::array<int, 3>;

/// 16-bit pixels, the first field uppermost.
struct Word {
  Color bits = {};
  bool blueFirst = false;
};

/// From or to RGB.
struct Conversion {
  bool forward;  ///< from RGB
  bool yuv;      ///< with the factors of YUV, else of YCbCr
  Layout layout;
  RowSteps steps;
  Word word = {};  ///< without bits, RGB is 24-bit
  std::vector<Check> order = {};

  bool packed() const { return word.bits[0] != 0; }
  Layout src() const { return forward ? Layout::triples : layout; }
  Layout dst() const { return forward ? layout : packed() ? Layout::words : Layout::triples; }
  bool shares420() const { return layout == Layout::planes420; }
  /// Pixels share their chroma.
  bool shared() const {
    return shares420() || layout == Layout::planes422 || layout == Layout::pairs422;
  }
};

inline int sat8(int v) {
  return std::clamp(v, 0, 255);
}

inline Color fromRgb(const Conversion& f, Color rgb) {
  const auto [r, g, b] = rgb;
  if (!f.yuv) {
    return {(263 * r + 516 * g + 100 * b + 16896) >> 10,
            (-152 * r - 298 * g + 450 * b + 131584) >> 10,
            (450 * r - 377 * g - 73 * b + 131584) >> 10};
  }
  const int y = (306 * r + 601 * g + 117 * b) >> 10;
  if (f.shared()) return {y, sat8(128 + (504 * (b - y) >> 10)), sat8(128 + (898 * (r - y) >> 10))};
  return {y, sat8(128 + ((-151 * r - 296 * g + 446 * b) >> 10)),
          sat8(128 + ((630 * r - 527 * g - 102 * b) >> 10))};
}

inline Color toRgb(const Conversion& f, Color yuv) {
  const auto [y, u, v] = yuv;
  if (f.yuv) {
    if (f.shared()) {
      return {sat8(y + (1167 * (v - 128) >> 10)),
              sat8(y + ((-403 * (u - 128) - 595 * (v - 128)) >> 10)),
              sat8(y + (2081 * (u - 128) >> 10))};
    }
    return {sat8((1024 * y + 1167 * v - 148910) >> 10),
            sat8((1024 * y - 403 * u - 595 * v + 128307) >> 10),
            sat8((1024 * y + 2081 * u - 265826) >> 10)};
  }
  if (!f.shared() && !f.packed()) {
    return {sat8((1192 * y + 1634 * v - 227749) >> 10),
            sat8((1192 * y - 401 * u - 833 * v + 139383) >> 10),
            sat8((1192 * y + 2065 * u - 282930) >> 10)};
  }
  const int luma = 1192 * (y - 16);
  return {sat8((luma + 1634 * (v - 128)) >> 10),
          sat8((luma - 833 * (v - 128) - 401 * (u - 128)) >> 10),
          sat8((luma + 2065 * (u - 128)) >> 10)};
}

inline int packedWord(const Conversion& f, Color rgb) {
  if (f.word.blueFirst) std::swap(rgb[0], rgb[2]);
  const auto [high, g, low] = rgb;
  const auto [a, b, c] = f.word.bits;
  return high >> (8 - a) << (b + c) | g >> (8 - b) << c | low >> (8 - c);
}

/// Where component c of pixel (x, y) lies.
struct Picture {
  Layout layout;
  uint8_t* data[3];
  ptrdiff_t step[3];

  uint8_t& at(int c, int x, int y) const {
    switch (layout) {
      case Layout::triples:
        return data[0][y * step[0] + 3 * x + c];
      case Layout::pairs422:
        return data[0][y * step[0] + (c == 0 ? 2 * x : 4 * (x / 2) + 2 * c - 1)];
      case Layout::words:
        return data[0][y * step[0] + 2 * x + c];
      default:
        if (c > 0 && layout == Layout::planes420) y /= 2;
        if (c > 0 && layout != Layout::planes444) x /= 2;
        return data[c][y * step[c] + x];
    }
  }
  Color color(int x, int y) const { return {at(0, x, y), at(1, x, y), at(2, x, y)}; }
};

/// The rounded average of the block's pixels that the image has.
inline Color average(const Picture& rgb, VekiSize size, int x0, int y0, int rows) {
  Color sum = {};
  int count = 0;
  for (int y = y0; y < std::min(y0 + rows, size.height); ++y) {
    for (int x = x0; x < std::min(x0 + 2, size.width); ++x, ++count) {
      for (int c = 0; c < 3; ++c) sum[c] += rgb.at(c, x, y);
    }
  }
  for (int& s : sum) s = (s + count / 2) / count;
  return sum;
}

inline void define(const Conversion& f, const Picture& src, const Picture& dst, VekiSize size) {
  const int blockRows = f.shares420() ? 2 : 1;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      if (f.packed()) {
        const int word = packedWord(f, toRgb(f, src.color(x, y)));
        dst.at(0, x, y) = static_cast<uint8_t>(word & 255);
        dst.at(1, x, y) = static_cast<uint8_t>(word >> 8);
        continue;
      }
      Color out = f.forward ? fromRgb(f, src.color(x, y)) : toRgb(f, src.color(x, y));
      if (f.forward && f.shared()) {
        const int y0 = y / blockRows * blockRows;
        const Color chroma = fromRgb(f, average(src, size, x & ~1, y0, blockRows));
        out = {out[0], chroma[1], chroma[2]};
      }
      for (int c = 0; c < 3; ++c) dst.at(c, x, y) = static_cast<uint8_t>(out[c]);
      if (dst.layout == Layout::pairs422 && x + 1 == size.width && x % 2 == 0) {
        dst.at(0, x + 1, y) = static_cast<uint8_t>(out[0]);
      }
    }
  }
}

/// The image that the arguments from v on describe; moves v behind them.
inline Picture pictureOf(const Conversion& f, Layout layout, const Value*& v, VekiSize size) {
  const int planes = footprint::planeCount(layout);
  const bool tight = f.steps == RowSteps::none;
  Picture picture = {layout, {}, {}};
  for (int p = 0; p < planes; ++p) {
    picture.data[p] = planes == 1 ? as<uint8_t*>(v[0]) : as<uint8_t* const*>(v[0])[p];
    picture.step[p] = tight ? footprint::colorPlane(layout, p, size, 0).bytes
                      : planes == 1 || f.steps == RowSteps::one ? as<int>(v[1])
                                                                : as<const int*>(v[1])[p];
  }
  v += tight ? 1 : 2;
  return picture;
}

inline Call converted(const Conversion& f) {
  return [=](const Value* v) {
    const auto size = as<VekiSize>(v[f.steps == RowSteps::none ? 2 : 4]);
    const Picture src = pictureOf(f, f.src(), v, size);
    define(f, src, pictureOf(f, f.dst(), v, size), size);
    return vekStsNoErr;
  };
}

}  // namespace vek::test::definition
