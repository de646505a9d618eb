// The report of a simulation: one self-contained page.
#pragma once

#include <string>
#include <vector>

#include "vekcam/camera_loop.h"

namespace vekcam {

/// One closed-loop run and what it aimed at.
struct Run {
  Metering metering;
  Band band;
  std::vector<FrameRecord> records;
};

/// The last picture of a light, and how right those since half of its time were.
struct ShownPicture {
  std::string light;
  std::string caption;
  std::string png;
  Accuracy accuracy;
};

struct Report {
  LoopSettings settings;
  Run run;
  Run comparison;  ///< the same lights with another control law, small
  StageTimes times;
  std::string contactSheet;  ///< PNG
  std::vector<ShownPicture> pictures;
};

std::string page(const Report& report);

}  // namespace vekcam
