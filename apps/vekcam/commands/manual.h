// The manual page and the completions of shells, made of the options' definitions.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vekcam {

/// For man(1).
std::string manualPage(const CLI::App& program);

/// "bash", "zsh" or "fish".
std::string completion(const CLI::App& program, const std::string& shell);

}  // namespace vekcam
