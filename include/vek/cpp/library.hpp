/** @file library.hpp
 *  The library itself in C++: versions, levels, memory, division. vek.hpp includes it. */
#ifndef VEK_CPP_LIBRARY_HPP
#define VEK_CPP_LIBRARY_HPP

#include "vek/cpp/call.hpp"

#include <memory>

namespace vek {
inline namespace v0 {

/** @defgroup cpplibrary C++: the library itself
 *  Versions, levels, memory and the division helpers.
 *  @{ */

/// The version of the library that the program runs with (vekVersionString).
inline const char* version() noexcept {
  return vekVersionString();
}
/// The interface that the image functions follow (vekiGetLibVersion).
inline const VekLibraryVersion& imageVersion() noexcept {
  return *vekiGetLibVersion();
}
/// The interface that the camera functions follow (_vekGetLibVersion_VekCam).
inline const VekLibraryVersion& cameraVersion() noexcept {
  return *_vekGetLibVersion_VekCam();
}

/// The level that functions run at (vekLevel).
inline int cpuLevelNow() noexcept {
  return vekLevel();
}
/// The highest level that functions may run at (vekLevelLimit).
inline int cpuLevelLimit() noexcept {
  return vekLevelLimit();
}
/// The name of a level, or null (vekLevelName).
inline const char* cpuLevelName(int level) noexcept {
  return vekLevelName(level);
}

/// Releases memory of allocate() or allocateCamera().
template <void (*release)(void*)>
struct ReleaseMemory {
  /// Releases it.
  void operator()(void* memory) const noexcept { release(memory); }
};
/// Memory from where the states of the image functions have theirs; null if there is none (vekMalloc,
/// vekFree).
inline std::unique_ptr<void, ReleaseMemory<vekFree>> allocate(int bytes) noexcept {
  return std::unique_ptr<void, ReleaseMemory<vekFree>>(vekMalloc(bytes));
}
/// Memory from where the states of the camera functions have theirs; null if there is none (vekiMalloc,
/// vekiFree).
inline std::unique_ptr<void, ReleaseMemory<vekiFree>> allocateCamera(int bytes) noexcept {
  return std::unique_ptr<void, ReleaseMemory<vekiFree>>(vekiMalloc(bytes));
}

/// What a division leaves.
template <class Number>
struct Division {
  Number quotient;   ///< truncated; 0 if the divisor is 0
  Number remainder;  ///< the dividend if the divisor is 0
};
/// Divides 8-bit numbers (_vekDiv_8u).
inline Division<Vek8u> divide(Vek8u n, Vek8u d) noexcept {
  Division<Vek8u> result = {0, 0};
  result.quotient = static_cast<Vek8u>(_vekDiv_8u(n, d, &result.remainder));
  return result;
}
/// Divides 16-bit numbers (_vekDiv_16u).
inline Division<Vek16u> divide(Vek16u n, Vek16u d) noexcept {
  Division<Vek16u> result = {0, 0};
  result.quotient = static_cast<Vek16u>(_vekDiv_16u(n, d, &result.remainder));
  return result;
}
/// Divides 32-bit numbers (_vekDiv_32u).
inline Division<Vek32u> divide(Vek32u n, Vek32u d) noexcept {
  Division<Vek32u> result = {0, 0};
  result.quotient = _vekDiv_32u(n, d, &result.remainder);
  return result;
}

/** @} */

}  // namespace v0
}  // namespace vek

#endif  // VEK_CPP_LIBRARY_HPP
