// vek_bench_plain: every typical call at each level, and beside libyuv where it was found. It needs no
// other library, so that it runs wherever the tests do: on emulated processors and as WebAssembly.
//
// Times under an emulator say little about a processor. With --instructions it counts what is executed
// instead, if QEMU runs it with the plugin of count_instructions.c.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "bench/benchmarks.h"
#include "tests/support/levels.h"

namespace vek::bench {
namespace {

#if defined(__linux__)

/// How many instructions this program has executed. The plugin answers a system call that no kernel
/// knows by writing the number into the pipe.
double instructions() {
  static const int* const ends = [] {
    static int both[2];
    if (pipe(both) != 0) abort();
    fcntl(both[0], F_SETFL, O_NONBLOCK);
    return both;
  }();
  syscall(0x7EC0, ends[1]);
  uint64_t count = 0;
  if (read(ends[0], &count, sizeof count) != sizeof count) {
    std::fprintf(stderr, "nobody counts instructions here; see bench/count_instructions.c\n");
    std::exit(1);
  }
  return static_cast<double>(count);
}

#else

double instructions() {
  std::fprintf(stderr, "instructions are counted under QEMU only\n");
  std::exit(1);
}

#endif

double seconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Calls that do the same, and what one run of each takes at least.
struct Contestant {
  Call call;
  Level level;
  double least = 1e30;

  double run(double (*clock)(), int repetitions) const {
    const test::LevelScope scope(level);
    const double before = clock();
    for (int i = 0; i < repetitions; ++i) call();
    return (clock() - before) / repetitions;
  }
};

/// Alternately, in rounds of some milliseconds each.
void measureTime(std::vector<Contestant>& all) {
  constexpr int rounds = 7;
  constexpr double roundSeconds = 0.004;
  for (int round = 0; round < rounds; ++round) {
    for (Contestant& c : all) {
      const double once = std::min(c.least, c.run(seconds, 1));
      const int repetitions = std::clamp(static_cast<int>(roundSeconds / once), 1, 10000);
      c.least = std::min(once, c.run(seconds, repetitions));
    }
  }
}

void measureInstructions(std::vector<Contestant>& all) {
  for (Contestant& c : all) {
    c.run(instructions, 1);  // what is done once, such as binding of functions
    c.least = c.run(instructions, 1);
  }
}

/// A geometric mean in the making.
struct Mean {
  double logarithms = 0, lowest = 1e30;
  int count = 0;

  void add(double ratio) {
    logarithms += std::log(ratio);
    lowest = std::min(lowest, ratio);
    ++count;
  }
  void print(const std::string& what) const {
    if (count == 0) return;
    std::printf("%s: geometric mean of %d ratios %.2f, lowest %.2f\n", what.c_str(), count,
                std::exp(logarithms / count), lowest);
  }
};

int run(bool counts, VekiSize size, const std::string& filter) {
  const std::vector<Level> levels = test::levels();
  std::vector<Mean> gains(levels.size()), leads(levels.size());
  for (const Benchmark& b : benchmarks(filter)) {
    std::vector<Contestant> all;
    for (Level level : levels) {
      const test::LevelScope scope(level);
      all.push_back({b.make(size), level});
    }
    for (const Peer& p : peers()) {
      if (p.name == b.name) all.push_back({p.make(size), levels.back()});
    }
    counts ? measureInstructions(all) : measureTime(all);
    std::printf("%-56s", b.name.c_str());
    for (size_t i = 0; i < all.size(); ++i) {
      const double least = all[i].least * (counts ? 1e-3 : 1e6),
                   ratio = all[0].least / all[i].least;
      std::printf(" %10.1f", least);
      if (i == 0) continue;
      if (i < levels.size()) {
        gains[i].add(ratio);
        std::printf(" (%.2f)", ratio);
        continue;
      }
      std::printf(" peer");
      for (size_t k = 0; k < levels.size(); ++k) {
        leads[k].add(all[i].least / all[k].least);
        std::printf(" x %.2f", all[i].least / all[k].least);
      }
    }
    std::printf("\n");
    std::fflush(stdout);
  }
  for (size_t i = 0; i < levels.size(); ++i) {
    const std::string name = test::name(levels[i]);
    gains[i].print(name + " against portable");
    leads[i].print(name + " against peers");
  }
  return 0;
}

int main(int count, char** arguments) {
  bool counts = false;
  VekiSize size = {320, 240};
  std::string filter;
  for (int i = 1; i < count; ++i) {
    if (std::strcmp(arguments[i], "--instructions") == 0) {
      counts = true;
    } else if (arguments[i][0] == '-') {
      std::fprintf(
          stderr,
          "usage: vek_bench_plain [--instructions] [WIDTHxHEIGHT] [FILTER]\n"
          "microseconds, or thousands of instructions, of a call: at each level (and how many "
          "times\nas fast as the portable one), then of libyuv, and how many times as fast "
          "each level is\n");
      return 2;
    } else if (std::sscanf(arguments[i], "%dx%d", &size.width, &size.height) != 2) {
      filter = arguments[i];
    }
  }
  return run(counts, size, filter);
}

}  // namespace
}  // namespace vek::bench

int main(int count, char** arguments) {
  return vek::bench::main(count, arguments);
}
