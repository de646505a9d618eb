#include "image/filter/fir/fir_body.h"

namespace vek::portable {

constexpr FirKernels firKernels = {
    .sums16 = fir<Vek32s>,
    .sums32 = fir<Vek32s>,
    .sums64 = fir<int64_t>,
};

}  // namespace vek::portable
