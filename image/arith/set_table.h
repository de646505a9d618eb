// The repeating kernel of a level, from its row driver.
#pragma once

#include "image/arith/set_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

void repeat(const Vek8u* pattern, ptrdiff_t n, Vek8u* dst) {
  mapRow(
      n, [](Sample v) { return v; }, dst, Repeated{pattern});
}

}  // namespace

constexpr SetKernels setKernels = {repeat};

}  // namespace vek::VEK_LEVEL
