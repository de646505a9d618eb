#include "core/assert.h"
#include "image/stat/moments_kernels.h"

namespace vek::portable {
namespace {

template <int channels>
MomentsOf<Vek64s> sumChannel(const Vek8u* src, ptrdiff_t srcStep, int width, int height) {
  MomentsOf<Vek64s> m = {};
  for (int y = 0; y < height; ++y, src += srcStep) {
    // Sums of x^p I over the row. Below 2^32 up to the first order: 255 * 1024 * 1023 / 2.
    Vek32u r0 = 0, r1 = 0;
    Vek64s r2 = 0, r3 = 0;
    for (int x = 0; x < width; ++x) {
      const Vek32u v = src[ptrdiff_t{x} * channels], column = static_cast<Vek32u>(x);
      const Vek32u v1 = v * column, v2 = v1 * column;
      r0 += v;
      r1 += v1;
      r2 += v2;
      r3 += Vek64s{v2} * x;
    }
    const Vek64s row0 = r0, row1 = r1;
    m.m00 += row0;
    m.m10 += row1;
    m.m01 += row0 * y;
    m.m20 += r2;
    m.m11 += row1 * y;
    m.m02 += row0 * y * y;
    m.m30 += r3;
    m.m21 += r2 * y;
    m.m12 += row1 * y * y;
    m.m03 += row0 * y * y * y;
  }
  return m;
}

template <int channels>
void sum(const Vek8u* src, ptrdiff_t srcStep, int width, int height, MomentsOf<Vek64s>* moments) {
  VEK_ASSERT(width >= 1 && width <= momentTile && height >= 1 && height <= momentTile);
  for (int c = 0; c < channels; ++c) {
    moments[c] = sumChannel<channels>(src + c, srcStep, width, height);
  }
}

}  // namespace

constexpr MomentKernels momentKernels = {.c1 = sum<1>, .c3 = sum<3>};

}  // namespace vek::portable
