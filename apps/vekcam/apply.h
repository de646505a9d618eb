// vekcam apply: chains of operations on pictures (chain/chain.h), from files to files.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "chain/code/code.h"
#include "vekcam/console.h"
#include "vekcam/picture_files.h"

namespace vekcam {

struct ApplySettings {
  std::string chain;
  std::vector<std::string> inputs;
  std::string output;     ///< of one input; "-" is standard output; empty: no picture is written
  std::string directory;  ///< if not empty, where the pictures of all inputs go
  std::optional<PictureFormat> format;  ///< if not what the output's or input's extension says
  int quality = defaultJpegQuality;
  bool withDigest = false;
  std::optional<chain::Language>
      code;  ///< prints the chain as a program for the input, and does nothing else
  bool json = false;
};

/// Reads, computes and writes. Files that fail are told, and a Failure at the end.
void apply(const ApplySettings& settings, const Console& console);

/// One line for each operation, in groups.
std::string listOfOperations();
/// The same as JSON, with the parameters of each.
std::string operationsAsJson();

}  // namespace vekcam
