// Default pair for camera states. In a file of its own, so that an application's pair replaces
// exactly this archive member.
#include "vek/vek.h"

#include <stdlib.h>

extern "C" {

void* vekiMalloc(int size) {
  return size < 1 ? nullptr : malloc(static_cast<size_t>(size));
}

void vekiFree(void* ptr) {
  free(ptr);
}

}  // extern "C"
