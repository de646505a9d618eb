// Options that several commands have.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vek/isp.hpp>

namespace vekcam {

/// Sides of at least `least` and at most `most`, both even; other sizes are refused.
struct SizeLimits {
  int least, most;
};

/// WxH.
CLI::Option* addSize(CLI::App& command, const std::string& name, vek::Size& size, SizeLimits limits,
                     const std::string& help);

/// --rotate, clockwise.
void addRotation(CLI::App& command, vek::Rotation& rotation);

/// --curve.
void addCurve(CLI::App& command, vek::ToneCurve& curve);

}  // namespace vekcam
