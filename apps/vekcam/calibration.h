// What a camera's frames tell about it: its black level, its defective pixels, its colour matrix.
#pragma once

#include <array>
#include <string>
#include <vector>
#include <vek/isp.hpp>

#include "vekcam/raw_input.h"

namespace vekcam {

/// The mean of frames of one kind, in the units of their samples.
class MeanFrame {
 public:
  explicit MeanFrame(const FrameInfo& info);

  /// A frame of the kind that the constructor was told of.
  void add(const std::vector<Vek8u>& bytes);

  vek::Size size() const { return info_.size; }
  int count() const { return count_; }
  /// The largest value of a sample.
  int most() const { return (1 << info_.format.bits) - 1; }
  /// 0 to 3 for R, Gr, Gb, B.
  size_t colorAt(int x, int y) const {
    return static_cast<size_t>(((y & 1) << 1 | (x & 1)) ^ static_cast<int>(info_.format.order));
  }
  float at(int x, int y) const { return sums_[index(x, y)] / static_cast<float>(count_); }

 private:
  size_t index(int x, int y) const {
    return static_cast<size_t>(y) * static_cast<size_t>(info_.size.width) + static_cast<size_t>(x);
  }

  FrameInfo info_;
  int count_ = 0;
  std::vector<float> sums_;
};

/// Of frames without light: the level of each colour, without the samples that are off.
std::array<int, 4> blackLevels(const MeanFrame& dark);

/// Samples that are far from black in frames without light, sorted.
std::vector<VekiDeadPixel> defectsInTheDark(const MeanFrame& dark, const std::array<int, 4>& black);

/// Samples that are off by more than `tolerance` (a share) from their neighbours of the same colour in
/// frames of an even light, sorted. A Failure if the frames are too dark or too bright to tell.
std::vector<VekiDeadPixel> defectsInLight(const MeanFrame& flat, const std::array<int, 4>& black,
                                          double tolerance);

struct Point2 {
  double x, y;
};

/// The chart's outer corners in the frame, clockwise from that of patch 1: those of patches 1, 6, 24 and
/// 19 of four rows of six.
using Corners = std::array<Point2, 4>;

constexpr size_t chartPatches = 24;
using ChartColors = std::array<std::array<double, 3>, chartPatches>;

/// Linear sRGB of the usual chart of 24 patches, of which the last six are grey, from white to black.
ChartColors usualChart();

/// "red,green,blue" lines of linear sRGB, 24 of them; blank lines and those that begin with '#' are
/// passed over.
ChartColors parseChart(std::string_view text, const std::string& name);

struct ColorFit {
  vek::ColorGains gains;
  vek::Matrix3 matrix;
  double meanDifference, worstDifference;  ///< in CIE 1976 units
  int worstPatch;                          ///< 1..24
};

/// The matrix that makes the chart's colours right, with rows that sum to 1. A Failure if the patches
/// cannot be those of the chart.
ColorFit fitColors(const MeanFrame& picture, const std::array<int, 4>& black,
                   const std::vector<VekiDeadPixel>& dead, const Corners& corners,
                   const ChartColors& chart);

}  // namespace vekcam
