// What the peers by OpenCV share.
#pragma once

#include <opencv2/core.hpp>

#include "bench/support.h"

namespace vek::bench {

inline cv::Mat noise(VekiSize size, int type) {
  cv::Mat image(size.height, size.width, type);
  cv::randu(image, cv::Scalar::all(0), cv::Scalar::all(256));
  return image;
}

}  // namespace vek::bench
