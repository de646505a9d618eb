// CPU levels and the choice of a kernel table by level.
#pragma once

#include <stddef.h>

#include "core/level_list.h"

namespace vek {

#define VEK_LEVEL_NAME(level, ...) level,
#define VEK_LEVEL_TEXT(level, ...) #level,

/// The sets of instructions that kernels are compiled for, lowest first. `portable` is the target's
/// baseline; cmake/levels.cmake lists the others, with the compiler flags that each stands for.
enum class Level : int { VEK_EACH_LEVEL(VEK_LEVEL_NAME) };

inline constexpr const char* levelNames[] = {VEK_EACH_LEVEL(VEK_LEVEL_TEXT)};
inline constexpr size_t levelCount = sizeof(levelNames) / sizeof(levelNames[0]);

#undef VEK_LEVEL_NAME
#undef VEK_LEVEL_TEXT

/// Whether this processor runs code of `level`: exactly the features that the level's compiler
/// flags allow are tested.
bool cpuHas(Level level);

/// The highest level of this build that the processor runs.
Level highestLevel();

/// The highest level of those that has() answers for; of portable nobody asks.
template <class Has>
Level highestOf(Has has) {
  size_t i = levelCount - 1;
  while (i > 0 && !has(static_cast<Level>(i))) --i;
  return static_cast<Level>(i);
}

/// The level to run at now: the highest, or vekLevelLimit() where that is lower. It takes longer to
/// find than a small kernel takes, so an exported function asks once and hands the level, or the
/// tables that it selects, to what it calls.
Level cpuLevel();

/// One family's kernels at every level, lowest level first.
template <class Kernels>
struct KernelTable {
  const Kernels* at[levelCount];
};

template <class Kernels>
const Kernels& select(const KernelTable<Kernels>& table, Level level) {
  return *table.at[static_cast<size_t>(level)];
}

template <class Kernels>
const Kernels& select(const KernelTable<Kernels>& table) {
  return select(table, cpuLevel());
}

#define VEK_DECLARE_KERNELS(level, Kernels, name) \
  namespace level {                               \
  extern const Kernels name;                      \
  }
#define VEK_ADDRESS_OF_KERNELS(level, Kernels, name) &level::name,

/// Declares the constant `name` of type Kernels in the namespace of each level of this build (each is
/// defined by the objects compiled for that level), and the table `name` over them.
#define VEK_KERNEL_TABLE(Kernels, name)              \
  VEK_EACH_LEVEL(VEK_DECLARE_KERNELS, Kernels, name) \
  constexpr KernelTable<Kernels> name = {{VEK_EACH_LEVEL(VEK_ADDRESS_OF_KERNELS, Kernels, name)}};

}  // namespace vek
