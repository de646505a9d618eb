// Default pair for tagged image states. In a file of its own, so that an application's pair
// replaces exactly this archive member.
#include "vek/vek.h"

#include <stdlib.h>

extern "C" {

void* vekMalloc(int size) {
  return size < 1 ? nullptr : malloc(static_cast<size_t>(size));
}

void vekFree(void* ptr) {
  free(ptr);
}

}  // extern "C"
