// vekcam develop: raw frames from files become pictures.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "vekcam/console.h"
#include "vekcam/development.h"

namespace vekcam {

enum class OutputKind { png, jpeg, ppm, yuv, y4m };

/// By an extension, or by a name such as "png" in letters of any case.
std::optional<OutputKind> outputKindNamed(std::string name);

struct DevelopSettings {
  std::vector<std::string> inputs;  ///< files and directories; "-" is standard input
  std::string output;               ///< a file, a directory, or "-" for standard output
  std::optional<OutputKind> kind;   ///< otherwise by the output's extension
  int quality = 90;                 ///< of JPEG
  FrameInfo frame;                  ///< of plain frames; no width: not known
  bool isFormatGiven = false;       ///< it is not the default, nor the camera's
  DevelopmentSettings development;
  bool json = false;
};

void develop(const DevelopSettings& settings, const Console& console);

}  // namespace vekcam
