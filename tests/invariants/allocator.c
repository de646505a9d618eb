/* A program's own pair of allocator functions serves the library's states. */
#include <stdio.h>
#include <stdlib.h>
#include <vek/camera.h>

static int taken;
static int released;

void* vekiMalloc(int size) {
  ++taken;
  return malloc((size_t)size);
}

void vekiFree(void* ptr) {
  if (ptr != NULL) ++released;
  free(ptr);
}

int main(void) {
  VekiAEParams params = {0};
  VekiAEState* state = NULL;
  params.mode = vekiAEHistogram;
  params.scaleMultiplier = params.stepSize = 1;
  params.scaleMax = params.stepMax = 1;
  if (vekiInitAlloc_AE_10RGGB_8u_C1R(&params, &state) != vekStsNoErr) return 1;
  vekiFree_AE_10RGGB_8u_C1R(state);
  printf("%d taken, %d released\n", taken, released);
  return taken > 0 && taken == released ? 0 : 1;
}
