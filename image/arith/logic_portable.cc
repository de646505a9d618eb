#include "image/arith/logic_body.h"
#include "image/arith/pointwise_portable.h"

namespace vek::portable {

constexpr LogicKernels logicKernels = logicKernelsOf<PlainLanes>();

}  // namespace vek::portable
