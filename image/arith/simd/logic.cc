#include "image/arith/logic_body.h"
#include "image/arith/simd/pointwise.h"

namespace vek::VEK_LEVEL {

constexpr LogicKernels logicKernels = logicKernelsOf<VectorLanes>();

}  // namespace vek::VEK_LEVEL
