#include "vekcam/calibration.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fmt/format.h>

#include "vekcam/accuracy.h"
#include "vekcam/failure.h"

namespace vekcam {
namespace {

using Triple = std::array<double, 3>;

/// Sample x of a row.
int sampleAt(const Vek8u* row, const RawFormat& format, int x) {
  switch (format.packing) {
    case vek::Raw::bytes:
      return row[x];
    case vek::Raw::plain16:
      return (row[2 * x] | row[2 * x + 1] << 8) & ((1 << format.bits) - 1);
    case vek::Raw::csi2_10: {
      const Vek8u* const group = row + x / 4 * 5;
      return group[x % 4] << 2 | (group[4] >> (x % 4 * 2) & 3);
    }
    case vek::Raw::csi2_12: {
      const Vek8u* const group = row + x / 2 * 3;
      return group[x % 2] << 4 | (group[2] >> (x % 2 * 4) & 15);
    }
    case vek::Raw::csi2_14: {
      const Vek8u* const group = row + x / 4 * 7;
      const int low = group[4] | group[5] << 8 | group[6] << 16;
      return group[x % 4] << 6 | (low >> (x % 4 * 6) & 63);
    }
  }
  return 0;
}

float middleOf(std::vector<float>& values) {
  const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
  std::ranges::nth_element(values, middle);
  return *middle;
}

/// Median, and what would be the standard deviation if all of the noise were normal.
struct Spread {
  float median, deviation;
};

std::array<Spread, 4> spreadOfColors(const MeanFrame& frame) {
  std::array<Spread, 4> result = {};
  for (size_t color = 0; color < 4; ++color) {
    std::vector<float> values;
    for (int y = 0; y < frame.size().height; ++y) {
      for (int x = 0; x < frame.size().width; ++x) {
        if (frame.colorAt(x, y) == color) values.push_back(frame.at(x, y));
      }
    }
    result[color].median = middleOf(values);
    for (float& value : values) value = std::abs(value - result[color].median);
    result[color].deviation = 1.4826f * middleOf(values);
  }
  return result;
}

void checkCount(const std::vector<VekiDeadPixel>& defects, const MeanFrame& frame,
                const char* kind) {
  const double share =
      static_cast<double>(defects.size()) / frame.size().width / frame.size().height;
  if (share > .01) {
    throw Failure(
        fmt::format("{:.0f} % of the samples are off: these are no {} frames", 100 * share, kind));
  }
}

/// From the unit square to a quadrangle, as a plane is seen.
class Perspective {
 public:
  explicit Perspective(const Corners& c) {
    const double dx1 = c[1].x - c[2].x, dx2 = c[3].x - c[2].x;
    const double dy1 = c[1].y - c[2].y, dy2 = c[3].y - c[2].y;
    const double sx = c[0].x - c[1].x + c[2].x - c[3].x, sy = c[0].y - c[1].y + c[2].y - c[3].y;
    const double whole = dx1 * dy2 - dx2 * dy1;
    if (std::abs(whole) < 1) throw Failure("the chart's corners are on a line");
    g_ = (sx * dy2 - dx2 * sy) / whole;
    h_ = (dx1 * sy - sx * dy1) / whole;
    a_ = c[1].x - c[0].x + g_ * c[1].x;
    b_ = c[3].x - c[0].x + h_ * c[3].x;
    c_ = c[0].x;
    d_ = c[1].y - c[0].y + g_ * c[1].y;
    e_ = c[3].y - c[0].y + h_ * c[3].y;
    f_ = c[0].y;
  }

  Point2 operator()(double u, double v) const {
    const double w = g_ * u + h_ * v + 1;
    return {(a_ * u + b_ * v + c_) / w, (d_ * u + e_ * v + f_) / w};
  }

