// vekcam stream: a sequence of raw frames becomes a sequence of pictures.
#pragma once

#include <string>

#include "vekcam/console.h"
#include "vekcam/development.h"

namespace vekcam {

struct StreamSettings {
  std::string input = "-", output = "-";  ///< "-": standard input, standard output
  std::string statistics;                 ///< a file for a line of JSON a frame; may be empty
  bool isY4m = true;                      ///< otherwise the planes alone
  double framesPerSecond = 30;            ///< that players are told
  int frames = 0;                         ///< at most so many; 0: all
  int threads = 1;                        ///< frames in flight
  FrameInfo frame;
  bool isFormatGiven = false;
  DevelopmentSettings development;
  bool json = false;
};

/// Until the input ends, or whoever reads the output goes away.
void stream(const StreamSettings& settings, const Console& console);

}  // namespace vekcam
