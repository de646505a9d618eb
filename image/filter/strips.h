// Walk over a row in strips.
#pragma once

#include <stddef.h>

namespace vek {

/// Calls body(begin, count) for strips of `length` elements that follow each other and cover 0 .. n
/// - 1; the last one may be shorter. For filters whose sums or histograms of a whole row would not
/// fit the stack.
template <class Body>
void forEachStrip(ptrdiff_t n, ptrdiff_t length, Body body) {
  for (ptrdiff_t begin = 0; begin < n; begin += length) {
    body(begin, n - begin < length ? n - begin : length);
  }
}

}  // namespace vek
