#include "core/kernel/blocks.h"
#include "core/kernel/interleave.h"
#include "image/channels/permute_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// Runs body(from, to) on blocks of `block` pixels of all rows.
template <int srcChannels, int dstChannels, int block, class Body>
void forEachBlock(const Vek8u* src, ptrdiff_t srcStep, ptrdiff_t n, ptrdiff_t rows, Vek8u* dst,
                  ptrdiff_t dstStep, Body body) {
  VEK_ASSERT(n >= 1 && rows >= 1);
  for (ptrdiff_t y = 0; y < rows; ++y) {
    copiedBlocks<block>(n, body, In<srcChannels>{src + y * srcStep},
                        Out<dstChannels>{dst + y * dstStep});
  }
}

// Pixels of four channels fill 128 bits evenly, so that one shuffle permutes them.

void shuffle4(const Vek8u* src, ptrdiff_t srcStep, ptrdiff_t n, ptrdiff_t rows,
              const ChannelOrder& order, Vek8u* dst, ptrdiff_t dstStep) {
  alignas(16) Vek8u from[16];
  for (int i = 0; i < 16; ++i) from[i] = static_cast<Vek8u>(i / 4 * 4 + order.from[i % 4]);
  const V8u table = hn::LoadDup128(u8, from);
  forEachBlock<4, 4, vectorBytes / 2>(
      src, srcStep, n, rows, dst, dstStep, [=](const Vek8u* in, Vek8u* out) {
        const V8u a = hn::LoadU(u8, in), b = hn::LoadU(u8, in + vectorBytes);
        hn::StoreU(hn::TableLookupBytes(a, table), u8, out);
        hn::StoreU(hn::TableLookupBytes(b, table), u8, out + vectorBytes);
      });
}

#if defined(__AVX512VBMI__)

// Pixels of three channels are taken apart and put together again, with the channels in memory
// between: which one a register holds cannot be chosen at run time.

template <int srcChannels, int dstChannels>
void permute(const Vek8u* src, ptrdiff_t srcStep, ptrdiff_t n, ptrdiff_t rows,
             const ChannelOrder& order, Vek8u* dst, ptrdiff_t dstStep) {
  const auto body = [order, value = hn::Set(u8, order.value)](const Vek8u* in, Vek8u* out) {
    V8u channels[ChannelOrder::valueChannel + 1];
    if constexpr (srcChannels == 3) {
      const Channels v = loadChannels(in);
      channels[0] = v.c0, channels[1] = v.c1, channels[2] = v.c2;
    } else {
      hn::LoadInterleaved4(u8, in, channels[0], channels[1], channels[2], channels[3]);
    }
    channels[ChannelOrder::valueChannel] = value;
    const auto channel = [&](int i) { return channels[order.from[i]]; };
    if constexpr (dstChannels == 3) {
      storeChannels({channel(0), channel(1), channel(2)}, out);
    } else {
      hn::StoreInterleaved4(channel(0), channel(1), channel(2), channel(3), u8, out);
    }
  };
  forEachBlock<srcChannels, dstChannels, vectorBytes>(src, srcStep, n, rows, dst, dstStep, body);
}

#else

// Pixels of three channels do not fill 128 bits evenly. Of each 128 bits of the destination the source
// lies in up to 24 bytes, which are read as two windows of 16 bytes, from the beginning and to the end
// of the pixels; each byte is shuffled to its place from the one or the other.

constexpr Vek8u none = 0x80;

/// Where the windows of the destination's 128-bit lane `lane` are in a block of vectorBytes pixels.
template <int srcChannels, int dstChannels>
struct Windows {
  /// Only with three channels do the pixels of 16 bytes take more than 16 bytes in the source.
  static constexpr bool two = dstChannels == 3;
  static constexpr int lanes = dstChannels * vectorBytes / 16;

