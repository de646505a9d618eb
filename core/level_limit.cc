// No limit by default. In a file of its own, so that an application's function replaces exactly this
// archive member.
#include "vek/vek.h"

#include <limits.h>

extern "C" {

int vekLevelLimit(void) {
  return INT_MAX;
}

}  // extern "C"
