#include "image/filter/fir_body.h"

namespace vek::portable {

constexpr FirRows firRows = {fir<Vek32s>, fir<Vek32s>, fir<Vek32s>, fir<int64_t>};

}  // namespace vek::portable
