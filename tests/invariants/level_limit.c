/* A program's own limit of the level serves the library. */
#include <stdio.h>
#include <string.h>
#include <vek/vek.h>

static int limit;

int vekLevelLimit(void) {
  return limit;
}

int main(void) {
  int highest, ok = 1;
  limit = 1000;
  highest = vekLevel();
  for (limit = highest; limit >= 0; --limit) ok = ok && vekLevel() == limit;
  ok = ok && vekLevel() == 0 && strcmp(vekLevelName(vekLevel()), "portable") == 0; /* limit is -1 */
  printf("%s and below\n", vekLevelName(highest));
  return ok ? 0 : 1;
}
