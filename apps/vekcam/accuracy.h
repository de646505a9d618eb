// How right the colours of a picture of the test scene are.
#pragma once

#include <array>
#include <string>
#include <vek/isp.hpp>

#include "vekcam/picture.h"
#include "vekcam/scene.h"

namespace vekcam {

struct Accuracy {
  double meanDifference;   ///< of the patches, in CIE 1976 units
  double worstDifference;  ///< of a patch
  int worstPatch;          ///< 1..24
  double greySpread;       ///< most codes between the channels of a step of the grey wedge, of the
                           ///< codes that belong to mean light
  bool isMonotonic;        ///< no step of the wedge is darker than the one before it
  double noise;            ///< standard deviation of green in a grey patch, in codes
  double detail;           ///< share of their contrast that lines two pixels wide keep
};

/// Compares pictures with the reflectances in front of the sensor. They were resized from the sensor's
/// size to `preview` and then rotated. Noise averages out over the pictures. How bright they
/// are does not count: they are scaled so that the grey patches fit best.
class AccuracyMeter {
 public:
  AccuracyMeter(VekiSize sensor, VekiSize preview, vek::Rotation rotation, vek::ToneCurve curve);

  void clear();
  void add(const Picture& picture);
  Accuracy result() const;  ///< there was a picture at least

 private:
  using Triple = std::array<double, 3>;

  /// Sums over the pixels of the rings that are about two pixels wide: of 1, cosine and sine of their
  /// phase and their light, each times each of the first three.
  using RingSums = std::array<std::array<double, 4>, 3>;

  void addRings(const Picture& picture);
  double detail() const;

  VekiSize sensor_, preview_;
  vek::Rotation rotation_;
  std::array<double, 256> light_;  ///< what a code stands for
  int count_ = 0;
  std::array<Triple, patchCount> patches_ = {};  ///< sums of the means of light
  std::array<Triple, wedgeSteps> wedge_ = {};    ///< likewise
  RingSums rings_ = {};
  double noise_ = 0;  ///< sum of the pictures' standard deviations
};

std::string describe(const Accuracy& accuracy);

/// The CIE 1976 difference of two colours in linear sRGB, relative to its white.
double colorDifference(const std::array<double, 3>& a, const std::array<double, 3>& b);

/// The light that a code, 0..255, stands for.
double lightOf(double code, vek::ToneCurve curve);

}  // namespace vekcam
