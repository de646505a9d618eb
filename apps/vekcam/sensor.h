// A simulated 10-bit RGGB sensor.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>
#include <vek/isp.hpp>

#include "vekcam/raw_frame.h"
#include "vekcam/scene.h"

namespace vekcam {

/// What the library decides and the application programs the sensor with.
struct Controls {
  Vek16u exposure = 24;                       ///< exposure time in rows, moved by scaling
  Vek16u analogueGain = 16;                   ///< in sixteenths, moved in steps
  Vek16u red = 256, green = 256, blue = 256;  ///< channel gains in 1/256
};

/// Limits of the two control values.
struct ControlRange {
  int minExposure, maxExposure;  ///< rows
  int minGain, maxGain;          ///< sixteenths
};
constexpr ControlRange controlRange = {12, 2000, 16, 128};

struct Light {
  std::string name;
  Rgb colour;    ///< relative to daylight
  double level;  ///< 1: a grey of 18 % fills a fifth of the range in about 128 rows
};

/// The lights of the simulation, one after the other.
const std::vector<Light>& lightScript();

using vek::Matrix3;

class Sensor {
 public:
  Sensor(Scene scene, uint64_t seed);

  /// From the channels, balanced for the light, to the scene's linear colour; the rows add up to 1.
  static Matrix3 colorCorrection();
  /// What balances the channels in daylight.
  static vek::ColorGains daylightGains();

  /// The light that falls on the scene from now on.
  void illuminate(const Light& light);

  /// Exposes one frame: photon noise, read noise, analogue gain, conversion to 10 bits, channel
  /// gains, dead pixels. The border is mirrored.
  void expose(const Controls& controls, RawFrame& frame);

  /// Samples that always read 0 or 1023.
  const std::vector<VekiDeadPixel>& deadPixels() const { return dead_; }

 private:
  uint64_t random();

  Scene scene_;
  std::vector<float> electronsPerRow_;  ///< what each sample collects in one row's time
  std::vector<float> noise_;            ///< standard normal numbers
  std::vector<VekiDeadPixel> dead_;
  uint64_t randomState_;
};

/// Channel gains as a sensor applies them, in place: clipped to 10 bits.
void applyGains(const Controls& controls, RawFrame& frame);

}  // namespace vekcam
