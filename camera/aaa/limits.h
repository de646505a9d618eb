// Values and their limits.
#pragma once

#include "vek/vek.h"

namespace vek {

inline bool isOutside(Vek32s value, Vek32s low, Vek32s high) {
  return value < low || value > high;
}

inline Vek32s clamp(Vek32s value, Vek32s low, Vek32s high) {
  return value < low ? low : value > high ? high : value;
}

}  // namespace vek
