// Order of channels and borders by OpenCV.
#include <opencv2/imgproc.hpp>

#include "bench/peers/opencv.h"

namespace vek::bench {
namespace {

using cv::Mat;

void addOrder(const std::string& name, int type, int code) {
  addOpenCv(name, type, [=](const Mat& src, Mat& dst) { cv::cvtColor(src, dst, code); });
}

void addPad(const std::string& variant, int border) {
  for (int channels : {1, 3}) {
    const std::string name = "vekiPad_8u_C" + std::to_string(channels) + "R" + variant;
    addOpenCv(name, CV_8UC(channels), [=](const Mat& src, Mat& dst) {
      cv::copyMakeBorder(src, dst, 8, 8, 8, 8, border, cv::Scalar(77, 100, 200));
    });
  }
}

[[maybe_unused]] const bool registered = [] {
  addOrder("vekiPermuteChannels_8u_C3R", CV_8UC3, cv::COLOR_BGR2RGB);
  addOrder("vekiPermuteChannels_8u_C4R", CV_8UC4, cv::COLOR_BGRA2RGBA);
  addOrder("vekiPermuteChannels_8u_C4C3R", CV_8UC4, cv::COLOR_BGRA2RGB);
  addOrder("vekiPermuteChannels_8u_C3C4R", CV_8UC3, cv::COLOR_BGR2RGBA);
  addPad("", cv::BORDER_CONSTANT);
  addPad("/replicate", cv::BORDER_REPLICATE);
  addPad("/mirror", cv::BORDER_REFLECT_101);
  return true;
}();

}  // namespace
}  // namespace vek::bench
