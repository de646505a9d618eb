#include <stdio.h>
#include <vek/camera.h>
#include <vek/image.h>

int main(void) {
  Vek32u remainder = 0;
  const Vek32u quotient = _vekDiv_32u(720, 13, &remainder);
  const VekLibraryVersion* image = vekiGetLibVersion();
  printf("%s for %s\n", image->Version, image->targetCpu);
  return quotient == 55 && remainder == 5 && image->major == 4 ? 0 : 1;
}
