// CPU levels and the choice of a kernel table by level.
#pragma once

#include <stddef.h>

namespace vek {

/// The sets of instructions that kernels are compiled for, lowest first. Which of them a build has
/// depends on its target (see VEK_LEVELS below and cmake/levels.cmake).
enum class Level : int {
  portable,  ///< the target's baseline
#if defined(VEK_LEVELS_X86)
  avx2,    ///< x86-64-v3 with AES and PCLMUL
  avx512,  ///< x86-64-v4 with VBMI, VBMI2, VNNI
#elif defined(VEK_LEVELS_NEON)
  neon,  ///< the AArch64 baseline
#endif
};

#if defined(VEK_LEVELS_X86)
inline constexpr Level allLevels[] = {Level::portable, Level::avx2, Level::avx512};
inline constexpr const char* levelNames[] = {"portable", "avx2", "avx512"};
#elif defined(VEK_LEVELS_NEON)
inline constexpr Level allLevels[] = {Level::portable, Level::neon};
inline constexpr const char* levelNames[] = {"portable", "neon"};
#else
inline constexpr Level allLevels[] = {Level::portable};
inline constexpr const char* levelNames[] = {"portable"};
#endif
inline constexpr size_t levelCount = sizeof(allLevels) / sizeof(allLevels[0]);

/// Whether this processor runs code of `level`: exactly the features that the level's compiler
/// flags allow are tested, as the C library reports them (so its tunables can mask them).
bool cpuHas(Level level);

/// The highest level that this processor runs. A pure function of the processor: nothing is cached.
Level cpuLevel();

/// One family's kernels at every level, lowest level first.
template <class Rows>
struct KernelTable {
  const Rows* at[levelCount];
};

template <class Rows>
const Rows& select(const KernelTable<Rows>& table, Level level) {
  return *table.at[static_cast<size_t>(level)];
}

template <class Rows>
const Rows& select(const KernelTable<Rows>& table) {
  return select(table, cpuLevel());
}

/// Declares the constant `name` of type Rows in the namespace of each level of this build (each is
/// defined by the objects compiled for that level), and the table `name` over them.
#if defined(VEK_LEVELS_X86)
#define VEK_KERNEL_TABLE(Rows, name) \
  namespace portable {               \
  extern const Rows name;            \
  }                                  \
  namespace avx2 {                   \
  extern const Rows name;            \
  }                                  \
  namespace avx512 {                 \
  extern const Rows name;            \
  }                                  \
  constexpr KernelTable<Rows> name = {{&portable::name, &avx2::name, &avx512::name}};
#elif defined(VEK_LEVELS_NEON)
#define VEK_KERNEL_TABLE(Rows, name) \
  namespace portable {               \
  extern const Rows name;            \
  }                                  \
  namespace neon {                   \
  extern const Rows name;            \
  }                                  \
  constexpr KernelTable<Rows> name = {{&portable::name, &neon::name}};
#else
#define VEK_KERNEL_TABLE(Rows, name) \
  namespace portable {               \
  extern const Rows name;            \
  }                                  \
  constexpr KernelTable<Rows> name = {{&portable::name}};
#endif

}  // namespace vek
