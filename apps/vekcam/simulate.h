// vekcam simulate: a simulated camera through changing light.
#pragma once

#include <string>

#include "vekcam/camera_loop.h"
#include "vekcam/console.h"

namespace vekcam {

struct SimulateSettings {
  LoopSettings loop;
  int frames = 4 * framesPerLight;
  std::string directory = "out";
};

/// Runs the loop, writes the frames, the contact sheet and the report, and returns a summary.
std::string simulate(const SimulateSettings& settings, const Console& console);

}  // namespace vekcam
