// The closed loop of a camera: the sensor takes a frame, the library measures it and moves the
// controls for the next one, and makes a picture of it.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <vector>
#include <vek/isp.hpp>

#include "vekcam/accuracy.h"
#include "vekcam/exposure.h"
#include "vekcam/picture.h"
#include "vekcam/stage_times.h"

namespace vekcam {

/// How long each light of the simulation shines.
constexpr int framesPerLight = 24;

struct LoopSettings {
  VekiSize size = {1280, 720};                   ///< of the sensor, even
  VekiSize preview = {640, 360};                 ///< of the picture before it is turned, even
  vek::Rotation rotation = vek::Rotation::none;  ///< of the picture
  vek::ToneCurve curve = vek::ToneCurve::srgb;
  Metering metering = Metering::isp;
  SceneKind scene = SceneKind::chart;
  uint64_t seed = 1;
};

/// What the exposure aims at.
struct Band {
  double low, high, fullScale;
};

/// What happened to one frame. The controls are those that it was taken with.
struct FrameRecord {
  size_t light = 0;
  Controls controls;
  double brightness = 0;
  bool inBand = false;
  VekStatus exposureStatus = vekStsNoErr;
  VekStatus balanceStatus = vekStsNoErr;
};

class CameraLoop {
 public:
  explicit CameraLoop(const LoopSettings& settings);

  /// Takes and meters the next frame, and makes a picture of it.
  FrameRecord step();

  const Picture& picture() const { return picture_; }
  /// The last frame of the sensor, in little-endian words.
  void writeRaw(std::ostream& out) const;
  /// Of the pictures since half of the present light's time, when everything has settled.
  Accuracy accuracy() const { return accuracy_.result(); }
  Band band() const;
  const StageTimes& times() const { return times_; }

 private:
  LoopSettings settings_;
  Sensor sensor_;
  RawFrame raw_;
  std::optional<Exposure> exposure_;  ///< without Metering::isp
  vek::Isp isp_;
  Picture picture_;
  AccuracyMeter accuracy_;
  StageTimes times_;
  Controls controls_;
  int frame_ = 0;
};

/// For each light of a run, after how many frames the brightness was in the band to stay; -1 if it
/// never was.
std::vector<int> settlingTimes(const std::vector<FrameRecord>& records);

}  // namespace vekcam
