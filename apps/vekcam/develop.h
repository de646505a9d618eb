// vekcam develop: one raw frame from a file becomes a picture.
#pragma once

#include <string>

#include "vekcam/pipeline.h"

namespace vekcam {

struct DevelopSettings {
  std::string input;     ///< "-" is standard input
  std::string output;    ///< ends in .png or .ppm
  std::string deadList;  ///< may be empty
  VekiSize size = {0, 0};
  int step = 0;  ///< bytes; 0: the samples of a row
  vek::Rotation rotation = vek::Rotation::none;
  int scale = 1;
  vek::ToneCurve curve = vek::ToneCurve::srgb;
};

/// Reads, develops and writes; returns what there is to say about it.
std::string develop(const DevelopSettings& settings);

}  // namespace vekcam
