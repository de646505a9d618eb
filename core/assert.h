// Preconditions of kernels and drivers.
#pragma once

/// Stops the program where `condition` does not hold, in builds with VEK_ASSERTIONS (debug, sanitizer
/// and fuzz builds). In release builds nothing is compiled or evaluated.
#if defined(VEK_ASSERTIONS)
#define VEK_ASSERT(condition) ((condition) ? static_cast<void>(0) : __builtin_trap())
#else
#define VEK_ASSERT(condition) static_cast<void>(sizeof((condition) ? 1 : 0))
#endif
