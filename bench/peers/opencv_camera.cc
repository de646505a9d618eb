// The camera path by OpenCV, on one thread: the raw pipeline as a chain of calls, metering and white
// balance as what a program cannot do without, the sum of all samples.
#include <opencv2/imgproc.hpp>

#include "bench/peers/opencv.h"

namespace vek::bench {
namespace {

cv::Mat rawFrame(VekiSize size) {
  cv::Mat frame(size.height, size.width, CV_16UC1);
  cv::randu(frame, cv::Scalar::all(0), cv::Scalar::all(1024));
  return frame;
}

void addSum(const char* name) {
  addPeer(name, "OpenCV-sum", [](VekiSize size) -> Call {
    const cv::Mat frame = rawFrame(size);
    return [=] {
      volatile double sum = cv::sum(frame)[0];
      (void)sum;
    };
  });
}

enum class After { nothing, turn, halve };

/// 10 bits to 8, look-up, demosaicing, colour matrix, luma with subsampled chroma; then, for a quarter
/// turn, each plane. A smaller image is reduced before the matrix.
void addPipeline(const char* name, After after = After::nothing) {
  addPeer(name, "OpenCV", [=](VekiSize size) -> Call {
    const cv::Mat frame = rawFrame(size);
    cv::Mat gamma(1, 256, CV_8UC1);
    cv::randu(gamma, cv::Scalar::all(0), cv::Scalar::all(256));
    const cv::Matx33f matrix(1.6f, -0.5f, -0.1f, -0.2f, 1.4f, -0.2f, 0.1f, -0.5f, 1.4f);
    cv::Mat bytes, mapped, rgb, half, corrected, yuv, turned[3];
    return [=]() mutable {
      frame.convertTo(bytes, CV_8U, 0.25);
      cv::LUT(bytes, gamma, mapped);
      cv::cvtColor(mapped, rgb, cv::COLOR_BayerBG2RGB);
      if (after == After::halve) {
        cv::resize(rgb, half, {frame.cols / 2, frame.rows / 2}, 0, 0, cv::INTER_NEAREST);
      }
      cv::transform(after == After::halve ? half : rgb, corrected, matrix);
      cv::cvtColor(corrected, yuv, cv::COLOR_RGB2YUV_I420);
      if (after != After::turn) return;
      cv::rotate(yuv.rowRange(0, frame.rows), turned[0], cv::ROTATE_90_COUNTERCLOCKWISE);
      for (int i = 1; i < 3; ++i) {
        Vek8u* const first = yuv.ptr(frame.rows) + (i - 1) * frame.cols / 2 * (frame.rows / 2);
        const cv::Mat plane(frame.rows / 2, frame.cols / 2, CV_8UC1, first);
        cv::rotate(plane, turned[i], cv::ROTATE_90_COUNTERCLOCKWISE);
      }
    };
  });
}

[[maybe_unused]] const bool registered = [] {
  addSum("vekiAE_10RGGB_8u_C1R/histogram");
  addSum("vekiAE_10RGGB_8u_C1R/whole-frame");
  addSum("vekiAE_10RGGB_8u_C1R/five-zones");
  addSum("vekiAWB_10RGGB_8u_C1R/gray-world");
  addSum("vekiAWB_10RGGB_8u_C1R/white-points");
  addPipeline("veki10RGGBtoYCbCr_RotRsz_8u_P3R/420");
  addPipeline("veki10RGGBtoYCbCr_RotRsz_8u_P3R/420-edges");
  addPipeline("veki10RGGBtoYCbCr_RotRsz_8u_P3R/420-turned", After::turn);
  addPipeline("veki10RGGBtoYCbCr_RotRsz_8u_P3R/420-turned-edges", After::turn);
  addPipeline("veki10RGGBtoYCbCr_RotRsz_8u_P3R/420-half", After::halve);
  return true;
}();

}  // namespace
}  // namespace vek::bench
