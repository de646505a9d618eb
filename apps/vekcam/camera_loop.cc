#include "vekcam/camera_loop.h"

namespace vekcam {
namespace {

PipelineSettings pipelineSettings(const LoopSettings& settings, const Sensor& sensor) {
  PipelineSettings pipeline;
  pipeline.region = settings.size;
  pipeline.curve = settings.curve;
  pipeline.colorCorrection = Sensor::colorCorrection();
  pipeline.deadPixels = sensor.deadPixels();
  return pipeline;
}

}  // namespace

const std::vector<Light>& lightScript() {
  static const std::vector<Light> lights = {
      {"daylight", {1, 1, 1}, 1},
      {"lamp at night", {1.75f, 1, .36f}, .007},
      {"noon sun", {1.08f, 1, .88f}, 6},
      {"shade", {.82f, 1, 1.3f}, .3},
  };
  return lights;
}

CameraLoop::CameraLoop(const LoopSettings& settings)
    : settings_(settings),
      sensor_(Scene(settings.size), settings.seed),
      raw_(settings.size),
      exposure_(settings.metering, settings.size),
      whiteBalance_(settings.size, gainStepPerFrame),
      pipeline_(raw_, pipelineSettings(settings, sensor_)) {}

FrameRecord CameraLoop::step(bool develop) {
  FrameRecord record;
  record.light = static_cast<size_t>(frame_ / framesPerLight) % lightScript().size();
  if (frame_ % framesPerLight == 0) sensor_.illuminate(lightScript()[record.light]);
  ++frame_;
  sensor_.expose(controls_, raw_);
  record.controls = controls_;
  record.brightness = exposure_.brightness(raw_);
  record.inBand = exposure_.inBand(record.brightness);
  record.exposureStatus =
      times_.measure(Stage::exposure, [&] { return exposure_.update(raw_, controls_); });
  record.balanceStatus =
      times_.measure(Stage::whiteBalance, [&] { return whiteBalance_.update(raw_, controls_); });
  if (develop) {
    times_.measure(Stage::rawPipeline, [&] { pipeline_.convert(raw_); });
    times_.measure(Stage::preview, [&] {
      toPicture(pipeline_.image(), settings_.preview, settings_.degrees, picture_);
    });
  }
  return record;
}

std::vector<int> settlingTimes(const std::vector<FrameRecord>& records) {
  std::vector<int> times;
  for (size_t start = 0; start < records.size(); start += framesPerLight) {
    int settled = -1;
    for (size_t i = 0; i < framesPerLight && start + i < records.size(); ++i) {
      if (!records[start + i].inBand) {
        settled = -1;
      } else if (settled < 0) {
        settled = static_cast<int>(i);
      }
    }
    times.push_back(settled);
  }
  return times;
}

}  // namespace vekcam
