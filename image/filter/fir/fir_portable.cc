#include "image/filter/fir/fir_body.h"
#include "image/filter/fir/fir_kernels.h"

namespace vek::portable {
namespace {

template <class Sum>
void filter(const FirRegion& r, const FirTaps& taps, const FirScale& scale) {
  for (ptrdiff_t y = 0; y < r.rows; ++y) {
    firRow<Sum>(r.src + y * r.srcStep, r.srcStep, taps, scale, r.n, r.dst + y * r.dstStep);
  }
}

}  // namespace

constexpr FirKernels firKernels = {
    .sums16 = filter<Vek16s>,
    .sums32 = filter<Vek32s>,
    .sums64 = filter<int64_t>,
};

}  // namespace vek::portable
