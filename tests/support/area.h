// The memory that a call may touch behind one of its pointers. tests/footprint describes each
// exported function with these, in one place for every kind of test.
#pragma once

#include <cstddef>

namespace vek::test {

/// `rows` rows of `bytes` bytes, `step` bytes apart (negative: upwards), the first one beginning
/// `first` bytes behind the pointer.
struct Area {
  ptrdiff_t bytes;
  ptrdiff_t rows;
  ptrdiff_t step;
  ptrdiff_t first = 0;
};

}  // namespace vek::test
