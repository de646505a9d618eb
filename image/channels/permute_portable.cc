#include "core/assert.h"
#include "core/kernel/words.h"
#include "image/channels/permute_kernels.h"

namespace vek::portable {
namespace {

/// All samples of a pixel are read before the first is written.
template <int srcChannels, int dstChannels>
void permute(const Vek8u* src, ptrdiff_t srcStep, ptrdiff_t n, ptrdiff_t rows,
             const ChannelOrder& order, Vek8u* dst, ptrdiff_t dstStep) {
  VEK_ASSERT(n >= 1 && rows >= 1);
  const Vek8u value = order.value;
  for (ptrdiff_t y = 0; y < rows; ++y, src += srcStep) {
    const Vek8u* from[dstChannels];
    ptrdiff_t step[dstChannels];  // 0 for the value
    for (int i = 0; i < dstChannels; ++i) {
      const bool isValue = order.from[i] == ChannelOrder::valueChannel;
      from[i] = isValue ? &value : src + order.from[i];
      step[i] = isValue ? 0 : srcChannels;
    }
    Vek8u* to = dst + y * dstStep;
    for (ptrdiff_t x = 0; x < n; ++x, to += dstChannels) {
      Vek8u samples[dstChannels];
      for (int i = 0; i < dstChannels; ++i) samples[i] = *from[i];
      for (int i = 0; i < dstChannels; ++i) {
        to[i] = samples[i];
        from[i] += step[i];
      }
    }
  }
}

/// Four channels are a word of 32 bits, and vectors shift several of them.
void permuteWords(const Vek8u* src, ptrdiff_t srcStep, ptrdiff_t n, ptrdiff_t rows,
                  const ChannelOrder& order, Vek8u* dst, ptrdiff_t dstStep) {
  VEK_ASSERT(n >= 1 && rows >= 1);
  const int s0 = 8 * order.from[0], s1 = 8 * order.from[1], s2 = 8 * order.from[2],
            s3 = 8 * order.from[3];
  for (ptrdiff_t y = 0; y < rows; ++y, src += srcStep, dst += dstStep) {
    for (ptrdiff_t x = 0; x < n; ++x) {
      const Vek32u word = loadWord<Vek32u>(src + 4 * x);
      storeWord((word >> s0 & 0xFF) | (word >> s1 & 0xFF) << 8 | (word >> s2 & 0xFF) << 16 |
                    (word >> s3 & 0xFF) << 24,
                dst + 4 * x);
    }
  }
}

}  // namespace

constexpr PermuteKernels permuteKernels = {.from3To3 = permute<3, 3>,
                                           .from4To4 = hasWords ? permuteWords : permute<4, 4>,
                                           .from4To3 = permute<4, 3>,
                                           .from3To4 = permute<3, 4>};

}  // namespace vek::portable
