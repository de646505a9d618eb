// vek_bench: Google Benchmark's program, or with --table the pairs of functions and peers.
//
//   vek_bench --table [--sizes=1280x720,64x48|all] [--filter=TEXT] [--json=FILE] [--markdown=FILE]
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <sstream>

#include "bench/report.h"
#include "bench/support.h"
#include "bench/table.h"

namespace vek::bench {

std::string label(const std::string& name, VekiSize size, const std::string& peer) {
  return name + "/" + sizeText(size) + (peer.empty() ? "" : "/peer:" + peer);
}

namespace {

void registerAll() {
  for (const Entry& entry : entries()) {
    for (VekiSize size : standardSizes) {
      const auto run = [&entry, size](benchmark::State& state) {
        const Call call = entry.make(size);
        for (auto _ : state) {
          call();
          benchmark::ClobberMemory();
        }
        const double pixels = static_cast<double>(state.iterations()) * size.width * size.height;
        state.counters["pixels/s"] = benchmark::Counter(pixels, benchmark::Counter::kIsRate);
        if (entry.bytesPerPixel > 0) {
          state.SetBytesProcessed(static_cast<int64_t>(pixels * entry.bytesPerPixel));
        }
      };
      benchmark::RegisterBenchmark(label(entry.name, size, entry.peer).c_str(), run);
    }
  }
}

/// The bound of everything that only moves memory: a copy of one plane.
void addCopy() {
  add("memcpy", 2, [](VekiSize size) -> Call {
    const Image src(size.width, size.height), dst(size.width, size.height);
    const size_t bytes = static_cast<size_t>(size.width) * size.height;
    return [=] { std::memcpy(dst.data(), src.data(), bytes); };
  });
}

bool parseSizes(const std::string& text, std::vector<VekiSize>& sizes) {
  sizes.clear();
  if (text == "all") {
    sizes.assign(std::begin(standardSizes), std::end(standardSizes));
    return true;
  }
  std::istringstream list(text);
  for (std::string item; std::getline(list, item, ',');) {
    VekiSize size;
    if (std::sscanf(item.c_str(), "%dx%d", &size.width, &size.height) != 2) return false;
    bool standard = false;
    for (VekiSize s : standardSizes) standard |= s.width == size.width && s.height == size.height;
    if (!standard) return false;
    sizes.push_back(size);
  }
  return !sizes.empty();
}

int tableMain(int argc, char** argv) {
  TableOptions options;
  for (int i = 2; i < argc; ++i) {
    const std::string argument = argv[i];
    const auto value = [&](const char* key) {
      const size_t length = std::strlen(key);
      return argument.compare(0, length, key) == 0 ? argv[i] + length : nullptr;
    };
    bool known = true;
    if (const char* v = value("--sizes=")) {
      known = parseSizes(v, options.sizes);
    } else if (const char* v = value("--filter=")) {
      options.filter = v;
    } else if (const char* v = value("--json=")) {
      options.json = v;
    } else if (const char* v = value("--markdown=")) {
      options.markdown = v;
    } else {
      known = false;
    }
    if (!known) {
      std::fprintf(stderr, "vek_bench: cannot use %s\n", argument.c_str());
      return 2;
    }
  }
  initializeForTables(argv[0]);
  return runTable(options);
}

}  // namespace
}  // namespace vek::bench

int main(int argc, char** argv) {
  vek::bench::addCopy();
  vek::bench::registerAll();
  if (argc > 1 && std::strcmp(argv[1], "--table") == 0) return vek::bench::tableMain(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
