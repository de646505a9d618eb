#pragma once

#include <vector>

#include "tests/campaign/campaign.h"

namespace vek::test {

/// Prints as JSON what the records say about each function: the memory that a few of its calls touch,
/// what it refuses, and which of two refusals comes first. The reference site shows it.
void printContracts(const std::vector<Record>& records, int cases);

}  // namespace vek::test
