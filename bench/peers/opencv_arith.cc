// Pointwise operations by OpenCV.
#include <opencv2/imgproc.hpp>

#include "bench/peers/opencv.h"

namespace vek::bench {
namespace {

using cv::Mat;

/// Registers fn for C1 and C3 images under the name with that and `suffix` in the place of %.
template <class Add, class Fn>
void addBoth(Add add, const std::string& name, const std::string& suffix, Fn fn) {
  for (int channels : {1, 3}) {
    add(name + "_8u_C" + std::to_string(channels) + suffix, CV_8UC(channels), fn);
  }
}

template <class Fn>
void addOne(const std::string& name, const std::string& suffix, Fn fn) {
  addBoth([](const std::string& n, int type, Fn f) { addOpenCv(n, type, f); }, name, suffix, fn);
}

template <class Fn>
void addTwo(const std::string& name, const std::string& suffix, Fn fn) {
  addBoth([](const std::string& n, int type, Fn f) { addOpenCv2(n, type, f); }, name, suffix, fn);
}

const cv::Scalar value3(3, 100, 200), high3(103, 150, 220);

cv::Scalar value(const Mat& src) {
  return src.channels() == 1 ? cv::Scalar(77) : value3;
}

/// (src + constants) * weight: a plain sum in one call, a scaled one of one channel in another,
/// else through 16 bits.
void sumScaled(const Mat& src, cv::Scalar constants, double weight, Mat& between, Mat& dst) {
  if (weight == 1) {
    cv::add(src, constants, dst);
  } else if (src.channels() == 1) {
    src.convertTo(dst, CV_8U, weight, constants[0] * weight);
  } else {
    cv::add(src, constants, between, cv::noArray(), CV_16S);
    between.convertTo(dst, CV_8U, weight);
  }
}

void addArithmetic(int scaleFactor) {
  const double weight = scaleFactor < 0 ? 1 << -scaleFactor : 1.0 / (1 << scaleFactor);
  const std::string suffix = scaleFactor == 0 ? "RSfs" : "RSfs/scale" + std::to_string(scaleFactor);
  addTwo("vekiAdd", suffix, [=](const Mat& a, const Mat& b, Mat& dst) {
    if (scaleFactor == 0) {
      cv::add(a, b, dst);
    } else {
      cv::addWeighted(a, weight, b, weight, 0, dst);
    }
  });
  addTwo("vekiSub", suffix, [=](const Mat& a, const Mat& b, Mat& dst) {
    if (scaleFactor == 0) {
      cv::subtract(a, b, dst);
    } else {
      cv::addWeighted(a, weight, b, -weight, 0, dst);
    }
  });
  addTwo("vekiMul", suffix,
         [=](const Mat& a, const Mat& b, Mat& dst) { cv::multiply(a, b, dst, weight); });
  addOne("vekiAddC", suffix, [=, between = Mat()](const Mat& src, Mat& dst) mutable {
    sumScaled(src, value(src), weight, between, dst);
  });
  addOne("vekiSubC", suffix, [=, between = Mat()](const Mat& src, Mat& dst) mutable {
    sumScaled(src, -value(src), weight, between, dst);
  });
  addOne("vekiMulC", suffix, [=](const Mat& src, Mat& dst) {
    if (src.channels() == 1) {
      src.convertTo(dst, CV_8U, 77 * weight);
    } else {
      cv::multiply(src, value3, dst, weight);
    }
  });
  addOne("vekiSqr", suffix, [=](const Mat& src, Mat& dst) { cv::multiply(src, src, dst, weight); });
}

void addScaledToFull() {
  addTwo("vekiMulScale", "R",
         [](const Mat& a, const Mat& b, Mat& dst) { cv::multiply(a, b, dst, 1 / 255.0); });
  addOne("vekiMulCScale", "R", [](const Mat& src, Mat& dst) {
    if (src.channels() == 1) {
      src.convertTo(dst, CV_8U, 77 / 255.0);
    } else {
      cv::multiply(src, value3, dst, 1 / 255.0);
    }
  });
}

void addLogic() {
  addTwo("vekiAnd", "R", [](const Mat& a, const Mat& b, Mat& dst) { cv::bitwise_and(a, b, dst); });
  addTwo("vekiOr", "R", [](const Mat& a, const Mat& b, Mat& dst) { cv::bitwise_or(a, b, dst); });
  addTwo("vekiXor", "R", [](const Mat& a, const Mat& b, Mat& dst) { cv::bitwise_xor(a, b, dst); });
  addOne("vekiAndC", "R", [](const Mat& src, Mat& dst) { cv::bitwise_and(src, value(src), dst); });
  addOne("vekiOrC", "R", [](const Mat& src, Mat& dst) { cv::bitwise_or(src, value(src), dst); });
  addOne("vekiXorC", "R", [](const Mat& src, Mat& dst) { cv::bitwise_xor(src, value(src), dst); });
  addOne("vekiNot", "R", [](const Mat& src, Mat& dst) { cv::bitwise_not(src, dst); });
}

/// Shifts as products with powers of two, which round or saturate where a shift does not.
void addShifts() {
  const auto scaledBy = [](double weight) {
    return [=](const Mat& src, Mat& dst) { src.convertTo(dst, CV_8U, weight); };
  };
  addOpenCv("vekiRShiftC_8u_C1R", CV_8UC1, scaledBy(0.125));
  addOpenCv("vekiLShiftC_8u_C1R", CV_8UC1, scaledBy(8));
  addOpenCv("vekiRShiftC_8u_C3R/equal", CV_8UC3, scaledBy(0.125));
  addOpenCv("vekiLShiftC_8u_C3R/equal", CV_8UC3, scaledBy(8));
  const auto scaledByEach = [](cv::Scalar weights) {
    return [=](const Mat& src, Mat& dst) { cv::multiply(src, weights, dst); };
  };
  addOpenCv("vekiRShiftC_8u_C3R", CV_8UC3, scaledByEach({0.5, 0.125, 0.0625}));
  addOpenCv("vekiLShiftC_8u_C3R", CV_8UC3, scaledByEach({2, 8, 16}));
}

/// A table of 256 entries for each channel does any pointwise operation.
void addTable(const std::string& name) {
  addOne(name, "R", [](const Mat& src, Mat& dst) {
    static const Mat tables[2] = {noise({256, 1}, CV_8UC1), noise({256, 1}, CV_8UC3)};
    cv::LUT(src, tables[src.channels() == 3], dst);
  });
}

void addThresholds() {
  addOpenCv("vekiThreshold_GT_8u_C1R", CV_8UC1,
            [](const Mat& src, Mat& dst) { cv::threshold(src, dst, 100, 0, cv::THRESH_TRUNC); });
  addOpenCv("vekiThreshold_GT_8u_C3R", CV_8UC3,
            [](const Mat& src, Mat& dst) { cv::min(src, value3, dst); });
  addOpenCv("vekiThreshold_LT_8u_C1R", CV_8UC1,
            [](const Mat& src, Mat& dst) { cv::max(src, 100, dst); });
  addOpenCv("vekiThreshold_LT_8u_C3R", CV_8UC3,
            [](const Mat& src, Mat& dst) { cv::max(src, value3, dst); });
  addTable("vekiThreshold_GTVal");
  addTable("vekiThreshold_LTVal");
  addTable("vekiThreshold_LTValGTVal");
  // Where the value is 0 and there is one channel, a threshold of its own does it.
  addOpenCv(
      "vekiThreshold_LTVal_8u_C1R", CV_8UC1,
      [](const Mat& src, Mat& dst) { cv::threshold(src, dst, 99, 0, cv::THRESH_TOZERO); },
      "OpenCV threshold");
  addOpenCv(
      "vekiThreshold_GTVal_8u_C1R", CV_8UC1,
      [](const Mat& src, Mat& dst) { cv::threshold(src, dst, 100, 0, cv::THRESH_TOZERO_INV); },
      "OpenCV threshold");
}

void addSetCopy() {
  addOne("vekiSet", "R", [](const Mat& src, Mat& dst) {
    dst.create(src.size(), src.type());
    dst.setTo(value(src));
  });
  addOne("vekiCopy", "R", [](const Mat& src, Mat& dst) { src.copyTo(dst); });
}

[[maybe_unused]] const bool registered = [] {
  for (int scaleFactor : {0, 1, 3, -2}) addArithmetic(scaleFactor);
  addScaledToFull();
  addLogic();
  addShifts();
  addThresholds();
  addSetCopy();
  return true;
}();

}  // namespace
}  // namespace vek::bench
