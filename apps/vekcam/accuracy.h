// How right the colours of a picture of the test scene are.
#pragma once

#include <array>
#include <string>

#include "vekcam/picture.h"
#include "vekcam/pipeline.h"
#include "vekcam/scene.h"

namespace vekcam {

struct Accuracy {
  double meanDifference;   ///< of the patches, in CIE 1976 units
  double worstDifference;  ///< of a patch
  int worstPatch;          ///< 1..24
  double greySpread;       ///< most codes between the channels of a step of the grey wedge, of the
                           ///< codes that belong to mean light
  bool isMonotonic;        ///< no step of the wedge is darker than the one before it
};

/// Compares pictures with the reflectances in front of the sensor. They were resized from the sensor's
/// size to `preview` and then rotated. Noise averages out over the pictures. How bright they
/// are does not count: they are scaled so that the grey patches fit best.
class AccuracyMeter {
 public:
  AccuracyMeter(VekiSize sensor, VekiSize preview, vek::Rotation rotation, vek::ToneCurve curve);

  void clear() { count_ = 0; }
  void add(const Picture& picture);
  Accuracy result() const;  ///< there was a picture at least

 private:
  using Triple = std::array<double, 3>;

  VekiSize sensor_, preview_;
  vek::Rotation rotation_;
  std::array<double, 256> light_;  ///< what a code stands for
  int count_ = 0;
  std::array<Triple, patchCount> patches_ = {};  ///< sums of the means of light
  std::array<Triple, wedgeSteps> wedge_ = {};    ///< likewise
};

std::string describe(const Accuracy& accuracy);

}  // namespace vekcam
