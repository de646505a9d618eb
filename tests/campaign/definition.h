// Exported functions against their definitions.
#pragma once

#include <algorithm>
#include <gtest/gtest.h>
#include <regex>

#include "tests/campaign/campaign.h"
#include "tests/support/differential.h"

namespace vek::test {

/// Random cases of an exported function at every level against `define`, which gets the same
/// arguments.
inline void expectDefinition(const std::string& name, const Call& define, int cases) {
  std::vector<Record> records = recordsOf("all");
  const auto record =
      std::find_if(records.begin(), records.end(), [&](const Record& r) { return r.name == name; });
  ASSERT_NE(record, records.end()) << name;
  record->define = define;
  for (int n = 0; n < cases && !testing::Test::HasFailure(); ++n) {
    const uint64_t seed = baseSeed() + static_cast<uint64_t>(n);
    Random random(seed);
    EXPECT_EQ(runCase(*record, random), "") << name << ", seed " << seed;
  }
}

/// The same with a `define` of the same parameters, which returns the function's status or nothing.
template <class... A, class Define>
void expectDefinition(const char* name, VekStatus (*)(A...), Define define, int cases) {
  const auto call = [define]<size_t... i>(std::index_sequence<i...>)->Call {
    return [define](const Value* v) {
      if constexpr (std::is_void_v<std::invoke_result_t<Define, A...>>) {
        define(as<A>(v[i])...);
        return vekStsBadArgErr;
      } else {
        return define(as<A>(v[i])...);
      }
    };
  };
  expectDefinition(name, call(std::index_sequence_for<A...>{}), cases);
}

/// The order in which the functions of a family answer faults, as checkOrder() takes it: the first
/// row whose pattern a name contains.
struct Order {
  const char* pattern;
  const char* ranks;
};

inline void expectOrder(const char* family, const std::vector<Order>& orders) {
  for (const Record& record : recordsOf(family)) {
    for (const Order& order : orders) {
      if (!std::regex_search(record.name, std::regex(order.pattern))) continue;
      Random random(baseSeed());
      for (int n = 0; n < 3; ++n) {
        EXPECT_EQ(checkOrder(record, random, order.ranks), "") << record.name;
      }
      break;
    }
  }
}

}  // namespace vek::test
