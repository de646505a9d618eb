// vek_bench_pair: two builds of the library in one process, the same calls on the same memory
// alternately. Other work on the machine and its clock hit both alike.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <unistd.h>

#include "bench/benchmarks.h"
#include "bench/rebound.h"

namespace vek::bench {
namespace {

struct Options {
  std::string oldPath, newPath, filter, size = "1280x720", level;
  int rounds = 21;
  double batch = 0.4;  ///< milliseconds
  double limit = 0.9;
};

/// Processor time of this thread: what others take of the processor does not count.
double now() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

double secondsOf(const Call& call, int count) {
  const double start = now();
  for (int i = 0; i < count; ++i) call();
  return now() - start;
}

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
  return values[values.size() / 2];
}

struct Result {
  std::string name;
  double oldSeconds, newSeconds;  ///< the shortest round, for one call
  double medianRatio;             ///< of the rounds' old to new

  double ratio() const { return oldSeconds / newSeconds; }
};

Result compare(const Benchmark& benchmark, const Library& older, const Library& newer,
               const Options& options, VekiSize size) {
  const Library* const libraries[2] = {&older, &newer};
  const auto memory = std::make_shared<test::Memory>();
  Call calls[2];
  for (int i = 0; i < 2; ++i) {
    libraries[i]->bind();
    calls[i] = benchmark.make(size, memory);
  }
  // Equal batches, long enough for the clock.
  int count = 1;
  while (count < 1 << 20 && secondsOf(calls[1], count) < options.batch / 1000) count *= 2;
  std::vector<double> seconds[2], ratios;
  for (int round = 0; round < options.rounds; ++round) {
    for (int turn = 0; turn < 2; ++turn) {
      const int i = (round + turn) % 2;  // neither build is always the second
      libraries[i]->bind();
      calls[i]();
      seconds[i].push_back(secondsOf(calls[i], count) / count);
    }
    ratios.push_back(seconds[0].back() / seconds[1].back());
  }
  for (int i = 0; i < 2; ++i) {  // what a closure holds is released by the build that made it
    libraries[i]->bind();
    calls[i] = nullptr;
  }
  const auto least = [](const std::vector<double>& v) {
    return *std::min_element(v.begin(), v.end());
  };
  return {benchmark.name, least(seconds[0]), least(seconds[1]), median(ratios)};
}

int run(const Options& options) {
  VekiSize size;
  if (std::sscanf(options.size.c_str(), "%dx%d", &size.width, &size.height) != 2) {
    std::fprintf(stderr, "vek_bench_pair: %s is no size\n", options.size.c_str());
    return 2;
  }
  const Library older(options.oldPath), newer(options.newPath);
  for (const Library* library : {&older, &newer}) {
    if (library->error().empty()) continue;
    std::fprintf(stderr, "vek_bench_pair: %s\n", library->error().c_str());
    return 2;
  }
  std::printf("%-56s %10s %10s %8s %8s\n", "old / new, above 1: new is faster", "old, us",
              "new, us", "minima", "median");
  std::vector<Result> results;
  for (const Benchmark& benchmark : benchmarks(options.filter)) {
    if (!older.has(benchmark.function) || !newer.has(benchmark.function)) {
      std::printf("%-56s in one build only\n", benchmark.name.c_str());
      continue;
    }
    const Result r = compare(benchmark, older, newer, options, size);
    std::printf("%-56s %10.2f %10.2f %8.3f %8.3f\n", r.name.c_str(), r.oldSeconds * 1e6,
                r.newSeconds * 1e6, r.ratio(), r.medianRatio);
    std::fflush(stdout);
    results.push_back(r);
  }
  if (results.empty()) {
    std::fprintf(stderr, "vek_bench_pair: no benchmark has %s in its name\n",
                 options.filter.c_str());
    return 2;
  }
  double logs = 0, medianLogs = 0;
  for (const Result& r : results) {
    logs += std::log(r.ratio());
    medianLogs += std::log(r.medianRatio);
  }
  const auto count = static_cast<double>(results.size());
  std::printf("\n%zu benchmarks at %s: geometric mean %.3f by minima, %.3f by medians\n",
              results.size(), options.size.c_str(), std::exp(logs / count),
              std::exp(medianLogs / count));
  // A real loss shows in both figures.
  bool lost = false;
  for (const Result& r : results) {
    if (std::max(r.ratio(), r.medianRatio) >= options.limit) continue;
    std::printf("below %.2f: %-52s %.3f %.3f\n", options.limit, r.name.c_str(), r.ratio(),
                r.medianRatio);
    lost = true;
  }
  return lost ? 1 : 0;
}

/// glibc reads its settings when a program starts, so the program starts itself again.
void restartBelow(const std::string& mask, char** argv) {
  const std::string setting = "glibc.cpu.hwcaps=" + mask;
  setenv("GLIBC_TUNABLES", setting.c_str(), 1);
  setenv("VEK_BENCH_RESTARTED", "1", 1);
  execv("/proc/self/exe", argv);
  std::perror("vek_bench_pair: execv");
}

}  // namespace
}  // namespace vek::bench

int main(int argc, char** argv) {
  using namespace vek::bench;
  Options options;
  CLI::App app("Compares two builds of libvek: old time / new time of every benchmark");
  app.add_option("OLD", options.oldPath, "shared library")->required();
  app.add_option("NEW", options.newPath, "shared library")->required();
  app.add_option("--filter", options.filter, "only benchmarks with this in their names");
  app.add_option("--size", options.size, "WIDTHxHEIGHT")->capture_default_str();
  app.add_option("--rounds", options.rounds)->capture_default_str()->check(CLI::PositiveNumber);
  app.add_option("--batch", options.batch, "milliseconds that a build runs in a round")
      ->capture_default_str();
  app.add_option("--limit", options.limit, "lower ratios are listed and fail")
      ->capture_default_str();
  const std::map<std::string, std::string> masks = {VEK_LEVEL_MASKS};
  app.add_option("--level", options.level, "the highest level to use")->check(CLI::IsMember(masks));
  CLI11_PARSE(app, argc, argv);
  if (!options.level.empty() && std::getenv("VEK_BENCH_RESTARTED") == nullptr) {
    restartBelow(masks.at(options.level), argv);
    return 2;
  }
  return run(options);
}
