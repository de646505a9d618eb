// Running registered benchmarks and naming what they ran on.
#pragma once

#include "vek/vek.h"

#include <map>
#include <string>

namespace vek::bench {

std::string sizeText(VekiSize size);

/// The name as a regular expression.
std::string quoted(const std::string& name);

/// Google Benchmark's options for tables: repetitions of the benchmarks of one pattern take turns,
/// and each is long enough to be steady.
void initializeForTables(const char* program);

/// Runs the registered benchmarks whose whole names match; the median of each, in seconds.
std::map<std::string, double> medians(const std::string& pattern);

std::string processor();
std::string today();

/// Date, processor and compiler.
std::string circumstances();

}  // namespace vek::bench
