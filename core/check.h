// Argument checks shared by the families. A family's check names these in the order in which it
// answers faults; nothing here computes a product or reads through a pointer before it was tested.
#pragma once

#include "vek/vek.h"

#include <initializer_list>
#include <stdint.h>

namespace vek {

inline bool anyNull(std::initializer_list<const void*> pointers) {
  for (const void* p : pointers) {
    if (p == nullptr) return true;
  }
  return false;
}

/// Whether the three plane pointers or the array that holds them are null.
template <class Sample>
bool anyPlaneNull(Sample* const* planes) {
  return planes == nullptr || anyNull({planes[0], planes[1], planes[2]});
}

inline bool anyBelowOne(std::initializer_list<int> values) {
  for (int v : values) {
    if (v < 1) return true;
  }
  return false;
}

inline bool isEmpty(VekiSize roi) {
  return roi.width < 1 || roi.height < 1;
}

inline bool isOdd(int v) {
  return (v & 1) != 0;
}

/// `multiple` is a power of two.
inline bool isMisaligned(int v, int multiple) {
  return (v & (multiple - 1)) != 0;
}
inline bool isMisaligned(const void* p, uintptr_t multiple) {
  return (reinterpret_cast<uintptr_t>(p) & (multiple - 1)) != 0;
}

/// The two orders in which the image functions test pointers, steps and size.
inline VekStatus checkPointersStepsSize(std::initializer_list<const void*> pointers,
                                        std::initializer_list<int> steps, VekiSize roi) {
  if (anyNull(pointers)) return vekStsNullPtrErr;
  if (anyBelowOne(steps)) return vekStsStepErr;
  if (isEmpty(roi)) return vekStsSizeErr;
  return vekStsNoErr;
}

inline VekStatus checkPointersSizeSteps(std::initializer_list<const void*> pointers, VekiSize roi,
                                        std::initializer_list<int> steps) {
  if (anyNull(pointers)) return vekStsNullPtrErr;
  if (isEmpty(roi)) return vekStsSizeErr;
  if (anyBelowOne(steps)) return vekStsStepErr;
  return vekStsNoErr;
}

}  // namespace vek
