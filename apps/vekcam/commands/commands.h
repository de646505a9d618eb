// The commands of vekcam: each registers its options, and what it does when it is chosen.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "vekcam/console.h"
#include "vekcam/failure.h"

namespace vekcam {

/// All of them, with the options of the program itself.
void addCommands(CLI::App& program, Console& console);

void addApply(CLI::App& program, Console& console);
void addCalibrate(CLI::App& program, Console& console);
void addDevelop(CLI::App& program, Console& console);
void addInfo(CLI::App& program, Console& console);
void addSimulate(CLI::App& program, Console& console);
void addStream(CLI::App& program, Console& console);
void addView(CLI::App& program, Console& console);

/// A subcommand with the options that all of them have: --quiet, --verbose and --help.
CLI::App& addCommand(CLI::App& program, Console& console, const std::string& name,
                     const std::string& description);

/// --json for commands that print figures.
void addJson(CLI::App& command, bool& json);

}  // namespace vekcam
