// campaign: random calls of every exported function, at every level, with results compared between
// the levels and inaccessible pages or canaries around everything that a call may touch.

#include <chrono>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <pthread.h>
#include <set>
#include <unistd.h>

#include "tests/campaign/contracts.h"
#include "tests/campaign/examination.h"
#include "tests/campaign/exported.h"
#include "tests/support/levels.h"

extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace vek::test {
namespace {

const char* const usage =
    "usage: campaign run FAMILY|all CASES [SEED]   CASES cases of each function\n"
    "       campaign soak MINUTES [SEED]           cases with new seeds until the time is over\n"
    "       campaign replay FUNCTION SEED          the one case that failed\n"
    "       campaign threads CASES                 the same calls in four threads at once\n"
    "       campaign digest [FILE]                 digests of the results, compared with FILE\n"
    "       campaign stack [CASES]                 the most stack that each function takes, and\n"
    "                                              whether that is as little as promised\n"
    "       campaign contracts [CASES]             what the records say, as JSON\n"
    "       campaign complete                      no exported function is missing, and its "
    "typical\n"
    "                                              calls succeed\n";

/// The seed of a function's n-th case, so that one seed says which case failed.
uint64_t seedOf(uint64_t seed, const std::string& name, uint64_t n) {
  uint64_t mixed = seed * 0x9E3779B97F4A7C15 + n;
  for (char c : name) mixed = (mixed ^ static_cast<uint8_t>(c)) * 0x100000001B3;
  return mixed;
}

/// How to run the case again that runs now.
char current[160];

void printCurrent() {
  if (write(2, current, strlen(current)) < 0) return;
}

struct sigaction previous[NSIG];

/// Says which case crashes; then the signal strikes again, as if this were not here.
void onCrash(int signal) {
  printCurrent();
  sigaction(signal, &previous[signal], nullptr);
}

void catchCrashes() {
  for (int signal : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT}) {
    struct sigaction action = {};
    action.sa_handler = onCrash;
    sigaction(signal, &action, &previous[signal]);
  }
  if (__sanitizer_set_death_callback != nullptr) __sanitizer_set_death_callback(printCurrent);
}

/// What a seed does not draw follows from it, too: every tenth case is one of limits.
Options optionsOf(uint64_t seed, bool definition = true) {
  return {.limits = seed % 10 == 0, .definition = definition};
}

bool tryCase(const Record& record, uint64_t seed, bool definition = true) {
  snprintf(current, sizeof current, "campaign replay %s 0x%" PRIx64 "\n", record.name.c_str(),
           seed);
  Random random(seed);
  const std::string wrong = runCase(record, random, optionsOf(seed, definition));
  if (wrong.empty()) return true;
  printf("%s: %s\n    again: %s", record.name.c_str(), wrong.c_str(), current);
  return false;
}

bool tryOrder(const Record& record, uint64_t seed) {
  for (uint64_t n = 0; n < 3 && !record.order.empty(); ++n) {
    Random random(seedOf(seed, record.name, n));
    const std::string wrong = checkOrder(record, random);
    if (!wrong.empty()) printf("%s: %s\n", record.name.c_str(), wrong.c_str());
    if (!wrong.empty()) return false;
  }
  return true;
}

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

int run(const std::vector<Record>& records, uint64_t cases, uint64_t seed) {
  const auto start = Clock::now();
  bool fine = !records.empty();
  for (const Record& record : records) {
    const auto every = static_cast<uint64_t>(record.defineEvery);
    for (uint64_t n = 0; n < cases; ++n) {
      if (tryCase(record, seedOf(seed, record.name, n), n % every == 0)) continue;
      fine = false;
      break;
    }
    fine &= tryOrder(record, seed);
  }
  const double seconds = secondsSince(start);
  const double count = static_cast<double>(cases) * static_cast<double>(records.size());
  printf("%.0f cases of %zu records in %.1f s, %.0f a second\n", count, records.size(), seconds,
         count / seconds);
  return fine ? 0 : 1;
}

int soak(double minutes, uint64_t seed) {
  const std::vector<Record> records = recordsOf("all");
  const auto start = Clock::now();
  double reported = 0;
  uint64_t cases = 0;
  for (uint64_t n = 0;; ++n) {
    for (const Record& record : records) {
      const double seconds = secondsSince(start);
      if (seconds - reported > 30 || seconds > 60 * minutes) {
        printf("%" PRIu64 " cases in %.0f s, %.0f a second\n", cases, seconds,
               static_cast<double>(cases) / seconds);
        fflush(stdout);
        reported = seconds;
      }
      if (seconds > 60 * minutes) return 0;
      for (uint64_t i = 0; i < 16; ++i, ++cases) {
        if (!tryCase(record, seedOf(seed, record.name, 16 * n + i))) return 1;
      }
    }
  }
}

int threads(uint64_t cases) {
  int run = 0;
  for (const Record& record : recordsOf("all")) {
    if (!record.shareable || record.allocates || record.mayAllocate) continue;
    for (uint64_t n = 0; n < cases; ++n, ++run) {
      Random random(seedOf(2, record.name, n));
      const std::string wrong = runInThreads(record, random, 4, 6);
      if (wrong.empty()) continue;
      printf("%s: %s\n", record.name.c_str(), wrong.c_str());
      return 1;
    }
  }
  printf("%d cases, each in four threads at once at %zu levels\n", run, levels().size());
  return 0;
}

constexpr Options onlyResults = {.faults = false, .far = false, .definition = false};

/// A line for each function, the same on every machine; `list` holds what they should be.
int digest(const std::string& list) {
  constexpr uint64_t cases = 50;
  std::set<std::string> known;
  std::ifstream file(list);
  for (std::string line; std::getline(file, line);) known.insert(line);
  bool fine = true;
  for (const Record& record : recordsOf("all")) {
    uint64_t value = 0xCBF29CE484222325;
    for (uint64_t n = 0; n < cases; ++n) {
      Random random(seedOf(1, record.name, n));
      const std::string wrong = runCase(record, random, onlyResults, &value);
      if (!wrong.empty()) printf("%s: %s\n", record.name.c_str(), wrong.c_str());
      fine &= wrong.empty();
    }
    char line[120];
    snprintf(line, sizeof line, "%016" PRIx64 " %s", value, record.name.c_str());
    const bool differs = !list.empty() && known.count(line) == 0;
    printf("%s%s\n", line, differs ? " differs" : "");
    fine &= !differs;
  }
  return fine ? 0 : 1;
}

#if !defined(__EMSCRIPTEN__)  // whose threads have no stack in memory

/// Runs `work` on a stack of its own and returns how much of it was overwritten.
size_t stackOf(const std::function<void()>& work) {
  constexpr size_t size = 1 << 18;
  constexpr uint8_t paint = 0xC5;
  static std::vector<uint8_t> memory(size + 4096);
  auto* const stack =
      reinterpret_cast<uint8_t*>((reinterpret_cast<uintptr_t>(memory.data()) + 4095) / 4096 * 4096);
  memset(stack, paint, size);
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstack(&attributes, stack, size);
  pthread_t thread;
  const auto start = [](void* work) -> void* {
    (*static_cast<const std::function<void()>*>(work))();
    return nullptr;
  };
  if (pthread_create(&thread, &attributes, start, const_cast<std::function<void()>*>(&work)) != 0) {
    return size;
  }
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  size_t untouched = 0;
  while (untouched < size && stack[untouched] == paint) ++untouched;
  return size - untouched;
}

/// All but the raw pipeline take 48 KiB at most, and that fits threads of 128 KiB. What a thread that
/// does nothing takes is left out.
int stack(uint64_t cases) {
  constexpr size_t limit = 48 << 10, limitOfRawPipeline = 120 << 10;
  bool fine = true;
  const size_t idle = stackOf([] {});
  for (const Record& record : recordsOf("all")) {
    std::map<Level, size_t> deepest;
    Record measured = record;
    measured.call = [&](const Value* arguments) {
      VekStatus status = vekStsNoErr;
      const Level level = cpuLevel();
      const size_t used = stackOf([&] {
        const LevelScope scope(level);
        status = record.call(arguments);
      });
      deepest[level] = std::max(deepest[level], used - std::min(used, idle));
      return status;
    };
    for (uint64_t n = 0; n < cases; ++n) {
      Random random(seedOf(3, record.name, n));
      runCase(measured, random, onlyResults);
    }
    const size_t most =
        record.name == "veki10RGGBtoYCbCr_RotRsz_8u_P3R" ? limitOfRawPipeline : limit;
    printf("%-44s", record.name.c_str());
    for (const auto& [level, bytes] : deepest) {
      printf(" %s %zu%s", name(level), bytes, bytes > most ? " (too much)" : "");
      fine &= bytes <= most;
    }
    printf("\n");
  }
  return fine ? 0 : 1;
}

#else

int stack(uint64_t) {
  fputs("no stack to measure here\n", stderr);
  return 2;
}

#endif

int complete() {
  std::set<std::string> covered;
  for (const Record& record : recordsOf("all")) {
    covered.insert(record.name);
    covered.insert(record.also.begin(), record.also.end());
  }
  int status = 0;
  for (const Record& record : recordsOf("all")) {
    if (record.typical.empty()) printf("not benchmarked: %s\n", record.name.c_str()), status = 1;
    for (const Typical& typical : record.typical) {
      Arguments arguments({64, 48}, std::make_shared<Memory>());
      typical.prepare(arguments);
      const VekStatus answer = arguments.call(record.call);
      if (answer >= 0) continue;
      printf("%s/%s answers %d\n", record.name.c_str(), typical.variant.c_str(), answer);
      status = 1;
    }
  }
  for (const char* name : exportedFunctions) {
    if (covered.erase(name) != 0) continue;
    printf("missing from the campaign: %s\n", name);
    status = 1;
  }
  for (const std::string& name : covered) printf("not exported: %s\n", name.c_str());
  printf("%zu exported functions\n", std::size(exportedFunctions));
  return covered.empty() ? status : 1;
}

int replay(const std::string& function, uint64_t seed) {
  for (const Record& record : recordsOf("all")) {
    if (record.name == function) return tryCase(record, seed) ? 0 : 1;
  }
  fprintf(stderr, "no record %s\n", function.c_str());
  return 2;
}

uint64_t number(const char* text) {
  return strtoull(text, nullptr, 0);
}

int main(int count, char** arguments) {
  const auto argument = [&](int i) { return i < count ? arguments[i] : ""; };
  const std::string command = argument(1);
  catchCrashes();
  if (command == "run" && count > 3) {
    return run(recordsOf(argument(2)), number(argument(3)), number(argument(4)));
  }
  if (command == "soak" && count > 2) {
    const uint64_t seed = count > 3
                              ? number(argument(3))
                              : static_cast<uint64_t>(Clock::now().time_since_epoch().count());
    printf("seed 0x%" PRIx64 "\n", seed);
    return soak(strtod(argument(2), nullptr), seed);
  }
  if (command == "replay" && count > 3) return replay(argument(2), number(argument(3)));
  if (command == "threads") return threads(count > 2 ? number(argument(2)) : 10);
  if (command == "digest") return digest(argument(2));
  if (command == "stack") return stack(count > 2 ? number(argument(2)) : 10);
  if (command == "contracts") {
    printContracts(recordsOf("all"), count > 2 ? static_cast<int>(number(argument(2))) : 24);
    return 0;
  }
  if (command == "complete") return complete();
  fputs(usage, stderr);
  return 2;
}

}  // namespace
}  // namespace vek::test

int main(int count, char** arguments) {
  return vek::test::main(count, arguments);
}