  static constexpr int pixelOf(int dstByte) { return dstByte / dstChannels; }
  /// None reaches beyond the block.
  static constexpr int begin(int lane) {
    const int at = srcChannels * pixelOf(16 * lane), last = srcChannels * vectorBytes - 16;
    return at < last ? at : last;
  }
  static constexpr int secondBegin(int lane) {
    return srcChannels * (pixelOf(16 * lane + 15) + 1) - 16;
  }

  alignas(64) Vek8u first[16 * lanes], second[16 * lanes];

  explicit Windows(const ChannelOrder& order) {
    for (int i = 0; i < 16 * lanes; ++i) {
      const Vek8u from = order.from[i % dstChannels];
      const int at = pixelOf(i) * srcChannels + from - begin(i / 16);
      const bool isValue = from == ChannelOrder::valueChannel;
      first[i] = isValue || at > 15 ? none : static_cast<Vek8u>(at);
      second[i] =
          isValue || at <= 15 ? none : static_cast<Vek8u>(at + begin(i / 16) - secondBegin(i / 16));
    }
  }
};

/// The windows of as many lanes as d has.
template <class W, bool second, int lane, class D>
hn::Vec<D> loadWindows(D d, const Vek8u* src) {
  if constexpr (hn::MaxLanes(d) == 16) {
    return hn::LoadU(d, src + (second ? W::secondBegin(lane) : W::begin(lane)));
  } else {
    const hn::Half<D> half;
    constexpr int more = static_cast<int>(hn::MaxLanes(half)) / 16;
    return hn::Combine(d, loadWindows<W, second, lane + more>(half, src),
                       loadWindows<W, second, lane>(half, src));
  }
}

template <int srcChannels, int dstChannels>
void permute(const Vek8u* src, ptrdiff_t srcStep, ptrdiff_t n, ptrdiff_t rows,
             const ChannelOrder& order, Vek8u* dst, ptrdiff_t dstStep) {
  using W = Windows<srcChannels, dstChannels>;
  const W windows(order);
  struct {
    V8u first[dstChannels], second[dstChannels];
  } tables;
  for (int v = 0; v < dstChannels; ++v) {
    tables.first[v] = hn::Load(u8, windows.first + v * vectorBytes);
    tables.second[v] = hn::Load(u8, windows.second + v * vectorBytes);
  }
  alignas(16) Vek8u valueBytes[16];
  for (int i = 0; i < 16; ++i) {
    valueBytes[i] = order.from[i % 4] == ChannelOrder::valueChannel ? order.value : Vek8u{0};
  }
  const V8u value = hn::LoadDup128(u8, valueBytes);
  const auto body = [=](const Vek8u* in, Vek8u* out) {
    const auto result = [&]<int v>() {
      constexpr int lane = v * vectorBytes / 16;
      const V8u a = hn::TableLookupBytesOr0(loadWindows<W, false, lane>(u8, in), tables.first[v]);
      if constexpr (W::two) {
        return hn::Or(
            a, hn::TableLookupBytesOr0(loadWindows<W, true, lane>(u8, in), tables.second[v]));
      } else {
        return hn::Or(a, value);
      }
    };
    // Everything is loaded before anything is stored: the destination may be the source.
    const V8u r0 = result.template operator()<0>(), r1 = result.template operator()<1>(),
              r2 = result.template operator()<2>();
    if constexpr (dstChannels == 4) {
      hn::StoreU(result.template operator()<3>(), u8, out + 3 * vectorBytes);
    }
    hn::StoreU(r0, u8, out);
    hn::StoreU(r1, u8, out + vectorBytes);
    hn::StoreU(r2, u8, out + 2 * vectorBytes);
  };
  forEachBlock<srcChannels, dstChannels, vectorBytes>(src, srcStep, n, rows, dst, dstStep, body);
}

#endif

}  // namespace

constexpr PermuteKernels permuteKernels = {.from3To3 = permute<3, 3>,
                                           .from4To4 = shuffle4,
                                           .from4To3 = permute<4, 3>,
                                           .from3To4 = permute<3, 4>};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
