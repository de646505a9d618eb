#include "camera/front/front_end_kernels.h"
#include "core/assert.h"

namespace vek::portable {
namespace {

/// Sample k of a group.
template <int format>
Vek32u sampleOf(const Vek8u* group, int k) {
  if constexpr (format == vekiRaw8) {
    return group[0];
  } else if constexpr (format == vekiRawPlain16) {
    return group[0] + Vek32u{group[1]} * 256;
  } else if constexpr (format == vekiRawCsi2_10) {
    return group[k] * 4u + (group[4] >> 2 * k & 3u);
  } else if constexpr (format == vekiRawCsi2_12) {
    return group[k] * 16u + (group[2] >> 4 * k & 15u);
  } else {
    const Vek32u lowBits = group[4] + Vek32u{group[5]} * 256 + Vek32u{group[6]} * 65536;
    return group[k] * 64u + (lowBits >> 6 * k & 63u);
  }
}

/// The sum takes up to 33 bits: 65535 * 65535 + 2^17.
Vek16u corrected(Vek32u sample, Vek16u black, Vek16u gain, int bits) {
  const Vek32u s = sample & ((1u << bits) - 1);
  const Vek32u d = s > black ? s - black : 0;
  const uint64_t value = (uint64_t{d} * gain + (2u << bits)) >> (bits + 2);
  return static_cast<Vek16u>(value < 1023 ? value : 1023);
}

template <int format>
void convertRow(const Vek8u* src, int first, ptrdiff_t n, const RawCorrection& correction,
                Vek16u* dst) {
  constexpr RawGroups groups = rawGroups[format];
  VEK_ASSERT(0 <= first && first < groups.samples && n >= 1);
  int k = first;
  for (ptrdiff_t i = 0; i < n; ++i) {
    const auto c = static_cast<size_t>(i % 2);
    dst[i] = corrected(sampleOf<format>(src, k), correction.black[c], correction.gain[c],
                       correction.bits);
    if (++k < groups.samples) continue;
    k = 0;
    src += groups.bytes;
  }
}

}  // namespace

constexpr FrontEndKernels frontEndKernels = {
    .rows = {convertRow<vekiRaw8>, convertRow<vekiRawPlain16>, convertRow<vekiRawCsi2_10>,
             convertRow<vekiRawCsi2_12>, convertRow<vekiRawCsi2_14>}};

}  // namespace vek::portable
