#include "image/filter/box/box_body.h"

namespace vek::portable {

constexpr BoxKernels boxKernels = {
    slideColumns,
    16,
    smallBoxArea,
    averageColumns<Vek16u>,
    {slideWindows<Vek32u>, averageWindows<Vek32u, scaleSums<Vek32u>>},
    {slideWindows<uint64_t>, averageWindows<uint64_t, scaleSums<uint64_t>>}};

}  // namespace vek::portable
