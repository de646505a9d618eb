// Loops whose counter is a constant expression in the body.
#pragma once

#include <utility>

namespace vek::VEK_LEVEL {
namespace {

/// body(constant 0), body(constant 1) ... body(constant count - 1).
template <int count, class Body>
[[gnu::always_inline]] inline void unrolled(Body body) {
  [&]<int... i>(std::integer_sequence<int, i...>) __attribute__((always_inline)) {
    (body(std::integral_constant<int, i>()), ...);
  }
  (std::make_integer_sequence<int, count>());
}

}  // namespace
}  // namespace vek::VEK_LEVEL
