/* Calls at every level give the same bytes. */
#include <limits.h>
#include <stdio.h>
#include <string.h>
#include <vek/camera.h>
#include <vek/image.h>

enum { width = 203, height = 5 };

static int limit = INT_MAX;

int vekLevelLimit(void) {
  return limit;
}

static Vek8u source[height][3 * width];
static Vek8u results[2][3][height][3 * width];

static VekStatus run(int level, Vek8u (*to)[height][3 * width]) {
  const VekiSize size = {width, height}, wide = {3 * width, height};
  VekStatus status;
  limit = level;
  status = vekiRGBToGray_8u_C3C1R(source[0], 3 * width, to[0][0], 3 * width, size);
  status |=
      vekiAdd_8u_C1RSfs(source[0], 3 * width, source[0], 3 * width, to[1][0], 3 * width, wide, 0);
  status |= vekiAnd_8u_C1R(source[0], 3 * width, to[1][0], 3 * width, to[2][0], 3 * width, wide);
  return status;
}

int main(void) {
  VekiAEParams params = {0};
  VekiAEState* state = NULL;
  unsigned seed = 1;
  const int highest = vekLevel();
  int level, x, y, ok;
  for (y = 0; y < height; ++y) {
    for (x = 0; x < 3 * width; ++x) {
      seed = seed * 1664525u + 1013904223u;
      source[y][x] = (Vek8u)(seed >> 24);
    }
  }
  printf("highest: %s\n", vekLevelName(highest));
  ok = run(0, results[0]) == vekStsNoErr;
  for (level = 0; level <= highest; ++level) {
    ok = ok && run(level, results[1]) == vekStsNoErr && vekLevel() == level &&
         memcmp(results[0], results[1], sizeof results[0]) == 0;
  }
  params.mode = vekiAEHistogram;
  params.scaleMultiplier = params.stepSize = 1;
  params.scaleMax = params.stepMax = 1;
  ok = ok && vekiInitAlloc_AE_10RGGB_8u_C1R(&params, &state) == vekStsNoErr;
  ok = ok && vekiFree_AE_10RGGB_8u_C1R(state) == vekStsNoErr;
  return ok ? 0 : 1;
}
