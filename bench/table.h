// Pairs side by side: ours, the peer's, and a plain copy, interleaved in one run.
#pragma once

#include "vek/vek.h"

#include <optional>
#include <string>
#include <vector>

namespace vek::bench {

struct TableOptions {
  std::vector<VekiSize> sizes;
  std::string filter;    ///< names that contain this
  std::string json;      ///< file to write, if not empty
  std::string markdown;  ///< file to write, if not empty
};

/// Standard sizes from "WIDTHxHEIGHT,..." or "all".
std::optional<std::vector<VekiSize>> parseSizes(const std::string& text);

/// Name under which a benchmark is registered with Google Benchmark.
std::string label(const std::string& name, VekiSize size, const std::string& peer = "");

/// Runs every benchmark with its peers and prints one line for each; returns the exit status.
int runTable(const TableOptions& options);

}  // namespace vek::bench