 private:
  double a_, b_, c_, d_, e_, f_, g_, h_;
};

/// The camera's colours of the patches, less black.
std::array<Triple, chartPatches> readPatches(const MeanFrame& picture,
                                             const std::array<int, 4>& black,
                                             const std::vector<VekiDeadPixel>& dead,
                                             const Corners& corners) {
  constexpr int rows = 4, columns = 6, points = 24;
  const vek::Size size = picture.size();
  const Perspective map(corners);
  const auto isDead = [&](int x, int y) {
    const auto before = [](const VekiDeadPixel& a, const VekiDeadPixel& b) {
      return a.row != b.row ? a.row < b.row : a.column < b.column;
    };
    return std::ranges::binary_search(dead, VekiDeadPixel{y, x}, before);
  };
  std::array<Triple, chartPatches> patches = {};
  for (size_t patch = 0; patch < chartPatches; ++patch) {
    const int row = static_cast<int>(patch) / columns, column = static_cast<int>(patch) % columns;
    Triple sums = {}, counts = {};
    int saturated = 0, all = 0;
    for (int i = 0; i < points * points; ++i) {
      // The middle half of the patch.
      const int across = i % points, down = i / points;
      const double inX = .25 + (across + .5) / points / 2;
      const double inY = .25 + (down + .5) / points / 2;
      const Point2 at = map((column + inX) / columns, (row + inY) / rows);
      const int left = static_cast<int>(std::floor(at.x)) & ~1;
      const int top = static_cast<int>(std::floor(at.y)) & ~1;
      if (!(at.x >= 0 && at.y >= 0 && left + 1 < size.width && top + 1 < size.height))
        throw Failure(fmt::format("patch {} of the chart is outside the frame", patch + 1));
      for (int k = 0; k < 4; ++k) {
        const int x = left + (k & 1), y = top + (k >> 1);
        if (isDead(x, y)) continue;
        const size_t color = picture.colorAt(x, y);
        const size_t channel = color == 0 ? 0 : color == 3 ? 2 : 1;
        const float value = picture.at(x, y);
        ++all;
        if (value >= static_cast<float>(picture.most()) * .995f) ++saturated;
        sums[channel] += static_cast<double>(value) - black[color];
        counts[channel] += 1;
      }
    }
    if (saturated * 20 > all)
      throw Failure(fmt::format("patch {} of the chart is saturated", patch + 1));
    for (size_t i = 0; i < 3; ++i) patches[patch][i] = sums[i] / std::max(counts[i], 1.);
  }
  return patches;
}

/// The row of a matrix that takes colours to one channel of the chart. It sums to 1: c_i plus a of what
/// the next channel is above it, plus b of what the one after that is.
Triple fitRow(size_t i, const std::array<Triple, chartPatches>& colors, const ChartColors& chart) {
  const size_t j = (i + 1) % 3, k = (i + 2) % 3;
  double aa = 0, ab = 0, bb = 0, ar = 0, br = 0;
  for (size_t patch = 0; patch < chartPatches; ++patch) {
    const Triple& c = colors[patch];
    const Triple& wanted = chart[patch];
    // Lightness goes with the cube root of light, so that errors count for more in the dark.
    const double light = std::max(.2126 * wanted[0] + .7152 * wanted[1] + .0722 * wanted[2], .03);
    const double weight = std::pow(light, -4. / 3);
    const double a = c[j] - c[i], b = c[k] - c[i], rest = wanted[i] - c[i];
    aa += weight * a * a;
    ab += weight * a * b;
    bb += weight * b * b;
    ar += weight * a * rest;
    br += weight * b * rest;
  }
  const double whole = aa * bb - ab * ab;
  if (!(whole > 1e-9 * aa * bb)) throw Failure("the chart's patches have no colours");
  const double a = (ar * bb - br * ab) / whole, b = (br * aa - ar * ab) / whole;
  Triple row = {};
  row[i] = 1 - a - b;
  row[j] = a;
  row[k] = b;
  return row;
}

}  // namespace

MeanFrame::MeanFrame(const FrameInfo& info)
    : info_(info),
      sums_(static_cast<size_t>(info.size.width) * static_cast<size_t>(info.size.height)) {}

void MeanFrame::add(const std::vector<Vek8u>& bytes) {
  float* sum = sums_.data();
  for (int y = 0; y < info_.size.height; ++y) {
    const Vek8u* const row = bytes.data() + static_cast<ptrdiff_t>(y) * info_.stepBytes();
    for (int x = 0; x < info_.size.width; ++x)
      *sum++ += static_cast<float>(sampleAt(row, info_.format, x));
  }
  ++count_;
}

std::array<int, 4> blackLevels(const MeanFrame& dark) {
  const std::array<Spread, 4> spread = spreadOfColors(dark);
  std::array<double, 4> sums = {}, counts = {};
  for (int y = 0; y < dark.size().height; ++y) {
    for (int x = 0; x < dark.size().width; ++x) {
      const size_t color = dark.colorAt(x, y);
      const float off = std::abs(dark.at(x, y) - spread[color].median);
      if (off > 6 * spread[color].deviation + 1) continue;
      sums[color] += dark.at(x, y);
      counts[color] += 1;
    }
  }
  std::array<int, 4> black;
  for (size_t i = 0; i < 4; ++i) black[i] = static_cast<int>(std::lround(sums[i] / counts[i]));
  if (std::ranges::max(black) > dark.most() / 2)
    throw Failure("the dark frames are too bright: more than half of the range");
  return black;
}

std::vector<VekiDeadPixel> defectsInTheDark(const MeanFrame& dark,
                                            const std::array<int, 4>& black) {
  const std::array<Spread, 4> spread = spreadOfColors(dark);
  std::vector<VekiDeadPixel> defects;
  for (int y = 0; y < dark.size().height; ++y) {
    for (int x = 0; x < dark.size().width; ++x) {
      const size_t color = dark.colorAt(x, y);
      // What noise does not do, and an eye sees: 2 % of the range.
      const float limit =
          std::max(8 * spread[color].deviation, .02f * static_cast<float>(dark.most()));
      if (std::abs(dark.at(x, y) - static_cast<float>(black[color])) > limit)
        defects.push_back({y, x});
    }
  }
  checkCount(defects, dark, "dark");
  return defects;
}

std::vector<VekiDeadPixel> defectsInLight(const MeanFrame& flat, const std::array<int, 4>& black,
                                          double tolerance) {
  const std::array<Spread, 4> spread = spreadOfColors(flat);
  for (size_t i = 0; i < 4; ++i) {
    const float range = static_cast<float>(flat.most() - black[i]);
    const float share = (spread[i].median - static_cast<float>(black[i])) / range;
    if (share < .05f || share > .95f) {
      throw Failure(fmt::format("the flat frames are too {}: {} is at {:.0f} % of the range",
                                share < .5f ? "dark" : "bright",
                                std::array{"red", "green", "green", "blue"}[i], 100 * share));
    }
  }
  std::vector<VekiDeadPixel> defects;
  std::vector<float> around;
  for (int y = 0; y < flat.size().height; ++y) {
    for (int x = 0; x < flat.size().width; ++x) {
      around.clear();
      for (int dy = -2; dy <= 2; dy += 2) {
        for (int dx = -2; dx <= 2; dx += 2) {
          const int column = x + dx, row = y + dy;
          const bool isInside =
              column >= 0 && column < flat.size().width && row >= 0 && row < flat.size().height;
          if (isInside && (dx != 0 || dy != 0)) around.push_back(flat.at(column, row));
        }
      }
      const float level = static_cast<float>(black[flat.colorAt(x, y)]);
      const float usual = middleOf(around) - level;
      if (std::abs(flat.at(x, y) - level - usual) > static_cast<float>(tolerance) * usual)
        defects.push_back({y, x});
    }
  }
  checkCount(defects, flat, "flat");
  return defects;
}

ChartColors usualChart() {
  // Codes of sRGB, of one maker's mean.
  constexpr int codes[chartPatches][3] = {
      {115, 82, 68},   {194, 150, 130}, {98, 122, 157}, {87, 108, 67},   {133, 128, 177},
      {103, 189, 170}, {214, 126, 44},  {80, 91, 166},  {193, 90, 99},   {94, 60, 108},
      {157, 188, 64},  {224, 163, 46},  {56, 61, 150},  {70, 148, 73},   {175, 54, 60},
      {231, 199, 31},  {187, 86, 149},  {8, 133, 161},  {243, 243, 242}, {200, 200, 200},
      {160, 160, 160}, {122, 122, 121}, {85, 85, 85},   {52, 52, 52}};
  ChartColors chart;
  for (size_t i = 0; i < chartPatches; ++i) {
    for (size_t j = 0; j < 3; ++j) chart[i][j] = lightOf(codes[i][j], vek::ToneCurve::srgb);
  }
  return chart;
}

ChartColors parseChart(std::string_view text, const std::string& name) {
  ChartColors chart = {};
  size_t count = 0;
  for (int number = 1; !text.empty(); ++number) {
    const size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.empty() || line[0] == '#') continue;
    const auto fail = [&](const char* why) {
      return Failure(fmt::format("{}, line {}: {}", name, number, why));
    };
    if (count == chartPatches) throw fail("there are more than 24 patches");
    const char* at = line.data();
    const char* const last = at + line.size();
    for (size_t i = 0; i < 3; ++i) {
      const auto [rest, error] = std::from_chars(at, last, chart[count][i]);
      const bool isEnd = i == 2 ? rest == last : rest != last && *rest == ',';
      if (error != std::errc() || !isEnd) throw fail("expected red,green,blue");
      if (!(chart[count][i] >= 0 && chart[count][i] <= 1)) throw fail("linear light is in 0..1");
      at = rest + 1;
    }
    ++count;
  }
  if (count != chartPatches)
    throw Failure(fmt::format("{} has {} patches, not {}", name, count, chartPatches));
  return chart;
}

