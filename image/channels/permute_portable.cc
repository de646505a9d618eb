#include <string.h>

#include "core/assert.h"
#include "core/color/pixel_block.h"
#include "core/kernel/words.h"
#include "image/channels/permute_kernels.h"

namespace vek::portable {
namespace {

#if defined(__SSE2__)

// Pixels of three channels, channel by channel: a third of the time where they become four.

template <int channels>
void joinPixels(const Vek8u* const* from, Vek8u* pixels) {
  if constexpr (channels == 3) {
    joinVectors(from[0], from[1], from[2], pixels);
  } else {
    const auto load = [&](int i) {
      return _mm_load_si128(reinterpret_cast<const __m128i*>(from[i]));
    };
    const auto store = [&](int i, __m128i v) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels + 16 * i), v);
    };
    const __m128i lowPairs = _mm_unpacklo_epi8(load(0), load(1));
    const __m128i highPairs = _mm_unpackhi_epi8(load(0), load(1));
    const __m128i lowOthers = _mm_unpacklo_epi8(load(2), load(3));
    const __m128i highOthers = _mm_unpackhi_epi8(load(2), load(3));
    store(0, _mm_unpacklo_epi16(lowPairs, lowOthers));
    store(1, _mm_unpackhi_epi16(lowPairs, lowOthers));
    store(2, _mm_unpacklo_epi16(highPairs, highOthers));
    store(3, _mm_unpackhi_epi16(highPairs, highOthers));
  }
}

/// Permutes the first of n pixels, and returns how many.
template <int srcChannels, int dstChannels>
ptrdiff_t permuteVectors(const Vek8u* src, ptrdiff_t n, const ChannelOrder& order, Vek8u* dst) {
  if constexpr (srcChannels != 3) return 0;
  alignas(16) Vek8u channel[ChannelOrder::valueChannel + 1][vectorPixels];
  memset(channel[ChannelOrder::valueChannel], order.value, vectorPixels);
  const Vek8u* from[dstChannels];
  for (int i = 0; i < dstChannels; ++i) from[i] = channel[order.from[i]];
  ptrdiff_t x = 0;
  for (; x <= n - vectorPixels; x += vectorPixels) {
    separateVectors(src + srcChannels * x, channel[0], channel[1], channel[2]);
    joinPixels<dstChannels>(from, dst + dstChannels * x);
  }
  return x;
}

#else

template <int srcChannels, int dstChannels>
ptrdiff_t permuteVectors(const Vek8u*, ptrdiff_t, const ChannelOrder&, Vek8u*) {
  return 0;
}

#endif

/// All samples of a pixel are read before the first is written.
template <int srcChannels, int dstChannels>
void permute(const Vek8u* src, ptrdiff_t srcStep, ptrdiff_t n, ptrdiff_t rows,
             const ChannelOrder& order, Vek8u* dst, ptrdiff_t dstStep) {
  VEK_ASSERT(n >= 1 && rows >= 1);
  const Vek8u value = order.value;
  for (ptrdiff_t y = 0; y < rows; ++y, src += srcStep) {
    ptrdiff_t x = permuteVectors<srcChannels, dstChannels>(src, n, order, dst + y * dstStep);
    const Vek8u* from[dstChannels];
    ptrdiff_t step[dstChannels];  // 0 for the value
    for (int i = 0; i < dstChannels; ++i) {
      const bool isValue = order.from[i] == ChannelOrder::valueChannel;
      from[i] = isValue ? &value : src + srcChannels * x + order.from[i];
      step[i] = isValue ? 0 : srcChannels;
    }
    Vek8u* to = dst + y * dstStep + dstChannels * x;
    for (; x < n; ++x, to += dstChannels) {
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
