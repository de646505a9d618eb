// Memory from the application's allocator.
#pragma once

#include "vek/vek.h"

#include <limits.h>

namespace vek {

/// Room for `count` objects, with indeterminate contents; null if vekiMalloc returns null, or cannot
/// be asked since they take more than INT_MAX bytes. The count is at most 2^32, so that the product
/// stays within 64 bits.
template <class T>
T* allocate(Vek64s count = 1) {
  const Vek64s bytes = count * static_cast<Vek64s>(sizeof(T));
  return bytes > INT_MAX ? nullptr : static_cast<T*>(vekiMalloc(static_cast<int>(bytes)));
}

}  // namespace vek