ColorFit fitColors(const MeanFrame& picture, const std::array<int, 4>& black,
                   const std::vector<VekiDeadPixel>& dead, const Corners& corners,
                   const ChartColors& chart) {
  constexpr size_t white = 18, firstUsedGrey = 19, lastUsedGrey = 22;
  std::array<Triple, chartPatches> colors = readPatches(picture, black, dead, corners);
  for (size_t i = white + 1; i < chartPatches; ++i) {
    if (colors[i][1] >= colors[i - 1][1]) {
      throw Failure(
          fmt::format("patch {} of the chart is not darker than patch {}: the corners are those of "
                      "patches 1, 6, 24 and 19",
                      i + 1, i));
    }
  }
  // Not of the white, which may nearly be saturated, nor of the black, which is all noise and flare.
  Triple grey = {};
  for (size_t patch = firstUsedGrey; patch <= lastUsedGrey; ++patch) {
    for (size_t i = 0; i < 3; ++i) grey[i] += colors[patch][i];
  }
  ColorFit fit = {};
  fit.gains = {grey[1] / std::max(grey[0], 1e-3), 1, grey[1] / std::max(grey[2], 1e-3)};
  const double most = vek::recommended::mostWhiteBalance;
  for (const double gain : {fit.gains.red, fit.gains.blue}) {
    if (!(gain * most >= 1 && gain <= most))
      throw Failure(
          "the chart's greys have no red or no blue: black level or order of colours is wrong");
  }
  double product = 0, square = 0;
  for (size_t patch = white; patch <= lastUsedGrey; ++patch) {
    product += colors[patch][1] * chart[patch][1];
    square += colors[patch][1] * colors[patch][1];
  }
  for (Triple& color : colors) {
    color[0] *= fit.gains.red;
    color[2] *= fit.gains.blue;
    for (double& channel : color) channel *= product / square;
  }
  for (size_t i = 0; i < 3; ++i) fit.matrix[i] = fitRow(i, colors, chart);
  for (size_t patch = 0; patch < chartPatches; ++patch) {
    Triple seen = {};
    for (size_t i = 0; i < 3; ++i) {
      for (size_t j = 0; j < 3; ++j) seen[i] += fit.matrix[i][j] * colors[patch][j];
    }
    const double difference = colorDifference(seen, chart[patch]);
    fit.meanDifference += difference / chartPatches;
    if (difference <= fit.worstDifference) continue;
    fit.worstDifference = difference;
    fit.worstPatch = static_cast<int>(patch) + 1;
  }
  return fit;
}

}  // namespace vekcam
