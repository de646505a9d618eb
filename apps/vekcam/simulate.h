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
  std::string rawFrames;  ///< a file for all raw frames, RG10; may be empty
  bool json = false;
};

/// Runs the loop, writes the frames, the contact sheet and the report, and tells a summary.
void simulate(const SimulateSettings& settings, const Console& console);

}  // namespace vekcam
