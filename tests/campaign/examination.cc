#include "tests/campaign/examination.h"

#include <algorithm>
#include <mutex>
#include <sstream>
#include <thread>

#include "tests/campaign/trial.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/levels.h"

namespace vek::test {
namespace {

using Bytes = std::vector<std::vector<uint8_t>>;

std::string withArguments(const std::string& wrong, const Case& c) {
  return wrong.empty() ? wrong : wrong + "\n    arguments:" + c.describe();
}

std::string unexpected(VekStatus status, VekStatus expected) {
  return "status " + std::to_string(status) + " instead of " + std::to_string(expected);
}

std::string describe(const Case::Fault& f) {
  std::ostringstream out;
  if (f.block >= 0) {
    out << "another value at byte " << f.offset << " of memory " << f.block;
    return out.str();
  }
  out << "argument " << f.argument << '.' << f.cell << ' ';
  if (f.null) {
    out << "null";
  } else if (f.shift != 0) {
    out << "shifted by " << f.shift;
  } else {
    out << f.number;
  }
  return out.str();
}

/// The first byte that differs.
std::string difference(const Bytes& expected, const Bytes& actual) {
  for (size_t b = 0; b < expected.size(); ++b) {
    const auto at = std::mismatch(expected[b].begin(), expected[b].end(), actual[b].begin());
    if (at.first == expected[b].end()) continue;
    std::ostringstream out;
    out << ": destination " << b << ", byte " << at.first - expected[b].begin() << ": "
        << int{*at.second} << " instead of " << int{*at.first};
    return out.str();
  }
  return {};
}

/// Every level must give what `define` gives or, without it, what the portable level gives.
std::string compareLevels(const Record& record, const Case& c, const Call& define,
                          uint64_t* digest) {
  Bytes expected;
  VekStatus expectedStatus = -1;  // any
  if (define) {
    Trial trial(c, true);
    expectedStatus = trial.call(define);
    expected = trial.written();
  }
  bool otherSide = false;
  for (Level level : levels()) {
    const LevelScope scope(level);
    const std::string at = std::string(" at level ") + name(level);
    Trial trial(c, otherSide);
    const int calls = allocationCalls();
    const size_t live = liveAllocations().size();
    const int asked = timesLevelAsked();
    const VekStatus status = trial.call(record.call);
    // Once in each exported function: asking takes longer than a small kernel.
    if (const int times = timesLevelAsked() - asked;
        times > 1 + static_cast<int>(record.also.size())) {
      return "asks for the level " + std::to_string(times) + " times" + at;
    }
    if (!record.allocates && !record.mayAllocate && allocationCalls() != calls) {
      return "allocates" + at;
    }
    const size_t kept = static_cast<size_t>(c.keptWhenReleased);
    if (record.allocates && liveAllocations().size() != live + kept) return "leaks" + at;
    if (kept != 0) dropAllocations();
    if (status < 0) return "status " + std::to_string(status) + at;
    if (!trial.outsideIntact()) return "wrote outside" + at;
    if (level == Level::portable) {
      if (expectedStatus < 0) expectedStatus = status;
      if (!define) expected = trial.written();
      if (digest != nullptr) digestIn(*digest, static_cast<uint32_t>(status));
      if (digest != nullptr) trial.digest(*digest);
    }
    if (status != expectedStatus) return unexpected(status, expectedStatus) + at;
    if (const std::string where = difference(expected, trial.written()); !where.empty()) {
      return (define ? "not as defined" : "not the portable result") + at + where;
    }
    if (!trial.sourcesIntact()) return "wrote into a source" + at;
    otherSide = !otherSide;
  }
  return {};
}

/// Lets each allocation of the call fail in turn.
std::string failAllocations(const Record& record, const Case& c) {
  Trial trial(c, false);
  const int before = allocationCalls();
  if (trial.call(record.call) < 0) return {};
  const int count = allocationCalls() - before;
  if (c.keptWhenReleased != 0) dropAllocations();
  for (int n = 1; n <= count; ++n) {
    Trial failing(c, false);
    const size_t live = liveAllocations().size();
    failAllocation(n);
    const VekStatus status = failing.call(record.call);
    failAllocation(0);
    const std::string at = " when allocation " + std::to_string(n) + " fails";
    if (status != vekStsMemAllocErr) return "status " + std::to_string(status) + at;
    if (liveAllocations().size() != live) return "leaks" + at;
    if (!failing.nothingWritten() || !failing.outsideIntact()) return "writes" + at;
  }
  return {};
}

/// Single faults must give their status, two at once the status of either; beside a null pointer,
/// with any numbers, some status.
std::string injectFaults(const Record& record, Case& c) {
  const std::vector<Case::Fault> faults = c.faults();
  if (faults.empty()) return {};
  const auto any = [&]() -> const Case::Fault& {
    return faults[static_cast<size_t>(c.random.in(0, static_cast<int>(faults.size()) - 1))];
  };
  const std::vector<Level> all = levels();
  const LevelScope scope(
      all[static_cast<size_t>(c.random.in(0, static_cast<int>(all.size()) - 1))]);
  Trial trial(c, false);
  for (int round = 0; round < 8; ++round) {
    const Case::Fault& first = any();
    const Case::Fault& second = round < 5 || first.null ? first : any();
    const std::string what = describe(first) + ", " + describe(second);
    trial.inject(first);
    if (&second != &first) trial.inject(second);
    const bool extreme = round >= 5 && first.null && second.null;
    if (extreme) trial.exaggerate(c.random);
    const size_t live = liveAllocations().size();
    const bool noMemory = record.allocates && round % 2 != 0;  // arguments come first
    if (noMemory) failAllocation(1);
    const VekStatus status = trial.call(record.call);
    failAllocation(0);
    const size_t kept = noMemory ? 0 : static_cast<size_t>(c.keptWhenRefused);
    if (liveAllocations().size() != live + kept) return "leaks when it refuses: " + what;
    if (kept != 0) dropAllocations();
    trial.undoFaults();
    if (extreme ? status >= 0 : status != first.status && status != second.status) {
      return unexpected(status, first.status) + ": " + what;
    }
    if (!trial.nothingWritten() || !trial.outsideIntact()) {
      return "refuses, but has written: " + what;
    }
  }
  return {};
}

}  // namespace

std::string runCase(const Record& record, Random& random, const Options& options,
                    uint64_t* digest) {
  Case c(random, options);
  record.draw(c);
  std::string wrong = compareLevels(record, c, options.definition ? record.define : Call(), digest);
  if (wrong.empty() && record.allocates) wrong = failAllocations(record, c);
  if (wrong.empty() && options.faults && random.chance(25)) wrong = injectFaults(record, c);
  return withArguments(wrong, c);
}

std::string checkOrder(const Record& record, Random& random) {
  Case c(random, {.far = false});
  record.draw(c);
  const std::vector<Check>& order = record.order;
  const auto rank = [&](const Case::Fault& f) {
    return std::find_if(order.begin(), order.end(), [&](const Check& check) {
      const bool anywhere = check.argument < 0 || f.block >= 0;
      return check.status == f.status &&
             (anywhere || static_cast<size_t>(check.argument) == c.checkedWith(f));
    });
  };
  const std::vector<Case::Fault> faults = c.faults();
  Trial trial(c, false);
  for (const Case::Fault& first : faults) {
    if (rank(first) == order.end()) return "no check of the order finds " + describe(first);
    for (const Case::Fault& second : faults) {
      if (rank(first) > rank(second)) continue;
      trial.inject(second);
      trial.inject(first);
      const VekStatus status = trial.call(record.call);
      trial.undoFaults();
      if (status == first.status) continue;
      return withArguments(
          unexpected(status, first.status) + ": " + describe(first) + " before " + describe(second),
          c);
    }
  }
  return trial.nothingWritten() && trial.outsideIntact() ? "" : "refuses, but has written";
}

std::string runInThreads(const Record& record, Random& random, int count, int rounds) {
  Case c(random, {.far = false});
  record.draw(c);
  std::string wrong;
  for (Level level : levels()) {
    VekStatus status;
    Bytes expected;
    {
      const LevelScope scope(level);
      Trial alone(c, false);
      status = alone.call(record.call);
      expected = alone.written();
    }
    std::mutex mutex;
    std::vector<std::thread> threads;
    for (int t = 0; t < count; ++t) {
      threads.emplace_back([&] {
        const LevelScope scope(level);
        for (int i = 0; i < rounds; ++i) {
          Trial trial(c, i % 2 != 0);
          const VekStatus result = trial.call(record.call);
          if (result == status && trial.written() == expected && trial.outsideIntact()) continue;
          const std::lock_guard lock(mutex);
          wrong = std::string("another result in a thread at level ") + name(level);
        }
      });
    }
    for (std::thread& t : threads) t.join();
  }
  return withArguments(wrong, c);
}

}  // namespace vek::test
