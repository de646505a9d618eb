#include "core/assert.h"
#include "image/channels/permute_kernels.h"

namespace vek::portable {
namespace {

template <int srcChannels, int dstChannels>
void permute(const Vek8u* src, ptrdiff_t srcStep, ptrdiff_t n, ptrdiff_t rows,
             const ChannelOrder& order, Vek8u* dst, ptrdiff_t dstStep) {
  VEK_ASSERT(n >= 1 && rows >= 1);
  for (ptrdiff_t y = 0; y < rows; ++y, src += srcStep, dst += dstStep) {
    for (ptrdiff_t x = 0; x < n; ++x) {
      Vek8u channels[ChannelOrder::valueChannel + 1] = {};
      for (int i = 0; i < srcChannels; ++i) channels[i] = src[x * srcChannels + i];
      channels[ChannelOrder::valueChannel] = order.value;
      for (int i = 0; i < dstChannels; ++i) dst[x * dstChannels + i] = channels[order.from[i]];
    }
  }
}

}  // namespace

constexpr PermuteKernels permuteKernels = {.from3To3 = permute<3, 3>,
                                           .from4To4 = permute<4, 4>,
                                           .from4To3 = permute<4, 3>,
                                           .from3To4 = permute<3, 4>};

}  // namespace vek::portable
