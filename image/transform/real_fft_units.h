// The roots of unity that the transforms multiply by.
#pragma once

#include "vek/vek.h"

namespace vek {

/// cos(2 pi t / 1024), t = 0 .. 1023, the nearest doubles. exp(-2 pi i t / 1024) is (at[t], at[t + 256]).
struct UnitCosines {
  Vek64f at[1024];
};

extern const UnitCosines unitCosines;

}  // namespace vek
