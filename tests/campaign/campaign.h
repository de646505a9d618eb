// Every exported function described once: how its arguments are drawn, what memory they may touch,
// how it is called, and how programs call it. The campaign, the fuzz targets, the thread tests, the
// digests and the benchmarks all run on these records.
#pragma once

#include "tests/campaign/case.h"
#include "tests/campaign/families.h"
#include "tests/campaign/typical.h"

namespace vek::test {

/// One of the checks that a function makes one after the other: the status that answers it, at one
/// argument or at all.
struct Check {
  VekStatus status;
  int argument = -1;
};

/// An exported function, or several that only make sense together.
struct Record {
  std::string name;
  Call call;
  std::function<void(Case&)> draw;
  std::vector<std::string> also = {};  ///< other functions that a call of this one exercises
  Call define = {};                    ///< writes what the call must write, by the definition; its
                                       ///< status is the call's, or negative: any
  std::vector<Check> order = {};       ///< in which faults are answered, where it can be seen
  int defineEvery = 3;                 ///< so many cases, as definitions take their time
  bool shareable = true;               ///< calls with the same arguments may run at the same time
  bool allocates = false;              ///< and lets go of all of it but what the case says
  bool mayAllocate = false;
  std::vector<Typical> typical = {};  ///< what is benchmarked
};

inline Record with(Record record, std::vector<Typical> typical) {
  record.typical = std::move(typical);
  return record;
}

/// An exported function's name and the function.
#define VEK_NAMED(f) #f, f

#define VEK_RECORDS(family) std::vector<Record> family##Records();
VEK_EACH_FAMILY(VEK_RECORDS)
#undef VEK_RECORDS

/// A family's records, or with "all" those of all families.
std::vector<Record> recordsOf(const std::string& family);

}  // namespace vek::test
