// Norms and moments by OpenCV. Its norms of three channels are one number, ours three.
#include <opencv2/imgproc.hpp>

#include "bench/peers/opencv.h"

namespace vek::bench {
namespace {

volatile double result;  // what keeps the calls

[[maybe_unused]] const bool registered = [] {
  const struct {
    const char* name;
    int type;
  } norms[] = {{"Inf", cv::NORM_INF}, {"L1", cv::NORM_L1}, {"L2", cv::NORM_L2}};
  for (const auto& norm : norms) {
    for (int channels : {1, 3}) {
      const std::string suffix =
          std::string("_") + norm.name + "_8u_C" + std::to_string(channels) + "RSfs";
      const int type = norm.type;
      addOpenCv("vekiNorm" + suffix, CV_8UC(channels),
                [=](const cv::Mat& a, cv::Mat&) { result = cv::norm(a, type); });
      addOpenCv2(
          "vekiNormDiff" + suffix, CV_8UC(channels),
          [=](const cv::Mat& a, const cv::Mat& b, cv::Mat&) { result = cv::norm(a, b, type); });
      addOpenCv2("vekiNormRel" + suffix, CV_8UC(channels),
                 [=](const cv::Mat& a, const cv::Mat& b, cv::Mat&) {
                   result = cv::norm(a, b, type | cv::NORM_RELATIVE);
                 });
    }
  }
  addOpenCv("vekiMoments_8u_C1R", CV_8UC1,
            [](const cv::Mat& a, cv::Mat&) { result = cv::moments(a).m03; });
  addOpenCv("vekiMoments_8u_C3R", CV_8UC3,
            [channels = std::vector<cv::Mat>()](const cv::Mat& a, cv::Mat&) mutable {
              cv::split(a, channels);
              for (const cv::Mat& channel : channels) result = cv::moments(channel).m03;
            });
  return true;
}();

}  // namespace
}  // namespace vek::bench
