// Running registered benchmarks and naming what they ran on.
#pragma once

#include "vek/vek.h"

#include <map>
#include <string>
#include <vector>

namespace vek::bench {

std::string sizeText(VekiSize size);

/// The name as a regular expression.
std::string quoted(const std::string& name);

/// Google Benchmark's options for tables: the benchmarks of one pattern are repeated alternately, and
/// each is long enough to be steady.
void initializeForTables(const char* program);

/// Runs the registered benchmarks whose whole names match; the median of each, in seconds.
std::map<std::string, double> medians(const std::string& pattern);

double geometricMean(const std::vector<double>& values);

std::string processor();
std::string compiler();
std::string today();

/// Date, processor and compiler.
std::string circumstances();

/// Writes a file, none if its name is empty; says what is wrong on the terminal.
bool writeFile(const std::string& path, const std::string& text);

}  // namespace vek::bench
