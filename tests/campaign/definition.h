// Exported functions against their definitions.
#pragma once

#include <gtest/gtest.h>

#include "tests/campaign/campaign.h"
#include "tests/support/differential.h"

namespace vek::test {

/// Random cases of an exported function at every level against `define`, which takes the same
/// arguments and writes what the function must write.
template <class... A, class Define>
void expectDefinition(const char* name, VekStatus (*)(A...), Define define, int cases) {
  for (Record& record : recordsOf("all")) {
    if (record.name != name) continue;
    record.define = [define]<size_t... i>(std::index_sequence<i...>)->Call {
      return [define](const Value* v) {
        define(as<A>(v[i])...);
        return vekStsNoErr;
      };
    }
    (std::index_sequence_for<A...>{});
    for (int n = 0; n < cases && !testing::Test::HasFailure(); ++n) {
      const uint64_t seed = baseSeed() + static_cast<uint64_t>(n);
      Random random(seed);
      EXPECT_EQ(runCase(record, random), "") << name << ", seed " << seed;
    }
  }
}

}  // namespace vek::test
