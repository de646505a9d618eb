// The shifts of single samples: the portable kernels, and the fallback of every level.
#pragma once

#include "image/arith/pointwise_body.h"

namespace vek::VEK_LEVEL {
namespace {

inline Sample shiftRight(Sample v, int amount) {
  return static_cast<Sample>(v >> amount);
}

inline Sample shiftLeft(Sample v, int amount) {
  return static_cast<Sample>((v << amount) & 0xFF);
}

}  // namespace
}  // namespace vek::VEK_LEVEL
