#include "vekcam/develop.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "vekcam/files.h"
#include "vekcam/stage_times.h"
#include "vekcam/white_balance.h"

namespace vekcam {
namespace {

void check(const DevelopSettings& settings) {
  if (settings.step != 0 && settings.step < 2 * settings.size.width) {
    throw UsageError("a step of " + std::to_string(settings.step) +
                     " bytes is shorter than a row of " + std::to_string(2 * settings.size.width));
  }
  if (!settings.output.ends_with(".png") && !settings.output.ends_with(".ppm")) {
    throw UsageError("output " + settings.output + " ends neither in .png nor in .ppm");
  }
}

int degreesOf(vek::Rotation rotation) {
  switch (rotation) {
    case vek::Rotation::cw90:
      return 90;
    case vek::Rotation::half:
      return 180;
    case vek::Rotation::ccw90:
      return 270;
    default:
      return 0;
  }
}

/// Finds the gains that make the frame neutral and applies them. The library moves the gains of a
/// sensor from frame to frame; here the frame is one and the same, with the gains applied anew.
Controls balance(RawFrame& frame, StageTimes& times) {
  constexpr int mostFrames = 40;
  constexpr int gainStep = 128;
  WhiteBalance whiteBalance(frame.size(), gainStep);
  const RawFrame original = frame;
  Controls controls;
  for (int i = 0; i < mostFrames; ++i) {
    const Controls before = controls;
    times.measure(Stage::whiteBalance, [&] { return whiteBalance.update(frame, controls); });
    if (std::pair(controls.red, controls.blue) == std::pair(before.red, before.blue)) break;
    frame = original;
    applyGains(controls, frame);
  }
  // No gain below 1: a clipped highlight would lose its white.
  const int smallest = std::min({controls.red, controls.green, controls.blue});
  for (Vek16u* gain : {&controls.red, &controls.green, &controls.blue}) {
    *gain = static_cast<Vek16u>(std::min(*gain * 256 / smallest, 65535));
  }
  frame = original;
  applyGains(controls, frame);
  return controls;
}

}  // namespace

std::string develop(const DevelopSettings& settings) {
  check(settings);
  const int step = settings.step == 0 ? 2 * settings.size.width : settings.step;
  PipelineSettings pipelineSettings;
  pipelineSettings.region =
      usableRegion(settings.size, degreesOf(settings.rotation), settings.scale);
  pipelineSettings.degrees = degreesOf(settings.rotation);
  pipelineSettings.scale = settings.scale;
  pipelineSettings.curve = settings.curve;
  if (!settings.deadList.empty()) {
    pipelineSettings.deadPixels = readDeadPixels(settings.deadList, settings.size);
  }
  RawFrame frame = readRawFrame(settings.input, settings.size, step);

  StageTimes times;
  const Controls gains = balance(frame, times);
  frame.mirrorBorder();
  RawPipeline pipeline(frame, pipelineSettings);
  times.measure(Stage::rawPipeline, [&] { pipeline.convert(frame); });
  Picture picture(pipeline.image().size().width, pipeline.image().size().height);
  times.measure(Stage::preview,
                [&] { toPicture(pipeline.image(), pipeline.image().size(), 0, picture); });
  writeFile(settings.output,
            settings.output.ends_with(".ppm") ? encodePpm(picture) : encodePng(picture));

  std::string text;
  const VekiSize region = pipelineSettings.region;
  const auto size = [](int w, int h) { return std::to_string(w) + "x" + std::to_string(h); };
  if (region.width != settings.size.width || region.height != settings.size.height) {
    text += "cropped to the top left " + size(region.width, region.height) +
            ": the reduced picture needs a width that is a multiple of 4 and an even height\n";
  }
  char line[128];
  std::snprintf(line, sizeof line, "gains: red %.2f, green %.2f, blue %.2f\n", gains.red / 256.,
                gains.green / 256., gains.blue / 256.);
  return text + line + times.table() + settings.output + ": " +
         size(picture.width, picture.height) + "\n";
}

}  // namespace vekcam
