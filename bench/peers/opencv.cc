// The same work by OpenCV, on one thread.
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "bench/peers/opencv.h"

namespace vek::bench {
namespace {

/// Registers fn(source, destination) on three-channel images.
template <class Fn>
void addC3(const char* name, Fn fn) {
  addPeer(name, "OpenCV", [=](VekiSize size) -> Call {
    const cv::Mat src = noise(size, CV_8UC3);
    cv::Mat dst;
    return [=]() mutable { fn(src, dst); };
  });
}

void addColour(const char* name, int code) {
  addC3(name, [code](const cv::Mat& src, cv::Mat& dst) { cv::cvtColor(src, dst, code); });
}

[[maybe_unused]] const bool registered = [] {
  cv::setNumThreads(1);
  addColour("vekiRGBToGray_8u_C3C1R", cv::COLOR_RGB2GRAY);
  addColour("vekiRGBToXYZ_8u_C3R", cv::COLOR_RGB2XYZ);
  addColour("vekiXYZToRGB_8u_C3R", cv::COLOR_XYZ2RGB);
  addColour("vekiRGBToHSV_8u_C3R", cv::COLOR_RGB2HSV_FULL);
  addColour("vekiHSVToRGB_8u_C3R", cv::COLOR_HSV2RGB_FULL);
  addColour("vekiRGBToHLS_8u_C3R", cv::COLOR_RGB2HLS_FULL);
  addColour("vekiHLSToRGB_8u_C3R", cv::COLOR_HLS2RGB_FULL);
  addColour("vekiRGBToLUV_8u_C3R", cv::COLOR_LRGB2Luv);
  addColour("vekiLUVToRGB_8u_C3R", cv::COLOR_Luv2LRGB);
  addColour("vekiRGBToYCbCr_8u_C3R", cv::COLOR_RGB2YCrCb);
  addColour("vekiYCbCrToRGB_8u_C3R", cv::COLOR_YCrCb2RGB);
  addColour("vekiRGBToYUV_8u_C3R", cv::COLOR_RGB2YUV);
  addColour("vekiYUVToRGB_8u_C3R", cv::COLOR_YUV2RGB);
  const auto transform = [](const cv::Mat& src, cv::Mat& dst) {
    const cv::Matx34f m(0.55f, 0.30f, 0.15f, 0, -0.2f, 1.16f, 0.02f, 5, 0, -0.1f, 1.1f, -1);
    cv::transform(src, dst, m);
  };
  addC3("vekiColorTwistQ14_8u_C3R", transform);
  addC3("vekiRGBToYCC_8u_C3R", transform);
  addC3("vekiYCCToRGB_8u_C3R", transform);
  return true;
}();

}  // namespace
}  // namespace vek::bench
