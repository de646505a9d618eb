#include "image/filter/fir/fir_body.h"

namespace vek::portable {

constexpr FirKernels firKernels = {fir<Vek32s>, fir<Vek32s>, fir<int64_t>};

}  // namespace vek::portable
