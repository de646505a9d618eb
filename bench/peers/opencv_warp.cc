// Affine and perspective warps by OpenCV, whose positions are multiples of 1/32 pixel and whose cubic
// has a = -3/4.
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "bench/peers/opencv.h"

namespace vek::bench {
namespace {

/// The map of our typical calls.
cv::Mat typicalMap(cv::Size size, bool perspective) {
  const double cosine = 1.02 * std::cos(0.3), sine = 1.02 * std::sin(0.3);
  const double x = size.width / 2.0, y = size.height / 2.0;
  cv::Mat map = (cv::Mat_<double>(2, 3) << cosine, -sine, x - cosine * x + sine * y, sine, cosine,
                 y - sine * x - cosine * y);
  const cv::Mat denominator = (cv::Mat_<double>(1, 3) << 0.0001, -0.00005, 1);
  if (perspective) map.push_back(denominator);
  return map;
}

void addWarps(const std::string& variant, int interpolation) {
  for (int channels : {1, 3}) {
    const std::string form = "_8u_C" + std::to_string(channels) + "R" + variant;
    const auto add = [&](const char* name, bool perspective, auto warp) {
      addOpenCv(name + form, CV_8UC(channels), [=](const cv::Mat& src, cv::Mat& dst) {
        warp(src, dst, typicalMap(src.size(), perspective), src.size(), interpolation,
             cv::BORDER_CONSTANT, cv::Scalar(77, 100, 200));
      });
    };
    add("vekiAffineWarp", false, cv::warpAffine);
    add("vekiPerspectiveWarp", true, cv::warpPerspective);
  }
}

[[maybe_unused]] const bool registered = [] {
  addWarps("", cv::INTER_LINEAR);
  addWarps("/nearest", cv::INTER_NEAREST);
  addWarps("/cubic", cv::INTER_CUBIC);
  return true;
}();

}  // namespace
}  // namespace vek::bench
