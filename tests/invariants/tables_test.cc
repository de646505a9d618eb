// Every kernel of a level is another function than the portable one, unless it is listed here.
#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include "core/level.h"
#include "kernel_tables.h"  // written by the build: the headers that declare tables, and forEachTable
#include "tests/support/levels.h"

namespace vek::test {
namespace {

/// Kernels that levels take from the portable table, as places in their table: nothing is gained
/// by compiling them again.
const std::map<std::string, std::vector<size_t>> shared = {};

using Kernel = void (*)();

template <class Rows>
std::vector<Kernel> kernels(const Rows& rows) {
  static_assert(sizeof(Rows) % sizeof(Kernel) == 0, "a table holds pointers to functions only");
  std::vector<Kernel> pointers(sizeof(Rows) / sizeof(Kernel));
  std::memcpy(pointers.data(), static_cast<const void*>(&rows), sizeof(Rows));
  return pointers;
}

TEST(KernelTables, LevelsHaveKernelsOfTheirOwn) {
  size_t tables = 0;
  forEachTable([&](const std::string& table, const auto& rows) {
    ++tables;
    const std::vector<Kernel> portable = kernels(select(rows, Level::portable));
    for (Level level : allLevels) {
      const std::vector<Kernel> own = kernels(select(rows, level));
      for (size_t i = 0; i < own.size(); ++i) {
        SCOPED_TRACE(table + ", kernel " + std::to_string(i) + ", level " + name(level));
        EXPECT_NE(own[i], nullptr);
        if (level == Level::portable) continue;
        const auto listed = shared.find(table);
        const bool mayShare =
            listed != shared.end() &&
            std::find(listed->second.begin(), listed->second.end(), i) != listed->second.end();
        EXPECT_EQ(own[i] == portable[i], mayShare)
            << (mayShare ? "no longer shared: strike it off the list" : "is the portable kernel");
      }
    }
  });
  EXPECT_GT(tables, 0u);
}

}  // namespace
}  // namespace vek::test
