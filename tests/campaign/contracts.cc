#include "tests/campaign/contracts.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <map>
#include <tuple>

#include "tests/campaign/trial.h"
#include "tests/support/failing_allocator.h"

namespace vek::test {

/// Sees the parts of a case.
struct CaseReader {
  const Case& c;

  /// The argument that a fault is about: for contents of memory, the one that points there.
  int argumentOf(const Case::Fault& fault) const {
    if (fault.block < 0) return fault.argument;
    for (size_t a = 0; a < c.arguments_.size(); ++a) {
      for (const Case::Cell& cell : c.arguments_[a].cells) {
        if (cell.block == fault.block) return static_cast<int>(a);
      }
    }
    return -1;
  }

  /// The largest number below that of a cell that is refused there.
  int64_t refusedBelow(size_t argument, size_t cell) const {
    const int64_t number = c.arguments_[argument].cells[cell].number;
    int64_t most = INT64_MIN;
    for (const Case::Fault& f : c.faults()) {
      const bool here = f.block < 0 && f.argument == static_cast<int>(argument) &&
                        f.cell == static_cast<int>(cell) && !f.null && f.shift == 0;
      if (here && f.number < number) most = std::max(most, f.number);
    }
    return most;
  }

  void print() const {
    printf("{\"arguments\": [");
    const char* comma = "";
    for (size_t i = 0; i < c.arguments_.size(); ++i) {
      const Case::Argument& a = c.arguments_[i];
      printf("%s{\"array\": %s, \"state\": %s, \"cells\": [", comma, a.array ? "true" : "false",
             a.made != nullptr ? "true" : "false");
      const char* next = "";
      for (size_t k = 0; k < a.cells.size(); ++k) {
        const Case::Cell& cell = a.cells[k];
        if (cell.isNumber) {
          printf("%s{\"number\": %" PRId64 ", \"refused\": %" PRId64 "}", next, cell.number,
                 refusedBelow(i, k));
        } else {
          printf("%s{\"block\": %d, \"alignment\": %d, \"offset\": %td}", next, cell.block,
                 cell.alignment, cell.offset);
        }
        next = ", ";
      }
      printf("]}");
      comma = ", ";
    }
    printf("], \"blocks\": [");
    comma = "";
    for (const Case::Block& b : c.blocks_) {
      const char* const uses[] = {"reads", "writes", "reads and writes", "scratch"};
      printf("%s{\"use\": \"%s\", \"bytes\": %td, \"rows\": %td, \"step\": %td, \"first\": %td}",
             comma, uses[static_cast<int>(b.use)], b.area.bytes, b.area.rows, b.area.step,
             b.area.first);
      comma = ", ";
    }
    printf("]}");
  }
};

namespace {

const char* kindOf(const Case::Fault& fault) {
  return fault.block >= 0 ? "contents" : fault.null ? "null" : fault.shift != 0 ? "shift" : "value";
}

/// Faults of one kind at one argument that have one answer.
struct Refusal {
  int argument;
  std::string kind;
  VekStatus status;
  bool operator<(const Refusal& other) const {
    return std::tie(argument, kind, status) < std::tie(other.argument, other.kind, other.status);
  }
};

struct Refusals {
  std::map<int64_t, int> values;         ///< that were refused, and in how many cases
  std::map<Refusal, int> before, after;  ///< how often this one answered, or the other one did
};

/// Injects each two that have different answers at once and counts which one answers.
void tryPairs(const Record& record, const Case& c, std::map<Refusal, Refusals>& all) {
  const CaseReader reader{c};
  std::map<Refusal, Case::Fault> one;
  for (const Case::Fault& f : c.faults()) {
    one.emplace(Refusal{reader.argumentOf(f), kindOf(f), f.status}, f);
  }
  Trial trial(c, false);
  for (const auto& [first, fault] : one) {
    for (const auto& [second, other] : one) {
      if (first.status >= second.status || first.argument == second.argument) continue;
      trial.inject(fault);
      trial.inject(other);
      const VekStatus status = trial.call(record.call);
      trial.undoFaults();
      if (c.keptWhenRefused != 0) dropAllocations();
      if (status == first.status) ++all[first].before[second], ++all[second].after[first];
      if (status == second.status) ++all[second].before[first], ++all[first].after[second];
    }
  }
}

void print(const std::map<Refusal, Refusals>& all) {
  const auto place = [&](const Refusal& r) { return std::distance(all.begin(), all.find(r)); };
  const char* comma = "";
  for (const auto& [refusal, counts] : all) {
    printf("%s\n    {\"argument\": %d, \"kind\": \"%s\", \"status\": %d, \"values\": {", comma,
           refusal.argument, refusal.kind.c_str(), refusal.status);
    const char* next = "";
    for (const auto& [value, count] : counts.values) {
      printf("%s\"%" PRId64 "\": %d", next, value, count);
      next = ", ";
    }
    printf("}, \"before\": [");
    next = "";
    for (const auto& [other, count] : counts.before) {
      const auto lost = counts.after.find(other);
      if (lost != counts.after.end() && lost->second >= count) continue;
      printf("%s%td", next, place(other));
      next = ", ";
    }
    printf("]}");
    comma = ",";
  }
}

void print(const Record& record, int cases) {
  printf("  {\"name\": \"%s\", \"also\": [", record.name.c_str());
  for (size_t i = 0; i < record.also.size(); ++i) {
    printf("%s\"%s\"", i == 0 ? "" : ", ", record.also[i].c_str());
  }
  printf("], \"allocates\": %s, \"shareable\": %s,\n   \"cases\": [",
         record.allocates || record.mayAllocate ? "true" : "false",
         record.shareable ? "true" : "false");
  std::map<Refusal, Refusals> all;
  for (int n = 0; n < cases; ++n) {
    Random random(static_cast<uint64_t>(n) * 7919 + 5);
    Case c(random, {.far = false});
    record.draw(c);
    printf("%s\n    ", n == 0 ? "" : ",");
    CaseReader{c}.print();
    for (const Case::Fault& f : c.faults()) {
      Refusals& refusals = all[{CaseReader{c}.argumentOf(f), kindOf(f), f.status}];
      if (f.block < 0 && !f.null) ++refusals.values[f.shift != 0 ? f.shift : f.number];
    }
    if (n < 6) tryPairs(record, c, all);
  }
  printf("],\n   \"refused\": [");
  print(all);
  printf("]}");
}

}  // namespace

void printContracts(const std::vector<Record>& records, int cases) {
  const char* comma = "";
  printf("[\n");
  for (const Record& record : records) {
    printf("%s", comma);
    print(record, cases);
    comma = ",\n";
  }
  printf("\n]\n");
}

}  // namespace vek::test
