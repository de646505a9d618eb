#include "core/assert.h"
#include "image/filter/box/box_body.h"
#include "image/filter/box/box_kernels.h"

namespace vek::portable {
namespace {

template <int pixelBytes, class Sum>
void averagePixels(const Sum* __restrict differences, const Sum* first, ptrdiff_t n,
                   const BoxScale& scale, Vek8u* __restrict dst) {
  const Vek32u factor = scale.factor;
  Sum sums[pixelBytes];
  for (int c = 0; c < pixelBytes; ++c) sums[c] = first[c];
  for (ptrdiff_t x = 0; x < n; x += pixelBytes) {
    for (int c = 0; c < pixelBytes; ++c) {
      dst[x + c] = boxMean(sums[c], factor);
      sums[c] += differences[x + c];
    }
  }
}

template <class Sum>
void averageWindows(const Sum* differences, const Sum* first, ptrdiff_t pixelBytes, ptrdiff_t n,
                    const BoxScale& scale, Vek8u* dst) {
  VEK_ASSERT(n >= pixelBytes && n % pixelBytes == 0 && scale.factor != 0);
  (pixelBytes == 1 ? averagePixels<1, Sum> : averagePixels<3, Sum>)(differences, first, n, scale,
                                                                    dst);
}

}  // namespace

constexpr BoxKernels boxKernels = {
    .slideColumns = slideColumns,
    .averageColumns = averageColumns<Vek16u>,
    .averageNine = nullptr,
    .leastNine = 0,
    .mostWidth = 16,
    .mostArea = smallBoxArea,
    .windows32 = {.slide = slideWindows<Vek32u>, .average = averageWindows<Vek32u>},
    .windows64 = {.slide = slideWindows<uint64_t>, .average = averageWindows<uint64_t>},
};

}  // namespace vek::portable
