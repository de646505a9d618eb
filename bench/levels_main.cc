// vek_bench_levels: what each CPU level gains, every function at all of them in one run.
//
// The levels run alternately in one process: like the tests it links the static library but not its
// cpuLevel() (tests/support/levels.h).
#include <CLI/CLI.hpp>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "bench/benchmarks.h"
#include "bench/report.h"
#include "tests/support/levels.h"

namespace vek::bench {
namespace {

constexpr VekiSize size = {1280, 720};

struct Line {
  std::string name, family;
  std::vector<double> seconds;  ///< at each level
};

std::string label(const std::string& name, Level level) {
  return name + "/" + test::name(level);
}

void registerAll(const std::vector<Benchmark>& all) {
  for (const Benchmark& b : all) {
    for (Level level : test::levels()) {
      benchmark::RegisterBenchmark(label(b.name, level).c_str(),
                                   [b, level](benchmark::State& state) {
                                     const test::LevelScope scope(level);
                                     const Call call = b.make(size);
                                     for (auto _ : state) {
                                       call();
                                       benchmark::ClobberMemory();
                                     }
                                   });
    }
  }
}

std::vector<Line> measure(const std::vector<Benchmark>& all) {
  std::vector<Line> lines;
  for (const Benchmark& b : all) {
    std::string names;
    for (Level level : test::levels()) names.append("|").append(test::name(level));
    auto seconds = medians(quoted(b.name) + "/(" + names.substr(1) + ")");
    Line line = {b.name, b.family, {}};
    std::printf("%-52s", b.name.c_str());
    for (Level level : test::levels()) {
      line.seconds.push_back(seconds[label(b.name, level)]);
      std::printf(" %10.1f (%.1f)", line.seconds.back() * 1e6,
                  line.seconds[0] / line.seconds.back());
    }
    std::printf("\n");
    std::fflush(stdout);
    lines.push_back(line);
  }
  return lines;
}

std::string markdown(const std::vector<Line>& lines) {
  std::string text = "# What each CPU level gains\n\n" + circumstances() + ". Microseconds at " +
                     sizeText(size) +
                     ";\nin brackets how many times as fast as the portable level.\n\n| function |";
  std::string rule = "\n|---|";
  for (Level level : test::levels()) {
    text.append(" ").append(test::name(level)).append(" |");
    rule += "---:|";
  }
  text += rule + "\n";
  for (const Line& line : lines) {
    text += "| `" + line.name + "` |";
    for (double own : line.seconds) {
      char cell[64];
      std::snprintf(cell, sizeof cell, " %.1f (%.1f) |", own * 1e6, line.seconds[0] / own);
      text += cell;
    }
    text += "\n";
  }
  return text;
}

std::string json(const std::vector<Line>& lines) {
  nlohmann::json functions = nlohmann::json::array();
  for (const Line& line : lines) {
    nlohmann::json us;
    for (size_t i = 0; i < line.seconds.size(); ++i) {
      us[test::name(test::levels()[i])] = line.seconds[i] * 1e6;
    }
    functions.push_back({{"function", line.name}, {"family", line.family}, {"us", us}});
  }
  return nlohmann::json({{"date", today()},
                         {"cpu", processor()},
                         {"compiler", compiler()},
                         {"size", sizeText(size)},
                         {"functions", functions}})
             .dump(1) +
         "\n";
}

int main(int argc, char** argv) {
  std::string filter, jsonFile, markdownFile;
  CLI::App app("Every benchmark at every level of this processor, at 1280x720");
  app.add_option("--filter", filter, "names that contain this");
  app.add_option("--json", jsonFile, "file to write");
  app.add_option("--markdown", markdownFile, "file to write");
  CLI11_PARSE(app, argc, argv);
  const std::vector<Benchmark> all = benchmarks(filter);
  registerAll(all);
  initializeForTables(argv[0]);
  const std::vector<Line> lines = measure(all);
  return writeFile(jsonFile, json(lines)) && writeFile(markdownFile, markdown(lines)) ? 0 : 1;
}

}  // namespace
}  // namespace vek::bench

int main(int argc, char** argv) {
  return vek::bench::main(argc, argv);
}
