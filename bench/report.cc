#include "bench/report.h"

#include <benchmark/benchmark.h>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <vector>

namespace vek::bench {
namespace {

/// Keeps the median of each benchmark's repetitions, in seconds.
class Medians : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
        seconds[run.run_name.function_name] =
            run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
      }
    }
  }

  std::map<std::string, double> seconds;
};

}  // namespace

std::string sizeText(VekiSize size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

/// Only letters, digits and / _ - stand for themselves.
std::string quoted(const std::string& name) {
  std::string result;
  for (char c : name) {
    if (!std::isalnum(static_cast<unsigned char>(c)) && c != '/' && c != '_' && c != '-') {
      result += '\\';
    }
    result += c;
  }
  return result;
}

void initializeForTables(const char* program) {
  const char* flags[] = {program, "--benchmark_repetitions=9",
                         "--benchmark_enable_random_interleaving=true",
                         "--benchmark_min_time=0.012"};
  int count = 4;
  benchmark::Initialize(&count, const_cast<char**>(flags));
}

std::map<std::string, double> medians(const std::string& pattern) {
  Medians result;
  benchmark::RunSpecifiedBenchmarks(&result, "^(" + pattern + ")$");
  return result.seconds;
}

double geometricMean(const std::vector<double>& values) {
  double logs = 0;
  for (double v : values) logs += std::log(v);
  return std::exp(logs / static_cast<double>(values.size()));
}

std::string processor() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  }
  return "unknown processor";
}

std::string today() {
  const std::time_t now = std::time(nullptr);
  char text[16];
  std::strftime(text, sizeof text, "%Y-%m-%d", std::localtime(&now));
  return text;
}

std::string compiler() {
#if defined(__clang__)
  return "clang " __clang_version__;
#else
  return "GCC " __VERSION__;
#endif
}

std::string circumstances() {
  return today() + ", " + processor() + ", compiled by " + compiler();
}

bool writeFile(const std::string& path, const std::string& text) {
  if (path.empty()) return true;
  std::ofstream file(path);
  file << text;
  if (file.flush()) return true;
  std::fprintf(stderr, "cannot write %s\n", path.c_str());
  return false;
}

}  // namespace vek::bench
