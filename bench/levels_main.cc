// vek_bench_levels: what each CPU level gains, every function at all of them in one run.
//
//   vek_bench_levels [--filter=TEXT] [--markdown=FILE]
//
// The levels take turns in one process: like the tests it links the static library but not its
// cpuLevel() (tests/support/levels.h).
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "bench/report.h"
#include "bench/support.h"
#include "tests/support/levels.h"

namespace vek::bench {
namespace {

constexpr VekiSize size = {1280, 720};

std::string label(const Entry& entry, Level level) {
  return entry.name + "/" + test::name(level);
}

void registerAll(const std::string& filter) {
  for (const Entry& entry : entries()) {
    if (entry.name.find(filter) == std::string::npos) continue;
    for (Level level : test::levels()) {
      benchmark::RegisterBenchmark(label(entry, level).c_str(),
                                   [&entry, level](benchmark::State& state) {
                                     const test::LevelScope scope(level);
                                     const Call call = entry.make(size);
                                     for (auto _ : state) {
                                       call();
                                       benchmark::ClobberMemory();
                                     }
                                   });
    }
  }
}

/// Prints to `file`, and to the terminal without the marks of a table.
int run(const std::string& filter, std::ostream& file) {
  const std::vector<Level> levels = test::levels();
  file << "# What each CPU level gains\n\nWritten by `./dev bench`: " << circumstances()
       << ". Microseconds at " << sizeText(size)
       << ";\nin brackets how many times as fast as the portable level.\n\n| function |";
  for (Level level : levels) file << ' ' << test::name(level) << " |";
  file << "\n|---|";
  for (size_t i = 0; i < levels.size(); ++i) file << "---:|";
  file << '\n';
  std::vector<double> logs(levels.size());
  int count = 0;
  for (const Entry& entry : entries()) {
    if (entry.name.find(filter) == std::string::npos) continue;
    auto seconds = medians(quoted(entry.name) + "/(portable|avx2|avx512|neon)");
    std::printf("%-52s", entry.name.c_str());
    file << "| `" << entry.name << "` |";
    const double portable = seconds[label(entry, Level::portable)];
    for (size_t i = 0; i < levels.size(); ++i) {
      const double own = seconds[label(entry, levels[i])];
      char text[64];
      std::snprintf(text, sizeof text, " %.1f (%.1f)", own * 1e6, portable / own);
      file << text << " |";
      std::printf("%20s", text);
      logs[i] += std::log(portable / own);
    }
    ++count;
    file << '\n';
    std::printf("\n");
    std::fflush(stdout);
  }
  file << "| geometric mean |";
  for (double sum : logs) {
    char text[32];
    std::snprintf(text, sizeof text, " (%.1f) |", std::exp(sum / count));
    file << text;
  }
  file << '\n';
  return file.flush() ? 0 : 1;
}

}  // namespace
}  // namespace vek::bench

int main(int argc, char** argv) {
  std::string filter, markdown = "/dev/null";
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--filter=", 9) == 0) {
      filter = argv[i] + 9;
    } else if (std::strncmp(argv[i], "--markdown=", 11) == 0) {
      markdown = argv[i] + 11;
    } else {
      std::fprintf(stderr, "vek_bench_levels: cannot use %s\n", argv[i]);
      return 2;
    }
  }
  vek::bench::registerAll(filter);
  vek::bench::initializeForTables(argv[0]);
  std::ofstream file(markdown);
  return vek::bench::run(filter, file);
}
