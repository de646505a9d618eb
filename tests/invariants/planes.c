/* Arrays of source planes, of constant samples or not, are passed as they are, in C and in C++.
 * Only compiled (headers.sh). */
#include "vek/camera.h"
#include "vek/image.h"

VekStatus passPlanes(Vek8u* pixels);

VekStatus passPlanes(Vek8u* pixels) {
  static const Vek8u black[4] = {0, 0, 0, 0};
  Vek8u* planes[3];
  const Vek8u* constantSamples[3];
  Vek8u* const constantPlanes[3] = {pixels, pixels, pixels};
  const Vek8u* const constant[3] = {black, black, black};
  const int steps[3] = {8, 8, 8};
  int writableSteps[3] = {8, 8, 8};
  const VekiSize size = {2, 2};
  planes[0] = planes[1] = planes[2] = pixels;
  constantSamples[0] = constantSamples[1] = constantSamples[2] = black;
  return vekiYUV420ToRGB_8u_P3C3R(planes, steps, pixels, 8, size) |
         vekiYUV420ToRGB_8u_P3C3R(constantSamples, writableSteps, pixels, 8, size) |
         vekiYUV420ToRGB_8u_P3C3R(constantPlanes, steps, pixels, 8, size) |
         vekiYUV420ToRGB_8u_P3C3R(constant, steps, pixels, 8, size) |
         vekiYCbCr420RszRot_8u_P3R(planes, steps, 2, 2, planes, writableSteps, 2, 2,
                                   vekiInterpolateNearest, vekiRotNone, 65536, 65536) |
         vekiYCbCr420RszRot_8u_P3R(constantSamples, steps, 2, 2, constantPlanes, steps, 2, 2,
                                   vekiInterpolateNearest, vekiRotNone, 65536, 65536);
}
