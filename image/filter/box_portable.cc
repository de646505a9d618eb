#include "image/filter/box_body.h"

namespace vek::portable {

constexpr BoxRows boxRows = {slideColumns, averageColumns, wideBoxRows<Vek32u>,
                             wideBoxRows<uint64_t>};

}  // namespace vek::portable
