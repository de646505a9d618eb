// What the OpenCV peers share: noise, and registering calls on one thread.
#pragma once

#include <opencv2/core.hpp>

#include "bench/support.h"

namespace vek::bench {

[[maybe_unused]] inline const bool oneThread = [] {
  cv::setNumThreads(1);
  return true;
}();

/// An image of `type` (CV_8UC1, ...) filled with noise.
inline cv::Mat noise(VekiSize size, int type) {
  cv::Mat image(size.height, size.width, type);
  cv::randu(image, cv::Scalar::all(0), cv::Scalar::all(256));
  return image;
}

/// Registers fn(source, destination) on images of `type`. The destination keeps its memory.
template <class Fn>
void addOpenCv(const std::string& name, int type, Fn fn, const std::string& peer = "OpenCV") {
  addPeer(name, peer, [=](VekiSize size) -> Call {
    const cv::Mat src = noise(size, type);
    return [=, dst = cv::Mat()]() mutable { fn(src, dst); };
  });
}

/// Registers fn(first source, second source, destination).
template <class Fn>
void addOpenCv2(const std::string& name, int type, Fn fn) {
  addPeer(name, "OpenCV", [=](VekiSize size) -> Call {
    const cv::Mat a = noise(size, type), b = noise(size, type);
    return [=, dst = cv::Mat()]() mutable { fn(a, b, dst); };
  });
}

}  // namespace vek::bench
