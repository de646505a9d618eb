#include "image/filter/fir_body.h"

namespace vek::portable {

constexpr FirRows firRows = {firRow<Vek32s>, firRow<Vek32s>, firRow<int64_t>};

}  // namespace vek::portable
