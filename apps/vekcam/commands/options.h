// Options that several commands have.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vek/isp.hpp>

#include "vekcam/development.h"

namespace vekcam {

/// Sides of at least `least` and at most `most`, both even; other sizes are refused.
struct SizeLimits {
  int least, most;
};

/// WxH.
CLI::Option* addSize(CLI::App& command, const std::string& name, vek::Size& size, SizeLimits limits,
                     const std::string& help);

/// --rotate, clockwise.
void addRotation(CLI::App& command, const std::function<void(vek::Rotation)>& set);

/// --curve.
void addCurve(CLI::App& command, vek::ToneCurve& curve);

/// --black.
void addBlack(CLI::App& command, std::optional<std::array<int, 4>>& black);

/// --level, for the whole program.
void addLevel(CLI::App& command);

/// --size, --format, --step: what plain frames are like.
void addFrame(CLI::App& command, FrameInfo& frame, bool& isFormatGiven);

/// What is said by paths, which are read when the command runs.
struct DevelopmentFiles {
  std::string camera, dead;  ///< may be empty
};

/// --gains, --black, --white, --matrix, --camera, --dead, --curve, --scale, --rotate, --resize.
void addDevelopment(CLI::App& command, DevelopmentSettings& settings, DevelopmentFiles& files);

/// Reads the files; where the user does not say what frames are like, the camera's file may.
void readFiles(const DevelopmentFiles& files, DevelopmentSettings& settings, FrameInfo& frame,
               bool isFormatGiven);

}  // namespace vekcam
