// Every kernel of a level is another function than the portable one.
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "core/level.h"
#include "kernel_tables.h"  // written by the build: all table headers, and forEachTable

namespace vek::test {
namespace {

/// Words of a table below this are no kernels: limits, or 0 where a level does without a kernel.
constexpr uintptr_t lowestAddress = 65536;

/// The words of a table.
template <class Rows>
std::vector<uintptr_t> kernels(const Rows& rows) {
  static_assert(sizeof(Rows) % sizeof(uintptr_t) == 0);
  std::vector<uintptr_t> pointers(sizeof(Rows) / sizeof(uintptr_t));
  std::memcpy(pointers.data(), &rows, sizeof(Rows));
  return pointers;
}

TEST(KernelTables, LevelsHaveKernelsOfTheirOwn) {
  size_t tables = 0;
  forEachTable([&](const std::string& table, const auto& rows) {
    ++tables;
    const auto portable = kernels(*rows.at[0]);
    for (size_t level = 1; level < levelCount; ++level) {
      const auto own = kernels(*rows.at[level]);
      for (size_t i = 0; i < own.size(); ++i) {
        EXPECT_FALSE(own[i] >= lowestAddress && own[i] == portable[i])
            << table << ", kernel " << i << ", level " << levelNames[level];
      }
    }
  });
  EXPECT_GT(tables, 0u);
}

}  // namespace
}  // namespace vek::test
