// What is done with the cases of a record.
#pragma once

#include "tests/campaign/campaign.h"

namespace vek::test {

/// Draws a case, compares what it writes at every level with the definition, or else with the
/// portable level, and injects faults into its arguments; returns what is wrong, or nothing.
/// `digest` takes in the results.
std::string runCase(const Record& record, Random& random, const Options& options = {},
                    uint64_t* digest = nullptr);

/// Draws a case and injects its faults two by two: the status must be that of the fault whose check
/// comes first in the record's order.
std::string checkOrder(const Record& record, Random& random);

/// Draws a case and runs it in `threads` threads at once, `rounds` times in each, at every level.
std::string runInThreads(const Record& record, Random& random, int threads, int rounds);

}  // namespace vek::test
