// Colour conversions by OpenCV.
#include <opencv2/imgproc.hpp>

#include "bench/peers/opencv.h"

namespace vek::bench {
namespace {

/// Registers the conversions by `codes`, one after the other.
void addColor(const std::string& name, int type, std::vector<int> codes) {
  addOpenCv(name, type, [codes, between = cv::Mat()](const cv::Mat& src, cv::Mat& dst) mutable {
    if (codes.size() == 1) {
      cv::cvtColor(src, dst, codes[0]);
    } else {
      cv::cvtColor(src, between, codes[0]);
      cv::cvtColor(between, dst, codes[1]);
    }
  });
}

/// Registers a conversion from the three planes of a 4:2:0 image below each other.
void addFrom420(const std::string& name) {
  addPeer(name, "OpenCV", [](VekiSize size) -> Call {
    cv::setNumThreads(1);
    const cv::Mat src = noise({size.width, size.height * 3 / 2}, CV_8UC1);
    return [=, dst = cv::Mat()]() mutable { cv::cvtColor(src, dst, cv::COLOR_YUV2RGB_I420); };
  });
}

[[maybe_unused]] const bool registered = [] {
  const auto add3 = [](const std::string& name, std::vector<int> codes) {
    addColor(name, CV_8UC3, codes);
  };
  add3("vekiRGBToGray_8u_C3C1R", {cv::COLOR_RGB2GRAY});
  add3("vekiRGBToXYZ_8u_C3R", {cv::COLOR_RGB2XYZ});
  add3("vekiXYZToRGB_8u_C3R", {cv::COLOR_XYZ2RGB});
  add3("vekiRGBToHSV_8u_C3R", {cv::COLOR_RGB2HSV_FULL});
  add3("vekiHSVToRGB_8u_C3R", {cv::COLOR_HSV2RGB_FULL});
  add3("vekiRGBToHLS_8u_C3R", {cv::COLOR_RGB2HLS_FULL});
  add3("vekiHLSToRGB_8u_C3R", {cv::COLOR_HLS2RGB_FULL});
  add3("vekiRGBToLUV_8u_C3R", {cv::COLOR_LRGB2Luv});
  add3("vekiLUVToRGB_8u_C3R", {cv::COLOR_Luv2LRGB});
  add3("vekiRGBToYCbCr_8u_C3R", {cv::COLOR_RGB2YCrCb});
  add3("vekiYCbCrToRGB_8u_C3R", {cv::COLOR_YCrCb2RGB});
  add3("vekiRGBToYUV_8u_C3R", {cv::COLOR_RGB2YUV});
  add3("vekiYUVToRGB_8u_C3R", {cv::COLOR_YUV2RGB});

  const auto transform = [](const cv::Mat& src, cv::Mat& dst) {
    const cv::Matx34f m(0.55f, 0.30f, 0.15f, 0, -0.2f, 1.16f, 0.02f, 5, 0, -0.1f, 1.1f, -1);
    cv::transform(src, dst, m);
  };
  addOpenCv("vekiColorTwistQ14_8u_C3R", CV_8UC3, transform);
  addOpenCv("vekiRGBToYCC_8u_C3R", CV_8UC3, transform);
  addOpenCv("vekiYCCToRGB_8u_C3R", CV_8UC3, transform);
  addOpenCv("vekiColorToGrayQ14_8u_C3C1R", CV_8UC3, [](const cv::Mat& src, cv::Mat& dst) {
    cv::transform(src, dst, cv::Matx13f(0.299f, 0.587f, 0.114f));
  });

  add3("vekiRGBToYUV420_8u_C3P3R", {cv::COLOR_RGB2YUV_I420});
  add3("vekiRGBToYUV420_8u_C3P3", {cv::COLOR_RGB2YUV_I420});
  addFrom420("vekiYUV420ToRGB_8u_P3C3R");
  addFrom420("vekiYUV420ToRGB_8u_P3C3");

  // OpenCV names a packed format by the channel order of its memory.
  const struct {
    const char* name;
    int fromRgb;
  } formats[] = {{"RGB565", cv::COLOR_RGB2BGR565},
                 {"RGB555", cv::COLOR_RGB2BGR555},
                 {"BGR565", cv::COLOR_BGR2BGR565},
                 {"BGR555", cv::COLOR_BGR2BGR555}};
  for (const auto& to : formats) {
    add3(std::string("vekiYCbCrTo") + to.name + "_8u16u_C3R", {cv::COLOR_YCrCb2RGB, to.fromRgb});
    addColor(std::string("vekiYCbCr422To") + to.name + "_8u16u_C2C3R", CV_8UC2,
             {cv::COLOR_YUV2RGB_YUY2, to.fromRgb});
  }
  addColor("vekiYCbCr422ToRGB_8u_C2C3R", CV_8UC2, {cv::COLOR_YUV2RGB_YUY2});
  addColor("vekiYUV422ToRGB_8u_C2C3R", CV_8UC2, {cv::COLOR_YUV2RGB_YUY2});
  return true;
}();

}  // namespace
}  // namespace vek::bench
