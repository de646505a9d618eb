// vek_bench: Google Benchmark's program, or with --table ours beside the peers and a plain copy.
#include <CLI/CLI.hpp>
#include <benchmark/benchmark.h>
#include <cstring>
#include <iostream>

#include "bench/benchmarks.h"
#include "bench/report.h"
#include "bench/table.h"

namespace vek::bench {
namespace {

void add(const std::string& name, VekiSize size, double bytesPerPixel, const Make& make) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    const Call call = make(size);
    for (auto _ : state) {
      call();
      benchmark::ClobberMemory();
    }
    const double pixels = static_cast<double>(state.iterations()) * size.width * size.height;
    state.counters["pixels/s"] = benchmark::Counter(pixels, benchmark::Counter::kIsRate);
    if (bytesPerPixel > 0) state.SetBytesProcessed(static_cast<int64_t>(pixels * bytesPerPixel));
  });
}

/// The bound of everything that only moves memory: a copy of one plane.
Call copy(VekiSize size) {
  const Image src(size.width, size.height), dst(size.width, size.height);
  const size_t bytes = static_cast<size_t>(size.width) * size.height;
  return [=] { std::memcpy(dst.data(), src.data(), bytes); };
}

void registerAll() {
  for (VekiSize size : standardSizes) {
    add(label("memcpy", size), size, 2, copy);
    for (const Benchmark& b : benchmarks()) {
      add(label(b.name, size), size, b.bytesPerPixel(), [b](VekiSize s) { return b.make(s); });
    }
    for (const Peer& p : peers()) add(label(p.name, size, p.peer), size, 0, p.make);
  }
}

int main(int argc, char** argv) {
  registerAll();
  CLI::App app("Benchmarks of every exported function");
  bool table = false;
  TableOptions options;
  std::string sizes = "1280x720";
  app.add_flag("--table", table, "ours beside the peers and memcpy, one line for each pair");
  app.add_option("--sizes", sizes, "of the table: WIDTHxHEIGHT,... or all")->capture_default_str();
  app.add_option("--filter", options.filter, "of the table: names that contain this");
  app.add_option("--json", options.json, "file for the table");
  app.add_option("--markdown", options.markdown, "file for the table");
  app.footer("Without --table, options are those of Google Benchmark (--benchmark_filter=...)");
  app.allow_extras();
  CLI11_PARSE(app, argc, argv);
  if (table) {
    const auto standard = parseSizes(sizes);
    if (!standard || !app.remaining().empty()) {
      std::cerr << "vek_bench: sizes are 64x48, 320x240, 1280x720, 1920x1080; see --help\n";
      return 2;
    }
    options.sizes = *standard;
    initializeForTables(argv[0]);
    return runTable(options);
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

}  // namespace
}  // namespace vek::bench

int main(int argc, char** argv) {
  return vek::bench::main(argc, argv);
}
