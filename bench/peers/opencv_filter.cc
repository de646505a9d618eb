// The same filters by OpenCV, on one thread.
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "bench/peers/opencv.h"

namespace vek::bench {
namespace {

constexpr int border = cv::BORDER_REPLICATE | cv::BORDER_ISOLATED;

/// Registers fn(source, destination) for both numbers of channels: `function` is the name up to
/// them.
template <class Fn>
void addBoth(const std::string& function, const std::string& variant, Fn fn,
             const std::string& peer = "OpenCV") {
  addOpenCv(function + "_8u_C1R" + variant, CV_8UC1, fn, peer);
  addOpenCv(function + "_8u_C3R" + variant, CV_8UC3, fn, peer);
}

std::string squareLabel(int side) {
  const std::string text = std::to_string(side);
  return '/' + text + 'x' + text;
}

void addFilter2D(int side, const char* variant, const cv::Mat& kernel) {
  addBoth("vekiFilter", squareLabel(side) + variant, [=](const cv::Mat& src, cv::Mat& dst) {
    cv::filter2D(src, dst, -1, kernel, {-1, -1}, 0, border);
  });
}

/// By both ways that OpenCV has.
void addFilter1D(const char* variant, const cv::Mat& row) {
  const cv::Mat column = row.t(), one = cv::Mat::ones(1, 1, CV_32F);
  const auto addForm = [&](const char* function, const cv::Mat& x, const cv::Mat& y,
                           const cv::Mat& kernel) {
    addBoth(function, variant, [=](const cv::Mat& src, cv::Mat& dst) {
      cv::sepFilter2D(src, dst, -1, x, y, {-1, -1}, 0, border);
    });
    addBoth(
        function, variant,
        [=](const cv::Mat& src, cv::Mat& dst) {
          cv::filter2D(src, dst, -1, kernel, {-1, -1}, 0, border);
        },
        "OpenCV-2D");
  };
  addForm("vekiFilterRow", row, one, row);
  addForm("vekiFilterColumn", one, row, column);
}

void addMirror(const char* variant, int code) {
  addBoth("vekiMirror", variant,
          [=](const cv::Mat& src, cv::Mat& dst) { cv::flip(src, dst, code); });
}

void addGamma(const char* name, double exponent) {
  cv::Mat table(1, 256, CV_8U);
  for (int i = 0; i < 256; ++i) {
    table.at<uint8_t>(i) = cv::saturate_cast<uint8_t>(255 * std::pow(i / 255.0, exponent));
  }
  addOpenCv(name, CV_8UC3, [=](const cv::Mat& src, cv::Mat& dst) { cv::LUT(src, table, dst); });
}

[[maybe_unused]] const bool registered = [] {
  for (int side : {3, 5, 15, 31}) {
    addBoth("vekiFilterBox", squareLabel(side), [=](const cv::Mat& src, cv::Mat& dst) {
      cv::blur(src, dst, {side, side}, {-1, -1}, border);
    });
  }
  for (int side : {3, 5, 7, 11, 15, 31}) {
    addBoth("vekiFilterMedian", squareLabel(side),
            [=](const cv::Mat& src, cv::Mat& dst) { cv::medianBlur(src, dst, side); });
  }
  const cv::Mat smooth = (cv::Mat_<float>(3, 3) << 1, 2, 1, 2, 4, 2, 1, 2, 1) / 16;
  cv::Mat sharp(3, 3, CV_32F, -90 / 280.0);
  sharp.at<float>(1, 1) = 1000 / 280.f;
  addFilter2D(3, "smooth", smooth);
  addFilter2D(3, "sharp", sharp);
  addFilter2D(5, "mean", cv::Mat(5, 5, CV_32F, 1 / 25.0));
  addFilter2D(5, "wide", cv::Mat(5, 5, CV_32F, 1 / 25.0));
  addFilter1D("/3", (cv::Mat_<float>(1, 3) << 1, 2, 1) / 4);
  addFilter1D("/5", (cv::Mat_<float>(1, 5) << 1, 4, 6, 4, 1) / 16);
  addFilter1D("/15", cv::Mat(1, 15, CV_32F, 1 / 15.0));
  addBoth("vekiErode3x3", "", [](const cv::Mat& src, cv::Mat& dst) {
    cv::erode(src, dst, cv::Mat(), {-1, -1}, 1, border);
  });
  addBoth("vekiDilate3x3", "", [](const cv::Mat& src, cv::Mat& dst) {
    cv::dilate(src, dst, cv::Mat(), {-1, -1}, 1, border);
  });
  addMirror("/rows", 0);
  addMirror("/columns", 1);
  addMirror("/both", -1);
  addGamma("vekiGammaFwd_8u_C3R", 0.45);
  addGamma("vekiGammaInv_8u_C3R", 1 / 0.45);
  return true;
}();

}  // namespace
}  // namespace vek::bench
