// The level that a record expects: in programs with the shared library the level that it says it runs
// at, for its own cpuLevel() is hidden.
#include "vek/vek.h"

#include "core/level.h"

namespace vek {

Level cpuLevel() {
  return static_cast<Level>(vekLevel());
}

}  // namespace vek
