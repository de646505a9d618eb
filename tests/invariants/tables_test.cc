// Every level has a table of its own, with kernels of its own, and selecting finds it.
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
template <class Kernels>
std::vector<uintptr_t> kernels(const Kernels& table) {
  static_assert(sizeof(Kernels) % sizeof(uintptr_t) == 0);
  std::vector<uintptr_t> pointers(sizeof(Kernels) / sizeof(uintptr_t));
  std::memcpy(pointers.data(), &table, sizeof(Kernels));
  return pointers;
}

TEST(KernelTables, LevelsHaveKernelsOfTheirOwn) {
  size_t tables = 0;
  forEachTable([&](const std::string& name, const auto& table, const auto&) {
    ++tables;
    for (size_t level = 1; level < levelCount; ++level) {
      const auto own = kernels(*table.at[level]);
      for (size_t below = 0; below < level; ++below) {
        const auto others = kernels(*table.at[below]);
        for (size_t i = 0; i < own.size(); ++i) {
          EXPECT_FALSE(own[i] >= lowestAddress && own[i] == others[i])
              << name << ", kernel " << i << " of " << levelNames[level] << " is that of "
              << levelNames[below];
        }
      }
    }
  });
  EXPECT_GT(tables, 0u);
}

TEST(KernelTables, SelectingFindsTheLevelsOwn) {
  forEachTable([](const std::string& name, const auto& table, const auto& byName) {
    for (size_t level = 0; level < levelCount; ++level) {
      EXPECT_EQ(&select(table, static_cast<Level>(level)), byName[level])
          << name << ", " << levelNames[level];
    }
  });
}

}  // namespace
}  // namespace vek::test
