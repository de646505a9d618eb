#include "camera/front/color_matrix_kernels.h"
#include "core/kernel/blocks.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr ptrdiff_t rowLanes = static_cast<ptrdiff_t>(hn::MaxLanes(u16));

/// Two weights for each of two samples, to be multiplied by pairs of 16-bit lanes.
V16s weightPairs(const Vek16s* first, const Vek16s* second) {
  const auto pair = [&](int c) {
    return static_cast<Vek16u>(first[c]) | Vek32u{static_cast<Vek16u>(second[c])} << 16;
  };
  return hn::BitCast(s16, hn::Set(u64, pair(0) | uint64_t{pair(1)} << 32));
}

V16s samplesAt(const Vek16u* p) {
  return hn::BitCast(s16, hn::LoadU(u16, p));
}

/// The destination is no source, so the last block overlaps its neighbour. Weights alternate, which takes
/// an even number of samples; the odd one at the end, and rows shorter than a vector, are computed as the
/// definition reads.
void row(const Vek16u* up, const Vek16u* at, const Vek16u* down, Vek16u* dst, ptrdiff_t n,
         const ColorMatrixWeights& weights) {
  VEK_ASSERT(n >= 1);
  const ptrdiff_t even = n < rowLanes ? 0 : n & ~ptrdiff_t{1};
  if (even < n) {
    portable::colorMatrixKernels.row(up + even, at + even, down + even, dst + even, n - even,
                                     weights);
  }
  if (even == 0) return;
  const V16s atWeights = weightPairs(weights.own, weights.beside);
  const V16s aroundWeights = weightPairs(weights.vertical, weights.diagonal);
  const V32s half = hn::Set(s32, 1 << 13);
  // Sums are at most 4092. The products of a lane add up to at most 4 * 16383 * 4092, half of what 32
  // bits hold, and the result to 4 * 1023, so that packing clamps nothing.
  overlappingBlocks(even, rowLanes, [&](ptrdiff_t i) {
    const V16s own = hn::ShiftLeft<2>(samplesAt(at + i));
    const V16s beside = hn::Add(samplesAt(at + i - 1), samplesAt(at + i + 1));
    const V16s vertical = hn::Add(samplesAt(up + i), samplesAt(down + i));
    const V16s diagonal = hn::Add(hn::Add(samplesAt(up + i - 1), samplesAt(up + i + 1)),
                                  hn::Add(samplesAt(down + i - 1), samplesAt(down + i + 1)));
    const auto products = [&](V16s atPair, V16s aroundPair) {
      return hn::ShiftRight<14>(
          plusDot(plusDot(half, atPair, atWeights), aroundPair, aroundWeights));
    };
    const V16s result = packClamped(products(hn::InterleaveLower(s16, own, beside),
                                             hn::InterleaveLower(s16, vertical, diagonal)),
                                    products(hn::InterleaveUpper(s16, own, beside),
                                             hn::InterleaveUpper(s16, vertical, diagonal)));
    const V16s clamped = hn::Min(hn::Max(result, hn::Zero(s16)), hn::Set(s16, 1023));
    hn::StoreU(hn::BitCast(u16, clamped), u16, dst + i);
  });
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr ColorMatrixKernels colorMatrixKernels = {.row = row};

}  // namespace vek::VEK_LEVEL
