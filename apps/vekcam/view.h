// vekcam view: frames in a window (SDL2).
#pragma once

#include <string>

#include "vekcam/console.h"
#include "vekcam/frame_source.h"

namespace vekcam {

struct ViewSettings {
  std::string input;  ///< a file, a directory, "-" for standard input; empty: the simulated camera
  FrameInfo frame;
  DevelopmentSettings development;
  double framesPerSecond = 0;  ///< the most that are shown; 0: as they come
  std::string keys;            ///< pressed before the first frame
  int frames = 0;              ///< after so many the window closes; 0: when it is closed
  std::string screenshot;      ///< written at the end, and when S is pressed
};

/// "2.26.5", or empty if this build has no windows.
std::string sdlVersion();

/// Shows frames until the window is closed.
void view(const ViewSettings& settings, const Console& console);

}  // namespace vekcam
